#include "UniverseOccupancy.h"
#include "KestDMXText.h"

#include <algorithm>
#include <map>

#include "Library/DMXEntityFixturePatch.h"
#include "Library/DMXLibrary.h"

namespace
{
	void AddOverlap(FPatchPlacement& Placement, size_t Other)
	{
		++Placement.OverlapCount;
		if (Placement.Overlaps.size() < MaxListedOverlaps)
		{
			Placement.Overlaps.push_back(Other);
		}
	}

	// Marks every pair of patches whose channel ranges share a channel. Patches without a span take
	// no channels. The patches arrive sorted by starting channel, so each patch meets the others in
	// ascending order: those before it while they are walked, then its own followers.
	void FindOverlaps(std::vector<FPatchPlacement>& Patches)
	{
		for (size_t First = 0; First < Patches.size(); ++First)
		{
			if (Patches[First].Span <= 0)
			{
				continue;
			}
			for (size_t Second = First + 1; Second < Patches.size() && Patches[Second].Start <= Patches[First].End; ++Second)
			{
				if (Patches[Second].Span <= 0)
				{
					continue;
				}
				AddOverlap(Patches[First], Second);
				AddOverlap(Patches[Second], First);
			}
		}
	}

	// The runs of channels 1 to 512 whose claim count Keep accepts.
	template <typename KeepFn>
	FChannelRanges CollectRanges(const FUniverseOccupancy& Occupancy, KeepFn&& Keep)
	{
		FChannelRanges Ranges;
		for (int32 Channel = 1; Channel <= DMXChannelsPerUniverse; ++Channel)
		{
			if (!Keep(Occupancy.Claims[Channel]))
			{
				continue;
			}
			if (!Ranges.empty() && Ranges.back().second == Channel - 1)
			{
				Ranges.back().second = Channel;
			}
			else
			{
				Ranges.emplace_back(Channel, Channel);
			}
		}
		return Ranges;
	}

	void CountClaims(FUniverseOccupancy& Occupancy)
	{
		for (const FPatchPlacement& Placement : Occupancy.Patches)
		{
			if (Placement.Span <= 0)
			{
				continue;
			}
			const int32 First = std::max(Placement.Start, 1);
			const int32 Last = std::min(Placement.End, DMXChannelsPerUniverse);
			for (int32 Channel = First; Channel <= Last; ++Channel)
			{
				++Occupancy.Claims[Channel];
			}
		}
		for (int32 Channel = 1; Channel <= DMXChannelsPerUniverse; ++Channel)
		{
			Occupancy.UsedChannels += Occupancy.Claims[Channel] > 0 ? 1 : 0;
		}
		Occupancy.FreeRanges = CollectRanges(Occupancy, [](int32 Claims) { return Claims == 0; });
		Occupancy.SharedRanges = CollectRanges(Occupancy, [](int32 Claims) { return Claims > 1; });
	}
}

std::vector<FUniverseOccupancy> GetUniverseOccupancy(const UDMXLibrary* Library)
{
	std::map<int32, FUniverseOccupancy> Universes;
	if (Library == nullptr)
	{
		return {};
	}
	for (const UDMXEntity* Entity : Library->GetEntities())
	{
		const UDMXEntityFixturePatch* Patch = Cast<UDMXEntityFixturePatch>(Entity);
		if (Patch == nullptr)
		{
			continue;
		}
		FPatchPlacement Placement;
		Placement.Patch = Patch;
		Placement.Start = Patch->GetStartingChannel();
		Placement.End = Patch->GetEndingChannel();
		Placement.Span = Patch->GetChannelSpan();
		FText Reason;
		Placement.bValid = Patch->IsValidEntity(Reason);
		if (!Placement.bValid)
		{
			Placement.InvalidReason = ToUTF8(Reason.ToString());
		}
		FUniverseOccupancy& Occupancy = Universes[Patch->GetUniverseID()];
		Occupancy.Universe = Patch->GetUniverseID();
		Occupancy.Patches.push_back(std::move(Placement));
	}

	std::vector<FUniverseOccupancy> Result;
	Result.reserve(Universes.size());
	for (auto& [Universe, Occupancy] : Universes)
	{
		std::stable_sort(Occupancy.Patches.begin(), Occupancy.Patches.end(), [](const FPatchPlacement& A, const FPatchPlacement& B)
		{
			return A.Start < B.Start;
		});
		FindOverlaps(Occupancy.Patches);
		CountClaims(Occupancy);
		Result.push_back(std::move(Occupancy));
	}
	return Result;
}
