#include "ChannelMapPage.h"
#include "ChannelMapParts.h"
#include "HTMLWriting.h"
#include "KestDMXText.h"
#include "OutputFile.h"
#include "TextColumns.h"
#include "UniverseOccupancy.h"

#include "Library/DMXEntityFixturePatch.h"
#include "Library/DMXEntityFixtureType.h"
#include "Library/DMXLibrary.h"

namespace
{
	// The layout's fixed sizes come from ChannelMapParts.h, so the page and GetChannelMapCellPoint
	// agree; everything below the grids may flow.
	std::string MakeStyle()
	{
		const auto Px = [](int32 Value) { return std::to_string(Value) + "px"; };
		std::string Style;
		Style += "*{box-sizing:border-box}";
		Style += "html{background:#f3f5f8}";
		Style += "body{margin:0;padding:0 " + Px(ChannelMapPagePadding) + " 48px;min-width:" + Px(ChannelMapPageWidth)
			+ ";font:13px/1.4 \"DejaVu Sans\",Verdana,Arial,sans-serif;color:#1c2330}";
		Style += "h1,h2,h3,h4,p,ul{margin:0}ul{padding-left:18px}";
		Style += ".definitions{position:absolute;width:0;height:0;overflow:hidden}";
		Style += ".page-head{height:" + Px(ChannelMapPageHeadHeight) + ";display:flex;align-items:center;gap:28px;white-space:nowrap;overflow:hidden}";
		Style += ".page-head h1{font-size:20px}.legend{display:flex;gap:18px;color:#4a5565;font-size:12px;align-items:center}";
		Style += ".legend svg{vertical-align:middle;margin-right:6px}";
		Style += ".library-head{height:" + Px(ChannelMapLibraryHeadHeight) + ";padding-top:14px;border-top:2px solid #c5cdd8;white-space:nowrap;overflow:hidden}";
		Style += ".library-head h2{font-size:17px;overflow:hidden;text-overflow:ellipsis}.library-head .summary{margin-top:6px;color:#4a5565}";
		// A universe off screen is not rendered until it scrolls into view; its height is fixed anyway.
		Style += ".universe{height:" + Px(ChannelMapUniverseHeight) + ";overflow:hidden;content-visibility:auto;contain-intrinsic-size:auto "
			+ Px(ChannelMapUniverseHeight) + "}";
		Style += ".universe h3{height:" + Px(ChannelMapUniverseHeadHeight) + ";line-height:" + Px(ChannelMapUniverseHeadHeight)
			+ ";font-size:15px;white-space:nowrap;overflow:hidden;text-overflow:ellipsis}";
		Style += ".universe h3 .note{font-weight:normal}";
		Style += ".universe-body{display:flex;gap:" + Px(ChannelMapPanelGap) + ";height:" + Px(ChannelMapSVGHeight) + "}";
		Style += ".grid{display:block;flex:none}";
		Style += ".panel{flex:none;width:" + Px(ChannelMapPanelWidth) + ";height:" + Px(ChannelMapGridHeight)
			+ ";margin-top:" + Px(ChannelMapGridTop) + ";overflow:auto;background:#fff;border:1px solid #d3dae3;border-radius:6px;padding:8px 12px;font-size:12px}";
		Style += ".panel h4{font-size:12px;margin:6px 0 2px;color:#4a5565}.panel h4:first-child{margin-top:0}";
		Style += ".panel .bad{color:#a40000}.panel li{overflow-wrap:anywhere}";
		Style += ".note{color:#5b6575}.none{color:#5b6575;font-style:italic}";
		Style += "svg text{font-family:\"DejaVu Sans\",Verdana,Arial,sans-serif}";
		Style += "#universe-grid text{font-size:9px;fill:#7a8492}";
		Style += ".cells{fill:#fff}.minor,.major{fill:none;shape-rendering:crispEdges}.minor{stroke:#e2e6eb}.major{stroke:#a9b2bd}";
		Style += ".labels{pointer-events:none}.labels text{font-size:11px;fill:#111;stroke-width:3px;paint-order:stroke;stroke-linejoin:round}.labels text.on-dark{fill:#fff}";
		Style += ".patch rect{stroke-width:1}.invalid rect{stroke-width:2;stroke-dasharray:5 3}";
		Style += ".shared rect{fill:url(#shared-hatch);stroke:#d40000;stroke-width:2}";
		Style += ".part{font-size:15px;margin:8px 0 10px}";
		Style += ".types{display:grid;grid-template-columns:repeat(auto-fill,minmax(420px,1fr));gap:14px;align-items:start}";
		Style += ".type{background:#fff;border:1px solid #d3dae3;border-radius:6px;padding:10px 12px}.type h3{font-size:14px;margin-bottom:6px}";
		Style += ".mode{border-collapse:collapse;width:100%;margin:6px 0 4px;font-size:12px}";
		Style += ".mode caption{text-align:left;padding:2px 0 4px}";
		Style += ".mode th{text-align:left;font-weight:normal;color:#5b6575;border-bottom:1px solid #d3dae3;padding:2px 8px 2px 0}";
		Style += ".mode td{border-bottom:1px solid #eef1f4;padding:2px 8px 2px 0;vertical-align:top;overflow-wrap:anywhere}";
		Style += ".ch,.num{white-space:nowrap;font-variant-numeric:tabular-nums}.format{white-space:nowrap;color:#36506e}";
		Style += ".mode tr.matrix td{background:#f1f5fb}";
		Style += ".patch-list{margin-top:18px}.patch-list summary{cursor:pointer;font-size:15px;font-weight:bold}";
		Style += ".patch-list table{border-collapse:collapse;margin-top:8px;background:#fff;font-size:12px}";
		Style += ".patch-list th,.patch-list td{border-bottom:1px solid #e6eaee;padding:3px 10px 3px 0;text-align:left;vertical-align:top}";
		Style += ".swatch{display:inline-block;width:14px;height:14px;border-radius:3px;border:1px solid rgba(0,0,0,.35);vertical-align:middle}";
		Style += "td.bad{color:#a40000}";
		return Style;
	}

	void AppendLegend(std::string& Out)
	{
		Out += "<div class=\"legend\">";
		Out += "<span><svg width=\"28\" height=\"16\"><rect x=\"1\" y=\"1\" width=\"26\" height=\"14\" rx=\"3\" fill=\"#5b8def\" stroke=\"#3b5c9b\"/></svg>patch in its editor colour</span>";
		Out += "<span><svg width=\"28\" height=\"16\"><rect x=\"1\" y=\"1\" width=\"26\" height=\"14\" rx=\"3\" fill=\"#5b8def\" stroke=\"#000\" stroke-width=\"2\" stroke-dasharray=\"5 3\"/></svg>invalid patch</span>";
		Out += "<span><svg width=\"28\" height=\"16\" class=\"shared\"><rect x=\"1\" y=\"1\" width=\"26\" height=\"14\"/></svg>channels claimed by more than one patch</span>";
		Out += "<span>hover a block for its details</span>";
		Out += "</div>";
	}

	void AppendRanges(std::string& Out, const FChannelRanges& Ranges)
	{
		for (size_t Index = 0; Index < Ranges.size(); ++Index)
		{
			Out += Index == 0 ? "" : ", ";
			AppendChannels(Out, Ranges[Index].first, Ranges[Index].second);
		}
	}

	bool IsOnGrid(const FPatchPlacement& Placement)
	{
		return Placement.Span > 0 && Placement.End >= 1 && Placement.Start <= DMXChannelsPerUniverse;
	}

	// Beside the grid: what needs attention first, then the free channels.
	void AppendUniversePanel(std::string& Out, const FUniverseOccupancy& Occupancy)
	{
		Out += "<aside class=\"panel\">";
		if (!Occupancy.SharedRanges.empty())
		{
			Out += "<h4>Shared channels</h4><ul class=\"bad\">";
			for (const auto& [First, Last] : Occupancy.SharedRanges)
			{
				Out += "<li><b>";
				AppendChannels(Out, First, Last);
				Out += "</b>: ";
				AppendClaimingPatches(Out, Occupancy, First, Last);
				Out += "</li>";
			}
			Out += "</ul>";
		}

		bool bAnyInvalid = false;
		for (const FPatchPlacement& Placement : Occupancy.Patches)
		{
			if (Placement.bValid)
			{
				continue;
			}
			Out += bAnyInvalid ? "" : "<h4>Invalid patches</h4><ul class=\"bad\">";
			bAnyInvalid = true;
			Out += "<li><b>";
			AppendDisplayName(Out, Placement.Patch->Name);
			Out += "</b> (";
			AppendChannels(Out, Placement.Start, Placement.Span > 0 ? Placement.End : Placement.Start);
			Out += "): ";
			AppendHTMLText(Out, EscapeForDisplay(Placement.InvalidReason));
			Out += "</li>";
		}
		Out += bAnyInvalid ? "</ul>" : "";

		bool bAnyOffGrid = false;
		for (const FPatchPlacement& Placement : Occupancy.Patches)
		{
			if (IsOnGrid(Placement))
			{
				continue;
			}
			Out += bAnyOffGrid ? "" : "<h4>Not on the grid</h4><ul>";
			bAnyOffGrid = true;
			Out += "<li><b>";
			AppendDisplayName(Out, Placement.Patch->Name);
			Out += "</b>: ";
			if (Placement.Span <= 0)
			{
				Out += "no channels, starting at ";
				AppendNumber(Out, Placement.Start);
			}
			else
			{
				Out += "channels ";
				AppendChannels(Out, Placement.Start, Placement.End);
				Out += " lie outside 1\xE2\x80\x93" "512";
			}
			Out += "</li>";
		}
		Out += bAnyOffGrid ? "</ul>" : "";

		Out += "<h4>Free channels</h4><p>";
		if (Occupancy.FreeRanges.empty())
		{
			Out += "none";
		}
		AppendRanges(Out, Occupancy.FreeRanges);
		Out += "</p></aside>";
	}

	void AppendUniverse(std::string& Out, const FUniverseOccupancy& Occupancy)
	{
		int32 InvalidCount = 0;
		for (const FPatchPlacement& Placement : Occupancy.Patches)
		{
			InvalidCount += Placement.bValid ? 0 : 1;
		}
		int32 SharedCount = 0;
		for (const auto& [First, Last] : Occupancy.SharedRanges)
		{
			SharedCount += Last - First + 1;
		}

		Out += "<div class=\"universe\"><h3>Universe ";
		AppendNumber(Out, Occupancy.Universe);
		Out += " <span class=\"note\">\xC2\xB7 ";
		AppendNumber(Out, Occupancy.UsedChannels);
		Out += " of 512 channels used \xC2\xB7 ";
		AppendNumber(Out, DMXChannelsPerUniverse - Occupancy.UsedChannels);
		Out += " free \xC2\xB7 ";
		AppendNumber(Out, static_cast<int64>(Occupancy.Patches.size()));
		Out += Occupancy.Patches.size() == 1 ? " patch" : " patches";
		if (InvalidCount > 0)
		{
			Out += " \xC2\xB7 ";
			AppendNumber(Out, InvalidCount);
			Out += " invalid";
		}
		if (SharedCount > 0)
		{
			Out += " \xC2\xB7 ";
			AppendNumber(Out, SharedCount);
			Out += SharedCount == 1 ? " shared channel" : " shared channels";
		}
		Out += "</span></h3><div class=\"universe-body\">";
		AppendUniverseGrid(Out, Occupancy);
		AppendUniversePanel(Out, Occupancy);
		Out += "</div></div>";
	}

	void AppendPatchRow(std::string& Out, const FUniverseOccupancy& Occupancy, const FPatchPlacement& Placement)
	{
		const UDMXEntityFixturePatch* Patch = Placement.Patch;
		const UDMXEntityFixtureType* FixtureType = Patch->GetFixtureType();
		Out += "<tr><td><span class=\"swatch\" style=\"background:";
		AppendColor(Out, ToDisplayColor(Patch->EditorColor));
		Out += "\"></span></td><td class=\"num\">";
		AppendNumber(Out, Occupancy.Universe);
		Out += "</td><td class=\"ch\">";
		AppendChannels(Out, Placement.Start, Placement.Span > 0 ? Placement.End : Placement.Start);
		Out += "</td><td>";
		AppendDisplayName(Out, Patch->Name);
		Out += "</td><td>";
		if (FixtureType != nullptr)
		{
			AppendDisplayName(Out, FixtureType->Name);
		}
		else
		{
			Out += "<span class=\"none\">none</span>";
		}
		Out += "</td><td>";
		const int32 ModeIndex = Patch->GetActiveModeIndex();
		AppendNumber(Out, ModeIndex);
		if (FixtureType != nullptr && FixtureType->Modes.IsValidIndex(ModeIndex))
		{
			Out += ' ';
			AppendDisplayName(Out, FixtureType->Modes[ModeIndex].ModeName);
		}
		Out += "</td><td class=\"num\">";
		AppendNumber(Out, Patch->GetFixtureID());
		Out += "</td><td>";
		const TArray<FName>& Tags = Patch->GetCustomTags();
		for (int32 Index = 0; Index < Tags.Num(); ++Index)
		{
			Out += Index == 0 ? "" : ", ";
			AppendDisplayName(Out, Tags[Index]);
		}
		Out += Placement.bValid && Placement.OverlapCount == 0 ? "</td><td>" : "</td><td class=\"bad\">";
		if (!Placement.bValid)
		{
			AppendHTMLText(Out, EscapeForDisplay(Placement.InvalidReason));
		}
		if (Placement.OverlapCount > 0)
		{
			Out += Placement.bValid ? "shares channels with " : "; shares channels with ";
			AppendOverlapNames(Out, Occupancy, Placement);
		}
		Out += "</td></tr>";
	}

	void AppendPatchList(std::string& Out, const std::vector<FUniverseOccupancy>& Universes, int32 PatchCount)
	{
		Out += "<details class=\"patch-list\"><summary>All ";
		AppendNumber(Out, PatchCount);
		Out += PatchCount == 1 ? " patch" : " patches";
		Out += "</summary><table><thead><tr><th></th><th>Universe</th><th>Channels</th><th>Name</th><th>Fixture type</th><th>Mode</th>"
			"<th>Fixture ID</th><th>Tags</th><th>Problems</th></tr></thead><tbody>";
		for (const FUniverseOccupancy& Occupancy : Universes)
		{
			for (const FPatchPlacement& Placement : Occupancy.Patches)
			{
				AppendPatchRow(Out, Occupancy, Placement);
			}
		}
		Out += "</tbody></table></details>";
	}

	void AppendLibrary(std::string& Out, const UDMXLibrary* Library)
	{
		const std::vector<FUniverseOccupancy> Universes = GetUniverseOccupancy(Library);
		int32 FixtureTypeCount = 0;
		for (const UDMXEntity* Entity : Library->GetEntities())
		{
			FixtureTypeCount += Cast<UDMXEntityFixtureType>(Entity) != nullptr ? 1 : 0;
		}
		int32 PatchCount = 0;
		int32 InvalidCount = 0;
		int32 OverlapCount = 0;
		for (const FUniverseOccupancy& Occupancy : Universes)
		{
			for (const FPatchPlacement& Placement : Occupancy.Patches)
			{
				++PatchCount;
				InvalidCount += Placement.bValid ? 0 : 1;
				OverlapCount += Placement.OverlapCount > 0 ? 1 : 0;
			}
		}

		Out += "<section class=\"library\"><header class=\"library-head\"><h2>DMX Library ";
		AppendDisplayName(Out, Library->GetPathName());
		Out += "</h2><p class=\"summary\">";
		AppendNumber(Out, FixtureTypeCount);
		Out += FixtureTypeCount == 1 ? " fixture type \xC2\xB7 " : " fixture types \xC2\xB7 ";
		AppendNumber(Out, PatchCount);
		Out += PatchCount == 1 ? " patch in " : " patches in ";
		AppendNumber(Out, static_cast<int64>(Universes.size()));
		Out += Universes.size() == 1 ? " universe \xC2\xB7 " : " universes \xC2\xB7 ";
		AppendNumber(Out, InvalidCount);
		Out += " invalid \xC2\xB7 ";
		AppendNumber(Out, OverlapCount);
		Out += " overlapping</p></header>";

		if (Universes.empty())
		{
			Out += "<p class=\"none\">No fixture patches.</p>";
		}
		for (const FUniverseOccupancy& Occupancy : Universes)
		{
			AppendUniverse(Out, Occupancy);
		}
		AppendFixtureTypes(Out, Library);
		if (PatchCount > 0)
		{
			AppendPatchList(Out, Universes, PatchCount);
		}
		Out += "</section>";
	}
}

std::string FormatChannelMapPage(const std::vector<UDMXLibrary*>& Libraries)
{
	// Room for the page of a large rig at once: its patches take about 600 bytes each.
	size_t EntityCount = 0;
	for (const UDMXLibrary* Library : Libraries)
	{
		EntityCount += Library != nullptr ? static_cast<size_t>(Library->GetEntities().Num()) : 0;
	}
	std::string Out;
	Out.reserve(64 * 1024 + 640 * EntityCount);
	Out += "<!DOCTYPE html>\n<html lang=\"en\"><head><meta charset=\"utf-8\"/><meta name=\"viewport\" content=\"width=device-width\"/>"
		"<title>DMX channel map</title><style>";
	Out += MakeStyle();
	Out += "</style></head>\n<body>";
	AppendGridDefinitions(Out);

	int32 LibraryCount = 0;
	for (const UDMXLibrary* Library : Libraries)
	{
		LibraryCount += Library != nullptr ? 1 : 0;
	}
	Out += "<header class=\"page-head\"><h1>DMX channel map</h1><span class=\"note\">";
	AppendNumber(Out, LibraryCount);
	Out += LibraryCount == 1 ? " DMX Library</span>" : " DMX Libraries</span>";
	AppendLegend(Out);
	Out += "</header>\n";
	if (LibraryCount == 0)
	{
		Out += "<p class=\"none\">No DMX Library.</p>";
	}
	for (const UDMXLibrary* Library : Libraries)
	{
		if (Library != nullptr)
		{
			AppendLibrary(Out, Library);
			Out += '\n';
		}
	}
	Out += "</body></html>\n";
	return Out;
}

bool WriteChannelMapPage(const std::string& Path, const std::vector<UDMXLibrary*>& Libraries, std::string& OutError)
{
	return WriteOutputFile(Path, FormatChannelMapPage(Libraries), OutError);
}

FChannelMapPoint GetChannelMapCellPoint(int32 UniverseOrdinal, int32 Channel)
{
	const int32 Row = (Channel - 1) / ChannelMapColumns;
	const int32 Column = (Channel - 1) % ChannelMapColumns;
	FChannelMapPoint Point;
	Point.X = ChannelMapPagePadding + ChannelMapGridLeft + Column * ChannelMapCellWidth + ChannelMapCellWidth / 2;
	Point.Y = ChannelMapPageHeadHeight + ChannelMapLibraryHeadHeight + UniverseOrdinal * ChannelMapUniverseHeight + ChannelMapUniverseHeadHeight
		+ ChannelMapGridTop + Row * ChannelMapCellHeight + (ChannelMapLabelHeight + ChannelMapCellHeight) / 2;
	return Point;
}
