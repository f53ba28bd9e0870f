// A project folder on disk: every DMX Library as one JSON file under Content/ (the package
// /Game/DMX/Stage lives at Content/DMX/Stage.dmxlib.json) and the editor level's actors with their
// DMX components in Content/Maps/Untitled.level.json.
#pragma once

#include <string>
#include <vector>
#include "CoreMinimal.h"

class FHeadlessEditor;

// The file that holds a package of the project: a library file for a /Game/ package, the level
// file for the editor world's package. Empty when the package cannot live in the project.
std::string GetProjectFileForPackage(const std::string& ProjectDir, const FString& PackageName);

// Package names of the library files found under the project's Content folder, sorted.
std::vector<FString> FindProjectLibraryPackages(const std::string& ProjectDir);

// Reads every library file, then the level file (when there is one), into the running editor.
// Loaded packages are left clean and nothing is recorded for undo. On failure OutError names the
// file and what is wrong with it; objects already read stay in memory.
bool LoadKestDMXProject(const std::string& ProjectDir, FHeadlessEditor& Editor, std::string& OutError);

// Writes every dirty package (libraries and the level), like the editor's "save all": each file is
// first written next to its target and then renamed over it. Nothing is written when a package
// cannot be saved. Saved packages become clean; their files go to OutSavedFiles.
bool SaveKestDMXProject(const std::string& ProjectDir, FHeadlessEditor& Editor, std::string& OutError,
	std::vector<std::string>* OutSavedFiles = nullptr);
