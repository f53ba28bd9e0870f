#pragma once

#include "CoreMinimal.h"
#include "host/VorlithLua.h"

// dmx_library(path): the handle table of the DMX Library at the path (package or object path).
sol::object OpenDMXLibraryHandle(const std::string& Path, sol::this_state S);
