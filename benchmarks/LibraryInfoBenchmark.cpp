// dmx_library(path):info() on a library of 1,000 fixture patches, called from Lua.
#include <benchmark/benchmark.h>

#include <stdexcept>
#include "KestDMXRunner.h"
#include "Library/DMXEntityFixturePatch.h"
#include "Library/DMXEntityFixtureType.h"
#include "Library/DMXLibrary.h"
#include "UObject/UObjectGlobals.h"

namespace
{
	constexpr int32 PatchCount = 1000;

	FDMXFixtureFunction MakeFunction(const TCHAR* Name, int32 Channel, EDMXFixtureSignalFormat DataType, int64 DefaultValue)
	{
		FDMXFixtureFunction Function;
		Function.FunctionName = Name;
		Function.Attribute = FDMXAttributeName(FName(Name));
		Function.Channel = Channel;
		Function.DataType = DataType;
		Function.DefaultValue = DefaultValue;
		return Function;
	}

	// A moving head of 14 channels in one mode, plus a 4x4 RGB matrix in a second mode.
	void AddRig(UDMXLibrary* Library)
	{
		FDMXFixtureMode Basic;
		Basic.ModeName = TEXT("Basic");
		Basic.Functions.Add(MakeFunction(TEXT("Dimmer"), 1, EDMXFixtureSignalFormat::E8Bit, 255));
		Basic.Functions.Add(MakeFunction(TEXT("Pan"), 2, EDMXFixtureSignalFormat::E16Bit, 32768));
		Basic.Functions.Add(MakeFunction(TEXT("Tilt"), 4, EDMXFixtureSignalFormat::E16Bit, 32768));
		Basic.Functions.Add(MakeFunction(TEXT("Red"), 6, EDMXFixtureSignalFormat::E8Bit, 0));
		Basic.Functions.Add(MakeFunction(TEXT("Green"), 7, EDMXFixtureSignalFormat::E8Bit, 0));
		Basic.Functions.Add(MakeFunction(TEXT("Blue"), 8, EDMXFixtureSignalFormat::E8Bit, 0));
		Basic.Functions.Add(MakeFunction(TEXT("Zoom"), 9, EDMXFixtureSignalFormat::E24Bit, 100));
		Basic.Functions.Add(MakeFunction(TEXT("Shutter"), 12, EDMXFixtureSignalFormat::E8Bit, 8));
		Basic.Functions.Add(MakeFunction(TEXT("Gobo"), 13, EDMXFixtureSignalFormat::E16Bit, 0));
		Basic.ChannelSpan = 14;

		FDMXFixtureMode Pixels;
		Pixels.ModeName = TEXT("Pixels");
		Pixels.bFixtureMatrixEnabled = true;
		Pixels.FixtureMatrixConfig.XCells = 4;
		Pixels.FixtureMatrixConfig.YCells = 4;
		Pixels.ChannelSpan = 16;

		FDMXEntityFixtureTypeConstructionParams TypeParams;
		TypeParams.ParentDMXLibrary = Library;
		TypeParams.Modes.Add(Basic);
		TypeParams.Modes.Add(Pixels);
		UDMXEntityFixtureType* FixtureType = UDMXEntityFixtureType::CreateFixtureTypeInLibrary(TypeParams, TEXT("Spot"));

		for (int32 PatchIndex = 0; PatchIndex < PatchCount; ++PatchIndex)
		{
			FDMXEntityFixturePatchConstructionParams PatchParams;
			PatchParams.FixtureTypeRef = FDMXEntityFixtureTypeRef(FixtureType);
			PatchParams.UniverseID = 1 + PatchIndex / 32;
			PatchParams.StartingAddress = 1 + (PatchIndex % 32) * 16;
			UDMXEntityFixturePatch* Patch = UDMXEntityFixturePatch::CreateFixturePatchInLibrary(PatchParams, FString(TEXT("Spot_")) + FString::FromInt(PatchIndex + 1));
			Patch->CustomTags.Add(FName(TEXT("Stage")));
		}
	}

	void RunOrThrow(FKestDMXSession& Session, const std::string& Code)
	{
		std::string Error;
		if (!Session.RunScript(Code, "benchmark", Error))
		{
			throw std::runtime_error(Error);
		}
	}

	void BM_LibraryInfo1000Patches(benchmark::State& State)
	{
		FKestDMXSession Session;
		RunOrThrow(Session, "assert(editor.create_library('/Game/Bench/Rig'))");
		AddRig(LoadObject<UDMXLibrary>(nullptr, TEXT("/Game/Bench/Rig.Rig")));
		RunOrThrow(Session,
			"local handle = dmx_library('/Game/Bench/Rig')\n"
			"function bench_info() return handle:info() end\n"
			"local t = bench_info()\n"
			"assert(t.valid and t.fixture_patch_count == 1000, 'the rig did not build')\n"
			"assert(#t.fixture_patches[1].attribute_defaults == 9 and #t.fixture_patches[1].default_raw_channels == 14)");

		sol::protected_function Info = Session.GetLua().GetState()["bench_info"];
		for (auto _ : State)
		{
			sol::protected_function_result Result = Info();
			if (!Result.valid())
			{
				State.SkipWithError("info() raised a Lua error");
				break;
			}
			benchmark::DoNotOptimize(Result);
		}
		State.counters["patches"] = PatchCount;
	}
}

BENCHMARK(BM_LibraryInfo1000Patches)->Unit(benchmark::kMillisecond);
