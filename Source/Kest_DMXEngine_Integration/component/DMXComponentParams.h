// The params keys that add and configure of a dmx_component handle apply to a DMX component.
#pragma once

#include "CoreMinimal.h"
#include "host/VorlithLua.h"

class UDMXEntityFixturePatch;

// False when "library" is not a string: the component's patch stays as it is. Otherwise true, with
// OutFixturePatch the patch named by "fixture_patch" (default "") in that library, or null when the
// library does not load or holds no such patch: the patch is then cleared.
bool ReadFixturePatchParam(sol::table Params, UDMXEntityFixturePatch*& OutFixturePatch);

// False when "receive" is not a boolean: the receive state stays as it is. Otherwise true, with its value.
bool ReadReceiveParam(sol::table Params, bool& bOutReceive);
