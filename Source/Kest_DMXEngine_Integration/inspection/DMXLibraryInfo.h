// dmx_library(path):info(): the whole DMX Library as one plain Lua table.
#pragma once

#include "CoreMinimal.h"
#include "host/VorlithLua.h"

class UDMXLibrary;

// The inspection table of the library, read afresh; {valid = false} alone when Library is null.
sol::object BuildLibraryInfoTable(sol::this_state S, UDMXLibrary* Library);
