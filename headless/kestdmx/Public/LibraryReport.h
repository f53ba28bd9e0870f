// A compact text report of one DMX Library, for people reading a project from the command line.
#pragma once

#include <string>
#include <vector>
#include "CoreMinimal.h"

class UDMXLibrary;

// Fixture types with their modes and channel layouts, then the patches by universe and starting
// channel; invalid patches carry the engine's reason, patches sharing channels of one universe are
// flagged. A null library gives a one-line note.
std::string FormatLibraryReport(UDMXLibrary* Library);

// The library at a package path (/Game/DMX/Stage) or object path (/Game/DMX/Stage.Stage), loaded
// quietly; null when the path does not name a DMX Library.
UDMXLibrary* LoadLibraryForReport(const std::string& Path);

// Every DMX Library in memory (loaded, or made by a script and not undone), by object path.
std::vector<UDMXLibrary*> FindLibrariesInMemory();
