// The table a dmx_component handle answers about the DMX components of its actor.
#pragma once

#include "CoreMinimal.h"
#include "host/VorlithLua.h"

class AActor;

// A fresh table on the calling Lua state: "valid", the actor's label and name, and one entry per
// DMX component with its patch and receive state. Without an actor only "valid" (false),
// "component_count" (0) and an empty "components".
sol::table MakeDMXComponentInfoTable(AActor* Actor, sol::this_state S);
