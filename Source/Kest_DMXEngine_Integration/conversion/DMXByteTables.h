// DMX channel bytes as Lua sees them: a sequence of integers 0..255, index 1 holding the first byte.
#pragma once

#include "CoreMinimal.h"
#include "host/VorlithLua.h"

// Takes every entry of a script's byte table in Lua's next order, keys ignored. An integer is taken
// by its low 32 bits, signed, and clamped to 0..255; an entry that is not a number is skipped; a
// float (3.0 too) fails sol2's integer check, whose type-mismatch report is raised as a Lua error.
// A userdata holds no bytes.
TArray<uint8> ReadDMXByteTable(const sol::table& Bytes);

// A new table holding the bytes as integers at indices 1, 2, 3 and so on.
sol::table MakeDMXByteTable(sol::this_state S, const TArray<uint8>& Bytes);
