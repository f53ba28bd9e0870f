// The check's last look, at the state the scripts left: fixture patches the engine finds invalid, and
// patches of one library and universe that share channels.
#include "KestDMXCheckCall.h"
#include "KestDMXCheckLookup.h"

#include <algorithm>

#include "KestDMXProject.h"
#include "UObject/Package.h"

namespace
{
	struct FPatchPlace
	{
		const UDMXEntityFixturePatch* Patch = nullptr;
		int32 Universe = 0;
		int32 Start = 0;
		int32 End = 0;
		const FKestCheckSite* Site = nullptr;
	};

	std::string DescribeChannels(const FPatchPlace& Place)
	{
		return Place.Start == Place.End ? "channel " + std::to_string(Place.Start) : "channels " + std::to_string(Place.Start) + "-" + std::to_string(Place.End);
	}

	// Where a finding about the library's state goes when no call touched the patches involved: the
	// first line of the library's file (editors take no line 0).
	FKestCheckSite GetLibrarySite(const UDMXLibrary* Library, const std::string& ProjectDir)
	{
		FKestCheckSite Site;
		Site.Line = 1;
		const FString PackageName = Library->GetOutermost()->GetName();
		Site.File = ProjectDir.empty() ? std::string() : GetProjectFileForPackage(ProjectDir, PackageName);
		if (Site.File.empty())
		{
			Site.File = ToUTF8(PackageName);
		}
		return Site;
	}

	void Report(FKestCheckLog& Log, const FKestCheckSite& Site, const std::string& Code, const std::string& Message, nlohmann::json Used)
	{
		FKestCheckFinding Finding;
		Finding.File = Site.File;
		Finding.Line = Site.Line;
		Finding.Code = Code;
		Finding.Message = Message;
		Finding.Call = Site.Call;
		Finding.Used = std::move(Used);
		Log.Findings.push_back(std::move(Finding));
	}

	void CheckLibrary(FKestCheckLog& Log, const UDMXLibrary* Library, const std::string& ProjectDir)
	{
		const FKestCheckSite LibrarySite = GetLibrarySite(Library, ProjectDir);
		const std::string LibraryPath = ToUTF8(Library->GetPathName());
		std::vector<FPatchPlace> Places;
		for (const UDMXEntityFixturePatch* Patch : Library->GetEntitiesTypeCast<UDMXEntityFixturePatch>())
		{
			if (Patch == nullptr)
			{
				continue;
			}
			const auto Found = Log.PatchSites.find(GetEntityKey(Patch));
			FPatchPlace Place;
			Place.Patch = Patch;
			Place.Universe = Patch->GetUniverseID();
			Place.Start = Patch->GetStartingChannel();
			Place.End = Patch->GetEndingChannel();
			Place.Site = Found != Log.PatchSites.end() ? &Found->second : &LibrarySite;

			FText Reason;
			if (!Patch->IsValidEntity(Reason))
			{
				Report(Log, *Place.Site, "invalid-patch", "fixture patch " + QuoteText(ToUTF8(Patch->Name)) + " (universe " + std::to_string(Place.Universe)
					+ ", channel " + std::to_string(Place.Start) + ") of " + LibraryPath + " is not valid: "
					+ ToUTF8(Reason.ToString()), MakeJsonText(ToUTF8(Reason.ToString())));
			}
			if (Patch->GetChannelSpan() > 0)
			{
				Places.push_back(Place);
			}
		}

		std::stable_sort(Places.begin(), Places.end(), [](const FPatchPlace& A, const FPatchPlace& B)
		{
			return A.Universe != B.Universe ? A.Universe < B.Universe : A.Start < B.Start;
		});
		for (size_t First = 0; First < Places.size(); ++First)
		{
			for (size_t Second = First + 1; Second < Places.size() && Places[Second].Universe == Places[First].Universe && Places[Second].Start <= Places[First].End; ++Second)
			{
				const FPatchPlace& A = Places[First];
				const FPatchPlace& B = Places[Second];
				// The call that made the overlap is the later of the two.
				const FKestCheckSite* Site = A.Site->Order > B.Site->Order ? A.Site : B.Site;
				nlohmann::json Used;
				Used["universe"] = A.Universe;
				Used["patches"] = {MakeJsonText(ToUTF8(A.Patch->Name)), MakeJsonText(ToUTF8(B.Patch->Name))};
				Report(Log, *Site, "overlap", "fixture patches " + QuoteText(ToUTF8(A.Patch->Name)) + " (" + DescribeChannels(A) + ") and " + QuoteText(ToUTF8(B.Patch->Name))
					+ " (" + DescribeChannels(B) + ") of " + LibraryPath + " share channels in universe " + std::to_string(A.Universe), Used);
			}
		}
	}
}

void CheckKestDMXFinalState(FKestCheckLog& Log, const std::string& ProjectDir)
{
	for (const UDMXLibrary* Library : GetLoadedLibraries())
	{
		CheckLibrary(Log, Library, ProjectDir);
	}
}
