// The fixture-patch keys that add and configure share: "tags", "receive_dmx_in_editor" and "editor_color".
#pragma once

#include "CoreMinimal.h"
#include "host/VorlithLua.h"

class UDMXEntityFixturePatch;

// Replaces the patch's tags with the string values of the list, in walk order; other values are
// skipped.
void ReplaceFixturePatchTags(UDMXEntityFixturePatch* FixturePatch, const sol::object& TagList);

// Reads "a", "b", "g" and "r" of the colour table (each component not given as a number keeps its
// value; numbers are taken unclamped) and stores the four together.
void ApplyFixturePatchEditorColor(UDMXEntityFixturePatch* FixturePatch, sol::table ColorParams);

// Applies, in this order and each only when given with its type: "tags" (a table or userdata),
// "receive_dmx_in_editor" (a boolean) and "editor_color" (a table or userdata).
void ApplyFixturePatchTagsReceiveAndColor(UDMXEntityFixturePatch* FixturePatch, sol::table Params);
