// One element of the "fixture_patches" list of dmx_library(path):info(): the patch's settings and
// the attribute maps the engine derives from its active mode.
#pragma once

#include "CoreMinimal.h"
#include "host/VorlithLua.h"
#include "DMXAttribute.h"
#include "DMXProtocolTypes.h"

class UDMXEntityFixturePatch;

// The patch table. Keys are the same with or without a fixture type; "fixture_type" is "" without.
sol::table BuildFixturePatchInfoTable(sol::this_state S, const UDMXEntityFixturePatch* FixturePatch);

// A sequence of {attribute, value} tables in the map's own iteration order.
sol::table BuildAttributeDefaultList(sol::this_state S, const TMap<FDMXAttributeName, int32>& DefaultMap);

// A sequence of {attribute, channel} tables in the map's own iteration order.
sol::table BuildAttributeChannelList(sol::this_state S, const TMap<FDMXAttributeName, int32>& ChannelMap);

// A sequence of {attribute, data_type} tables in the map's own iteration order.
sol::table BuildAttributeSignalFormatList(sol::this_state S, const TMap<FDMXAttributeName, EDMXFixtureSignalFormat>& SignalFormatMap);

// A sequence of {channel, value} tables, ascending by channel.
sol::table BuildDefaultRawChannelList(sol::this_state S, const TMap<int32, uint8>& RawMap);
