// Where a project's packages live on disk, and finding them: every library file under Content/.
#pragma once

#include <string>
#include <vector>
#include "CoreMinimal.h"

extern const char* const ProjectLibraryExtension;
extern const char* const ProjectLevelExtension;
// The package of the editor level, which has the level file.
extern const TCHAR* const ProjectLevelPackageName;
// Files of a save in progress start with this (".kestdmx-save-<random>.new" and ".old").
extern const char* const ProjectSaveFilePrefix;

// The file of a package relative to the project folder ("Content/DMX/Stage.dmxlib.json"); empty for
// a package outside /Game/.
std::string GetProjectRelativeFileForPackage(const FString& PackageName);

struct FProjectLibraryFile
{
	FString PackageName;
	// Relative to the project folder.
	std::string RelativePath;
};

struct FProjectContents
{
	// Sorted by package name.
	std::vector<FProjectLibraryFile> Libraries;
	// Files an interrupted save left (relative paths); nothing reads them.
	std::vector<std::string> Leftovers;
};

// Walks Content/ (through symbolic links, each folder once). Anything that cannot be read (a folder,
// a library file, an entry whose kind cannot be told), a name that is not UTF-8, a library whose
// package name the editor would refuse and a folder reached a second time (a link loop) are errors
// naming the path; other files are passed over. A project without Content/ is empty.
bool FindProjectContents(const std::string& ProjectDir, FProjectContents& OutContents, std::string& OutError);
