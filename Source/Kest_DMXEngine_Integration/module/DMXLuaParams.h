// Reading named arguments from a script's params table, and moving texts between Lua and the engine.
#pragma once

#include "CoreMinimal.h"
#include "host/VorlithLua.h"

// Each getter answers Default unless Params is a table (or userdata) whose field Key holds exactly
// the expected Lua type; nothing is coerced. Metamethods of Params apply to the read; a userdata
// whose metatable has no __index table or function holds no keys.
FString GetStringParam(sol::table Params, const char* Key, const TCHAR* Default);
double GetNumberParam(sol::table Params, const char* Key, double Default);
// Truncates toward zero to 32 bits (out of range and NaN give INT32_MIN), then applies Max, then Min.
int32 GetIntParam(sol::table Params, const char* Key, int32 Default, int32 Min, int32 Max);
bool GetBoolParam(sol::table Params, const char* Key, bool Default);

// The Lua type of Params[Key] (metamethods apply), or LUA_TNONE when Params is neither a table nor
// a userdata. Nested lists count as given when this is LUA_TTABLE or LUA_TUSERDATA.
int GetParamType(sol::table Params, const char* Key);
// Params[Key] when it is a table or a userdata, else an empty reference.
sol::object GetNestedParam(sol::table Params, const char* Key);

// Truncation of a script number to a 32-bit integer as the getters do it.
int32 TruncateToInt32(double Value);

// The UTF-8 bytes up to the first NUL, as an engine string.
FString ConvertLuaText(const std::string& Text);
// The engine string as UTF-8, up to its first NUL.
std::string ConvertEngineText(const FString& Text);
