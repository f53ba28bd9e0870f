// The pieces the channel map page is assembled from, and the fixed sizes its layout is made of. The
// page keeps everything above and through the universe grids at these heights, so a rendering can
// be checked pixel by pixel (GetChannelMapCellPoint).
#pragma once

#include <string>
#include "ChannelMapPage.h"

class UDMXLibrary;
struct FPatchPlacement;
struct FUniverseOccupancy;

constexpr int32 ChannelMapColumns = 32;
constexpr int32 ChannelMapRows = 16;

// Page: side padding, then a heading band; each library opens with its own band.
constexpr int32 ChannelMapPagePadding = 24;
constexpr int32 ChannelMapPageHeadHeight = 56;
constexpr int32 ChannelMapLibraryHeadHeight = 76;

// One universe: a heading band, then the grid's SVG with the side panel beside it, then a gap.
constexpr int32 ChannelMapUniverseHeadHeight = 34;
constexpr int32 ChannelMapGridLeft = 44;
constexpr int32 ChannelMapGridTop = 20;
constexpr int32 ChannelMapGridRightMargin = 44;
constexpr int32 ChannelMapGridBottomMargin = 6;
constexpr int32 ChannelMapGridWidth = ChannelMapColumns * ChannelMapCellWidth;
constexpr int32 ChannelMapGridHeight = ChannelMapRows * ChannelMapCellHeight;
constexpr int32 ChannelMapSVGWidth = ChannelMapGridLeft + ChannelMapGridWidth + ChannelMapGridRightMargin;
constexpr int32 ChannelMapSVGHeight = ChannelMapGridTop + ChannelMapGridHeight + ChannelMapGridBottomMargin;
constexpr int32 ChannelMapUniverseGap = 20;
constexpr int32 ChannelMapUniverseHeight = ChannelMapUniverseHeadHeight + ChannelMapSVGHeight + ChannelMapUniverseGap;
constexpr int32 ChannelMapPanelGap = 16;
constexpr int32 ChannelMapPanelWidth = ChannelMapPageWidth - 2 * ChannelMapPagePadding - ChannelMapSVGWidth - ChannelMapPanelGap;

// Inside a patch block: the label's baseline and the height below which nothing but the block's fill
// is drawn.
constexpr int32 ChannelMapLabelBaseline = 15;
constexpr int32 ChannelMapLabelHeight = 18;

// The shared definitions every grid refers to: the hatch of shared channels and the grid with its
// channel numbers. Written once, before the first grid.
void AppendGridDefinitions(std::string& Out);

// The SVG grid of one universe with its patch blocks and shared-channel hatches.
void AppendUniverseGrid(std::string& Out, const FUniverseOccupancy& Occupancy);

// The names of the patches the placement shares channels with, comma-separated, the unlisted ones
// counted at the end.
void AppendOverlapNames(std::string& Out, const FUniverseOccupancy& Occupancy, const FPatchPlacement& Placement);

// The names of the patches claiming any of the channels First to Last, at most MaxListedOverlaps of
// them and the rest counted.
void AppendClaimingPatches(std::string& Out, const FUniverseOccupancy& Occupancy, int32 First, int32 Last);

// The fixture types of the library as cards, each mode a table of its channels.
void AppendFixtureTypes(std::string& Out, const UDMXLibrary* Library);
