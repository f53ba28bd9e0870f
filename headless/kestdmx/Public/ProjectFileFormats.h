// The two file formats of a project folder, text in and text out. KestDMXProject.h finds the files,
// reads and writes them; these turn one file's text into engine objects and back.
//
// Reading checks every value: anything the engine could not hold, or that no save writes, is an
// error naming its place in the file ("entities[2].universe: must be ..."). A reference that does not
// resolve (a patch's fixture type, a component's patch) is no reference, with a warning of the same
// form. The caller adds the file's name to both.
#pragma once

#include <string>
#include <vector>
#include "CoreMinimal.h"

class UDMXLibrary;
class UWorld;

// The text of the library file of Library.
std::string WriteProjectLibraryFile(const UDMXLibrary* Library);

// Creates the package PackageName with its library and entities from a library file's text. Answers
// the library, or null with OutError set (objects made before the problem stay in memory).
UDMXLibrary* ReadProjectLibraryFile(const FString& PackageName, const std::string& Text, std::vector<std::string>& OutWarnings, std::string& OutError);

// The text of the level file of World: its actors and their DMX components.
std::string WriteProjectLevelFile(const UWorld* World);

// Spawns the actors of a level file's text, with their DMX components, into World. Libraries the
// components use must be in memory already.
bool ReadProjectLevelFile(UWorld* World, const std::string& Text, std::vector<std::string>& OutWarnings, std::string& OutError);
