// Filling the modes of a fixture type (name, channel span, functions, matrix) from a script's
// mode tables, and reading the data-type and distribution words those tables use.
#pragma once

#include "CoreMinimal.h"
#include "DMXProtocolTypes.h"
#include "Library/DMXEntityFixtureType.h"
#include "host/VorlithLua.h"

// Applies one mode table to the fixture type's mode at ModeIndex. Keys that are absent or of
// another Lua type leave their setting alone; the mode's channel span is updated at the end.
// Nothing happens for a null fixture type or a mode index out of range. The caller has marked
// the fixture type for undo.
void ApplyFixtureModeParams(UDMXEntityFixtureType* FixtureType, int32 ModeIndex, sol::table ModeParams);

// Replaces the fixture type's modes with one mode per table of the list ("modes"), each added as
// "Mode" and then filled by ApplyFixtureModeParams; entries that are not tables add nothing.
void ReplaceFixtureModes(UDMXEntityFixtureType* FixtureType, const sol::object& ModeList);

// "8bit"/"E8Bit" ... "32bit"/"E32Bit", ignoring case; anything else answers Current.
EDMXFixtureSignalFormat ParseSignalFormat(const FString& Text, EDMXFixtureSignalFormat Current);

// The six distributions a script may choose by name, ignoring case; anything else (including
// "TopLeftToRight") answers Current.
EDMXPixelMappingDistribution ParsePixelMappingDistribution(const FString& Text, EDMXPixelMappingDistribution Current);
