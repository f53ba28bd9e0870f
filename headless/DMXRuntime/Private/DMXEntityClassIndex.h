// A library's entities by class, so that listing the fixture types of a library with thousands of
// patches, checking whether an entity is registered, and finding the fixture IDs in use do not walk
// every entity. It answers exactly what a walk over the library's entities in order would.
//
// Kept up to date by the library (registration, removal) and by fixture patches whose ID changes;
// reordering entities and restoring the library (undo, redo) drop it, restoring an entity drops the
// fixture IDs, and the next question rebuilds what was dropped. A list answered stays where it is
// until the library's entities change.
#pragma once

#include <map>
#include <memory>
#include <unordered_set>
#include <vector>
#include "CoreMinimal.h"

class UClass;
class UDMXEntity;

class FDMXEntityClassIndex
{
public:
	void Add(UDMXEntity* Entity);
	void Remove(UDMXEntity* Entity);
	void Invalidate();
	void InvalidateFixtureIDs();
	// A fixture patch of the library changed its fixture ID from OldID to its present one.
	void UpdateFixtureID(UDMXEntity* FixturePatch, int32 OldID, int32 NewID);

	bool Contains(const TArray<UDMXEntity*>& Entities, const UDMXEntity* Entity);
	// The entities of the class or a subclass, in library order.
	const TArray<UDMXEntity*>& GetEntitiesOfClass(const TArray<UDMXEntity*>& Entities, const UClass* Class);
	// How many fixture patches hold the ID, and the highest ID any holds (false when there is none);
	// the patch Excluded does not count when it is a member.
	int32 CountFixtureID(const TArray<UDMXEntity*>& Entities, int32 FixtureID, const UDMXEntity* Excluded);
	bool FindHighestFixtureID(const TArray<UDMXEntity*>& Entities, int32& OutHighestID, const UDMXEntity* Excluded);

private:
	void Build(const TArray<UDMXEntity*>& Entities);
	void BuildFixtureIDs(const TArray<UDMXEntity*>& Entities);
	void EnsureFixtureIDs(const TArray<UDMXEntity*>& Entities);
	void AddFixtureID(int32 FixtureID);
	void RemoveFixtureID(int32 FixtureID);
	// The fixture ID of Excluded when it is an indexed patch, so that one holder of it is left out.
	bool GetExcludedID(const UDMXEntity* Excluded, int32& OutID) const;

	bool bValid = false;
	bool bFixtureIDsValid = false;
	std::unordered_set<const UDMXEntity*> Members;
	std::vector<std::pair<const UClass*, std::unique_ptr<TArray<UDMXEntity*>>>> ListsByClass;
	// Fixture ID -> number of patches holding it.
	std::map<int32, int32> FixtureIDCounts;
};
