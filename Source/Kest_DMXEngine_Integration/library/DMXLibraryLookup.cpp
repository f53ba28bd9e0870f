#include "library/DMXLibraryLookup.h"

#include "Library/DMXEntityFixturePatch.h"
#include "Library/DMXEntityFixtureType.h"
#include "Library/DMXLibrary.h"
#include "Misc/PackageName.h"
#include "UObject/UObjectGlobals.h"

namespace
{
	template <typename EntityType>
	EntityType* FindEntityByName(const UDMXLibrary* Library, const FString& Name)
	{
		if (Library == nullptr)
		{
			return nullptr;
		}
		// Walks the library's list without copying it; nothing here can run Lua or change the library.
		EntityType* Found = nullptr;
		Library->ForEachEntityOfTypeWithBreak<EntityType>([&Name, &Found](EntityType* Entity)
		{
			if (Entity != nullptr && Entity->Name.Equals(Name, ESearchCase::IgnoreCase))
			{
				Found = Entity;
				return false;
			}
			return true;
		});
		return Found;
	}
}

UDMXLibrary* LoadDMXLibrary(const FString& Path)
{
	if (Path.IsEmpty())
	{
		return nullptr;
	}
	const FString ObjectPath = MakeLibraryObjectPath(Path);
	UObject* Loaded = StaticLoadObject(UDMXLibrary::StaticClass(), nullptr, *ObjectPath, {}, LOAD_None, nullptr, true, nullptr);
	return Cast<UDMXLibrary>(Loaded);
}

FString MakeLibraryObjectPath(const FString& Path)
{
	if (Path.Find(TEXT("."), ESearchCase::IgnoreCase, ESearchDir::FromStart) != INDEX_NONE)
	{
		return Path;
	}
	return Path + TEXT(".") + FPackageName::GetShortName(Path);
}

UDMXEntityFixtureType* FindFixtureTypeByName(const UDMXLibrary* Library, const FString& Name)
{
	return FindEntityByName<UDMXEntityFixtureType>(Library, Name);
}

UDMXEntityFixturePatch* FindFixturePatchByName(const UDMXLibrary* Library, const FString& Name)
{
	return FindEntityByName<UDMXEntityFixturePatch>(Library, Name);
}
