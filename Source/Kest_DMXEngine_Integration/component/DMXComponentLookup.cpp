#include "component/DMXComponentLookup.h"

#include "Editor.h"
#include "Editor/EditorEngine.h"
#include "Engine/World.h"
#include "GameFramework/Actor.h"
#include "Game/DMXComponent.h"
#include "host/VorLuaActor.h"

AActor* FindEditorActorByNameOrLabel(const FString& NameOrLabel)
{
	if (GEditor == nullptr)
	{
		return nullptr;
	}
	UWorld* World = GEditor->GetEditorWorldContext(false).World();
	if (World == nullptr || NameOrLabel.IsEmpty())
	{
		return nullptr;
	}
	return VorLuaActor::FindByNameOrLabel(World, NameOrLabel);
}

UDMXComponent* FindDMXComponentByName(AActor* Actor, const FString& Name)
{
	if (Actor == nullptr)
	{
		return nullptr;
	}
	TArray<UDMXComponent*> Components;
	Actor->GetComponents(Components);
	for (UDMXComponent* Component : Components)
	{
		if (Component == nullptr)
		{
			continue;
		}
		if (Name.IsEmpty() || Component->GetName() == Name)
		{
			return Component;
		}
	}
	return nullptr;
}
