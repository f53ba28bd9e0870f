#include "module/DMXLuaParams.h"

#include <cmath>

namespace
{
	// A userdata has keys only through the __index of its metatable. Without a table or function
	// there, Lua would refuse the read with an error of its own, so the userdata holds no keys.
	bool CanReadUserdataFields(lua_State* L, int Index)
	{
		const int IndexType = luaL_getmetafield(L, Index, "__index");
		if (IndexType != LUA_TNIL)
		{
			lua_pop(L, 1);
		}
		return IndexType == LUA_TTABLE || IndexType == LUA_TFUNCTION;
	}

	// Pushes Params[Key] with a plain field read and hands its stack index to Read; whatever was
	// pushed is popped afterwards. A Lua error raised by a metamethod travels on untouched.
	template <typename ResultType, typename ReadFn>
	ResultType ReadParamField(sol::table& Params, const char* Key, ResultType Default, ReadFn Read)
	{
		lua_State* L = Params.lua_state();
		if (L == nullptr)
		{
			return Default;
		}
		const int Top = lua_gettop(L);
		Params.push(L);
		const int ContainerType = lua_type(L, -1);
		if ((ContainerType != LUA_TTABLE && ContainerType != LUA_TUSERDATA) || (ContainerType == LUA_TUSERDATA && !CanReadUserdataFields(L, -1)))
		{
			lua_settop(L, Top);
			return Default;
		}
		lua_getfield(L, -1, Key);
		const ResultType Result = Read(L, lua_gettop(L), Default);
		lua_settop(L, Top);
		return Result;
	}
}

int32 TruncateToInt32(double Value)
{
	if (std::isnan(Value) || Value <= -2147483649.0 || Value >= 2147483648.0)
	{
		return INT32_MIN;
	}
	return static_cast<int32>(Value);
}

FString GetStringParam(sol::table Params, const char* Key, const TCHAR* Default)
{
	return ReadParamField<FString>(Params, Key, FString(Default), [](lua_State* L, int Index, const FString& Fallback)
	{
		if (lua_type(L, Index) != LUA_TSTRING)
		{
			return Fallback;
		}
		const char* Text = lua_tostring(L, Index);
		FUTF8ToTCHAR Converted(Text);
		return FString(Converted.Length(), Converted.Get());
	});
}

double GetNumberParam(sol::table Params, const char* Key, double Default)
{
	return ReadParamField<double>(Params, Key, Default, [](lua_State* L, int Index, double Fallback)
	{
		return lua_type(L, Index) == LUA_TNUMBER ? static_cast<double>(lua_tonumber(L, Index)) : Fallback;
	});
}

int32 GetIntParam(sol::table Params, const char* Key, int32 Default, int32 Min, int32 Max)
{
	int32 Value = TruncateToInt32(GetNumberParam(Params, Key, static_cast<double>(Default)));
	Value = FMath::Min(Value, Max);
	Value = FMath::Max(Value, Min);
	return Value;
}

bool GetBoolParam(sol::table Params, const char* Key, bool Default)
{
	return ReadParamField<bool>(Params, Key, Default, [](lua_State* L, int Index, bool Fallback)
	{
		return lua_type(L, Index) == LUA_TBOOLEAN ? lua_toboolean(L, Index) != 0 : Fallback;
	});
}

int GetParamType(sol::table Params, const char* Key)
{
	return ReadParamField<int>(Params, Key, LUA_TNONE, [](lua_State* L, int Index, int)
	{
		return lua_type(L, Index);
	});
}

sol::object GetNestedParam(sol::table Params, const char* Key)
{
	return ReadParamField<sol::object>(Params, Key, sol::object(), [](lua_State* InL, int Index, const sol::object& Fallback)
	{
		const int Type = lua_type(InL, Index);
		if (Type != LUA_TTABLE && Type != LUA_TUSERDATA)
		{
			return Fallback;
		}
		return sol::object(InL, Index);
	});
}

FString ConvertLuaText(const std::string& Text)
{
	FUTF8ToTCHAR Converted(Text.c_str());
	return FString(Converted.Length(), Converted.Get());
}

std::string ConvertEngineText(const FString& Text)
{
	FTCHARToUTF8 Converted(*Text);
	return std::string(Converted.Get());
}
