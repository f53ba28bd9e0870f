// The structs of fixture types: functions (with their physical range), cell attributes, matrices.
#include "Library/DMXEntityFixtureType.h"

#include "DMXConversions.h"
#include "DMXRuntimeMath.h"

namespace
{
	// Relative position of the value from From towards To (so inverted ranges work), 0 for a
	// (nearly) empty range.
	double GetNormalizedPosition(double Value, double From, double To)
	{
		const double Range = FMath::Abs(To - From);
		const double Relative = FMath::Abs(Value - From);
		return FMath::IsNearlyZero(Range) ? 0.0 : Relative / Range;
	}
}

FDMXFixtureFunction::FDMXFixtureFunction()
	: Attribute()
{
}

int32 FDMXFixtureFunction::GetLastChannel() const
{
	// Wraps like the engine's int32 arithmetic does in practice, without the undefined behaviour.
	return static_cast<int32>(static_cast<uint32>(Channel) + GetNumChannels() - 1u);
}

#if WITH_EDITOR
void FDMXFixtureFunction::SetPhysicalDefaultValue(double InPhysicalDefaultValue)
{
	const double Lowest = FMath::Min(PhysicalFrom, PhysicalTo);
	const double Highest = FMath::Max(PhysicalFrom, PhysicalTo);
	PhysicalDefaultValue = FMath::Clamp(InPhysicalDefaultValue, Lowest, Highest);

	double Normalized = GetNormalizedPosition(PhysicalDefaultValue, PhysicalFrom, PhysicalTo);
	if (std::isnan(Normalized))
	{
		// An infinite range gives no position.
		Normalized = 0.0;
	}

	const uint32 MaxValue = FDMXConversions::GetSignalFormatMaxValue(DataType);
	DefaultValue = UE::DMX::Private::TruncateToUInt32(Normalized * static_cast<double>(MaxValue));
}

void FDMXFixtureFunction::SetPhysicalValueRange(double InPhysicalFrom, double InPhysicalTo)
{
	const double Normalized = GetNormalizedPosition(PhysicalDefaultValue, PhysicalFrom, PhysicalTo);

	PhysicalFrom = InPhysicalFrom;
	PhysicalTo = InPhysicalTo;

	SetPhysicalDefaultValue(InPhysicalFrom + Normalized * (InPhysicalTo - InPhysicalFrom));
}

void FDMXFixtureFunction::UpdatePhysicalDefaultValue()
{
	const double MaxValue = static_cast<double>(FDMXConversions::GetSignalFormatMaxValue(DataType));
	const double Alpha = static_cast<double>(DefaultValue) / MaxValue;
	const double Value = PhysicalFrom + Alpha * (PhysicalTo - PhysicalFrom);

	constexpr double Grid = 0.01;
	PhysicalDefaultValue = std::floor(Value / Grid + 0.5) * Grid;
}
#endif

FDMXFixtureCellAttribute::FDMXFixtureCellAttribute()
	: Attribute()
	, Description()
	, DefaultValue(0)
	, DataType(EDMXFixtureSignalFormat::E8Bit)
	, bUseLSBMode(false)
{
}

FDMXFixtureMatrix::FDMXFixtureMatrix()
{
	FDMXFixtureCellAttribute RedAttribute;
	RedAttribute.Attribute = FName(TEXT("Red"));
	CellAttributes.Add(RedAttribute);
}

int32 FDMXFixtureMatrix::GetNumChannels() const
{
	uint32 ChannelsPerCell = 0;
	for (const FDMXFixtureCellAttribute& CellAttribute : CellAttributes)
	{
		ChannelsPerCell += CellAttribute.GetNumChannels();
	}
	// Unsigned so that absurd cell counts wrap instead of overflowing.
	return static_cast<int32>(static_cast<uint32>(XCells) * static_cast<uint32>(YCells) * ChannelsPerCell);
}

int32 FDMXFixtureMatrix::GetLastChannel() const
{
	if (static_cast<uint32>(XCells) * static_cast<uint32>(YCells) == 0)
	{
		return FirstCellChannel;
	}
	return static_cast<int32>(static_cast<uint32>(FirstCellChannel) + static_cast<uint32>(GetNumChannels()) - 1u);
}
