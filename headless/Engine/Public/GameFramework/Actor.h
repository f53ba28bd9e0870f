#pragma once

#include "UObject/Object.h"
#include "UObject/ObjectPtr.h"
#include "Components/ActorComponent.h"

class UWorld;
class ULevel;

class AActor : public UObject
{
	DECLARE_HEADLESS_CLASS(AActor, UObject)

public:
	UWorld* GetWorld() const;
	ULevel* GetLevel() const;

	// The label shown in the editor. An empty label is made on request from the class's default label
	// and the number of the actor's name ("Actor" for "Spot", "Actor2" for "Spot_2") and kept.
	const FString& GetActorLabel(bool bCreateIfNone = true) const;
	void SetActorLabel(const FString& NewActorLabel, bool bMarkDirty = true);
	FString GetDefaultActorLabel() const;

	template <class ComponentType, class AllocatorType = void>
	void GetComponents(TArray<ComponentType*, AllocatorType>& OutComponents, bool bIncludeFromChildActors = false) const
	{
		(void)bIncludeFromChildActors;
		OutComponents.Reset();
		for (UActorComponent* Component : OwnedComponents)
		{
			if (ComponentType* Typed = Cast<ComponentType>(Component))
			{
				OutComponents.Add(Typed);
			}
		}
	}
	const TArray<UActorComponent*>& GetComponents() const { return OwnedComponents; }

	void AddInstanceComponent(UActorComponent* Component);
	void RemoveInstanceComponent(UActorComponent* Component);
	const TArray<UActorComponent*>& GetInstanceComponents() const { return InstanceComponents; }
	// Components created with this actor as outer become owned components.
	void AddOwnedComponent(UActorComponent* Component);
	void RemoveOwnedComponent(UActorComponent* Component);

private:
	mutable FString ActorLabel;
	TArray<UActorComponent*> OwnedComponents;
	TArray<UActorComponent*> InstanceComponents;
};
