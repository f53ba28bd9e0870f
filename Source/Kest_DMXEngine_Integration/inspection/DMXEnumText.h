// The names under which the inspection table reports the DMX plug-in's enumerations.
#pragma once

#include "CoreMinimal.h"
#include "DMXProtocolTypes.h"
#include "Library/DMXEntityFixtureType.h"

// "E8Bit", "E16Bit", "E24Bit" or "E32Bit"; a value outside the enumeration reads as "E8Bit".
const ANSICHAR* SignalFormatToText(EDMXFixtureSignalFormat SignalFormat);

// One of the seven distributions the authoring side knows ("TopLeftToRight", "TopLeftToBottom",
// "TopLeftToClockwise", "TopLeftToAntiClockwise", "TopRightToLeft", "BottomLeftToTop",
// "BottomRightToClockwise"); every other value reads as "TopLeftToRight".
const ANSICHAR* PixelMappingDistributionToText(EDMXPixelMappingDistribution Distribution);
