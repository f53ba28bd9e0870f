#include "conversion/DMXByteTables.h"

TArray<uint8> ReadDMXByteTable(const sol::table& Bytes)
{
	TArray<uint8> Result;
	lua_State* L = Bytes.lua_state();
	if (L == nullptr)
	{
		return Result;
	}

	const int Top = lua_gettop(L);
	Bytes.push(L);
	if (lua_type(L, -1) != LUA_TTABLE)
	{
		lua_settop(L, Top);
		return Result;
	}

	const int TableIndex = lua_gettop(L);
	lua_pushnil(L);
	while (lua_next(L, TableIndex) != 0)
	{
		if (lua_type(L, -1) == LUA_TNUMBER)
		{
			// sol2's checked integer read: a float raises its type-mismatch report and ends the walk.
			const sol::optional<int32> Value = sol::stack::check_get<int32>(L, -1, sol::type_panic_c_str);
			if (Value)
			{
				Result.Add(static_cast<uint8>(FMath::Clamp(*Value, 0, 255)));
			}
		}
		lua_pop(L, 1);
	}
	lua_settop(L, Top);
	return Result;
}

sol::table MakeDMXByteTable(sol::this_state S, const TArray<uint8>& Bytes)
{
	sol::state_view Lua(S);
	sol::table Table = Lua.create_table(Bytes.Num(), 0);
	for (int32 Index = 0; Index < Bytes.Num(); ++Index)
	{
		Table.raw_set(Index + 1, static_cast<int32>(Bytes[Index]));
	}
	return Table;
}
