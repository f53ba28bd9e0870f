#include "Library/DMXEntityReference.h"

#include "Library/DMXEntityFixturePatch.h"
#include "Library/DMXEntityFixtureType.h"
#include "Library/DMXLibrary.h"

FDMXEntityReference::FDMXEntityReference()
	: DMXLibrary(nullptr)
	, bDisplayLibraryPicker(true)
	, EntityId(0, 0, 0, 0)
{
}

FDMXEntityReference::FDMXEntityReference(UDMXEntity* InEntity)
	: FDMXEntityReference()
{
	SetEntity(InEntity);
}

void FDMXEntityReference::SetEntity(UDMXEntity* NewEntity)
{
	if (NewEntity)
	{
		DMXLibrary = NewEntity->GetParentLibrary();
		EntityId = NewEntity->GetID();
		EntityType = NewEntity->GetClass();
		CachedEntity = NewEntity;
	}
	else
	{
		if (EntityId.IsValid())
		{
			EntityId.Invalidate();
		}
		CachedEntity.Reset();
	}
}

void FDMXEntityReference::SerializeHeadlessState(FHeadlessStateArchive& Ar)
{
	Ar << DMXLibrary << bDisplayLibraryPicker << EntityType << EntityId;
	if (Ar.IsLoading())
	{
		CachedEntity.Reset();
	}
}

UDMXEntity* FDMXEntityReference::GetEntity() const
{
	if (UDMXEntity* Entity = CachedEntity.Get())
	{
		return Entity;
	}

	if (DMXLibrary && EntityId.IsValid())
	{
		UDMXEntity* Entity = DMXLibrary->FindEntity(EntityId);
		if (Entity && Entity->GetClass()->IsChildOf(EntityType))
		{
			CachedEntity = Entity;
			return Entity;
		}
	}
	return nullptr;
}

bool FDMXEntityReference::operator==(const FDMXEntityReference& Other) const
{
	return DMXLibrary == Other.DMXLibrary && EntityId == Other.EntityId;
}

FDMXEntityFixtureTypeRef::FDMXEntityFixtureTypeRef()
{
	EntityType = UDMXEntityFixtureType::StaticClass();
}

FDMXEntityFixtureTypeRef::FDMXEntityFixtureTypeRef(UDMXEntityFixtureType* InFixtureType)
	: FDMXEntityReference(InFixtureType)
{
}

UDMXEntityFixtureType* FDMXEntityFixtureTypeRef::GetFixtureType() const
{
	return Cast<UDMXEntityFixtureType>(GetEntity());
}

FDMXEntityFixturePatchRef::FDMXEntityFixturePatchRef()
{
	EntityType = UDMXEntityFixturePatch::StaticClass();
}

FDMXEntityFixturePatchRef::FDMXEntityFixturePatchRef(UDMXEntityFixturePatch* InFixturePatch)
	: FDMXEntityReference(InFixturePatch)
{
}

UDMXEntityFixturePatch* FDMXEntityFixturePatchRef::GetFixturePatch() const
{
	return Cast<UDMXEntityFixturePatch>(GetEntity());
}
