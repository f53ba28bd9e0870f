// What kestdmx check costs. BM_CheckReadFixtureTypeParams reads a fixture type's params against the
// schema as the check does before every add; its physical limit is the same raw reads written by
// hand with the Lua C API (every key of every table, every list entry, every table walked once for
// unknown keys), and the counter x_limit is the check's time over the limit's. BM_CheckedConfigure
// is a configure call in a library of 1,000 patches under the check; its floor is the same call
// without the check, and x_unchecked is the ratio.
#include <benchmark/benchmark.h>

#include <ctime>
#include <memory>
#include <stdexcept>
#include "KestDMXCheck.h"
#include "KestDMXCheckCall.h"
#include "KestDMXRunner.h"

namespace
{
	// CPU time of this thread, as the benchmark's own CPU column counts it.
	double GetThreadSeconds()
	{
		timespec Now;
		clock_gettime(CLOCK_THREAD_CPUTIME_ID, &Now);
		return static_cast<double>(Now.tv_sec) + static_cast<double>(Now.tv_nsec) * 1e-9;
	}

	// A moving head as scripts write it: two modes, nine functions, a matrix with three cell attributes.
	const char* const FixtureTypeParams = R"lua(
return {name = "Spot", category = "Moving Head", modes = {
	{name = "Standard", functions = {
		{attribute = "Dimmer", name = "Dimmer", default_value = 255},
		{attribute = "Pan", name = "Pan", data_type = "16bit", physical_from = -270, physical_to = 270, physical_default_value = 0.5},
		{attribute = "Tilt", name = "Tilt", data_type = "16bit", physical_from = -135, physical_to = 135, physical_default_value = 0.5},
		{attribute = "Red", name = "Red"}, {attribute = "Green", name = "Green"}, {attribute = "Blue", name = "Blue"},
		{attribute = "Zoom", name = "Zoom", data_type = "24bit"}, {attribute = "Shutter", name = "Shutter", default_value = 8},
		{attribute = "Gobo", name = "Gobo", data_type = "16bit"}}},
	{name = "Pixels", functions = {{attribute = "Dimmer", name = "Master"}},
		matrix = {enabled = true, x_cells = 4, y_cells = 4, first_cell_channel = 2, distribution = "TopLeftToBottom",
			cell_attributes = {{attribute = "Red"}, {attribute = "Green"}, {attribute = "Blue"}}}}}}
)lua";

	// The raw reads of one table: each key of the class, then one walk over all its keys.
	void ReadRaw(lua_State* L, int Index, const FKestClass& Class, int& OutValues)
	{
		const FKestSchema& Schema = GetKestDMXSchema();
		for (const FKestField& Field : Class.Fields)
		{
			lua_pushlstring(L, Field.Name.data(), Field.Name.size());
			lua_rawget(L, Index);
			const int Value = lua_gettop(L);
			if (lua_type(L, Value) == LUA_TTABLE && !Field.Class.empty())
			{
				const FKestClass& Nested = *Schema.FindClass(Field.Class);
				if (Field.Type == EKestLuaType::List)
				{
					lua_pushnil(L);
					while (lua_next(L, Value) != 0)
					{
						if (lua_type(L, -1) == LUA_TTABLE)
						{
							ReadRaw(L, lua_gettop(L), Nested, OutValues);
						}
						lua_pop(L, 1);
					}
				}
				else
				{
					ReadRaw(L, Value, Nested, OutValues);
				}
			}
			OutValues += lua_type(L, Value) != LUA_TNIL ? 1 : 0;
			lua_pop(L, 1);
		}
		lua_pushnil(L);
		while (lua_next(L, Index) != 0)
		{
			OutValues += lua_type(L, -2) == LUA_TSTRING ? 0 : 1;
			lua_pop(L, 1);
		}
	}

	void BM_CheckReadFixtureTypeParams(benchmark::State& State)
	{
		FKestDMXSession Session;
		lua_State* L = Session.GetLua().GetState().lua_state();
		luaL_loadstring(L, FixtureTypeParams);
		lua_call(L, 0, 1);
		const int Params = lua_gettop(L);
		const FKestClass& Class = *GetKestDMXSchema().FindClass("DMXFixtureTypeParams");
		FKestCheckLog Log;

		const double Start = GetThreadSeconds();
		for (auto _ : State)
		{
			FKestCheckCall Call(Log, FKestCheckSite());
			FKestAsked Asked = ReadAskedParams(L, Params, Class, std::string(), Call);
			benchmark::DoNotOptimize(Asked);
			if (!Call.Findings.empty())
			{
				State.SkipWithError("the params were meant to be right");
				break;
			}
		}
		const double Checked = GetThreadSeconds() - Start;

		int Values = 0;
		const double LimitStart = GetThreadSeconds();
		for (benchmark::IterationCount Index = 0; Index < State.iterations(); ++Index)
		{
			ReadRaw(L, Params, Class, Values);
			benchmark::DoNotOptimize(Values);
		}
		const double Limit = GetThreadSeconds() - LimitStart;
		State.counters["x_limit"] = Limit > 0.0 ? Checked / Limit : 0.0;
	}

	struct FConfigureScene
	{
		FKestCheckLog Log;
		FKestDMXSession Session;
		sol::protected_function Configure;

		explicit FConfigureScene(bool bChecked)
		{
			if (bChecked)
			{
				InstallKestDMXCheck(Session, Log);
			}
			std::string Error;
			const bool bBuilt = Session.RunScript(R"lua(
assert(editor.create_library("/Game/Bench/Rig"))
local L = dmx_library("/Game/Bench/Rig")
assert(L:add("fixture_type", {name = "Spot", modes = {{functions = {{attribute = "Dimmer"}, {attribute = "Pan", data_type = "16bit"}}}}}))
for I = 1, 1000 do
	assert(L:add("fixture_patch", {name = "P" .. I, fixture_type = "Spot", universe = 1 + I // 128, starting_channel = 1 + (I % 128) * 4}))
end
local Flip = 0
function bench_configure()
	Flip = 1 - Flip
	return L:configure("fixture_patch", "P500", {starting_channel = 1 + Flip * 4, tags = {"front"}, editor_color = {r = 1}})
end
)lua", "benchmark", Error);
			if (!bBuilt)
			{
				throw std::runtime_error(Error);
			}
			Configure = Session.GetLua().GetState()["bench_configure"];
		}
		~FConfigureScene() { Log.bActive = false; }
	};

	void BM_CheckedConfigure(benchmark::State& State)
	{
		// One headless editor at a time: the checked one goes before the plain one is made.
		auto Checked = std::make_unique<FConfigureScene>(true);
		const double Start = GetThreadSeconds();
		for (auto _ : State)
		{
			sol::protected_function_result Result = Checked->Configure();
			if (!Result.valid())
			{
				State.SkipWithError("configure raised a Lua error");
				break;
			}
		}
		const double CheckedTime = GetThreadSeconds() - Start;
		Checked.reset();

		FConfigureScene Plain(false);
		const double PlainStart = GetThreadSeconds();
		for (benchmark::IterationCount Index = 0; Index < State.iterations(); ++Index)
		{
			sol::protected_function_result Result = Plain.Configure();
			benchmark::DoNotOptimize(Result);
		}
		const double PlainTime = GetThreadSeconds() - PlainStart;
		State.counters["x_unchecked"] = PlainTime > 0.0 ? CheckedTime / PlainTime : 0.0;
		State.counters["patches"] = 1000;
	}
}

BENCHMARK(BM_CheckReadFixtureTypeParams)->Unit(benchmark::kMicrosecond);
BENCHMARK(BM_CheckedConfigure)->Unit(benchmark::kMicrosecond);
