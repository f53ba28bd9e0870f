// Finding the actor a dmx_component handle works on, and that actor's DMX components by name.
#pragma once

#include "CoreMinimal.h"

class AActor;
class UDMXComponent;

// The actor of the level open in the editor (never a play world) whose object name or label is the
// text, as the host matches them. Null for the empty text, and without an editor or editor world.
AActor* FindEditorActorByNameOrLabel(const FString& NameOrLabel);

// The first of the actor's DMX components, in the engine's order, whose object name equals Name
// ignoring case; the empty name takes the first DMX component. Null when nothing matches.
UDMXComponent* FindDMXComponentByName(AActor* Actor, const FString& Name);
