// Loading and saving a project of N fixture patches, each used by a DMX component of one actor, for N
// from 1,000 to 8,000, with the fitted complexity. Beside each, its physical limit: the same bytes
// read and parsed as JSON without the engine (load), or the same JSON written and renamed into place
// (save). The counter "x_limit" is the ratio of the two at that N, in CPU time of the process, so that
// other work on the machine does not bend it.
#include <benchmark/benchmark.h>

#include <ctime>
#include <cstdio>
#include <filesystem>
#include <fcntl.h>
#include <fstream>
#include <map>
#include <memory>
#include <nlohmann/json.hpp>
#include <stdexcept>
#include <unistd.h>

#include "Engine/World.h"
#include "Game/DMXComponent.h"
#include "GameFramework/Actor.h"
#include "HeadlessEditor.h"
#include "KestDMXProject.h"
#include "Library/DMXEntityFixturePatch.h"
#include "Library/DMXEntityFixtureType.h"
#include "Library/DMXLibrary.h"
#include "UObject/Package.h"
#include "UObject/UObjectGlobals.h"

namespace
{
	const char* const LibraryFile = "Content/DMX/Rig.dmxlib.json";
	const char* const LevelFile = "Content/Maps/Untitled.level.json";

	std::filesystem::path GetProjectDir(int64_t Patches)
	{
		return std::filesystem::temp_directory_path() / ("kest_bench_project_" + std::to_string(getpid()) + "_" + std::to_string(Patches));
	}

	void RemoveProjects()
	{
		for (int64_t Patches = 1000; Patches <= 8000; Patches *= 2)
		{
			std::error_code Ignored;
			std::filesystem::remove_all(GetProjectDir(Patches), Ignored);
		}
	}

	// The project of that size on disk, made on first use: a fixture type of 9 functions and N patches
	// spread over universes, each used by a component.
	std::string EnsureProject(int64_t Patches)
	{
		const std::filesystem::path Dir = GetProjectDir(Patches);
		if (std::filesystem::exists(Dir / LevelFile))
		{
			return Dir.string();
		}
		static const bool bRegistered = std::atexit(&RemoveProjects) == 0;
		(void)bRegistered;
		std::filesystem::create_directories(Dir);
		FHeadlessEditor Editor;
		FKestDMXProject Project;
		std::string Error;
		if (!LoadKestDMXProject(Dir.string(), Editor, Project, Error))
		{
			throw std::runtime_error(Error);
		}
		UPackage* Package = CreatePackage(TEXT("/Game/DMX/Rig"));
		UDMXLibrary* Library = NewObject<UDMXLibrary>(Package, UDMXLibrary::StaticClass(), FName(TEXT("Rig")), RF_Public | RF_Standalone | RF_Transactional);
		FDMXFixtureMode Mode;
		Mode.ModeName = TEXT("Basic");
		for (int32 Channel = 1; Channel <= 9; ++Channel)
		{
			FDMXFixtureFunction Function;
			Function.FunctionName = FString(TEXT("Function ")) + FString::FromInt(Channel);
			Function.Channel = Channel;
			Mode.Functions.Add(Function);
		}
		FDMXEntityFixtureTypeConstructionParams TypeParams;
		TypeParams.ParentDMXLibrary = Library;
		TypeParams.Modes.Add(Mode);
		UDMXEntityFixtureType* FixtureType = UDMXEntityFixtureType::CreateFixtureTypeInLibrary(TypeParams, TEXT("Spot"));
		AActor* Rig = Editor.GetEditorWorld()->SpawnActor(AActor::StaticClass(), FName(TEXT("Rig")));
		for (int32 Index = 0; Index < Patches; ++Index)
		{
			UDMXEntityFixturePatch* Patch = NewObject<UDMXEntityFixturePatch>(Library, UDMXEntityFixturePatch::StaticClass(),
				FName(FString(TEXT("Patch_")) + FString::FromInt(Index)), RF_Transactional);
			Patch->Name = FString(TEXT("Spot ")) + FString::FromInt(Index + 1);
			Patch->SetFixtureType(FixtureType);
			Patch->SetUniverseID(1 + Index / 56);
			Patch->SetStartingChannel(1 + 9 * (Index % 56));
			Patch->CustomTags.Add(FName(TEXT("Truss")));
			UDMXComponent* Component = NewObject<UDMXComponent>(Rig, UDMXComponent::StaticClass(), FName(FString(TEXT("DMX_")) + FString::FromInt(Index)),
				RF_Transactional);
			Rig->AddInstanceComponent(Component);
			Component->RegisterComponent();
			Component->SetFixturePatch(Patch);
		}
		Package->SetDirtyFlag(true);
		Editor.GetEditorWorld()->MarkPackageDirty();
		if (!SaveKestDMXProject(Project, Editor, Error))
		{
			throw std::runtime_error(Error);
		}
		return Dir.string();
	}

	std::string ReadText(const std::filesystem::path& Path)
	{
		std::ifstream Stream(Path, std::ios::binary);
		return std::string(std::istreambuf_iterator<char>(Stream), std::istreambuf_iterator<char>());
	}

	// Every number of a JSON value, added up, so that the limit touches every value as a load does.
	double SumNumbers(const nlohmann::json& Value)
	{
		double Sum = Value.is_number() ? Value.get<double>() : 0.0;
		if (Value.is_structured())
		{
			for (const nlohmann::json& Child : Value)
			{
				Sum += SumNumbers(Child);
			}
		}
		return Sum;
	}

	// The limit of a load: both files read and parsed, every value visited.
	double LoadWithoutTheEngine(const std::string& Dir)
	{
		double Sum = 0.0;
		for (const char* File : {LibraryFile, LevelFile})
		{
			Sum += SumNumbers(nlohmann::json::parse(ReadText(std::filesystem::path(Dir) / File)));
		}
		return Sum;
	}

	// The limit of a save: both texts written to new files, synced and renamed over older ones (beside
	// the project's own files, which stay as they are).
	void SaveWithoutTheEngine(const std::string& Dir, const std::map<std::string, nlohmann::json>& Files)
	{
		for (const auto& [File, Json] : Files)
		{
			const std::string Text = Json.dump(1, '\t') + "\n";
			const std::string Path = Dir + "/" + File + ".limit";
			const std::string Temporary = Path + ".new";
			const int Out = open(Temporary.c_str(), O_WRONLY | O_CREAT | O_TRUNC | O_CLOEXEC, 0666);
			if (Out < 0 || write(Out, Text.data(), Text.size()) != static_cast<ssize_t>(Text.size()) || fsync(Out) != 0 || close(Out) != 0
				|| rename(Temporary.c_str(), Path.c_str()) != 0)
			{
				throw std::runtime_error("cannot write " + Temporary);
			}
		}
	}

	// CPU seconds the process has used.
	double GetProcessSeconds()
	{
		timespec Now;
		clock_gettime(CLOCK_PROCESS_CPUTIME_ID, &Now);
		return static_cast<double>(Now.tv_sec) + static_cast<double>(Now.tv_nsec) * 1e-9;
	}

	// CPU seconds per call of Work, over enough calls for a steady figure.
	template <typename FuncType>
	double TimeLimit(FuncType&& Work)
	{
		const int Calls = 5;
		const double Start = GetProcessSeconds();
		for (int Call = 0; Call < Calls; ++Call)
		{
			Work();
		}
		return (GetProcessSeconds() - Start) / Calls;
	}

	void BM_ProjectLoad(benchmark::State& State)
	{
		const std::string Dir = EnsureProject(State.range(0));
		double Seconds = 0.0;
		for (auto _ : State)
		{
			State.PauseTiming();
			auto Editor = std::make_unique<FHeadlessEditor>();
			State.ResumeTiming();
			const double Start = GetProcessSeconds();
			FKestDMXProject Project;
			std::string Error;
			if (!LoadKestDMXProject(Dir, *Editor, Project, Error, EKestDMXProjectAccess::Read))
			{
				State.SkipWithError(Error.c_str());
				break;
			}
			Seconds += GetProcessSeconds() - Start;
			State.PauseTiming();
			Editor.reset();
			State.ResumeTiming();
		}
		double Sum = 0.0;
		const double Limit = TimeLimit([&] { Sum += LoadWithoutTheEngine(Dir); });
		benchmark::DoNotOptimize(Sum);
		State.SetComplexityN(State.range(0));
		State.counters["limit_ms"] = Limit * 1000.0;
		State.counters["x_limit"] = Seconds / static_cast<double>(State.iterations()) / Limit;
	}

	void BM_ProjectSave(benchmark::State& State)
	{
		const std::string Dir = EnsureProject(State.range(0));
		FHeadlessEditor Editor;
		FKestDMXProject Project;
		std::string Error;
		if (!LoadKestDMXProject(Dir, Editor, Project, Error))
		{
			State.SkipWithError(Error.c_str());
			return;
		}
		UPackage* Library = FindPackage(nullptr, TEXT("/Game/DMX/Rig"));
		double Seconds = 0.0;
		for (auto _ : State)
		{
			Library->SetDirtyFlag(true);
			Editor.GetEditorWorld()->GetPackage()->SetDirtyFlag(true);
			const double Start = GetProcessSeconds();
			if (!SaveKestDMXProject(Project, Editor, Error))
			{
				State.SkipWithError(Error.c_str());
				break;
			}
			Seconds += GetProcessSeconds() - Start;
		}
		std::map<std::string, nlohmann::json> Files;
		for (const char* File : {LibraryFile, LevelFile})
		{
			Files[File] = nlohmann::json::parse(ReadText(std::filesystem::path(Dir) / File));
		}
		const double Limit = TimeLimit([&] { SaveWithoutTheEngine(Dir, Files); });
		State.SetComplexityN(State.range(0));
		State.counters["limit_ms"] = Limit * 1000.0;
		State.counters["x_limit"] = Seconds / static_cast<double>(State.iterations()) / Limit;
	}
}

BENCHMARK(BM_ProjectLoad)->Arg(1000)->Arg(2000)->Arg(4000)->Arg(8000)->Unit(benchmark::kMillisecond)->MeasureProcessCPUTime()->Complexity(benchmark::oN);
BENCHMARK(BM_ProjectSave)->Arg(1000)->Arg(2000)->Arg(4000)->Arg(8000)->Unit(benchmark::kMillisecond)->MeasureProcessCPUTime()->Complexity(benchmark::oN);
