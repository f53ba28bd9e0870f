#include <cstdio>
#include <random>
#include "CoreTypes.h"
#include "Math/Color.h"
#include "Math/UnrealMathUtility.h"

namespace
{
	std::mt19937& Generator()
	{
		static std::mt19937 Engine(0x4b455354u);
		return Engine;
	}
}

namespace UE::Headless
{
	void ReportEnsure(const char* Expression, const char* File, int Line)
	{
		std::fprintf(stderr, "Ensure condition failed: %s [%s:%d]\n", Expression, File, Line);
	}

	void ReportCheckFailure(const char* Expression, const char* File, int Line)
	{
		std::fprintf(stderr, "Assertion failed: %s [%s:%d]\n", Expression, File, Line);
		std::abort();
	}
}

void FMath::RandInit(int32 Seed)
{
	Generator().seed(static_cast<uint32>(Seed));
}

float FMath::FRand()
{
	return std::uniform_real_distribution<float>(0.0f, 1.0f)(Generator());
}

int32 FMath::RandRange(int32 Min, int32 Max)
{
	return std::uniform_int_distribution<int32>(Min, Max)(Generator());
}

const FLinearColor FLinearColor::White(1.0f, 1.0f, 1.0f, 1.0f);
const FLinearColor FLinearColor::Black(0.0f, 0.0f, 0.0f, 1.0f);

FLinearColor FLinearColor::MakeRandomColor()
{
	// A fully saturated colour of random hue, as the engine's random colour is.
	const float Hue = FMath::FRand() * 6.0f;
	const int32 Sector = static_cast<int32>(Hue) % 6;
	const float Fraction = Hue - static_cast<float>(static_cast<int32>(Hue));
	switch (Sector)
	{
	case 0: return FLinearColor(1.0f, Fraction, 0.0f, 1.0f);
	case 1: return FLinearColor(1.0f - Fraction, 1.0f, 0.0f, 1.0f);
	case 2: return FLinearColor(0.0f, 1.0f, Fraction, 1.0f);
	case 3: return FLinearColor(0.0f, 1.0f - Fraction, 1.0f, 1.0f);
	case 4: return FLinearColor(Fraction, 0.0f, 1.0f, 1.0f);
	default: return FLinearColor(1.0f, 0.0f, 1.0f - Fraction, 1.0f);
	}
}
