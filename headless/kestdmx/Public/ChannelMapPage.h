// The channel map: one self-contained HTML page (inline CSS and SVG, nothing fetched, no script) that
// shows DMX Libraries the way a lighting person reads a patch. Each universe is a grid of 32 by 16
// channels with every patch as a block in its editor colour, channels claimed twice hatched red and
// invalid patches outlined; beside it the free ranges, the shared channels and the engine's reasons.
// Then every fixture type's modes, their functions and matrix in channel order, and the full patch
// list.
#pragma once

#include <string>
#include <vector>
#include "CoreMinimal.h"

class UDMXLibrary;

// The page for the libraries, in the order given; libraries that are null are left out.
std::string FormatChannelMapPage(const std::vector<UDMXLibrary*>& Libraries);

// Formats the page and writes it to Path whole or not at all (see WriteOutputFile). On failure
// OutError says what went wrong.
bool WriteChannelMapPage(const std::string& Path, const std::vector<UDMXLibrary*>& Libraries, std::string& OutError);

// A point of the page in CSS pixels from its top left corner.
struct FChannelMapPoint
{
	int32 X = 0;
	int32 Y = 0;
};

// The page is laid out at this width (it scrolls sideways in a narrower window); a channel's cell in
// a grid is this large.
constexpr int32 ChannelMapPageWidth = 1400;
constexpr int32 ChannelMapCellWidth = 28;
constexpr int32 ChannelMapCellHeight = 24;

// The layout is fixed from the top of the page through the universe grids of the first library, so a
// channel's cell can be found on a rendering: the point lies in the cell of Channel (1 to 512) in the
// grid of the universe at UniverseOrdinal (0 for the lowest universe of the first library), in the
// cell's lower part, clear of the label a patch block carries.
FChannelMapPoint GetChannelMapCellPoint(int32 UniverseOrdinal, int32 Channel);
