// A DMX library asset: holds the fixture types and fixture patches in registration order. The
// library does not make names unique; FDMXRuntimeUtils does that for its callers.
#pragma once

#include <functional>
#include <memory>
#include "CoreMinimal.h"
#include "Library/DMXObjectBase.h"
#include "Library/DMXEntity.h"
#include "UObject/WeakObjectPtrTemplates.h"

class UDMXLibrary;
class FDMXEntityNameIndex;

// Broadcast with the library and the entities that were added to or removed from it.
typedef TMulticastDelegate<UDMXLibrary*, TArray<UDMXEntity*>> FDMXOnEntityArrayChangedDelegate;

UCLASS(BlueprintType, Blueprintable, Config = DMXEditor, AutoExpandCategories = DMX)
class DMXRUNTIME_API UDMXLibrary : public UDMXObjectBase
{
	DECLARE_HEADLESS_CLASS(UDMXLibrary, UDMXObjectBase)

public:
	UDMXLibrary();
	virtual ~UDMXLibrary() override;

	// All entities, fixture types and patches alike, in the order they were registered.
	const TArray<UDMXEntity*>& GetEntities() const { return Entities; }

	// The entities of the class (or a subclass), in library order.
	TArray<UDMXEntity*> GetEntitiesOfType(TSubclassOf<UDMXEntity> InEntityClass) const;

	template <typename EntityType>
	TArray<EntityType*> GetEntitiesTypeCast() const
	{
		TArray<EntityType*> Result;
		for (UDMXEntity* Entity : Entities)
		{
			if (EntityType* TypedEntity = Cast<EntityType>(Entity))
			{
				Result.Add(TypedEntity);
			}
		}
		return Result;
	}

	void ForEachEntityOfType(TSubclassOf<UDMXEntity> InEntityClass, std::function<void(UDMXEntity*)> Predicate) const;
	// Stops at the first entity for which the predicate answers false.
	void ForEachEntityOfTypeWithBreak(TSubclassOf<UDMXEntity> InEntityClass, std::function<bool(UDMXEntity*)> Predicate) const;

	template <typename EntityType, typename PredicateType>
	void ForEachEntityOfType(PredicateType&& Predicate) const
	{
		for (EntityType* Entity : GetEntitiesTypeCast<EntityType>())
		{
			Predicate(Entity);
		}
	}
	template <typename EntityType, typename PredicateType>
	void ForEachEntityOfTypeWithBreak(PredicateType&& Predicate) const
	{
		for (EntityType* Entity : GetEntitiesTypeCast<EntityType>())
		{
			if (!Predicate(Entity))
			{
				break;
			}
		}
	}

	// The first entity of any class whose display name equals the text, case-sensitively.
	UDMXEntity* FindEntity(const FString& InSearchName) const;
	// The entity with the id.
	UDMXEntity* FindEntity(const FGuid& Id);

	int32 FindEntityIndex(UDMXEntity* InEntity) const;
	// Moves the entity in front of the entity now at NewIndex (past the end: to the end). Negative
	// indices, the entity's own index and the one after it change nothing.
	void SetEntityIndex(UDMXEntity* InEntity, const int32 NewIndex);

	// Appends the entity (a second registration of the same entity is refused with an ensure) and
	// broadcasts OnEntitiesAdded.
	void RegisterEntity(UDMXEntity* Entity);
	// Removes the entity and broadcasts OnEntitiesRemoved.
	void UnregisterEntity(UDMXEntity* Entity);

	static FDMXOnEntityArrayChangedDelegate& GetOnEntitiesAdded();
	static FDMXOnEntityArrayChangedDelegate& GetOnEntitiesRemoved();

	// Headless: FDMXRuntimeUtils::FindUniqueEntityName for this library, from an index of its entity
	// names instead of a walk over every entity.
	FString FindUniqueEntityName(const UClass* EntityClass, const FString& BaseName) const;
	// Headless: told by an entity of this library whose display name changed, or whose state an
	// undo or redo restored.
	void HandleEntityNameChanged(UDMXEntity* Entity);
	void HandleEntityStateRestored();

private:
	UPROPERTY()
	TArray<UDMXEntity*> Entities;

	TWeakObjectPtr<UDMXEntity> LastAddedEntity;

	std::unique_ptr<FDMXEntityNameIndex> NameIndex;
};
