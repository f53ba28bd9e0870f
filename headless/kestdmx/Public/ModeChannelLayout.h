// A fixture mode's channels as the report and the channel map list them: its functions and its pixel
// matrix, ordered by the channel each starts at.
#pragma once

#include <string>
#include <vector>
#include "CoreMinimal.h"
#include "Library/DMXEntityFixtureType.h"

// One entry of a mode's layout: a function, or the matrix when Function is null. The pointer is
// into the mode's array, so the mode must not change while the rows are in use.
struct FModeChannelRow
{
	const FDMXFixtureFunction* Function = nullptr;
	int32 FirstChannel = 0;
	int32 LastChannel = 0;
};

// The mode's functions and, when it is enabled, its matrix, by first channel; entries starting at the
// same channel keep the mode's order, functions before the matrix.
std::vector<FModeChannelRow> GetModeChannelRows(const FDMXFixtureMode& Mode);

// "16 bit", with " LSB" for least-significant-byte-first values.
std::string DescribeSignalFormat(EDMXFixtureSignalFormat SignalFormat, bool bUseLSBMode);

// The distribution's enumerator name ("TopLeftToBottom"); "distribution N" for a value outside it.
std::string DescribeDistribution(EDMXPixelMappingDistribution Distribution);

// "First" for one channel, "First-Last" for more, with Separator between them.
std::string DescribeChannels(int32 First, int32 Last, const char* Separator = "-");
