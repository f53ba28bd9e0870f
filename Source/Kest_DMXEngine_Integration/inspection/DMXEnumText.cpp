#include "inspection/DMXEnumText.h"

const ANSICHAR* SignalFormatToText(EDMXFixtureSignalFormat SignalFormat)
{
	switch (static_cast<uint8>(SignalFormat))
	{
	case 1:
		return "E16Bit";
	case 2:
		return "E24Bit";
	case 3:
		return "E32Bit";
	default:
		return "E8Bit";
	}
}

const ANSICHAR* PixelMappingDistributionToText(EDMXPixelMappingDistribution Distribution)
{
	switch (static_cast<uint8>(Distribution))
	{
	case 1:
		return "TopLeftToBottom";
	case 2:
		return "TopLeftToClockwise";
	case 3:
		return "TopLeftToAntiClockwise";
	case 4:
		return "TopRightToLeft";
	case 5:
		return "BottomLeftToTop";
	case 14:
		return "BottomRightToClockwise";
	default:
		return "TopLeftToRight";
	}
}
