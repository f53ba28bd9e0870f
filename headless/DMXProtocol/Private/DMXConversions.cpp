#include "DMXConversions.h"

uint8 FDMXConversions::GetSizeOfSignalFormat(EDMXFixtureSignalFormat SignalFormat)
{
	return static_cast<uint8>(static_cast<uint8>(SignalFormat) + 1);
}

uint32 FDMXConversions::GetSignalFormatMaxValue(EDMXFixtureSignalFormat SignalFormat)
{
	// Values beyond E32Bit (never produced by the enum's users) count as 32 bit.
	const uint8 NumBytes = GetSizeOfSignalFormat(SignalFormat);
	return NumBytes >= 4 ? 0xFFFFFFFFu : (1u << (8u * NumBytes)) - 1u;
}

uint32 FDMXConversions::ClampValueBySignalFormat(uint32 Value, EDMXFixtureSignalFormat SignalFormat)
{
	return FMath::Min(Value, GetSignalFormatMaxValue(SignalFormat));
}
