// Where imported fixture types go and what they are called there: library paths made from
// manufacturer names (valid package names, as the editor requires of an asset it creates or saves)
// and fixture type names settled before anything is added.
#include "FixtureImport.h"

#include <algorithm>
#include <map>
#include <set>

namespace
{
	// Characters a long package name cannot hold, besides "/" between its parts.
	bool IsInvalidPackageCharacter(char Character)
	{
		const unsigned char Byte = static_cast<unsigned char>(Character);
		if (Byte < 0x20 || Byte == 0x7F)
		{
			return true;
		}
		for (const char Invalid : std::string("\\:*?\"<>|',.&!~@# /"))
		{
			if (Character == Invalid)
			{
				return true;
			}
		}
		return false;
	}
}

std::string MakePackageNamePart(const std::string& Text)
{
	std::string Part;
	for (const char Character : Text)
	{
		const char Made = IsInvalidPackageCharacter(Character) ? '_' : Character;
		if (Made != '_' || (!Part.empty() && Part.back() != '_'))
		{
			Part += Made;
		}
	}
	while (!Part.empty() && Part.back() == '_')
	{
		Part.pop_back();
	}
	return Part.empty() ? std::string("Fixtures") : Part;
}

std::string MakeManufacturerLibraryPath(const std::string& Manufacturer)
{
	return ImportLibraryFolder + MakePackageNamePart(Manufacturer);
}

bool IsValidImportLibraryPath(const std::string& Path, std::string& OutProblem)
{
	const std::string Root = "/Game/";
	if (Path.compare(0, Root.size(), Root) != 0 || Path.size() == Root.size())
	{
		OutProblem = "it is not a package path under /Game/ (such as /Game/DMX/Fixtures)";
		return false;
	}
	size_t PartStart = Root.size();
	while (PartStart <= Path.size())
	{
		const size_t PartEnd = std::min(Path.find('/', PartStart), Path.size());
		if (PartEnd == PartStart)
		{
			OutProblem = "it has an empty folder name or ends with /";
			return false;
		}
		for (size_t Index = PartStart; Index < PartEnd; ++Index)
		{
			if (IsInvalidPackageCharacter(Path[Index]))
			{
				OutProblem = "a package name cannot hold '" + Path.substr(Index, 1) + "'";
				return false;
			}
		}
		PartStart = PartEnd + 1;
	}
	return true;
}

void SettleFixtureTypeNames(std::vector<FImportFixtureType>& FixtureTypes, const FExistingTypeNames& GetExistingNames, std::vector<FImportNote>& OutNotes)
{
	std::map<std::string, std::set<std::string>> TakenByLibrary;
	for (FImportFixtureType& FixtureType : FixtureTypes)
	{
		auto Found = TakenByLibrary.find(FixtureType.LibraryPath);
		if (Found == TakenByLibrary.end())
		{
			std::set<std::string> Taken;
			if (GetExistingNames)
			{
				for (const std::string& Name : GetExistingNames(FixtureType.LibraryPath))
				{
					Taken.insert(FoldCase(Name));
				}
			}
			Found = TakenByLibrary.emplace(FixtureType.LibraryPath, std::move(Taken)).first;
		}
		std::set<std::string>& Taken = Found->second;
		const std::string Wanted = FixtureType.Name;
		for (int32 Count = 2; Taken.count(FoldCase(FixtureType.Name)) != 0; ++Count)
		{
			FixtureType.Name = Wanted + " " + std::to_string(Count);
		}
		if (FixtureType.Name != Wanted)
		{
			OutNotes.push_back({FixtureType.SourceFile, "named '" + FixtureType.Name + "': " + FixtureType.LibraryPath + " already has a fixture type '" + Wanted + "'"});
		}
		Taken.insert(FoldCase(FixtureType.Name));
	}
}
