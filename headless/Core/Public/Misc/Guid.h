#pragma once

#include "Containers/UnrealString.h"

enum class EGuidFormats
{
	Digits,
	DigitsLower,
	DigitsWithHyphens,
	DigitsWithHyphensLower,
	DigitsWithHyphensInBraces,
	DigitsWithHyphensInParentheses,
	HexValuesInBraces,
	UniqueObjectGuid,
	Short,
	Base36Encoded,
};

struct FGuid
{
	uint32 A = 0;
	uint32 B = 0;
	uint32 C = 0;
	uint32 D = 0;

	FGuid() = default;
	constexpr FGuid(uint32 InA, uint32 InB, uint32 InC, uint32 InD) : A(InA), B(InB), C(InC), D(InD) {}

	// New GUIDs come from the headless engine's seeded generator, so dry runs repeat exactly.
	static FGuid NewGuid();
	static bool Parse(const FString& GuidString, FGuid& OutGuid);

	bool IsValid() const { return (A | B | C | D) != 0; }
	void Invalidate() { A = B = C = D = 0; }
	void AppendString(FString& Out, EGuidFormats Format = EGuidFormats::Digits) const;
	FString ToString(EGuidFormats Format = EGuidFormats::Digits) const
	{
		FString Result;
		AppendString(Result, Format);
		return Result;
	}

	bool operator==(const FGuid& O) const { return A == O.A && B == O.B && C == O.C && D == O.D; }
	bool operator!=(const FGuid& O) const { return !(*this == O); }
	friend uint32 GetTypeHash(const FGuid& G) { return G.A ^ G.B ^ G.C ^ G.D; }
};
