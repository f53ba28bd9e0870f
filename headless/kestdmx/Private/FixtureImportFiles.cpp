// The files of an import: folders opened up into their .qxf files, each file read and mapped. A
// file that cannot be read is reported and the others go on.
#include "FixtureImport.h"

#include <algorithm>
#include <filesystem>
#include <system_error>

namespace
{
	bool HasDefinitionExtension(const std::filesystem::path& Path)
	{
		return FoldCase(Path.extension().string()) == ".qxf";
	}

	// Every .qxf file under a folder, sorted; links are not followed.
	bool FindDefinitionsInFolder(const std::string& Folder, std::vector<std::string>& OutFiles, std::string& OutError)
	{
		std::error_code Error;
		std::vector<std::string> Found;
		std::filesystem::recursive_directory_iterator Iterator(Folder, Error);
		for (; !Error && Iterator != std::filesystem::recursive_directory_iterator(); Iterator.increment(Error))
		{
			if (Iterator->is_regular_file(Error) && !Iterator->is_symlink(Error) && HasDefinitionExtension(Iterator->path()))
			{
				Found.push_back(Iterator->path().string());
			}
		}
		if (Error)
		{
			OutError = Folder + ": cannot be read: " + Error.message();
			return false;
		}
		if (Found.empty())
		{
			OutError = Folder + ": holds no fixture definitions (.qxf)";
			return false;
		}
		std::sort(Found.begin(), Found.end());
		OutFiles.insert(OutFiles.end(), Found.begin(), Found.end());
		return true;
	}
}

FImportResult ImportFixtureDefinitions(const std::vector<std::string>& Paths, const std::string& LibraryPath)
{
	FImportResult Result;
	std::vector<std::string> Files;
	for (const std::string& Path : Paths)
	{
		std::error_code Error;
		std::string FolderError;
		if (!std::filesystem::is_directory(Path, Error))
		{
			Files.push_back(Path);
		}
		else if (!FindDefinitionsInFolder(Path, Files, FolderError))
		{
			Result.Failures.push_back(FolderError);
		}
	}
	for (const std::string& File : Files)
	{
		FFixtureDefinition Definition;
		std::string Error;
		if (!ReadFixtureDefinition(File, Definition, Error))
		{
			Result.Failures.push_back(Error);
			continue;
		}
		FImportFixtureType FixtureType = MapFixtureDefinition(Definition, Result.Notes);
		if (!LibraryPath.empty())
		{
			FixtureType.LibraryPath = LibraryPath;
		}
		Result.FixtureTypes.push_back(std::move(FixtureType));
	}
	return Result;
}
