// add(params) of a dmx_component handle: reuse or create a DMX component on the actor, then point it
// at a fixture patch and set its receive state.
#pragma once

#include "CoreMinimal.h"
#include "host/VorlithLua.h"

class AActor;

// The actor's info table, or nil without an actor or when the component cannot be created. Only
// the creation is recorded for undo; the patch and receive changes that follow are not.
sol::object AddDMXComponent(AActor* Actor, sol::table Params, sol::this_state S);
