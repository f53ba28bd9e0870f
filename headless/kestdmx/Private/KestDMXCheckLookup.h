// Engine look-ups the check makes after a call, the way the module makes them (names ignoring
// case, the first match in library order), but quietly: they log nothing and load nothing new.
#pragma once

#include <string>
#include <vector>
#include "CoreMinimal.h"
#include "KestDMXText.h"
#include "Library/DMXEntityFixturePatch.h"
#include "Library/DMXEntityFixtureType.h"
#include "Library/DMXLibrary.h"

// The library at a package or object path, as the module completes it; null when it is not loaded.
UDMXLibrary* FindLoadedLibrary(const std::string& Path);
// The object path the module loads for a path: /Game/DMX/Stage gives /Game/DMX/Stage.Stage.
std::string MakeCheckedObjectPath(const std::string& Path);
// The package names of every DMX Library in memory.
std::vector<std::string> GetLoadedLibraryPaths();
// Every DMX Library in memory, in creation order.
std::vector<UDMXLibrary*> GetLoadedLibraries();

template <typename EntityType>
EntityType* FindEntityNamed(const UDMXLibrary* Library, const FString& Name)
{
	if (Library == nullptr)
	{
		return nullptr;
	}
	for (EntityType* Entity : Library->GetEntitiesTypeCast<EntityType>())
	{
		if (Entity != nullptr && Entity->Name.Equals(Name, ESearchCase::IgnoreCase))
		{
			return Entity;
		}
	}
	return nullptr;
}

template <typename EntityType>
std::vector<std::string> GetEntityNames(const UDMXLibrary* Library)
{
	std::vector<std::string> Names;
	if (Library != nullptr)
	{
		for (EntityType* Entity : Library->GetEntitiesTypeCast<EntityType>())
		{
			if (Entity != nullptr)
			{
				Names.push_back(ToUTF8(Entity->Name));
			}
		}
	}
	return Names;
}

// How many entities of the class carry the name (ignoring case).
template <typename EntityType>
int32 CountEntitiesNamed(const UDMXLibrary* Library, const FString& Name)
{
	int32 Count = 0;
	if (Library != nullptr)
	{
		for (EntityType* Entity : Library->GetEntitiesTypeCast<EntityType>())
		{
			Count += Entity != nullptr && Entity->Name.Equals(Name, ESearchCase::IgnoreCase) ? 1 : 0;
		}
	}
	return Count;
}

// The entity of the library with that id, when it is still one of the library's.
template <typename EntityType>
EntityType* FindEntityWithId(const UDMXLibrary* Library, const FGuid& Id)
{
	if (Library == nullptr)
	{
		return nullptr;
	}
	for (EntityType* Entity : Library->GetEntitiesTypeCast<EntityType>())
	{
		if (Entity != nullptr && Entity->GetID() == Id)
		{
			return Entity;
		}
	}
	return nullptr;
}

// "universe 1 at channels 1-3 (mode 0 "3ch" of "Par")", where a patch is now.
std::string DescribePatchPlace(const UDMXEntityFixturePatch* Patch);
// The id of an entity as the check keeps it: 32 hexadecimal digits.
std::string GetEntityKey(const UDMXEntity* Entity);
