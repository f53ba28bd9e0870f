// Conversions between signal formats, sizes and value ranges.
#pragma once

#include "CoreMinimal.h"
#include "DMXProtocolTypes.h"

#ifndef DMXPROTOCOL_API
#define DMXPROTOCOL_API
#endif

class DMXPROTOCOL_API FDMXConversions
{
public:
	// Number of channels (bytes) of the format: the enum value + 1.
	static uint8 GetSizeOfSignalFormat(EDMXFixtureSignalFormat SignalFormat);

	// 0xFF, 0xFFFF, 0xFFFFFF or 0xFFFFFFFF.
	static uint32 GetSignalFormatMaxValue(EDMXFixtureSignalFormat SignalFormat);

	// min(Value, max of the format).
	static uint32 ClampValueBySignalFormat(uint32 Value, EDMXFixtureSignalFormat SignalFormat);

	// Only uint32 is accepted; no implicit conversions.
	template <typename T>
	static uint32 ClampValueBySignalFormat(T Value, EDMXFixtureSignalFormat SignalFormat) = delete;
};
