#include "component/DMXComponentParams.h"

#include "Library/DMXLibrary.h"
#include "Library/DMXEntityFixturePatch.h"
#include "library/DMXLibraryLookup.h"
#include "module/DMXLuaParams.h"

bool ReadFixturePatchParam(sol::table Params, UDMXEntityFixturePatch*& OutFixturePatch)
{
	OutFixturePatch = nullptr;
	if (GetParamType(Params, "library") != LUA_TSTRING)
	{
		return false;
	}
	UDMXLibrary* Library = LoadDMXLibrary(GetStringParam(Params, "library", TEXT("")));
	if (Library != nullptr)
	{
		OutFixturePatch = FindFixturePatchByName(Library, GetStringParam(Params, "fixture_patch", TEXT("")));
	}
	return true;
}

bool ReadReceiveParam(sol::table Params, bool& bOutReceive)
{
	bOutReceive = false;
	if (GetParamType(Params, "receive") != LUA_TBOOLEAN)
	{
		return false;
	}
	bOutReceive = GetBoolParam(Params, "receive", false);
	return true;
}
