// dmx_library(path):add(kind, params): creates a fixture type or a fixture patch in the library.
#pragma once

#include "CoreMinimal.h"
#include "host/VorlithLua.h"

class UDMXLibrary;

// One undo step. Answers {name, mode_count} for a fixture type, {name, channel_span,
// ending_channel} for a fixture patch, and nil when nothing was made (no library, unknown kind,
// no fixture type of the patch's "fixture_type" name, or the engine refused).
sol::object AddDMXLibraryEntity(UDMXLibrary* Library, const std::string& Kind, sol::table Params, sol::this_state S);
