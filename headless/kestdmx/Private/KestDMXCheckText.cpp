// How findings write the script's values: Lua values in words, texts quoted, numbers short, and
// JSON texts that stay valid whatever bytes a script used.
#include "KestDMXCheckCall.h"

#include <cstdio>

#include "host/VorlithLua.h"

std::string DescribeLuaValue(lua_State* L, int Index)
{
	switch (lua_type(L, Index))
	{
	case LUA_TNIL: return "nil";
	case LUA_TBOOLEAN: return lua_toboolean(L, Index) ? "true" : "false";
	case LUA_TNUMBER: return "the number " + FormatLuaNumber(L, Index);
	case LUA_TSTRING:
	{
		size_t Length = 0;
		const char* Text = lua_tolstring(L, Index, &Length);
		return "the string " + QuoteText(std::string(Text, Length));
	}
	case LUA_TTABLE: return "a table";
	case LUA_TFUNCTION: return "a function";
	case LUA_TUSERDATA: return "a userdata";
	case LUA_TLIGHTUSERDATA: return "a light userdata";
	case LUA_TTHREAD: return "a coroutine";
	default: return "a value";
	}
}

std::string FormatCheckNumber(double Value)
{
	char Buffer[64];
	std::snprintf(Buffer, sizeof(Buffer), "%.14g", Value);
	return Buffer;
}

std::string FormatLuaNumber(lua_State* L, int Index)
{
	return lua_isinteger(L, Index) ? std::to_string(lua_tointeger(L, Index)) : FormatCheckNumber(lua_tonumber(L, Index));
}

std::string QuoteText(const std::string& Text)
{
	std::string Quoted = "\"";
	const size_t Shown = std::min<size_t>(Text.size(), 80);
	for (size_t Index = 0; Index < Shown; ++Index)
	{
		const unsigned char Character = static_cast<unsigned char>(Text[Index]);
		if (Character == '"' || Character == '\\')
		{
			Quoted += '\\';
			Quoted += static_cast<char>(Character);
		}
		else if (Character < 0x20 || Character == 0x7f)
		{
			char Escape[8];
			std::snprintf(Escape, sizeof(Escape), "\\%d", Character);
			Quoted += Escape;
		}
		else
		{
			Quoted += static_cast<char>(Character);
		}
	}
	return Quoted + (Shown < Text.size() ? "...\"" : "\"");
}

nlohmann::json MakeJsonText(const std::string& Text)
{
	// Dumping a json string checks its UTF-8; a script's text may be anything, so it is checked here.
	const nlohmann::json Value = Text;
	const std::string Dumped = Value.dump(-1, ' ', false, nlohmann::json::error_handler_t::replace);
	return nlohmann::json::parse(Dumped);
}
