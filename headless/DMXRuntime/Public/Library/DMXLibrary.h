// A DMX library asset: holds the fixture types and fixture patches in registration order. The
// library does not make names unique; FDMXRuntimeUtils does that for its callers.
#pragma once

#include <functional>
#include <memory>
#include <vector>
#include "CoreMinimal.h"
#include "Library/DMXObjectBase.h"
#include "Library/DMXEntity.h"
#include "UObject/WeakObjectPtrTemplates.h"

class UDMXLibrary;
class FDMXEntityNameIndex;
class FDMXEntityClassIndex;

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
		const TArray<UDMXEntity*>& OfClass = GetIndexedEntitiesOfClass(EntityType::StaticClass());
		TArray<EntityType*> Result;
		Result.Reserve(OfClass.Num());
		for (UDMXEntity* Entity : OfClass)
		{
			Result.Add(static_cast<EntityType*>(Entity));
		}
		return Result;
	}

	void ForEachEntityOfType(TSubclassOf<UDMXEntity> InEntityClass, std::function<void(UDMXEntity*)> Predicate) const;
	// Stops at the first entity for which the predicate answers false.
	void ForEachEntityOfTypeWithBreak(TSubclassOf<UDMXEntity> InEntityClass, std::function<bool(UDMXEntity*)> Predicate) const;

	// As the engine's, these walk the library's own list: adding, removing or reordering entities
	// from the predicate fails the engine's check that an array does not change while it is walked.
	template <typename EntityType, typename PredicateType>
	void ForEachEntityOfType(PredicateType&& Predicate) const
	{
		ForEachEntityOfTypeWithBreak<EntityType>([&Predicate](EntityType* Entity)
		{
			Predicate(Entity);
			return true;
		});
	}
	template <typename EntityType, typename PredicateType>
	void ForEachEntityOfTypeWithBreak(PredicateType&& Predicate) const
	{
		const TArray<UDMXEntity*>& OfClass = GetIndexedEntitiesOfClass(EntityType::StaticClass());
		const uint64 Serial = EntitiesSerial;
		for (int32 Index = 0; Index < OfClass.Num(); ++Index)
		{
			if (!Predicate(static_cast<EntityType*>(OfClass[Index])))
			{
				break;
			}
			checkf(Serial == EntitiesSerial, TEXT("Array has changed during ranged-for iteration!"));
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
	// Headless: the entities of the class or a subclass in library order, from an index kept per
	// class (valid until the library's entities change).
	const TArray<UDMXEntity*>& GetIndexedEntitiesOfClass(const UClass* EntityClass) const;
	// Headless: told by a fixture patch of this library whose fixture ID changed; and what the
	// fixture IDs of the library's patches are, without a walk over every patch.
	void HandleFixtureIDChanged(UDMXEntity* FixturePatch, int32 OldID, int32 NewID);
	// Both leave out the patch Excluded (when it is one of the library's).
	int32 CountFixturePatchesWithID(int32 FixtureID, const UDMXEntity* Excluded) const;
	// The highest fixture ID a patch holds; false when no patch counts.
	bool FindHighestFixtureID(int32& OutHighestID, const UDMXEntity* Excluded) const;

private:
	UPROPERTY()
	TArray<UDMXEntity*> Entities;

	TWeakObjectPtr<UDMXEntity> LastAddedEntity;

	std::unique_ptr<FDMXEntityNameIndex> NameIndex;
	std::unique_ptr<FDMXEntityClassIndex> ClassIndex;

	// Headless: how the undo buffer keeps the entity list. Adds only append to a log that saved
	// states share, so each saved state is the log and a length instead of a copy of every entity;
	// any other change to the list starts a new log at the next save.
	std::shared_ptr<std::vector<UDMXEntity*>> EntityLog;
	// Headless: counts every change of the entity list, for the walks above.
	uint64 EntitiesSerial = 0;
	bool bEntityLogIsCurrent = false;
};
