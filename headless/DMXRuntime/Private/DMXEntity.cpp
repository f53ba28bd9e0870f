#include "Library/DMXEntity.h"

#include "Library/DMXLibrary.h"
#include "UObject/UObjectGlobals.h"

IMPLEMENT_HEADLESS_ABSTRACT_CLASS(UDMXEntity, UDMXObjectBase, "DMXEntity")

UDMXEntity::UDMXEntity()
	: Id(FGuid::NewGuid())
{
}

void UDMXEntity::SerializeHeadlessState(FHeadlessStateArchive& Ar)
{
	Super::SerializeHeadlessState(Ar);
	Ar << Name << ParentLibrary << Id;
	if (Ar.IsLoading())
	{
		if (UDMXLibrary* Library = Cast<UDMXLibrary>(GetOuter()))
		{
			Library->HandleEntityStateRestored();
		}
	}
}

void UDMXEntity::PostInitProperties()
{
	Super::PostInitProperties();

	if (UDMXLibrary* Library = Cast<UDMXLibrary>(GetOuter()))
	{
		ParentLibrary = Library;
		Library->RegisterEntity(this);
	}
	else if (!HasAnyFlags(RF_ClassDefaultObject | RF_ArchetypeObject))
	{
		// As in the engine, an entity outside a library is a fatal error.
		::UE::Headless::ReportCheckFailure("DMX entities must be created with a DMX library as their outer", __FILE__, __LINE__);
	}
}

void UDMXEntity::SetName(const FString& InNewName)
{
	const FName UniqueObjectName = MakeUniqueObjectName(GetOuter(), UDMXEntity::StaticClass(), FName(InNewName));
	Rename(*UniqueObjectName.ToString());

	Name = InNewName;
	if (UDMXLibrary* Library = Cast<UDMXLibrary>(GetOuter()))
	{
		Library->HandleEntityNameChanged(this);
	}
}

void UDMXEntity::Destroy()
{
	if (UDMXLibrary* Library = ParentLibrary.Get())
	{
		Library->UnregisterEntity(this);
		ParentLibrary.Reset();
		Id = FGuid();
		SetName(TEXT("Destroyed_Entity"));
	}
}

void UDMXEntity::SetParentLibrary(UDMXLibrary* InParent)
{
	ParentLibrary = InParent;
}

UDMXLibrary* UDMXEntity::GetParentLibrary() const
{
	return ParentLibrary.Get();
}

void UDMXEntity::RefreshID()
{
	Id = FGuid::NewGuid();
}

void UDMXEntity::ReplicateID(UDMXEntity* Other)
{
	if (Other)
	{
		Id = Other->Id;
	}
}
