#pragma once

#include "UObject/Object.h"
#include "UObject/ObjectPtr.h"
#include "GameFramework/Actor.h"

namespace EWorldType
{
	enum Type
	{
		None,
		Game,
		Editor,
		PIE,
		EditorPreview,
		GamePreview,
		GameRPC,
		Inactive,
	};
}

class ULevel : public UObject
{
	DECLARE_HEADLESS_CLASS(ULevel, UObject)

public:
	TArray<TObjectPtr<AActor>> Actors;
};

class UWorld : public UObject
{
	DECLARE_HEADLESS_CLASS(UWorld, UObject)

public:
	// Makes a world in its own package, with a persistent level.
	static UWorld* CreateWorld(EWorldType::Type InWorldType, const TCHAR* WorldName);

	// Spawns an actor of the class with that object name (a unique one when none); null when the name is taken.
	AActor* SpawnActor(UClass* Class, FName Name = NAME_None);
	const TArray<TObjectPtr<AActor>>& GetActors() const { return PersistentLevel->Actors; }
	ULevel* GetCurrentLevel() const { return PersistentLevel; }

	EWorldType::Type WorldType = EWorldType::None;
	ULevel* PersistentLevel = nullptr;
};
