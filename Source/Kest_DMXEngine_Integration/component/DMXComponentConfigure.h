// configure(component, params) of a dmx_component handle: point an existing DMX component of the
// actor at a fixture patch and set its receive state, as one undo step.
#pragma once

#include <string>
#include "CoreMinimal.h"
#include "host/VorlithLua.h"

class AActor;

// The actor's info table, or nil without an actor or when it has no DMX component of that name
// (the empty name takes its first one). Never creates a component.
sol::object ConfigureDMXComponent(AActor* Actor, const std::string& ComponentName, sol::table Params, sol::this_state S);
