// Integer conversions shared by the DMX runtime sources. Where the engine relies on arithmetic
// that overflows or on float conversions out of range (undefined behaviour), these give a fixed
// result instead: int32 sums wrap around, out-of-range float to uint32 conversions saturate.
#pragma once

#include <cmath>
#include "CoreTypes.h"

namespace UE::DMX::Private
{
	// Truncates towards zero into 0..UINT32_MAX: NaN and negatives give 0, too large values UINT32_MAX.
	inline uint32 TruncateToUInt32(double Value)
	{
		if (!(Value > 0.0))
		{
			return 0;
		}
		if (Value >= 4294967295.0)
		{
			return 0xFFFFFFFFu;
		}
		return static_cast<uint32>(Value);
	}

	// Narrows a wide integer result to int32 the way two's complement arithmetic wraps.
	inline int32 WrapToInt32(int64 Value)
	{
		return static_cast<int32>(static_cast<uint32>(static_cast<uint64>(Value)));
	}
}
