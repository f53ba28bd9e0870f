// How the patches of a DMX Library sit in their universes: which channels each claims, which are
// claimed twice, which are free, and which patches the engine calls invalid.
#pragma once

#include <array>
#include <string>
#include <utility>
#include <vector>
#include "CoreMinimal.h"

class UDMXLibrary;
class UDMXEntityFixturePatch;

constexpr int32 DMXChannelsPerUniverse = 512;

// How many of the patches a patch shares channels with are named; a rig that piles thousands of
// patches on one channel would otherwise list every pair.
constexpr size_t MaxListedOverlaps = 8;

// One patch where it sits. End is the engine's ending channel; a patch without a span claims nothing.
struct FPatchPlacement
{
	const UDMXEntityFixturePatch* Patch = nullptr;
	int32 Start = 0;
	int32 End = 0;
	int32 Span = 0;
	bool bValid = true;
	std::string InvalidReason;
	// How many patches share at least one channel with this one, and the positions in the universe's
	// Patches of the first MaxListedOverlaps of them, ascending.
	int32 OverlapCount = 0;
	std::vector<size_t> Overlaps;
};

// Inclusive channel ranges, ascending.
using FChannelRanges = std::vector<std::pair<int32, int32>>;

struct FUniverseOccupancy
{
	int32 Universe = 0;
	// By starting channel; patches starting at the same channel keep the library's order.
	std::vector<FPatchPlacement> Patches;
	// How many patches claim each of the channels 1 to 512 (index 0 unused).
	std::array<int32, DMXChannelsPerUniverse + 1> Claims = {};
	// Channels 1 to 512 claimed by at least one patch.
	int32 UsedChannels = 0;
	FChannelRanges FreeRanges;
	FChannelRanges SharedRanges;
};

// Every universe that holds a patch of the library, ascending.
std::vector<FUniverseOccupancy> GetUniverseOccupancy(const UDMXLibrary* Library);
