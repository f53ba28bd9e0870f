#pragma once

#include "CoreMinimal.h"
#include "host/VorlithLua.h"

// dmx_component(actor): the handle table of the editor-world actor with that name or label.
sol::object OpenDMXComponentHandle(const std::string& Actor, sol::this_state S);
