// dmx_library(path):configure(kind, name, params): changes a fixture type or a fixture patch of
// the library, found by name.
#pragma once

#include "CoreMinimal.h"
#include "host/VorlithLua.h"

class UDMXLibrary;

// One undo step. Only the keys given with the right Lua type are applied. Answers true when the
// entity was found, false for no library, an unknown kind or no entity of that name.
bool ConfigureDMXLibraryEntity(UDMXLibrary* Library, const std::string& Kind, const std::string& Name, sol::table Params);
