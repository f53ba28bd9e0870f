#include "KestDMXCheckLookup.h"

#include "Misc/PackageName.h"
#include "UObject/HeadlessObjectRegistry.h"
#include "UObject/Package.h"
#include "UObject/UObjectGlobals.h"

std::string MakeCheckedObjectPath(const std::string& Path)
{
	if (Path.find('.') != std::string::npos)
	{
		return Path;
	}
	return Path + "." + ToUTF8(FPackageName::GetShortName(ToEngine(Path)));
}

UDMXLibrary* FindLoadedLibrary(const std::string& Path)
{
	if (Path.empty())
	{
		return nullptr;
	}
	const std::string ObjectPath = MakeCheckedObjectPath(Path);
	for (UDMXLibrary* Library : GetLoadedLibraries())
	{
		if (Library->GetPathName().Equals(ToEngine(ObjectPath), ESearchCase::IgnoreCase))
		{
			return Library;
		}
	}
	return nullptr;
}

std::vector<UDMXLibrary*> GetLoadedLibraries()
{
	std::vector<UDMXLibrary*> Libraries;
	FHeadlessObjectRegistry::Get().ForEachObject([&Libraries](UObject* Object)
	{
		UDMXLibrary* Library = Cast<UDMXLibrary>(Object);
		if (IsValid(Library) && !Library->IsTemplate())
		{
			Libraries.push_back(Library);
		}
	});
	return Libraries;
}

std::vector<std::string> GetLoadedLibraryPaths()
{
	std::vector<std::string> Paths;
	for (UDMXLibrary* Library : GetLoadedLibraries())
	{
		Paths.push_back(ToUTF8(Library->GetOutermost()->GetName()));
	}
	return Paths;
}

std::string DescribePatchPlace(const UDMXEntityFixturePatch* Patch)
{
	const int32 Start = Patch->GetStartingChannel();
	const int32 Span = Patch->GetChannelSpan();
	std::string Place = "universe " + std::to_string(Patch->GetUniverseID());
	if (Span <= 0)
	{
		Place += " at channel " + std::to_string(Start) + " with no channels";
	}
	else if (Span == 1)
	{
		Place += " at channel " + std::to_string(Start);
	}
	else
	{
		Place += " at channels " + std::to_string(Start) + "-" + std::to_string(Patch->GetEndingChannel());
	}
	const UDMXEntityFixtureType* FixtureType = Patch->GetFixtureType();
	if (FixtureType == nullptr)
	{
		return Place + " (no fixture type)";
	}
	const int32 ModeIndex = Patch->GetActiveModeIndex();
	Place += " (mode " + std::to_string(ModeIndex);
	if (FixtureType->Modes.IsValidIndex(ModeIndex))
	{
		Place += " \"" + ToUTF8(FixtureType->Modes[ModeIndex].ModeName) + "\"";
	}
	return Place + " of \"" + ToUTF8(FixtureType->Name) + "\")";
}

std::string GetEntityKey(const UDMXEntity* Entity)
{
	return ToUTF8(Entity->GetID().ToString());
}
