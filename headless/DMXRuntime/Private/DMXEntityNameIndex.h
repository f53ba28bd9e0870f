// The display names of a library's entities by class, so that a unique name for a new entity is
// found without listing every entity. It answers exactly what a walk over the library's entities
// would: names compare ignoring case, and a class matches its subclasses.
//
// Kept up to date by the library (registration, removal, restored state) and by UDMXEntity::SetName.
// A name written straight into an entity's Name field is seen if the entity registered since the
// last lookup (readers of saved libraries set it right after creation); anything else must go
// through SetName.
#pragma once

#include <unordered_map>
#include <vector>
#include "CoreMinimal.h"

class UClass;
class UDMXEntity;
class UDMXLibrary;

class FDMXEntityNameIndex
{
public:
	void Add(UDMXEntity* Entity);
	void Remove(UDMXEntity* Entity);
	// After the entity's display name changed.
	void Update(UDMXEntity* Entity);
	// After the library's entities were replaced wholesale (undo, redo): rebuilt on the next lookup.
	void Invalidate();

	// As FDMXRuntimeUtils::FindUniqueEntityName on the library.
	FString FindUniqueName(const UDMXLibrary& Library, const UClass* EntityClass, const FString& BaseName);

private:
	struct FIgnoreCaseHash
	{
		size_t operator()(const FString& Text) const { return GetTypeHash(Text); }
	};
	using FNameCounts = std::unordered_map<FString, int32, FIgnoreCaseHash>;
	struct FIndexedEntity
	{
		const UClass* Class = nullptr;
		FString Name;
	};

	void Sync(const UDMXLibrary& Library);
	void AddName(const UClass* Class, const FString& Name);
	void RemoveName(const UClass* Class, const FString& Name);
	bool Contains(const UClass* EntityClass, const FString& Name) const;

	bool bValid = false;
	std::unordered_map<const UDMXEntity*, FIndexedEntity> Indexed;
	std::unordered_map<const UClass*, FNameCounts> NamesByClass;
	// Registered since the last lookup: their names are read again before the next one.
	std::vector<UDMXEntity*> Unsynced;
	// Per class asked for and stem: every "<stem>_<n>" with 1 <= n < the hint is taken.
	std::unordered_map<const UClass*, std::unordered_map<FString, int64, FIgnoreCaseHash>> CounterHints;
};
