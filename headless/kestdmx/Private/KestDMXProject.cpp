// The project store: loading a project folder into the headless editor and saving its dirty packages
// back. The formats are ProjectLibraryFormat.cpp and ProjectLevelFormat.cpp, finding the files
// ProjectDiscovery.cpp, and the lock and the all-or-nothing save ProjectSaveProtocol.cpp.
#include "KestDMXProject.h"
#include "KestDMXText.h"
#include "ProjectDiscovery.h"
#include "ProjectFileFormats.h"
#include "ProjectFiles.h"
#include "ProjectSaveProtocol.h"

#include <algorithm>
#include <cerrno>
#include <exception>
#include <filesystem>
#include <iterator>
#include <system_error>
#include <unistd.h>
#include <unordered_map>

#include "Engine/World.h"
#include "HeadlessEditor.h"
#include "Library/DMXLibrary.h"
#include "Misc/PackageName.h"
#include "UObject/HeadlessObjectRegistry.h"
#include "UObject/Package.h"

namespace
{

	// Removes the files an interrupted save left; the project is locked, so no save is running.
	void RemoveLeftovers(FKestDMXProject& Project, const std::vector<std::string>& Leftovers)
	{
		for (const std::string& Relative : Leftovers)
		{
			const std::string Path = Project.Dir + "/" + Relative;
			if (AllowProjectFileOperation("remove", Path) && unlink(Path.c_str()) == 0)
			{
				Project.Warnings.push_back(Path + ": removed, left by a save that was interrupted");
			}
			else
			{
				Project.Warnings.push_back(Path + ": left by a save that was interrupted, and cannot be removed: " + DescribeSystemError(errno));
			}
		}
	}

	// Reads one project file and hands its text to Reader; every problem names the file.
	template <typename FuncType>
	bool LoadProjectFile(FKestDMXProject& Project, const std::string& Relative, std::string& OutError, FuncType&& Reader)
	{
		const std::string Path = Project.Dir + "/" + Relative;
		std::string Text;
		FKestDMXProjectFileStamp Stamp;
		std::string Problem;
		std::vector<std::string> Warnings;
		if (!ReadWholeProjectFile(Path, Text, Stamp, Problem) || !Reader(Text, Warnings, Problem))
		{
			OutError = Path + ": " + Problem;
			return false;
		}
		for (const std::string& Warning : Warnings)
		{
			Project.Warnings.push_back(Path + ": " + Warning);
		}
		Project.Files[Relative] = Stamp;
		return true;
	}

	// The libraries in memory by their package, found in one pass.
	std::unordered_map<const UPackage*, UDMXLibrary*> FindLibrariesByPackage()
	{
		std::unordered_map<const UPackage*, UDMXLibrary*> Libraries;
		FHeadlessObjectRegistry::Get().ForEachObject([&Libraries](UObject* Object)
		{
			UDMXLibrary* Library = Cast<UDMXLibrary>(Object);
			if (Library != nullptr && !Library->IsGarbage())
			{
				if (const UPackage* Package = Cast<UPackage>(Library->GetOuter()))
				{
					Libraries.emplace(Package, Library);
				}
			}
		});
		return Libraries;
	}

	std::vector<UPackage*> FindDirtyPackages()
	{
		std::vector<UPackage*> Packages;
		FHeadlessObjectRegistry::Get().ForEachObject([&Packages](UObject* Object)
		{
			UPackage* Package = Cast<UPackage>(Object);
			if (Package != nullptr && Package->IsDirty() && !Package->HasAnyFlags(RF_Transient))
			{
				Packages.push_back(Package);
			}
		});
		std::sort(Packages.begin(), Packages.end(), [](const UPackage* A, const UPackage* B)
		{
			return A->GetName().Compare(B->GetName(), ESearchCase::CaseSensitive) < 0;
		});
		return Packages;
	}
}

std::string GetProjectFileForPackage(const std::string& ProjectDir, const FString& PackageName)
{
	const std::string Relative = GetProjectRelativeFileForPackage(PackageName);
	return Relative.empty() ? Relative : ProjectDir + "/" + Relative;
}

std::vector<FString> FindProjectLibraryPackages(const std::string& ProjectDir)
{
	FProjectContents Contents;
	std::string Error;
	std::vector<FString> Packages;
	if (FindProjectContents(ProjectDir, Contents, Error))
	{
		for (const FProjectLibraryFile& Library : Contents.Libraries)
		{
			Packages.push_back(Library.PackageName);
		}
	}
	return Packages;
}

bool PrepareKestDMXProjectFolder(const std::string& ProjectDir, std::string& OutError)
{
	std::error_code Error;
	const std::filesystem::file_status Status = std::filesystem::status(ProjectDir, Error);
	if (std::filesystem::is_directory(Status))
	{
		return true;
	}
	if (std::filesystem::exists(Status))
	{
		OutError = "the project folder " + ProjectDir + " is not a folder";
		return false;
	}
	if (!std::filesystem::create_directories(ProjectDir, Error) && Error)
	{
		OutError = "cannot create the project folder " + ProjectDir + ": " + Error.message();
		return false;
	}
	return true;
}

bool LoadKestDMXProject(const std::string& ProjectDir, FHeadlessEditor& Editor, FKestDMXProject& OutProject, std::string& OutError, EKestDMXProjectAccess Access)
{
	OutProject = FKestDMXProject();
	OutProject.Dir = ProjectDir;
	OutProject.Access = Access;
	struct stat Status;
	if (stat(ProjectDir.c_str(), &Status) != 0 || !S_ISDIR(Status.st_mode))
	{
		OutError = "no such project folder: " + ProjectDir;
		return false;
	}
	// Locked before anything is read, so what is read is what the save replaces.
	if (Access == EKestDMXProjectAccess::Edit && !LockKestDMXProject(ProjectDir, OutProject.Lock, OutError))
	{
		return false;
	}
	FProjectContents Contents;
	if (!FindProjectContents(ProjectDir, Contents, OutError))
	{
		return false;
	}
	if (Access == EKestDMXProjectAccess::Edit)
	{
		RemoveLeftovers(OutProject, Contents.Leftovers);
	}
	for (const FProjectLibraryFile& Library : Contents.Libraries)
	{
		const bool bLoaded = LoadProjectFile(OutProject, Library.RelativePath, OutError,
			[&Library](const std::string& Text, std::vector<std::string>& Warnings, std::string& Problem)
			{
				UDMXLibrary* Loaded = ReadProjectLibraryFile(Library.PackageName, Text, Warnings, Problem);
				if (Loaded != nullptr)
				{
					Loaded->GetOutermost()->SetDirtyFlag(false);
				}
				return Loaded != nullptr;
			});
		if (!bLoaded)
		{
			return false;
		}
		OutProject.LibraryPackages.push_back(Library.PackageName);
	}

	// The level comes last: its components use the libraries.
	UWorld* World = Editor.GetEditorWorld();
	const std::string LevelRelative = GetProjectRelativeFileForPackage(World->GetPackage()->GetName());
	const std::string LevelPath = ProjectDir + "/" + LevelRelative;
	if (!LevelRelative.empty() && (lstat(LevelPath.c_str(), &Status) == 0 || errno != ENOENT))
	{
		const bool bLoaded = LoadProjectFile(OutProject, LevelRelative, OutError,
			[World](const std::string& Text, std::vector<std::string>& Warnings, std::string& Problem)
			{
				return ReadProjectLevelFile(World, Text, Warnings, Problem);
			});
		if (!bLoaded)
		{
			return false;
		}
		World->GetPackage()->SetDirtyFlag(false);
	}
	OutProject.bLoaded = true;
	return true;
}

bool SaveKestDMXProject(FKestDMXProject& Project, FHeadlessEditor& Editor, std::string& OutError, std::vector<std::string>* OutSavedFiles)
{
	if (!Project.bLoaded || Project.Access != EKestDMXProjectAccess::Edit || !Project.Lock.IsHeld())
	{
		OutError = "the project " + Project.Dir + (Project.bLoaded ? " was loaded to be read only" : " did not load whole")
			+ ", so it is not saved: a save could replace files that were never read";
		return false;
	}

	// Every file's text is made before anything is written, so a package that cannot be saved
	// leaves the project as it was.
	UWorld* World = Editor.GetEditorWorld();
	const std::unordered_map<const UPackage*, UDMXLibrary*> Libraries = FindLibrariesByPackage();
	std::vector<FProjectFileWrite> Files;
	std::vector<FProjectFileWrite> LevelFiles;
	std::vector<UPackage*> Saved;
	for (UPackage* Package : FindDirtyPackages())
	{
		const bool bLevel = Package == World->GetPackage();
		const auto Library = Libraries.find(Package);
		if (!bLevel && Library == Libraries.end())
		{
			// Nothing in it that belongs in the project.
			continue;
		}
		const FString PackageName = Package->GetName();
		FProjectFileWrite File;
		File.RelativePath = GetProjectRelativeFileForPackage(PackageName);
		FText Reason;
		if (File.RelativePath.empty() || !FPackageName::IsValidLongPackageName(PackageName, false, &Reason))
		{
			OutError = "cannot save " + ToUTF8(PackageName) + ": "
				+ (File.RelativePath.empty() ? "only packages under /Game/ have a place in the project" : ToUTF8(Reason.ToString()));
			return false;
		}
		try
		{
			File.Text = bLevel ? WriteProjectLevelFile(World) : WriteProjectLibraryFile(Library->second);
		}
		catch (const std::exception& Error)
		{
			OutError = "cannot save " + ToUTF8(PackageName) + ": " + Error.what();
			return false;
		}
		const auto Read = Project.Files.find(File.RelativePath);
		File.bWasRead = Read != Project.Files.end();
		File.ReadStamp = File.bWasRead ? Read->second : FKestDMXProjectFileStamp();
		(bLevel ? LevelFiles : Files).push_back(std::move(File));
		Saved.push_back(Package);
	}
	// The level goes last, after the libraries its components use.
	Files.insert(Files.end(), std::make_move_iterator(LevelFiles.begin()), std::make_move_iterator(LevelFiles.end()));

	if (Files.empty())
	{
		return true;
	}
	if (!WriteProjectFiles(Project.Dir, Files, OutError))
	{
		return false;
	}
	for (UPackage* Package : Saved)
	{
		Package->SetDirtyFlag(false);
	}
	for (const FProjectFileWrite& File : Files)
	{
		Project.Files[File.RelativePath] = File.WrittenStamp;
		if (OutSavedFiles != nullptr)
		{
			OutSavedFiles->push_back(Project.Dir + "/" + File.RelativePath);
		}
	}
	return true;
}
