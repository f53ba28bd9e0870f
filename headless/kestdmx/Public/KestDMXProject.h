// A project folder on disk: every DMX Library as one JSON file under Content/ (the package
// /Game/DMX/Stage lives at Content/DMX/Stage.dmxlib.json) and the editor level's actors with their
// DMX components in Content/Maps/Untitled.level.json (formats: ProjectFileFormats.h).
//
// A project opened for editing is locked against other runs from its load to its save. A save writes
// every dirty package or none: new files go next to the old ones under unique names and replace them
// only once all are written, and a failure puts back what was replaced. A save never writes through
// a symbolic link, nor over a file the load did not read or that changed on disk since.
#pragma once

#include <map>
#include <string>
#include <vector>
#include "CoreMinimal.h"

class FHeadlessEditor;

// The lock on a project folder: an exclusive flock on DIR/.kestdmx.lock, which the system drops with
// the process however it ends. Released when destroyed.
struct FKestDMXProjectLock
{
	FKestDMXProjectLock() = default;
	~FKestDMXProjectLock();
	FKestDMXProjectLock(FKestDMXProjectLock&& Other) noexcept;
	FKestDMXProjectLock& operator=(FKestDMXProjectLock&& Other) noexcept;

	bool IsHeld() const { return File >= 0; }

	int File = -1;
};

// Takes the lock on DIR; false, with a message naming the process that holds it, when another one does.
bool LockKestDMXProject(const std::string& ProjectDir, FKestDMXProjectLock& OutLock, std::string& OutError);

// A file as the load read it: a save replaces it only while it is still this one.
struct FKestDMXProjectFileStamp
{
	uint64 Device = 0;
	uint64 Inode = 0;
	int64 Size = 0;
	int64 ModifiedNs = 0;

	bool operator==(const FKestDMXProjectFileStamp& Other) const = default;
};

enum class EKestDMXProjectAccess : uint8
{
	// Loaded to look at: no lock, nothing on disk changes, no save.
	Read,
	// Loaded to be saved: DIR stays locked until the project is destroyed, and files an interrupted
	// save left behind are removed.
	Edit,
};

// A project folder as a load left it.
struct FKestDMXProject
{
	std::string Dir;
	EKestDMXProjectAccess Access = EKestDMXProjectAccess::Read;
	FKestDMXProjectLock Lock;
	// Set once every file under Content/ was read; a project that did not load whole is never saved.
	bool bLoaded = false;
	// The library packages found, sorted.
	std::vector<FString> LibraryPackages;
	// Every project file read (or written by a save), by its path relative to Dir.
	std::map<std::string, FKestDMXProjectFileStamp> Files;
	// "FILE: PLACE: what", for references that did not resolve and the like; the load went on.
	std::vector<std::string> Warnings;
};

// The file that holds a package of the project: a library file for a /Game/ package
// (DIR/Content/DMX/Stage.dmxlib.json), the level file for the editor world's package. Empty when the
// package cannot live in the project.
std::string GetProjectFileForPackage(const std::string& ProjectDir, const FString& PackageName);

// Package names of the library files found under the project's Content folder, sorted; empty when
// the folder cannot be read (LoadKestDMXProject says why).
std::vector<FString> FindProjectLibraryPackages(const std::string& ProjectDir);

// Makes the project folder when it does not exist yet, so that a first run starts an empty project;
// false, with the reason, when DIR is something else than a folder or cannot be made.
bool PrepareKestDMXProjectFolder(const std::string& ProjectDir, std::string& OutError);

// Reads every library file, then the level file (when there is one), into the running editor. Loaded
// packages are left clean and nothing is recorded for undo. On failure OutError names the file (and
// the place in it) and what is wrong; objects already read stay in memory and OutProject cannot be
// saved.
bool LoadKestDMXProject(const std::string& ProjectDir, FHeadlessEditor& Editor, FKestDMXProject& OutProject, std::string& OutError,
	EKestDMXProjectAccess Access = EKestDMXProjectAccess::Edit);

// Writes every dirty package (libraries and the level) of a project loaded for editing, like the
// editor's "save all", all or nothing. Saved packages become clean; their files (full paths) go to
// OutSavedFiles.
bool SaveKestDMXProject(FKestDMXProject& Project, FHeadlessEditor& Editor, std::string& OutError,
	std::vector<std::string>* OutSavedFiles = nullptr);
