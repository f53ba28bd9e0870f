// Host module VorlithAI: actor helpers shared by the assistant's Lua bindings.
#pragma once

#include "CoreMinimal.h"

#ifndef VORLITHAI_API
#define VORLITHAI_API
#endif

class AActor;
class UWorld;

namespace VorLuaActor
{
	// The actor of the world whose object name or label matches the text, or null.
	VORLITHAI_API AActor* FindByNameOrLabel(UWorld* World, const FString& NameOrLabel);
}
