#include "ModeChannelLayout.h"

#include <algorithm>

std::vector<FModeChannelRow> GetModeChannelRows(const FDMXFixtureMode& Mode)
{
	std::vector<FModeChannelRow> Rows;
	Rows.reserve(static_cast<size_t>(Mode.Functions.Num()) + 1);
	for (const FDMXFixtureFunction& Function : Mode.Functions)
	{
		Rows.push_back({&Function, Function.Channel, Function.GetLastChannel()});
	}
	if (Mode.bFixtureMatrixEnabled)
	{
		const FDMXFixtureMatrix& Matrix = Mode.FixtureMatrixConfig;
		Rows.push_back({nullptr, Matrix.FirstCellChannel, Matrix.GetLastChannel()});
	}
	std::stable_sort(Rows.begin(), Rows.end(), [](const FModeChannelRow& A, const FModeChannelRow& B)
	{
		return A.FirstChannel < B.FirstChannel;
	});
	return Rows;
}

std::string DescribeSignalFormat(EDMXFixtureSignalFormat SignalFormat, bool bUseLSBMode)
{
	return std::to_string(8 * (static_cast<uint8>(SignalFormat) + 1)) + " bit" + (bUseLSBMode ? " LSB" : "");
}

std::string DescribeDistribution(EDMXPixelMappingDistribution Distribution)
{
	static const char* const Names[] =
	{
		"TopLeftToRight", "TopLeftToBottom", "TopLeftToClockwise", "TopLeftToAntiClockwise",
		"TopRightToLeft", "BottomLeftToTop", "TopRightToAntiClockwise", "BottomLeftToClockwise",
		"BottomLeftToRight", "TopRightToBottom", "BottomLeftAntiClockwise", "TopRightToClockwise",
		"BottomRightToLeft", "BottomRightToTop", "BottomRightToClockwise", "BottomRightToAntiClockwise",
	};
	const uint8 Value = static_cast<uint8>(Distribution);
	return Value < 16 ? std::string(Names[Value]) : "distribution " + std::to_string(Value);
}

std::string DescribeChannels(int32 First, int32 Last, const char* Separator)
{
	std::string Text = std::to_string(First);
	if (Last != First)
	{
		Text += Separator;
		Text += std::to_string(Last);
	}
	return Text;
}
