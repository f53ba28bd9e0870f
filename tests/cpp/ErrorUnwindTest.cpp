// A Lua error raised by a metamethod at any read the module makes of the params unwinds through it:
// the transaction closes, the script gets the very value raised, and what the call had changed by then
// is one step that one undo takes back (and, under the sanitizer, nothing allocated is lost).
#include <gtest/gtest.h>

#include "KestSessionTest.h"
#include "library/DMXLibraryLookup.h"

namespace
{
	using namespace DMXStateDigest;

	// make_userdata(Index): a full userdata whose __index is Index, for params that are not tables.
	int MakeUserdata(lua_State* L)
	{
		luaL_checktype(L, 1, LUA_TFUNCTION);
		lua_newuserdatauv(L, 0, 0);
		lua_createtable(L, 0, 1);
		lua_pushvalue(L, 1);
		lua_setfield(L, -2, "__index");
		lua_setmetatable(L, -2);
		return 1;
	}

	// trap_params(Plain, Target, Err, Userdata) rebuilds the params so that every map answers its keys
	// through __index, counting the reads; read number Target raises Err (none when Target is 0).
	// Maps whose path is in Userdata ("" is the params themselves) become full userdata. Lists stay
	// plain tables whose metamethods raise: the module must walk them with next, never read them by
	// key, measure them or call pairs (a counting run with such a read fails).
	const char* const TrapScript = R"(
		local raise = function(what) return function() error("a list was " .. what, 0) end end
		local ListMeta = {__index = raise("read by key"), __len = raise("measured"), __pairs = raise("walked with pairs")}
		function trap_params(Plain, Target, Err, Userdata)
			local State = {reads = 0}
			local function Wrap(Value, Path)
				if type(Value) ~= "table" then return Value end
				local Inner = {}
				for Key, Entry in pairs(Value) do Inner[Key] = Wrap(Entry, Path .. "." .. tostring(Key)) end
				if Value[1] ~= nil then return setmetatable(Inner, ListMeta) end
				local function Index(_, Key)
					State.reads = State.reads + 1
					if State.reads == Target then error(Err, 0) end
					return Inner[Key]
				end
				return Userdata[Path] and make_userdata(Index) or setmetatable({}, {__index = Index})
			end
			return Wrap(Plain, ""), State
		end
		-- Runs Call on the trapped params raising at read Target a value of one of the kinds a script
		-- may raise; answers the reads made (Target 0: none raised, the call must succeed).
		function run_trapped(Call, Plain, Target, Userdata)
			local Err = ({{raised_at = Target}, "raised at " .. Target, make_userdata(print), print, Target * 1000})[Target % 5 + 1]
			local P, State = trap_params(Plain, Target, Err, Userdata)
			local Ok, Got = pcall(Call, P)
			assert(Target == 0 and Ok and Got or not Ok and rawequal(Got, Err), "the call answered " .. tostring(Got))
			assert(editor.transaction_depth() == 0, "the transaction stayed open")
			return State.reads
		end
	)";

	const char* const TypeParams = R"({name = "Beam", category = "Moving Head", modes = {
		{name = "Basic", auto_channel_span = false, channel_span = 12, functions = {
			{attribute = "Dimmer", name = "Dim", description = "d", default_value = 10, channel = 1, data_type = "16bit", use_lsb = true,
				physical_default_value = 1, physical_from = 0, physical_to = 100}, {attribute = "Pan", name = "Pan"}},
		 matrix = {enabled = true, x_cells = 2, y_cells = 3, first_cell_channel = 5, distribution = "TopLeftToBottom",
			cell_attributes = {{attribute = "Red", description = "c", default_value = 1, data_type = "8bit", use_lsb = false}}}},
		{name = "Extended", functions = {{attribute = "Tilt"}}}}})";

	struct FErrorCase
	{
		// A Lua expression making the call with the params P, and the params as plain values.
		const char* Call;
		const char* Params;
		// Undo title of the call's step; null when it opens none.
		const char* Title;
		// Reads made before the step opens (a component add reads its "name" first).
		int ReadsBeforeStep = 0;
		// Replaces the modes of Spot, which patches use: redo refreshes them (see UndoPropertyTest.cpp).
		bool bChangesModesUnderPatches = false;
	};

	const FErrorCase ErrorCases[] = {
		{"Lib:add('fixture_type', P)", TypeParams, "Vorlith: Add DMX Library Entity"},
		{"Lib:add('fixture_patch', P)", "{fixture_type = 'Spot', name = 'Added', active_mode_index = 1, universe = 2, starting_channel = 17, "
			"tags = {'front', 'left'}, receive_dmx_in_editor = true, editor_color = {r = 1, g = 0.5, b = 0.25, a = 0.75}}", "Vorlith: Add DMX Library Entity"},
		{"Lib:configure('fixture_type', 'Spot', P)", TypeParams, "Vorlith: Configure DMX Library Entity", 0, true},
		{"Lib:configure('fixture_patch', 'P1', P)", "{name = 'Moved', fixture_type = 'Spot', universe = 3, starting_channel = 9, active_mode_index = 1, "
			"tags = {'back'}, receive_dmx_in_editor = true, editor_color = {r = 0.1, a = 0.2}}", "Vorlith: Configure DMX Library Entity"},
		{"dmx_component('Stand'):add(P)", "{name = 'Fresh', library = '/Game/DMX/Stage', fixture_patch = 'P2', receive = false}", "Vorlith: Add DMX Component", 1},
		// Reuses Rig and sets what it already holds: no step, nothing changes.
		{"dmx_component('Truss'):add(P)", "{name = 'Rig', library = '/Game/DMX/Stage', fixture_patch = 'P1', receive = true}", nullptr},
		{"dmx_component('Truss'):configure('Rig', P)", "{library = '/Game/DMX/Stage', fixture_patch = 'P2', receive = false}", "Vorlith: Configure DMX Component"},
	};

	// No userdata; the params; the params and every nested map but list entries (those are skipped).
	const char* const UserdataVariants[] = {"{}", "{[''] = true}", "{[''] = true, ['.editor_color'] = true, ['.modes.1.matrix'] = true}"};

	class FErrorUnwindTest : public FKestSessionTest
	{
	protected:
		void SetUp() override
		{
			FKestSessionTest::SetUp();
			lua_register(Session->GetLua().GetState().lua_state(), "make_userdata", MakeUserdata);
			Run(TrapScript);
			Run(R"(assert(editor.create_library("/Game/DMX/Stage"))
				Lib = dmx_library("/Game/DMX/Stage")
				assert(Lib:add("fixture_type", {name = "Spot", modes = {{functions = {{attribute = "Dimmer"}}},
					{name = "Wide", functions = {{attribute = "Pan"}, {attribute = "Tilt"}}}}}))
				assert(Lib:add("fixture_patch", {name = "P1", fixture_type = "Spot"}))
				assert(Lib:add("fixture_patch", {name = "P2", fixture_type = "Spot", starting_channel = 9}))
				assert(editor.spawn_actor("Truss", "Truss") and editor.spawn_actor("Stand", "Stand"))
				assert(dmx_component("Truss"):add({name = "Rig", library = "/Game/DMX/Stage", fixture_patch = "P1", receive = true})))");
			SpotType.insert(TypeTag(FindFixtureTypeByName(LoadDMXLibrary(FString(TEXT("/Game/DMX/Stage"))), FString(TEXT("Spot")))));
		}

		int RunTrapped(const FErrorCase& Case, int Target, const char* Userdata)
		{
			Run(std::string("Reads = run_trapped(function(P) return ") + Case.Call + " end, " + Case.Params + ", " + std::to_string(Target) + ", " + Userdata + ")");
			return Session->GetLua().GetState()["Reads"].get<int>();
		}

		std::set<std::string> SpotType;
	};
}

TEST_F(FErrorUnwindTest, AnErrorAtAnyReadUnwindsAndLeavesOneStep)
{
	int CheckedRaises = 0;
	for (const FErrorCase& Case : ErrorCases)
	{
		for (const char* Userdata : UserdataVariants)
		{
			// A counting run, with nothing raised; its step is undone.
			const FDigest Base = Digest();
			int32 StepsBefore = UndoableSteps();
			const int Reads = RunTrapped(Case, 0, Userdata);
			ASSERT_TRUE(UndoableSteps() == StepsBefore || GEditor->UndoTransaction());
			ASSERT_TRUE(DigestsMatch(Base, Digest()));
			ASSERT_GT(Reads, Case.ReadsBeforeStep) << Case.Call;
			for (int Target = 1; Target <= Reads; ++Target, ++CheckedRaises)
			{
				SCOPED_TRACE(std::string(Case.Call) + " with userdata " + Userdata + ", raising at read " + std::to_string(Target));
				StepsBefore = UndoableSteps();
				ASSERT_NO_FATAL_FAILURE(RunTrapped(Case, Target, Userdata));
				const bool bStepOpened = Case.Title != nullptr && Target > Case.ReadsBeforeStep;
				ASSERT_EQ(UndoableSteps() - StepsBefore, bStepOpened ? 1 : 0);
				if (!bStepOpened)
				{
					ASSERT_TRUE(DigestsMatch(Base, Digest())) << "changed without a step";
					continue;
				}
				// What the call did before the error is its step: undo gives back the state before the
				// call (a component created before the error goes, with what was set on it after its
				// step), redo the state at the error.
				ASSERT_EQ(LastStepTitle(), Case.Title);
				const FDigest AtError = Digest();
				ASSERT_TRUE(GEditor->UndoTransaction());
				ASSERT_TRUE(DigestsMatch(Base, Digest())) << "undo";
				ASSERT_TRUE(GEditor->RedoTransaction());
				ASSERT_TRUE(DigestsMatch(AtError, Digest(), Case.bChangesModesUnderPatches ? SpotType : std::set<std::string>())) << "redo";
				ASSERT_TRUE(GEditor->UndoTransaction());
			}
		}
	}
	std::printf("[ unwind   ] %d raising reads checked\n", CheckedRaises);
}

TEST_F(FErrorUnwindTest, AnErrorAfterANestedCallTakesBothBackInOneStep)
{
	// The metamethod changes the library through the module, then raises: the inner call's step nests
	// in the outer one, so one undo takes back both.
	const FDigest Base = Digest();
	const int32 StepsBefore = UndoableSteps();
	Run(R"(local Err = {}
		local P = setmetatable({}, {__index = function(_, Key)
			if Key == "universe" then
				assert(Lib:add("fixture_patch", {name = "Inner", fixture_type = "Spot"}) and Lib:remove("fixture_patch", "P2"))
				error(Err)
			end
		end})
		local Ok, Got = pcall(Lib.configure, Lib, "fixture_patch", "P1", P)
		assert(not Ok and rawequal(Got, Err) and editor.transaction_depth() == 0))");
	ASSERT_EQ(UndoableSteps() - StepsBefore, 1);
	EXPECT_EQ(LastStepTitle(), "Vorlith: Configure DMX Library Entity");
	EXPECT_FALSE(DigestsMatch(Base, Digest()));
	ASSERT_TRUE(GEditor->UndoTransaction());
	EXPECT_TRUE(DigestsMatch(Base, Digest()));
}
