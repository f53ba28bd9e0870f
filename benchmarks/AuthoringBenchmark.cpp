// Authoring a big library in one session through dmx_library(path):add: 10,000 fixture patches of
// 2,000 fixture types over 250 universes, and 2,000 fixture types of 3 modes of 10 functions. Each
// row reports the CPU time per add of the first and of the last 1,000 adds (a library that grows must
// not make adds slower), beside a raw Lua C API function that reads the same params with
// lua_getfield and makes the same engine calls: the physical limit of the module's work.
#include <benchmark/benchmark.h>

#include <ctime>
#include <memory>
#include <stdexcept>
#include <string>
#include "Editor.h"
#include "KestDMXRunner.h"
#include "Library/DMXEntityFixturePatch.h"
#include "Library/DMXEntityFixtureType.h"
#include "Library/DMXLibrary.h"
#include "ScopedTransaction.h"
#include "UObject/UObjectGlobals.h"

namespace
{
	constexpr int32 TypeCount = 2000;
	constexpr int32 PatchCount = 10000;
	constexpr int32 UniverseCount = 250;
	constexpr int32 ModesPerType = 3;
	constexpr int32 FunctionsPerMode = 10;
	constexpr int32 Window = 1000;
	const char* const LibraryPath = "/Game/Bench/Big";

	void RunOrThrow(FKestDMXSession& Session, const std::string& Code)
	{
		std::string Error;
		if (!Session.RunScript(Code, "benchmark", Error))
		{
			throw std::runtime_error(Error);
		}
	}

	UDMXLibrary* GetLibrary()
	{
		return LoadObject<UDMXLibrary>(nullptr, TEXT("/Game/Bench/Big.Big"));
	}

	// Lua that makes the params of add number i (0-based) as the global "params". Patch i is of type
	// (7 i) mod 2000, so every window of 1,000 adds spreads over all the types: a type is found by a
	// walk in library order, and a window of only the first types would look cheaper than one of the
	// last.
	const char* const ParamsScript = R"(
		local attributes = {"Dimmer", "Pan", "Tilt", "Red", "Green", "Blue", "Zoom", "Focus", "Iris", "Gobo"}
		function type_params(i)
			local modes = {}
			for m = 1, 3 do
				local functions = {}
				for f = 1, 10 do
					functions[f] = {attribute = attributes[f], name = attributes[f], data_type = (f % 3 == 0) and "16bit" or "8bit"}
				end
				modes[m] = {name = "Mode " .. m, functions = functions}
			end
			return {name = "Type_" .. i, category = "Moving Head", modes = modes}
		end
		function patch_params(i)
			return {fixture_type = "Type_" .. ((i * 7) % 2000), name = "Patch_" .. i, universe = 1 + i // 40, starting_channel = 1 + (i % 40) * 12}
		end
	)";

	FString ReadField(lua_State* L, int Table, const char* Key, const FString& Default)
	{
		lua_getfield(L, Table, Key);
		size_t Length = 0;
		const char* Text = lua_type(L, -1) == LUA_TSTRING ? lua_tolstring(L, -1, &Length) : nullptr;
		FString Result = Text ? FString(UTF8_TO_TCHAR(Text)) : Default;
		lua_pop(L, 1);
		return Result;
	}

	int32 ReadInt(lua_State* L, int Table, const char* Key, int32 Default)
	{
		lua_getfield(L, Table, Key);
		const int32 Result = lua_isinteger(L, -1) ? static_cast<int32>(lua_tointeger(L, -1)) : Default;
		lua_pop(L, 1);
		return Result;
	}

	// raw_add_patch(params): the module's fixture patch add, hand-written.
	int RawAddPatch(lua_State* L)
	{
		UDMXLibrary* Library = GetLibrary();
		const FScopedTransaction Transaction(FText::FromString(FString(TEXT("Add"))));
		Library->Modify(true);
		// Found as the module finds it: the first fixture type of that name, ignoring case.
		const FString TypeName = ReadField(L, 1, "fixture_type", FString());
		UDMXEntityFixtureType* FixtureType = nullptr;
		Library->ForEachEntityOfTypeWithBreak<UDMXEntityFixtureType>([&TypeName, &FixtureType](UDMXEntityFixtureType* Candidate)
		{
			FixtureType = Candidate->Name.Equals(TypeName, ESearchCase::IgnoreCase) ? Candidate : nullptr;
			return FixtureType == nullptr;
		});
		if (!FixtureType)
		{
			return 0;
		}
		FDMXEntityFixturePatchConstructionParams Params;
		Params.FixtureTypeRef = FDMXEntityFixtureTypeRef(FixtureType);
		Params.ActiveMode = ReadInt(L, 1, "active_mode_index", 0);
		Params.UniverseID = ReadInt(L, 1, "universe", 1);
		Params.StartingAddress = ReadInt(L, 1, "starting_channel", 1);
		UDMXEntityFixturePatch* Patch = UDMXEntityFixturePatch::CreateFixturePatchInLibrary(Params, ReadField(L, 1, "name", FString(TEXT("FixturePatch"))), true);
		Patch->Modify(true);
		Patch->RebuildCache();
		Library->MarkPackageDirty();
		lua_createtable(L, 0, 3);
		lua_pushstring(L, TCHAR_TO_UTF8(*Patch->Name));
		lua_setfield(L, -2, "name");
		lua_pushinteger(L, Patch->GetChannelSpan());
		lua_setfield(L, -2, "channel_span");
		lua_pushinteger(L, Patch->GetEndingChannel());
		lua_setfield(L, -2, "ending_channel");
		return 1;
	}

	// raw_add_type(params): the module's fixture type add, hand-written.
	int RawAddType(lua_State* L)
	{
		UDMXLibrary* Library = GetLibrary();
		const FScopedTransaction Transaction(FText::FromString(FString(TEXT("Add"))));
		Library->Modify(true);
		FDMXEntityFixtureTypeConstructionParams Params;
		Params.ParentDMXLibrary = Library;
		Params.DMXCategory = FDMXFixtureCategory(FName(*ReadField(L, 1, "category", FString())));
		UDMXEntityFixtureType* FixtureType = UDMXEntityFixtureType::CreateFixtureTypeInLibrary(Params, ReadField(L, 1, "name", FString(TEXT("FixtureType"))), true);
		FixtureType->Modify(true);
		lua_getfield(L, 1, "modes");
		const lua_Integer ModeCount = luaL_len(L, -1);
		for (lua_Integer ModeNumber = 1; ModeNumber <= ModeCount; ++ModeNumber)
		{
			lua_rawgeti(L, -1, ModeNumber);
			const int32 ModeIndex = FixtureType->AddMode(ReadField(L, -1, "name", FString(TEXT("Mode"))));
			lua_getfield(L, -1, "functions");
			const lua_Integer FunctionCount = luaL_len(L, -1);
			for (lua_Integer FunctionNumber = 1; FunctionNumber <= FunctionCount; ++FunctionNumber)
			{
				lua_rawgeti(L, -1, FunctionNumber);
				FDMXFixtureFunction Function;
				Function.Attribute = FDMXAttributeName(FName(*ReadField(L, -1, "attribute", FString())));
				Function.FunctionName = ReadField(L, -1, "name", FString(TEXT("Function")));
				Function.DataType = ReadField(L, -1, "data_type", FString()).Equals(TEXT("16bit")) ? EDMXFixtureSignalFormat::E16Bit : EDMXFixtureSignalFormat::E8Bit;
				FixtureType->InsertFunction(ModeIndex, static_cast<int32>(FunctionNumber - 1), Function);
				lua_pop(L, 1);
			}
			lua_pop(L, 2);
			FixtureType->AlignFunctionChannels(ModeIndex);
			FixtureType->UpdateChannelSpan(ModeIndex);
		}
		lua_pop(L, 1);
		Library->MarkPackageDirty();
		lua_createtable(L, 0, 2);
		lua_pushstring(L, TCHAR_TO_UTF8(*FixtureType->Name));
		lua_setfield(L, -2, "name");
		lua_pushinteger(L, FixtureType->Modes.Num());
		lua_setfield(L, -2, "mode_count");
		return 1;
	}

	// Types made straight through the engine, for the patch rows.
	void AddTypesDirectly(UDMXLibrary* Library)
	{
		for (int32 TypeIndex = 0; TypeIndex < TypeCount; ++TypeIndex)
		{
			FDMXEntityFixtureTypeConstructionParams Params;
			Params.ParentDMXLibrary = Library;
			FDMXFixtureMode Mode;
			Mode.ModeName = TEXT("Mode");
			for (int32 Channel = 1; Channel <= FunctionsPerMode; ++Channel)
			{
				FDMXFixtureFunction Function;
				Function.Channel = Channel;
				Mode.Functions.Add(Function);
			}
			Mode.ChannelSpan = FunctionsPerMode;
			Params.Modes = {Mode, Mode, Mode};
			UDMXEntityFixtureType::CreateFixtureTypeInLibrary(Params, FString(TEXT("Type_")) + FString::FromInt(TypeIndex));
		}
	}

	// Adds Count entities through the Lua function Adder(ParamsMaker(i)) and reports the windows.
	void RunAdds(benchmark::State& State, bool bPatches, const char* Adder)
	{
		// CPU time of this thread: the machine may be busy with other work.
		const auto Now = []()
		{
			timespec Time{};
			clock_gettime(CLOCK_THREAD_CPUTIME_ID, &Time);
			return static_cast<double>(Time.tv_sec) + static_cast<double>(Time.tv_nsec) * 1e-9;
		};
		const int32 Count = bPatches ? PatchCount : TypeCount;
		double FirstWindow = 0, LastWindow = 0, Total = 0;
		for (auto _ : State)
		{
			auto Session = std::make_unique<FKestDMXSession>();
			RunOrThrow(*Session, std::string("assert(editor.create_library('") + LibraryPath + "'))");
			RunOrThrow(*Session, ParamsScript);
			lua_State* L = Session->GetLua().GetState().lua_state();
			lua_register(L, "raw_add_patch", RawAddPatch);
			lua_register(L, "raw_add_type", RawAddType);
			if (bPatches)
			{
				AddTypesDirectly(GetLibrary());
			}
			RunOrThrow(*Session, std::string("lib = dmx_library('") + LibraryPath + "')\n"
				"function add_lua(p) return lib:add('" + (bPatches ? "fixture_patch" : "fixture_type") + "', p) end\n"
				"function add_raw(p) return raw_add_" + (bPatches ? "patch" : "type") + "(p) end\n"
				"function add_range(first, last) local make = " + (bPatches ? "patch_params" : "type_params") + "\n"
				"  for i = first, last do assert(" + Adder + "(make(i)), 'add ' .. i .. ' failed') end end");
			bool bFailed = false;
			{
				// Lua references go before their session does.
				sol::protected_function AddRange = Session->GetLua().GetState()["add_range"];
				for (int32 First = 0; First < Count && !bFailed; First += Window)
				{
					const double Start = Now();
					sol::protected_function_result Result = AddRange(First, First + Window - 1);
					const double Seconds = Now() - Start;
					bFailed = !Result.valid();
					Total += Seconds;
					FirstWindow += First == 0 ? Seconds : 0;
					LastWindow += First + Window >= Count ? Seconds : 0;
				}
			}
			if (bFailed)
			{
				State.SkipWithError("an add failed");
				break;
			}
			State.SetIterationTime(Total);
			Total = 0;
			State.PauseTiming();
			Session.reset();
			State.ResumeTiming();
		}
		const double Iterations = static_cast<double>(State.iterations());
		State.counters["first_1000_us_per_add"] = FirstWindow / Iterations / Window * 1e6;
		State.counters["last_1000_us_per_add"] = LastWindow / Iterations / Window * 1e6;
		State.counters["last_over_first"] = LastWindow / FirstWindow;
	}

	void BM_Add10000PatchesLua(benchmark::State& State) { RunAdds(State, true, "add_lua"); }
	void BM_Add10000PatchesRaw(benchmark::State& State) { RunAdds(State, true, "add_raw"); }
	void BM_Add2000TypesLua(benchmark::State& State) { RunAdds(State, false, "add_lua"); }
	void BM_Add2000TypesRaw(benchmark::State& State) { RunAdds(State, false, "add_raw"); }
}

BENCHMARK(BM_Add10000PatchesLua)->UseManualTime()->Iterations(2)->Unit(benchmark::kMillisecond);
BENCHMARK(BM_Add10000PatchesRaw)->UseManualTime()->Iterations(2)->Unit(benchmark::kMillisecond);
BENCHMARK(BM_Add2000TypesLua)->UseManualTime()->Iterations(2)->Unit(benchmark::kMillisecond);
BENCHMARK(BM_Add2000TypesRaw)->UseManualTime()->Iterations(2)->Unit(benchmark::kMillisecond);
