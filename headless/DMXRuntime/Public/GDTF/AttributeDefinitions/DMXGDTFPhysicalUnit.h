// Physical units of GDTF attributes, used by the physical range of fixture functions.
#pragma once

#include "CoreMinimal.h"
#include "UObject/ObjectMacros.h"

UENUM(BlueprintType)
enum class EDMXGDTFPhysicalUnit : uint8
{
	None = 0,
	Percent,
	Length,
	Mass,
	Time,
	Temperature,
	LuminousIntensity,
	Angle,
	Force,
	Frequency,
	Current,
	Voltage,
	Power,
	Energy,
	Area,
	Volume,
	Speed,
	Acceleration,
	AngularSpeed,
	AngularAccc,
	WaveLength,
	ColorComponent,
	MaxEnumValue UMETA(Hidden),
};
