// dmx_library(path):remove(kind, name): deletes a fixture type or a fixture patch of the library.
#pragma once

#include <string>
#include "CoreMinimal.h"

class UDMXLibrary;

// One undo step. Removes the first entity of the kind whose name matches ignoring case and
// answers true; false for no library, an unknown kind or no entity of that name.
bool RemoveDMXLibraryEntity(UDMXLibrary* Library, const std::string& Kind, const std::string& Name);
