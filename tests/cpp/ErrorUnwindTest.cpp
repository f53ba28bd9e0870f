// A Lua error raised while the module's code is on the stack (by an __index metamethod of the
// params or of a nested table, at any read the module makes) must unwind through the module: the
// transaction closes, the script gets the very value that was raised, and whatever the call had
// changed by then is one undo step that one undo takes back. Run under the sanitizer build, the
// same cases show that nothing allocated on the way is lost.
#include <gtest/gtest.h>

#include <memory>
#include <string>
#include "DMXStateDigest.h"
#include "Editor.h"
#include "Editor/TransBuffer.h"
#include "Engine/World.h"
#include "KestDMXRunner.h"
#include "library/DMXLibraryLookup.h"

namespace
{
	using namespace DMXStateDigest;

	const char* const AddTitle = "Vorlith: Add DMX Library Entity";
	const char* const ConfigureTitle = "Vorlith: Configure DMX Library Entity";
	const char* const AddComponentTitle = "Vorlith: Add DMX Component";
	const char* const ConfigureComponentTitle = "Vorlith: Configure DMX Component";

	// A full userdata whose metatable's __index is the given function: params that are not tables.
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

	// trap_params(Plain, Target, Err, UserdataPaths) rebuilds the plain params value Plain so that
	// every map answers its keys through __index. The reads are numbered across the whole value;
	// read number Target raises Err instead of answering (none raises when Target is 0). Maps
	// whose path is in UserdataPaths ("" is the params value itself) become full userdata. Lists
	// stay plain tables, as the module walks them with next; their own metamethods raise, so a
	// list asked by key or for its length would fail the call with another error.
	const char* const TrapScript = R"(
		local ListMeta = {
			__index = function() error("a list was read by key", 0) end,
			__len = function() error("a list was measured", 0) end,
			__pairs = function() error("a list was walked with pairs", 0) end,
		}
		function trap_params(Plain, Target, Err, UserdataPaths)
			local State = {reads = 0, log = {}}
			local function Wrap(Value, Path)
				if type(Value) ~= "table" then
					return Value
				end
				if Value[1] ~= nil then
					local List = {}
					for I, Entry in ipairs(Value) do
						List[I] = Wrap(Entry, Path .. "[" .. I .. "]")
					end
					return setmetatable(List, ListMeta)
				end
				local Inner = {}
				for Key, Entry in pairs(Value) do
					Inner[Key] = Wrap(Entry, Path .. "." .. Key)
				end
				local function Index(_, Key)
					State.reads = State.reads + 1
					State.log[State.reads] = Path .. "." .. tostring(Key)
					if State.reads == Target then
						error(Err, 0)
					end
					return Inner[Key]
				end
				if UserdataPaths[Path] then
					return make_userdata(Index)
				end
				return setmetatable({}, {__index = Index})
			end
			return Wrap(Plain, ""), State
		end

		-- Values of every kind a script may raise; the one raised is picked by the read's number.
		function make_error(Number)
			local Kind = Number % 5
			if Kind == 0 then return {raised_at = Number} end
			if Kind == 1 then return "raised at read " .. Number end
			if Kind == 2 then return make_userdata(function() end) end
			if Kind == 3 then return function() return Number end end
			return Number * 1000
		end
	)";

	struct FErrorCase
	{
		const char* Name;
		// A Lua expression that makes the call with the params P.
		const char* Call;
		// A Lua table constructor: the params, as plain values.
		const char* Params;
		// Undo title of the call's step; null when the call opens none.
		const char* Title;
		// Reads made before the step opens (a component add reads its "name" first).
		int ReadsBeforeStep;
		// Replaces the modes of the fixture type Spot, which patches use: the engine refreshes
		// those patches on redo, not when the modes change (see UndoPropertyTest.cpp).
		bool bChangesModesUnderPatches = false;
	};

	const char* const TypeParams = R"({
		name = "Beam", category = "Moving Head",
		modes = {
			{
				name = "Basic", auto_channel_span = false, channel_span = 12,
				functions = {
					{attribute = "Dimmer", name = "Dim", description = "d", default_value = 10, channel = 1, data_type = "16bit",
						use_lsb = true, physical_default_value = 1, physical_from = 0, physical_to = 100},
					{attribute = "Pan", name = "Pan"},
				},
				matrix = {enabled = true, x_cells = 2, y_cells = 3, first_cell_channel = 5, distribution = "TopLeftToBottom",
					cell_attributes = {{attribute = "Red", description = "c", default_value = 1, data_type = "8bit", use_lsb = false}}},
			},
			{name = "Extended", functions = {{attribute = "Tilt"}}},
		},
	})";

	const char* const PatchParams = R"({
		fixture_type = "Spot", name = "Added", active_mode_index = 1, universe = 2, starting_channel = 17,
		tags = {"front", "left"}, receive_dmx_in_editor = true, editor_color = {r = 1, g = 0.5, b = 0.25, a = 0.75},
	})";

	const char* const PatchChangeParams = R"({
		name = "Moved", fixture_type = "Spot", universe = 3, starting_channel = 9, active_mode_index = 1,
		tags = {"back"}, receive_dmx_in_editor = true, editor_color = {r = 0.1, a = 0.2},
	})";

	const FErrorCase ErrorCases[] = {
		{"add fixture_type", "dmx_library('/Game/DMX/Stage'):add('fixture_type', P)", TypeParams, AddTitle, 0},
		{"add fixture_patch", "dmx_library('/Game/DMX/Stage'):add('fixture_patch', P)", PatchParams, AddTitle, 0},
		{"configure fixture_type", "dmx_library('/Game/DMX/Stage'):configure('fixture_type', 'Spot', P)", TypeParams, ConfigureTitle, 0, true},
		{"configure fixture_patch", "dmx_library('/Game/DMX/Stage'):configure('fixture_patch', 'P1', P)", PatchChangeParams, ConfigureTitle, 0},
		{"creating component add", "dmx_component('Stand'):add(P)", "{name = 'Fresh', library = '/Game/DMX/Stage', fixture_patch = 'P2', receive = false}",
			AddComponentTitle, 1},
		// Reuses Rig and sets what it already holds: no step, nothing changes.
		{"reusing component add", "dmx_component('Truss'):add(P)", "{name = 'Rig', library = '/Game/DMX/Stage', fixture_patch = 'P1', receive = true}",
			nullptr, 0},
		{"component configure", "dmx_component('Truss'):configure('Rig', P)", "{library = '/Game/DMX/Stage', fixture_patch = 'P2', receive = false}",
			ConfigureComponentTitle, 0},
	};

	// Which maps are userdata: none; the params themselves; the params and every nested map that
	// is not a list entry (a userdata list entry is skipped, so it would read nothing).
	const char* const UserdataVariants[] = {
		"{}",
		"{[''] = true}",
		"{[''] = true, ['.editor_color'] = true, ['.modes[1].matrix'] = true}",
	};

	class FErrorUnwindTest : public ::testing::Test
	{
	protected:
		void SetUp() override
		{
			Session = std::make_unique<FKestDMXSession>();
			lua_register(Session->GetLua().GetState().lua_state(), "make_userdata", MakeUserdata);
			Run(TrapScript);
			Run(R"(
				assert(editor.create_library("/Game/DMX/Stage"))
				local Lib = dmx_library("/Game/DMX/Stage")
				assert(Lib:add("fixture_type", {name = "Spot", modes = {
					{functions = {{attribute = "Dimmer"}}},
					{name = "Wide", functions = {{attribute = "Pan"}, {attribute = "Tilt"}}},
				}}))
				assert(Lib:add("fixture_patch", {name = "P1", fixture_type = "Spot"}))
				assert(Lib:add("fixture_patch", {name = "P2", fixture_type = "Spot", starting_channel = 9}))
				assert(editor.spawn_actor("Truss", "Truss") and editor.spawn_actor("Stand", "Stand"))
				assert(dmx_component("Truss"):add({name = "Rig", library = "/Game/DMX/Stage", fixture_patch = "P1", receive = true}))
			)");
			SpotTypeId = GuidText(FindFixtureTypeByName(LoadDMXLibrary(FString(TEXT("/Game/DMX/Stage"))), FString(TEXT("Spot")))->GetID());
		}
		void TearDown() override { Session.reset(); }

		void Run(const std::string& Code)
		{
			std::string Error;
			ASSERT_TRUE(Session->RunScript(Code, "error_unwind", Error)) << Error;
		}

		FDigest Digest() { return TakeDigest(Session->GetEditor().GetEditorWorld()); }
		int32 UndoableSteps() const { return GEditor->Trans->GetQueueLength() - GEditor->Trans->GetUndoCount(); }
		std::string LastTitle() const
		{
			const TArray<FText> Titles = GEditor->Trans->GetUndoTitles();
			return Titles.Num() > 0 ? ToUTF8(Titles.Last().ToString()) : std::string();
		}
		sol::state& Lua() { return Session->GetLua().GetState(); }
		// Runs the call with nothing raising: answers how many reads it made, and leaves the editor
		// as it found it (by undoing the call's step).
		int CountReads(const FErrorCase& Case, const char* Userdata)
		{
			const FDigest Before = Digest();
			const int32 StepsBefore = UndoableSteps();
			Run(std::string("local P, S = trap_params(") + Case.Params + ", 0, nil, " + Userdata + ")\n"
				+ "Result = " + Case.Call + "\nReads = S.reads\nReadLog = table.concat(S.log, ' ')");
			const sol::object Result = Lua()["Result"];
			EXPECT_TRUE(Result.is<sol::table>() || (Result.is<bool>() && Result.as<bool>())) << Case.Name << " failed without an error";
			if (UndoableSteps() > StepsBefore)
			{
				EXPECT_TRUE(GEditor->UndoTransaction());
			}
			EXPECT_TRUE(DigestsMatch(Before, Digest())) << Case.Name;
			return Lua()["Reads"].get<int>();
		}

		std::unique_ptr<FKestDMXSession> Session;
		std::string SpotTypeId;
		int CheckedRaises = 0;
	};
}

TEST_F(FErrorUnwindTest, AnErrorAtAnyReadUnwindsAndLeavesOneStep)
{
	for (const FErrorCase& Case : ErrorCases)
	{
		for (const char* Userdata : UserdataVariants)
		{
			const int Reads = CountReads(Case, Userdata);
			ASSERT_GT(Reads, Case.ReadsBeforeStep) << Case.Name;
			const FDigest Base = Digest();
			for (int Target = 1; Target <= Reads; ++Target)
			{
				SCOPED_TRACE(std::string(Case.Name) + " with userdata " + Userdata + ", raising at read " + std::to_string(Target) + " of "
					+ Lua()["ReadLog"].get<std::string>());
				const int32 StepsBefore = UndoableSteps();
				Run(std::string("local Err = make_error(") + std::to_string(Target) + ")\n"
					+ "local P = trap_params(" + Case.Params + ", " + std::to_string(Target) + ", Err, " + Userdata + ")\n"
					+ "local Ok, Got = pcall(function() return " + Case.Call + " end)\n"
					+ "RaisedOk, SameValue, Depth, Got = Ok, rawequal(Got, Err), editor.transaction_depth(), tostring(Got)");
				ASSERT_FALSE(Lua()["RaisedOk"].get<bool>()) << "the call did not raise";
				ASSERT_TRUE(Lua()["SameValue"].get<bool>()) << "the script got another value: " << Lua()["Got"].get<std::string>();
				ASSERT_EQ(Lua()["Depth"].get<int>(), 0) << "the transaction stayed open";
				ASSERT_EQ(GEditor->Trans->GetActiveCount(), 0);

				const bool bStepOpened = Case.Title != nullptr && Target > Case.ReadsBeforeStep;
				ASSERT_EQ(UndoableSteps() - StepsBefore, bStepOpened ? 1 : 0);
				if (!bStepOpened)
				{
					ASSERT_TRUE(DigestsMatch(Base, Digest())) << "changed without a step";
					++CheckedRaises;
					continue;
				}
				ASSERT_EQ(LastTitle(), Case.Title);
				// Whatever the call did before the error is its step: undo gives back the state
				// before the call, redo the state at the error. A component created before the
				// error goes with the undo, together with what was set on it after the step.
				const FDigest AtError = Digest();
				ASSERT_TRUE(GEditor->UndoTransaction());
				ASSERT_TRUE(DigestsMatch(Base, Digest())) << "undo";
				ASSERT_TRUE(GEditor->RedoTransaction());
				ASSERT_TRUE(DigestsMatch(AtError, Digest(), Case.bChangesModesUnderPatches ? std::set<std::string>{SpotTypeId} : std::set<std::string>())) << "redo";
				ASSERT_TRUE(GEditor->UndoTransaction());
				++CheckedRaises;
			}
		}
	}
	std::printf("[ unwind   ] %d raising reads checked\n", CheckedRaises);
}

TEST_F(FErrorUnwindTest, AnErrorAfterANestedCallTakesBothBackInOneStep)
{
	// The metamethod itself changes the library through the module, then raises: the inner call's
	// step nests in the outer one, so one undo takes back both.
	const FDigest Base = Digest();
	const int32 StepsBefore = UndoableSteps();
	Run(R"(
		local Lib = dmx_library("/Game/DMX/Stage")
		local Err = {}
		local P = setmetatable({}, {__index = function(_, Key)
			if Key == "universe" then
				assert(Lib:add("fixture_patch", {name = "Inner", fixture_type = "Spot"}))
				assert(Lib:remove("fixture_patch", "P2"))
				error(Err)
			end
		end})
		local Ok, Got = pcall(Lib.configure, Lib, "fixture_patch", "P1", P)
		assert(not Ok and rawequal(Got, Err) and editor.transaction_depth() == 0)
	)");
	ASSERT_EQ(UndoableSteps() - StepsBefore, 1);
	EXPECT_EQ(LastTitle(), ConfigureTitle);
	EXPECT_FALSE(DigestsMatch(Base, Digest()));
	ASSERT_TRUE(GEditor->UndoTransaction());
	EXPECT_TRUE(DigestsMatch(Base, Digest()));
}

TEST_F(FErrorUnwindTest, ListsAreNeverAskedThroughTheirMetatable)
{
	// The trap's lists raise on any keyed read, length or pairs; a call that reaches every list of
	// a fixture type and a patch must not trip them.
	Run(std::string("local P = trap_params(") + TypeParams + ", 0, nil, {})\n"
		+ "assert(dmx_library('/Game/DMX/Stage'):add('fixture_type', P).mode_count == 2)\n"
		+ "local Q = trap_params(" + PatchParams + ", 0, nil, {})\n"
		+ "assert(dmx_library('/Game/DMX/Stage'):add('fixture_patch', Q).name == 'Added')\n"
		+ "local Info = dmx_library('/Game/DMX/Stage'):info()\n"
		+ "assert(Info.fixture_types[2].modes[1].function_count == 2 and Info.fixture_patches[3].tag_count == 2)");
}
