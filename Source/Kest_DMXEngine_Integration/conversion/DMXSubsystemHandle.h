#pragma once

#include "CoreMinimal.h"
#include "host/VorlithLua.h"

// dmx_subsystem(): conversion helpers of the engine's DMX subsystem.
sol::object OpenDMXSubsystemHandle(sol::this_state S);
