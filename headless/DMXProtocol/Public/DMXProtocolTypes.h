// Signal formats and fixture categories of the DMX protocol module.
#pragma once

#include "CoreMinimal.h"
#include "UObject/ObjectMacros.h"

#ifndef DMXPROTOCOL_API
#define DMXPROTOCOL_API
#endif

// The width of a DMX value: 1 to 4 consecutive channels, most significant byte first unless a
// function asks for LSB order.
UENUM(BlueprintType, Category = "DMX")
enum class EDMXFixtureSignalFormat : uint8
{
	E8Bit = 0 UMETA(DisplayName = "8 Bit"),
	E16Bit = 1 UMETA(DisplayName = "16 Bit"),
	E24Bit = 2 UMETA(DisplayName = "24 Bit"),
	E32Bit = 3 UMETA(DisplayName = "32 Bit"),
};

// A fixture category, one of the project's categories by convention. Any name is stored as given.
USTRUCT(BlueprintType, Category = "DMX")
struct DMXPROTOCOL_API FDMXFixtureCategory
{
	GENERATED_BODY()

	// The first category of the protocol settings ("Static" with the stock list).
	FDMXFixtureCategory();
	explicit FDMXFixtureCategory(const FName& InName);

	// The first category of the protocol settings, or None when the list is empty.
	static FName GetFirstValue();
	// The categories of the protocol settings, in their order.
	static TArray<FName> GetPredefinedValues();

	operator FName&() { return Name; }
	operator const FName&() const { return Name; }

	// Names compare ignoring case.
	bool operator==(const FDMXFixtureCategory& Other) const { return Name == Other.Name; }
	bool operator==(const FName& Other) const { return Name == Other; }

	UPROPERTY(EditAnywhere, Category = "DMX")
	FName Name;
};
