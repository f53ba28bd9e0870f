// The channel map page of a library of 10,000 fixture patches in 212 universes, against its physical
// limit: a hand-written loop that reads the same engine fields of every patch and appends as many
// bytes to a string, with none of the page's layout work. The ratio of the two is reported.
#include <benchmark/benchmark.h>

#include <charconv>
#include <ctime>
#include <stdexcept>
#include "ChannelMapPage.h"
#include "KestDMXRunner.h"
#include "KestDMXText.h"
#include "LibraryReport.h"
#include "Library/DMXEntityFixturePatch.h"
#include "Library/DMXEntityFixtureType.h"
#include "Library/DMXLibrary.h"

namespace
{
	constexpr int32 PatchCount = 10000;

	// Four of five patches are 12-channel spots, every fifth a one-channel par; a gap of eight
	// channels after every ninth patch; a universe holds what fits.
	UDMXLibrary* BuildRig(FKestDMXSession& Session)
	{
		std::string Error;
		if (!Session.RunScript("assert(editor.create_library('/Game/Bench/Rig'))", "benchmark", Error))
		{
			throw std::runtime_error(Error);
		}
		UDMXLibrary* Library = LoadLibraryForReport("/Game/Bench/Rig");

		const auto MakeType = [Library](const TCHAR* Name, int32 Channels)
		{
			FDMXFixtureMode Mode;
			Mode.ModeName = TEXT("Standard");
			for (int32 Channel = 1; Channel <= Channels; ++Channel)
			{
				FDMXFixtureFunction Function;
				Function.FunctionName = FString(TEXT("Function ")) + FString::FromInt(Channel);
				Function.Channel = Channel;
				Mode.Functions.Add(Function);
			}
			Mode.ChannelSpan = Channels;
			FDMXEntityFixtureTypeConstructionParams Params;
			Params.ParentDMXLibrary = Library;
			Params.Modes.Add(Mode);
			return UDMXEntityFixtureType::CreateFixtureTypeInLibrary(Params, Name);
		};
		UDMXEntityFixtureType* Spot = MakeType(TEXT("Spot"), 12);
		UDMXEntityFixtureType* Par = MakeType(TEXT("Par"), 1);

		int32 Universe = 1;
		int32 Channel = 1;
		for (int32 Index = 1; Index <= PatchCount; ++Index)
		{
			const bool bSpot = Index % 5 != 0;
			const int32 Span = bSpot ? 12 : 1;
			if (Channel + Span - 1 > 512)
			{
				++Universe;
				Channel = 1;
			}
			FDMXEntityFixturePatchConstructionParams Params;
			Params.FixtureTypeRef = FDMXEntityFixtureTypeRef(bSpot ? Spot : Par);
			Params.UniverseID = Universe;
			Params.StartingAddress = Channel;
			UDMXEntityFixturePatch* Patch = UDMXEntityFixturePatch::CreateFixturePatchInLibrary(Params, FString(bSpot ? TEXT("Spot ") : TEXT("Par ")) + FString::FromInt(Index));
			Patch->CustomTags.Add(FName(TEXT("Truss")));
			Channel += Span + (Index % 9 == 0 ? 8 : 0);
		}
		return Library;
	}

	// The floor: every patch's name, universe, channels, colour, fixture id and tags read once, and
	// the page's number of bytes appended.
	std::string WriteLimitPage(const UDMXLibrary* Library, size_t PageBytes)
	{
		std::string Out;
		Out.reserve(PageBytes);
		const size_t PerPatch = PageBytes / PatchCount;
		for (const UDMXEntity* Entity : Library->GetEntities())
		{
			const UDMXEntityFixturePatch* Patch = Cast<UDMXEntityFixturePatch>(Entity);
			if (Patch == nullptr)
			{
				continue;
			}
			const size_t Start = Out.size();
			char Number[16];
			for (const int32 Value : {Patch->GetUniverseID(), Patch->GetStartingChannel(), Patch->GetChannelSpan(), Patch->GetFixtureID()})
			{
				Out.append(Number, std::to_chars(Number, Number + sizeof(Number), Value).ptr);
			}
			const FLinearColor& Color = Patch->EditorColor;
			Out += static_cast<char>(Color.R * 255.0f);
			Out += static_cast<char>(Color.G * 255.0f);
			Out += static_cast<char>(Color.B * 255.0f);
			Out += ToUTF8(Patch->Name);
			for (const FName& Tag : Patch->GetCustomTags())
			{
				Out += ToUTF8(Tag.ToString());
			}
			if (Out.size() < Start + PerPatch)
			{
				Out.append(Start + PerPatch - Out.size(), ' ');
			}
		}
		Out.append(PageBytes > Out.size() ? PageBytes - Out.size() : 0, ' ');
		return Out;
	}

	// CPU seconds of the process, like the benchmark's CPU column.
	double GetCPUSeconds()
	{
		timespec Now;
		clock_gettime(CLOCK_PROCESS_CPUTIME_ID, &Now);
		return static_cast<double>(Now.tv_sec) + static_cast<double>(Now.tv_nsec) * 1e-9;
	}

	void BM_ChannelMapPage10000Patches(benchmark::State& State)
	{
		FKestDMXSession Session;
		UDMXLibrary* Library = BuildRig(Session);
		const std::vector<UDMXLibrary*> Libraries = {Library};
		size_t PageBytes = 0;
		const double Begin = GetCPUSeconds();
		for (auto _ : State)
		{
			const std::string Page = FormatChannelMapPage(Libraries);
			PageBytes = Page.size();
			benchmark::DoNotOptimize(Page.data());
		}
		const double PageSeconds = (GetCPUSeconds() - Begin) / static_cast<double>(State.iterations());

		constexpr int LimitRuns = 20;
		const double LimitBegin = GetCPUSeconds();
		for (int Run = 0; Run < LimitRuns; ++Run)
		{
			const std::string Limit = WriteLimitPage(Library, PageBytes);
			benchmark::DoNotOptimize(Limit.data());
		}
		const double LimitSeconds = (GetCPUSeconds() - LimitBegin) / LimitRuns;

		State.counters["patches"] = PatchCount;
		State.counters["page_MB"] = static_cast<double>(PageBytes) / 1e6;
		State.counters["limit_cpu_ms"] = LimitSeconds * 1e3;
		State.counters["x_limit"] = PageSeconds / LimitSeconds;
	}
}

BENCHMARK(BM_ChannelMapPage10000Patches)->Unit(benchmark::kMillisecond);
