#include "ChannelMapParts.h"
#include "HTMLWriting.h"
#include "KestDMXText.h"
#include "TextColumns.h"
#include "UniverseOccupancy.h"

#include <algorithm>
#include <vector>

#include "Library/DMXEntityFixturePatch.h"
#include "Library/DMXEntityFixtureType.h"

namespace
{
	// Red of channels claimed by more than one patch; the rendering test looks for it.
	const char* const SharedRed = "#d40000";

	// Roughly how wide one column of label text is at the label's size, for cutting long names.
	constexpr double LabelColumnPixels = 6.4;

	// A block's segments on further grid rows carry the name too when they are at least this wide.
	constexpr int32 MinLabelledCells = 3;

	// A run of channels on one row of the grid.
	struct FGridSegment
	{
		int32 Row = 0;
		int32 Column = 0;
		int32 Cells = 0;
	};

	// The channels First to Last (clipped to 1..512) as one segment per grid row.
	std::vector<FGridSegment> SplitIntoRows(int32 First, int32 Last)
	{
		std::vector<FGridSegment> Segments;
		First = std::max(First, 1);
		Last = std::min(Last, DMXChannelsPerUniverse);
		for (int32 Channel = First; Channel <= Last;)
		{
			const int32 Row = (Channel - 1) / ChannelMapColumns;
			const int32 Column = (Channel - 1) % ChannelMapColumns;
			const int32 Cells = std::min(ChannelMapColumns - Column, Last - Channel + 1);
			Segments.push_back({Row, Column, Cells});
			Channel += Cells;
		}
		return Segments;
	}

	// The grid segments a patch covers; none for a patch without a span.
	std::vector<FGridSegment> GetPatchSegments(const FPatchPlacement& Placement)
	{
		return Placement.Span > 0 ? SplitIntoRows(Placement.Start, Placement.End) : std::vector<FGridSegment>();
	}

	int32 GetSegmentX(const FGridSegment& Segment)
	{
		return ChannelMapGridLeft + Segment.Column * ChannelMapCellWidth;
	}

	int32 GetSegmentY(const FGridSegment& Segment)
	{
		return ChannelMapGridTop + Segment.Row * ChannelMapCellHeight;
	}

	void AppendRect(std::string& Out, int32 X, int32 Y, int32 Width, int32 Height)
	{
		Out += "x=\"";
		AppendNumber(Out, X);
		Out += "\" y=\"";
		AppendNumber(Out, Y);
		Out += "\" width=\"";
		AppendNumber(Out, Width);
		Out += "\" height=\"";
		AppendNumber(Out, Height);
		Out += '"';
	}

	// Grid lines as one path: thin lines between channels, darker ones every eight columns.
	void AppendGridLines(std::string& Out, bool bMajor)
	{
		Out += "<path class=\"";
		Out += bMajor ? "major" : "minor";
		Out += "\" d=\"";
		for (int32 Column = 0; Column <= ChannelMapColumns; ++Column)
		{
			if ((Column % 8 == 0) != bMajor)
			{
				continue;
			}
			Out += 'M';
			AppendNumber(Out, ChannelMapGridLeft + Column * ChannelMapCellWidth);
			Out += ".5 ";
			AppendNumber(Out, ChannelMapGridTop);
			Out += 'v';
			AppendNumber(Out, ChannelMapGridHeight);
		}
		for (int32 Row = 0; Row <= ChannelMapRows; ++Row)
		{
			if ((Row == 0 || Row == ChannelMapRows) != bMajor)
			{
				continue;
			}
			Out += 'M';
			AppendNumber(Out, ChannelMapGridLeft);
			Out += ' ';
			AppendNumber(Out, ChannelMapGridTop + Row * ChannelMapCellHeight);
			Out += ".5h";
			AppendNumber(Out, ChannelMapGridWidth);
		}
		Out += "\"/>";
	}

	void AppendEdgeNumber(std::string& Out, int32 X, int32 Y, const char* Anchor, int32 Number)
	{
		Out += "<text x=\"";
		AppendNumber(Out, X);
		Out += "\" y=\"";
		AppendNumber(Out, Y);
		Out += "\" text-anchor=\"";
		Out += Anchor;
		Out += "\">";
		AppendNumber(Out, Number);
		Out += "</text>";
	}

	std::string DescribeMode(const UDMXEntityFixturePatch* Patch)
	{
		const UDMXEntityFixtureType* FixtureType = Patch->GetFixtureType();
		const int32 ModeIndex = Patch->GetActiveModeIndex();
		std::string Mode = std::to_string(ModeIndex);
		if (FixtureType != nullptr && FixtureType->Modes.IsValidIndex(ModeIndex))
		{
			Mode += ' ' + QuoteForDisplay(ToUTF8(FixtureType->Modes[ModeIndex].ModeName));
		}
		return Mode;
	}

	// The hover text of a patch block: everything a lighting person asks of a patch, one per line.
	void AppendPatchTitle(std::string& Out, const FUniverseOccupancy& Occupancy, const FPatchPlacement& Placement)
	{
		const UDMXEntityFixturePatch* Patch = Placement.Patch;
		const UDMXEntityFixtureType* FixtureType = Patch->GetFixtureType();
		Out += "<title>";
		AppendDisplayName(Out, Patch->Name);
		Out += "\nFixture type: ";
		if (FixtureType != nullptr)
		{
			AppendDisplayName(Out, FixtureType->Name);
			Out += "\nMode: ";
			AppendHTMLText(Out, DescribeMode(Patch));
		}
		else
		{
			Out += "none";
		}
		Out += "\nChannels: ";
		AppendChannels(Out, Placement.Start, Placement.End);
		Out += " of universe ";
		AppendNumber(Out, Occupancy.Universe);
		Out += " (";
		AppendNumber(Out, Placement.Span);
		Out += Placement.Span == 1 ? " channel)" : " channels)";
		Out += "\nFixture ID: ";
		AppendNumber(Out, Patch->GetFixtureID());
		Out += "\nTags: ";
		const TArray<FName>& Tags = Patch->GetCustomTags();
		if (Tags.Num() == 0)
		{
			Out += "none";
		}
		for (int32 Index = 0; Index < Tags.Num(); ++Index)
		{
			Out += Index == 0 ? "" : ", ";
			AppendDisplayName(Out, Tags[Index]);
		}
		if (!Placement.bValid)
		{
			Out += "\nInvalid: ";
			AppendHTMLText(Out, EscapeForDisplay(Placement.InvalidReason));
		}
		if (Placement.OverlapCount > 0)
		{
			Out += "\nShares channels with: ";
			AppendOverlapNames(Out, Occupancy, Placement);
		}
		Out += "</title>";
	}

	// The name on one segment of a block, clipped to the block's upper part so that the block's colour
	// shows below it, and ringed in that colour so that it reads over a hatch too.
	void AppendLabel(std::string& Out, const FGridSegment& Segment, const std::string& Name, FDisplayColor Fill)
	{
		const int32 LabelWidth = Segment.Cells * ChannelMapCellWidth - 2;
		const size_t Columns = static_cast<size_t>((LabelWidth - 8) / LabelColumnPixels);
		Out += "<svg ";
		AppendRect(Out, GetSegmentX(Segment) + 1, GetSegmentY(Segment) + 1, LabelWidth, ChannelMapLabelHeight);
		Out += "><text x=\"4\" y=\"";
		AppendNumber(Out, ChannelMapLabelBaseline - 1);
		Out += "\" stroke=\"";
		AppendColor(Out, Fill);
		Out += IsLightColor(Fill) ? "\">" : "\" class=\"on-dark\">";
		AppendHTMLText(Out, TruncateToWidth(Name, Columns));
		Out += "</text></svg>";
	}

	// The block of one patch: a rectangle per grid row it covers, titled with the patch's details.
	void AppendPatchBlock(std::string& Out, const FUniverseOccupancy& Occupancy, const FPatchPlacement& Placement)
	{
		const std::vector<FGridSegment> Segments = GetPatchSegments(Placement);
		if (Segments.empty())
		{
			return;
		}
		const FDisplayColor Fill = ToDisplayColor(Placement.Patch->EditorColor);
		Out += Placement.bValid ? "<g class=\"patch\">" : "<g class=\"patch invalid\">";
		AppendPatchTitle(Out, Occupancy, Placement);
		for (const FGridSegment& Segment : Segments)
		{
			Out += "<rect ";
			AppendRect(Out, GetSegmentX(Segment) + 1, GetSegmentY(Segment) + 1, Segment.Cells * ChannelMapCellWidth - 2, ChannelMapCellHeight - 2);
			Out += " rx=\"3\" fill=\"";
			AppendColor(Out, Fill);
			Out += "\" stroke=\"";
			AppendColor(Out, Placement.bValid ? DarkenColor(Fill, 0.35f) : FDisplayColor());
			Out += "\"/>";
		}
		Out += "</g>";
	}

	// The patch's name on the widest of its segments and on every other one wide enough to show it.
	void AppendPatchLabels(std::string& Out, const FPatchPlacement& Placement)
	{
		const std::vector<FGridSegment> Segments = GetPatchSegments(Placement);
		size_t Widest = 0;
		for (size_t Index = 0; Index < Segments.size(); ++Index)
		{
			Widest = Segments[Index].Cells > Segments[Widest].Cells ? Index : Widest;
		}
		const FDisplayColor Fill = ToDisplayColor(Placement.Patch->EditorColor);
		const std::string Name = EscapeForDisplay(ToUTF8(Placement.Patch->Name));
		for (size_t Index = 0; Index < Segments.size(); ++Index)
		{
			if (Index == Widest || Segments[Index].Cells >= MinLabelledCells)
			{
				AppendLabel(Out, Segments[Index], Name, Fill);
			}
		}
	}

	// Red hatching over channels claimed by more than one patch, titled with the patches claiming them.
	void AppendSharedChannels(std::string& Out, const FUniverseOccupancy& Occupancy)
	{
		for (const auto& [First, Last] : Occupancy.SharedRanges)
		{
			Out += First == Last ? "<g class=\"shared\"><title>Channel " : "<g class=\"shared\"><title>Channels ";
			AppendChannels(Out, First, Last);
			Out += " claimed by ";
			AppendClaimingPatches(Out, Occupancy, First, Last);
			Out += "</title>";
			for (const FGridSegment& Segment : SplitIntoRows(First, Last))
			{
				Out += "<rect ";
				AppendRect(Out, GetSegmentX(Segment) + 1, GetSegmentY(Segment) + 1, Segment.Cells * ChannelMapCellWidth - 2, ChannelMapCellHeight - 2);
				Out += "/>";
			}
			Out += "</g>";
		}
	}
}

void AppendOverlapNames(std::string& Out, const FUniverseOccupancy& Occupancy, const FPatchPlacement& Placement)
{
	for (size_t Index = 0; Index < Placement.Overlaps.size(); ++Index)
	{
		Out += Index == 0 ? "" : ", ";
		AppendDisplayName(Out, Occupancy.Patches[Placement.Overlaps[Index]].Patch->Name);
	}
	if (const int32 Unlisted = Placement.OverlapCount - static_cast<int32>(Placement.Overlaps.size()); Unlisted > 0)
	{
		Out += " and ";
		AppendNumber(Out, Unlisted);
		Out += " more";
	}
}

void AppendClaimingPatches(std::string& Out, const FUniverseOccupancy& Occupancy, int32 First, int32 Last)
{
	size_t Count = 0;
	for (const FPatchPlacement& Placement : Occupancy.Patches)
	{
		if (Placement.Span <= 0 || Placement.Start > Last || Placement.End < First)
		{
			continue;
		}
		if (Count < MaxListedOverlaps)
		{
			Out += Count == 0 ? "" : ", ";
			AppendDisplayName(Out, Placement.Patch->Name);
		}
		++Count;
	}
	if (Count > MaxListedOverlaps)
	{
		Out += " and ";
		AppendNumber(Out, static_cast<int64>(Count - MaxListedOverlaps));
		Out += " more";
	}
}

void AppendGridDefinitions(std::string& Out)
{
	Out += "<svg class=\"definitions\" width=\"0\" height=\"0\" aria-hidden=\"true\"><defs>";
	Out += "<pattern id=\"shared-hatch\" width=\"7\" height=\"7\" patternUnits=\"userSpaceOnUse\" patternTransform=\"rotate(45)\">";
	Out += "<rect width=\"7\" height=\"7\" fill=\"#ffffff\" fill-opacity=\"0.55\"/><rect width=\"3\" height=\"7\" fill=\"";
	Out += SharedRed;
	Out += "\"/></pattern>";

	Out += "<symbol id=\"universe-grid\" width=\"";
	AppendNumber(Out, ChannelMapSVGWidth);
	Out += "\" height=\"";
	AppendNumber(Out, ChannelMapSVGHeight);
	Out += "\"><rect class=\"cells\" ";
	AppendRect(Out, ChannelMapGridLeft, ChannelMapGridTop, ChannelMapGridWidth, ChannelMapGridHeight);
	Out += "/>";
	AppendGridLines(Out, false);
	AppendGridLines(Out, true);
	for (int32 Column = 0; Column < ChannelMapColumns; ++Column)
	{
		AppendEdgeNumber(Out, ChannelMapGridLeft + Column * ChannelMapCellWidth + ChannelMapCellWidth / 2, ChannelMapGridTop - 6, "middle", Column + 1);
	}
	for (int32 Row = 0; Row < ChannelMapRows; ++Row)
	{
		const int32 Baseline = ChannelMapGridTop + Row * ChannelMapCellHeight + ChannelMapCellHeight / 2 + 4;
		AppendEdgeNumber(Out, ChannelMapGridLeft - 6, Baseline, "end", Row * ChannelMapColumns + 1);
		AppendEdgeNumber(Out, ChannelMapGridLeft + ChannelMapGridWidth + 6, Baseline, "start", (Row + 1) * ChannelMapColumns);
	}
	Out += "</symbol></defs></svg>";
}

void AppendUniverseGrid(std::string& Out, const FUniverseOccupancy& Occupancy)
{
	Out += "<svg class=\"grid\" width=\"";
	AppendNumber(Out, ChannelMapSVGWidth);
	Out += "\" height=\"";
	AppendNumber(Out, ChannelMapSVGHeight);
	Out += "\" role=\"img\" aria-label=\"Universe ";
	AppendNumber(Out, Occupancy.Universe);
	Out += "\"><use href=\"#universe-grid\"/>";
	for (const FPatchPlacement& Placement : Occupancy.Patches)
	{
		AppendPatchBlock(Out, Occupancy, Placement);
	}
	AppendSharedChannels(Out, Occupancy);
	// Names go over the hatches; a pointer passes through them to the block or hatch below.
	Out += "<g class=\"labels\">";
	for (const FPatchPlacement& Placement : Occupancy.Patches)
	{
		AppendPatchLabels(Out, Placement);
	}
	Out += "</g></svg>";
}
