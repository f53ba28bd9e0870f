#include "Library/DMXLibrary.h"

#include "DMXEntityClassIndex.h"
#include "DMXEntityNameIndex.h"

IMPLEMENT_HEADLESS_CLASS(UDMXLibrary, UDMXObjectBase, "DMXLibrary")

namespace
{
	// A saved entity list: the first Count entities of a log.
	struct FDMXEntityListState
	{
		std::shared_ptr<std::vector<UDMXEntity*>> Log;
		size_t Count = 0;
	};
}

UDMXLibrary::UDMXLibrary()
	: NameIndex(std::make_unique<FDMXEntityNameIndex>())
	, ClassIndex(std::make_unique<FDMXEntityClassIndex>())
{
}

UDMXLibrary::~UDMXLibrary() = default;

void UDMXLibrary::SerializeHeadlessState(FHeadlessStateArchive& Ar)
{
	Super::SerializeHeadlessState(Ar);
	FDMXEntityListState EntityList;
	if (Ar.IsSaving())
	{
		if (!bEntityLogIsCurrent || !EntityLog)
		{
			EntityLog = std::make_shared<std::vector<UDMXEntity*>>(Entities.begin(), Entities.end());
			bEntityLogIsCurrent = true;
		}
		EntityList = FDMXEntityListState{EntityLog, static_cast<size_t>(Entities.Num())};
	}
	Ar << EntityList << LastAddedEntity;
	if (Ar.IsLoading())
	{
		Entities = TArray<UDMXEntity*>(EntityList.Log->data(), static_cast<int32>(EntityList.Count));
		++EntitiesSerial;
		EntityLog = EntityList.Log;
		bEntityLogIsCurrent = EntityList.Count == EntityLog->size();
		NameIndex->Invalidate();
		ClassIndex->Invalidate();
	}
}

FString UDMXLibrary::FindUniqueEntityName(const UClass* EntityClass, const FString& BaseName) const
{
	return NameIndex->FindUniqueName(*this, EntityClass, BaseName);
}

void UDMXLibrary::HandleEntityNameChanged(UDMXEntity* Entity)
{
	NameIndex->Update(Entity);
}

void UDMXLibrary::HandleEntityStateRestored()
{
	// An entity's own state holds its fixture ID but not its place in the library.
	NameIndex->Invalidate();
	ClassIndex->InvalidateFixtureIDs();
}

const TArray<UDMXEntity*>& UDMXLibrary::GetIndexedEntitiesOfClass(const UClass* EntityClass) const
{
	return ClassIndex->GetEntitiesOfClass(Entities, EntityClass);
}

void UDMXLibrary::HandleFixtureIDChanged(UDMXEntity* FixturePatch, int32 OldID, int32 NewID)
{
	ClassIndex->UpdateFixtureID(FixturePatch, OldID, NewID);
}

int32 UDMXLibrary::CountFixturePatchesWithID(int32 FixtureID, const UDMXEntity* Excluded) const
{
	return ClassIndex->CountFixtureID(Entities, FixtureID, Excluded);
}

bool UDMXLibrary::FindHighestFixtureID(int32& OutHighestID, const UDMXEntity* Excluded) const
{
	return ClassIndex->FindHighestFixtureID(Entities, OutHighestID, Excluded);
}

TArray<UDMXEntity*> UDMXLibrary::GetEntitiesOfType(TSubclassOf<UDMXEntity> InEntityClass) const
{
	return GetIndexedEntitiesOfClass(InEntityClass);
}

void UDMXLibrary::ForEachEntityOfType(TSubclassOf<UDMXEntity> InEntityClass, std::function<void(UDMXEntity*)> Predicate) const
{
	for (UDMXEntity* Entity : GetEntitiesOfType(InEntityClass))
	{
		Predicate(Entity);
	}
}

void UDMXLibrary::ForEachEntityOfTypeWithBreak(TSubclassOf<UDMXEntity> InEntityClass, std::function<bool(UDMXEntity*)> Predicate) const
{
	for (UDMXEntity* Entity : GetEntitiesOfType(InEntityClass))
	{
		if (!Predicate(Entity))
		{
			break;
		}
	}
}

UDMXEntity* UDMXLibrary::FindEntity(const FString& InSearchName) const
{
	for (UDMXEntity* Entity : Entities)
	{
		if (Entity && Entity->GetDisplayName().Equals(InSearchName))
		{
			return Entity;
		}
	}
	return nullptr;
}

UDMXEntity* UDMXLibrary::FindEntity(const FGuid& Id)
{
	for (UDMXEntity* Entity : Entities)
	{
		if (Entity && Entity->GetID() == Id)
		{
			return Entity;
		}
	}
	return nullptr;
}

int32 UDMXLibrary::FindEntityIndex(UDMXEntity* InEntity) const
{
	return Entities.Find(InEntity);
}

void UDMXLibrary::SetEntityIndex(UDMXEntity* InEntity, const int32 NewIndex)
{
	if (NewIndex < 0)
	{
		return;
	}

	const int32 OldIndex = Entities.Find(InEntity);
	if (OldIndex == INDEX_NONE || NewIndex == OldIndex || NewIndex == OldIndex + 1)
	{
		return;
	}

	ClassIndex->Invalidate();
	bEntityLogIsCurrent = false;
	++EntitiesSerial;
	Entities.RemoveAt(OldIndex);
	const int32 TargetIndex = FMath::Min(NewIndex > OldIndex ? NewIndex - 1 : NewIndex, Entities.Num());
	Entities.Insert(InEntity, TargetIndex);
}

void UDMXLibrary::RegisterEntity(UDMXEntity* Entity)
{
	if (!ensureAlwaysMsgf(Entity && !ClassIndex->Contains(Entities, Entity), TEXT("Entity is null or already registered with the library")))
	{
		return;
	}

	Entities.Add(Entity);
	++EntitiesSerial;
	const bool bAppendToLog = bEntityLogIsCurrent && EntityLog->size() + 1 == static_cast<size_t>(Entities.Num());
	bEntityLogIsCurrent = false;
	if (bAppendToLog)
	{
		EntityLog->push_back(Entity);
		bEntityLogIsCurrent = true;
	}
	LastAddedEntity = Entity;
	NameIndex->Add(Entity);
	ClassIndex->Add(Entity);
	GetOnEntitiesAdded().Broadcast(this, TArray<UDMXEntity*>{Entity});
}

void UDMXLibrary::UnregisterEntity(UDMXEntity* Entity)
{
	if (Entities.Remove(Entity) > 0)
	{
		bEntityLogIsCurrent = false;
		++EntitiesSerial;
		NameIndex->Remove(Entity);
		ClassIndex->Remove(Entity);
		GetOnEntitiesRemoved().Broadcast(this, TArray<UDMXEntity*>{Entity});
	}
}

FDMXOnEntityArrayChangedDelegate& UDMXLibrary::GetOnEntitiesAdded()
{
	static FDMXOnEntityArrayChangedDelegate OnEntitiesAdded;
	return OnEntitiesAdded;
}

FDMXOnEntityArrayChangedDelegate& UDMXLibrary::GetOnEntitiesRemoved()
{
	static FDMXOnEntityArrayChangedDelegate OnEntitiesRemoved;
	return OnEntitiesRemoved;
}
