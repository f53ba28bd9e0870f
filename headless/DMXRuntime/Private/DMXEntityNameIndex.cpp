#include "DMXEntityNameIndex.h"

#include <algorithm>
#include "DMXRuntimeUtils.h"
#include "DMXUniqueNameGenerator.h"
#include "Library/DMXEntity.h"
#include "Library/DMXLibrary.h"

void FDMXEntityNameIndex::Add(UDMXEntity* Entity)
{
	if (!bValid || !Entity)
	{
		return;
	}
	Unsynced.push_back(Entity);
	Indexed[Entity] = FIndexedEntity{Entity->GetClass(), Entity->GetDisplayName()};
	AddName(Entity->GetClass(), Entity->GetDisplayName());
}

void FDMXEntityNameIndex::Remove(UDMXEntity* Entity)
{
	const auto Found = Indexed.find(Entity);
	if (!bValid || Found == Indexed.end())
	{
		return;
	}
	RemoveName(Found->second.Class, Found->second.Name);
	Indexed.erase(Found);
}

void FDMXEntityNameIndex::Update(UDMXEntity* Entity)
{
	const auto Found = Indexed.find(Entity);
	if (!bValid || Found == Indexed.end() || Found->second.Name.Equals(Entity->GetDisplayName()))
	{
		return;
	}
	RemoveName(Found->second.Class, Found->second.Name);
	Found->second.Name = Entity->GetDisplayName();
	AddName(Found->second.Class, Found->second.Name);
}

void FDMXEntityNameIndex::Invalidate()
{
	bValid = false;
	Indexed.clear();
	NamesByClass.clear();
	Unsynced.clear();
	CounterHints.clear();
}

void FDMXEntityNameIndex::Sync(const UDMXLibrary& Library)
{
	if (!bValid)
	{
		for (UDMXEntity* Entity : Library.GetEntities())
		{
			if (Entity)
			{
				Indexed[Entity] = FIndexedEntity{Entity->GetClass(), Entity->GetDisplayName()};
				AddName(Entity->GetClass(), Entity->GetDisplayName());
			}
		}
		bValid = true;
		return;
	}
	const std::vector<UDMXEntity*> Registered = std::move(Unsynced);
	Unsynced.clear();
	for (UDMXEntity* Entity : Registered)
	{
		Update(Entity);
	}
}

void FDMXEntityNameIndex::AddName(const UClass* Class, const FString& Name)
{
	++NamesByClass[Class][Name];
}

void FDMXEntityNameIndex::RemoveName(const UClass* Class, const FString& Name)
{
	FNameCounts& Names = NamesByClass[Class];
	const auto Found = Names.find(Name);
	if (Found != Names.end() && --Found->second <= 0)
	{
		Names.erase(Found);
	}
	// The name is free again, so no counter may skip past it.
	FString Stem;
	int32 Index = 0;
	FDMXRuntimeUtils::GetNameAndIndexFromString(Name, Stem, Index);
	for (auto& [QueriedClass, Hints] : CounterHints)
	{
		const auto Hint = Hints.find(Stem);
		if (Hint != Hints.end() && Index > 0)
		{
			Hint->second = std::min<int64>(Hint->second, Index);
		}
	}
}

bool FDMXEntityNameIndex::Contains(const UClass* EntityClass, const FString& Name) const
{
	for (const auto& [Class, Names] : NamesByClass)
	{
		if (Class && Class->IsChildOf(EntityClass) && Names.count(Name) != 0)
		{
			return true;
		}
	}
	return false;
}

FString FDMXEntityNameIndex::FindUniqueName(const UDMXLibrary& Library, const UClass* EntityClass, const FString& BaseName)
{
	Sync(Library);
	return UE::DMX::Private::GenerateUniqueName(
		[this, EntityClass](const FString& Name) { return Contains(EntityClass, Name); },
		[this, EntityClass](const FString& Stem) -> int64& { return CounterHints[EntityClass].try_emplace(Stem, 1).first->second; },
		BaseName);
}
