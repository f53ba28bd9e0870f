#pragma once

#include <algorithm>
#include <cmath>
#include "HAL/Platform.h"

struct FMath
{
	template <typename T> static constexpr T Min(const T A, const T B) { return A < B ? A : B; }
	template <typename T> static constexpr T Max(const T A, const T B) { return A < B ? B : A; }
	template <typename T> static constexpr T Clamp(const T X, const T MinValue, const T MaxValue)
	{
		return X < MinValue ? MinValue : (X < MaxValue ? X : MaxValue);
	}
	template <typename T> static constexpr T Abs(const T A) { return A < T(0) ? -A : A; }
	static bool IsNearlyZero(double Value, double Tolerance = 1.e-8) { return std::fabs(Value) <= Tolerance; }
	static double RoundToDouble(double F) { return std::floor(F + 0.5); }
	static float FRand();
	static int32 RandRange(int32 Min, int32 Max);
	static void RandInit(int32 Seed);
};
