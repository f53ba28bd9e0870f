#include "Library/DMXLibrary.h"

#include "DMXEntityNameIndex.h"

IMPLEMENT_HEADLESS_CLASS(UDMXLibrary, UDMXObjectBase, "DMXLibrary")

UDMXLibrary::UDMXLibrary()
	: NameIndex(std::make_unique<FDMXEntityNameIndex>())
{
}

UDMXLibrary::~UDMXLibrary() = default;

void UDMXLibrary::SerializeHeadlessState(FHeadlessStateArchive& Ar)
{
	Super::SerializeHeadlessState(Ar);
	Ar << Entities << LastAddedEntity;
	if (Ar.IsLoading())
	{
		NameIndex->Invalidate();
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
	NameIndex->Invalidate();
}

TArray<UDMXEntity*> UDMXLibrary::GetEntitiesOfType(TSubclassOf<UDMXEntity> InEntityClass) const
{
	TArray<UDMXEntity*> Result;
	for (UDMXEntity* Entity : Entities)
	{
		if (Entity && Entity->IsA(InEntityClass))
		{
			Result.Add(Entity);
		}
	}
	return Result;
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

	Entities.RemoveAt(OldIndex);
	const int32 TargetIndex = FMath::Min(NewIndex > OldIndex ? NewIndex - 1 : NewIndex, Entities.Num());
	Entities.Insert(InEntity, TargetIndex);
}

void UDMXLibrary::RegisterEntity(UDMXEntity* Entity)
{
	if (!ensureAlwaysMsgf(Entity && !Entities.Contains(Entity), TEXT("Entity is null or already registered with the library")))
	{
		return;
	}

	Entities.Add(Entity);
	LastAddedEntity = Entity;
	NameIndex->Add(Entity);
	GetOnEntitiesAdded().Broadcast(this, TArray<UDMXEntity*>{Entity});
}

void UDMXLibrary::UnregisterEntity(UDMXEntity* Entity)
{
	if (Entities.Remove(Entity) > 0)
	{
		NameIndex->Remove(Entity);
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
