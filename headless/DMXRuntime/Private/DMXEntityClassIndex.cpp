#include "DMXEntityClassIndex.h"

#include "Library/DMXEntity.h"
#include "Library/DMXEntityFixturePatch.h"

void FDMXEntityClassIndex::Build(const TArray<UDMXEntity*>& Entities)
{
	Members.clear();
	ListsByClass.clear();
	for (UDMXEntity* Entity : Entities)
	{
		Members.insert(Entity);
	}
	bValid = true;
	BuildFixtureIDs(Entities);
}

void FDMXEntityClassIndex::BuildFixtureIDs(const TArray<UDMXEntity*>& Entities)
{
	FixtureIDCounts.clear();
	for (UDMXEntity* Entity : Entities)
	{
		if (const UDMXEntityFixturePatch* FixturePatch = Cast<UDMXEntityFixturePatch>(Entity))
		{
			AddFixtureID(FixturePatch->GetFixtureID());
		}
	}
	bFixtureIDsValid = true;
}

void FDMXEntityClassIndex::Invalidate()
{
	bValid = false;
	bFixtureIDsValid = false;
	Members.clear();
	ListsByClass.clear();
	FixtureIDCounts.clear();
}

void FDMXEntityClassIndex::InvalidateFixtureIDs()
{
	bFixtureIDsValid = false;
	FixtureIDCounts.clear();
}

void FDMXEntityClassIndex::Add(UDMXEntity* Entity)
{
	if (!bValid)
	{
		return;
	}
	Members.insert(Entity);
	for (auto& [Class, List] : ListsByClass)
	{
		if (Entity && Entity->IsA(Class))
		{
			List->Add(Entity);
		}
	}
	const UDMXEntityFixturePatch* FixturePatch = Cast<UDMXEntityFixturePatch>(Entity);
	if (FixturePatch && bFixtureIDsValid)
	{
		AddFixtureID(FixturePatch->GetFixtureID());
	}
}

void FDMXEntityClassIndex::Remove(UDMXEntity* Entity)
{
	if (!bValid)
	{
		return;
	}
	Members.erase(Entity);
	for (auto& [Class, List] : ListsByClass)
	{
		List->Remove(Entity);
	}
	const UDMXEntityFixturePatch* FixturePatch = Cast<UDMXEntityFixturePatch>(Entity);
	if (FixturePatch && bFixtureIDsValid)
	{
		RemoveFixtureID(FixturePatch->GetFixtureID());
	}
}

void FDMXEntityClassIndex::UpdateFixtureID(UDMXEntity* FixturePatch, int32 OldID, int32 NewID)
{
	if (bValid && bFixtureIDsValid && Members.count(FixturePatch) > 0)
	{
		RemoveFixtureID(OldID);
		AddFixtureID(NewID);
	}
}

bool FDMXEntityClassIndex::Contains(const TArray<UDMXEntity*>& Entities, const UDMXEntity* Entity)
{
	if (!bValid)
	{
		Build(Entities);
	}
	return Members.count(Entity) > 0;
}

const TArray<UDMXEntity*>& FDMXEntityClassIndex::GetEntitiesOfClass(const TArray<UDMXEntity*>& Entities, const UClass* Class)
{
	if (!bValid)
	{
		Build(Entities);
	}
	for (const auto& [IndexedClass, List] : ListsByClass)
	{
		if (IndexedClass == Class)
		{
			return *List;
		}
	}
	auto List = std::make_unique<TArray<UDMXEntity*>>();
	for (UDMXEntity* Entity : Entities)
	{
		if (Entity && Entity->IsA(Class))
		{
			List->Add(Entity);
		}
	}
	ListsByClass.emplace_back(Class, std::move(List));
	return *ListsByClass.back().second;
}

void FDMXEntityClassIndex::EnsureFixtureIDs(const TArray<UDMXEntity*>& Entities)
{
	if (!bValid)
	{
		Build(Entities);
	}
	else if (!bFixtureIDsValid)
	{
		BuildFixtureIDs(Entities);
	}
}

bool FDMXEntityClassIndex::GetExcludedID(const UDMXEntity* Excluded, int32& OutID) const
{
	const UDMXEntityFixturePatch* FixturePatch = Cast<UDMXEntityFixturePatch>(Excluded);
	if (FixturePatch && Members.count(Excluded) > 0)
	{
		OutID = FixturePatch->GetFixtureID();
		return true;
	}
	return false;
}

int32 FDMXEntityClassIndex::CountFixtureID(const TArray<UDMXEntity*>& Entities, int32 FixtureID, const UDMXEntity* Excluded)
{
	EnsureFixtureIDs(Entities);
	const auto Found = FixtureIDCounts.find(FixtureID);
	int32 ExcludedID = 0;
	const bool bExcluded = GetExcludedID(Excluded, ExcludedID) && ExcludedID == FixtureID;
	return (Found == FixtureIDCounts.end() ? 0 : Found->second) - (bExcluded ? 1 : 0);
}

bool FDMXEntityClassIndex::FindHighestFixtureID(const TArray<UDMXEntity*>& Entities, int32& OutHighestID, const UDMXEntity* Excluded)
{
	EnsureFixtureIDs(Entities);
	int32 ExcludedID = 0;
	const bool bExcluded = GetExcludedID(Excluded, ExcludedID);
	// Highest first; one holder of the excluded patch's ID does not count.
	for (auto It = FixtureIDCounts.rbegin(); It != FixtureIDCounts.rend(); ++It)
	{
		if (It->second - (bExcluded && It->first == ExcludedID ? 1 : 0) > 0)
		{
			OutHighestID = It->first;
			return true;
		}
	}
	return false;
}

void FDMXEntityClassIndex::AddFixtureID(int32 FixtureID)
{
	++FixtureIDCounts[FixtureID];
}

void FDMXEntityClassIndex::RemoveFixtureID(int32 FixtureID)
{
	const auto Found = FixtureIDCounts.find(FixtureID);
	if (Found != FixtureIDCounts.end() && --Found->second <= 0)
	{
		FixtureIDCounts.erase(Found);
	}
}
