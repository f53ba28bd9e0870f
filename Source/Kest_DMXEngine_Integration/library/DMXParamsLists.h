// Walking the lists of a params table ("modes", "functions", "cell_attributes", "tags").
#pragma once

#include "CoreMinimal.h"
#include "host/VorlithLua.h"

// Calls Visit(L, ValueIndex) for every value of the list, in the order of Lua's next (index 1
// upward for a plain sequence); ValueIndex is the value's absolute stack index and Visit must
// leave the stack as it found it. A list that is a userdata is accepted as a list but has no
// entries; its metatable is never asked for them.
template <typename VisitFn>
void ForEachParamsListValue(const sol::object& List, VisitFn&& Visit)
{
	lua_State* L = List.lua_state();
	if (L == nullptr)
	{
		return;
	}
	const int Top = lua_gettop(L);
	List.push(L);
	if (lua_type(L, -1) != LUA_TTABLE)
	{
		lua_settop(L, Top);
		return;
	}
	const int ListIndex = lua_gettop(L);
	lua_pushnil(L);
	while (lua_next(L, ListIndex) != 0)
	{
		Visit(L, lua_gettop(L));
		// Keep the key for the next step of the walk.
		lua_settop(L, ListIndex + 1);
	}
	lua_settop(L, Top);
}

// Calls Visit(Entry) with every value of the list that is a table; other values are skipped.
template <typename VisitFn>
void ForEachParamsListTable(const sol::object& List, VisitFn&& Visit)
{
	ForEachParamsListValue(List, [&Visit](lua_State* L, int ValueIndex)
	{
		if (lua_type(L, ValueIndex) == LUA_TTABLE)
		{
			Visit(sol::table(L, ValueIndex));
		}
	});
}
