// Every Lua-facing call, run again and again with one more of its Lua allocations refused each
// time, until it gets through: each refusal must reach the caller as Lua's own memory error and
// leave the editor as one undo step (or nothing) away from where it was, with no reference left
// behind in the Lua registry.
#include <gtest/gtest.h>

#include <algorithm>
#include <cstdio>
#include <cstdlib>
#include <cstring>
#include <functional>
#include <memory>
#include <string>
#include <tuple>
#include <unordered_set>
#include <vector>
#include "Editor.h"
#include "Game/DMXComponent.h"
#include "GameFramework/Actor.h"
#include "KestDMXProject.h"
#include "KestDMXRunner.h"
#include "UObject/UnrealType.h"
#include "VorlithLuaSession.h"
#include "component/DMXComponentLookup.h"
#include "host/VorLuaActor.h"
#include "module/DMXLuaParams.h"

namespace
{
	// A request for more memory: (no block yet, old size or kind of object, new size).
	using FLuaRequest = std::tuple<bool, size_t, size_t>;

	// Lua's allocator, armed for one call to refuse its Nth request for more memory. Lua answers a
	// refusal with an emergency collection and asks once more for the same block; that second
	// request is refused as well, so the refusal stands. Frees and shrinks always succeed.
	struct FLuaAllocationFaults
	{
		bool bArmed = false;
		int64 FailAt = 0;
		int64 Requests = 0;
		bool bRefused = false;
		bool bRetryPending = false;
		const void* RetryBlock = nullptr;
		size_t RetryOldSize = 0;
		size_t RetryNewSize = 0;
		// Bytes the Lua states hold now.
		size_t LiveBytes = 0;
		// When set, only requests of exactly this kind are counted, and FailAt picks among them.
		const FLuaRequest* Only = nullptr;
		// When set, every request for more memory of an armed call.
		std::vector<FLuaRequest>* Log = nullptr;

		// FailAt 0 refuses nothing and only counts the requests.
		void Arm(int64 InFailAt)
		{
			bArmed = true;
			FailAt = InFailAt;
			Requests = 0;
			bRefused = false;
			bRetryPending = false;
		}

		void Disarm()
		{
			bArmed = false;
			bRetryPending = false;
		}
	};

	void* AllocateLuaMemory(void* UserData, void* Block, size_t OldSize, size_t NewSize)
	{
		FLuaAllocationFaults& Faults = *static_cast<FLuaAllocationFaults*>(UserData);
		// Without a block, OldSize names the kind of object to make, not a size.
		const size_t HeldSize = Block != nullptr ? OldSize : 0;
		if (NewSize == 0)
		{
			std::free(Block);
			Faults.LiveBytes -= HeldSize;
			return nullptr;
		}
		if (Faults.bArmed && (Block == nullptr || NewSize > OldSize))
		{
			const FLuaRequest Request(Block == nullptr, OldSize, NewSize);
			if (Faults.Log != nullptr && !Faults.bRetryPending)
			{
				Faults.Log->push_back(Request);
			}
			if (Faults.bRetryPending)
			{
				Faults.bRetryPending = false;
				if (Block == Faults.RetryBlock && OldSize == Faults.RetryOldSize && NewSize == Faults.RetryNewSize)
				{
					return nullptr;
				}
			}
			else if (!Faults.bRefused && (Faults.Only == nullptr || *Faults.Only == Request) && ++Faults.Requests == Faults.FailAt)
			{
				Faults.bRefused = true;
				Faults.bRetryPending = true;
				Faults.RetryBlock = Block;
				Faults.RetryOldSize = OldSize;
				Faults.RetryNewSize = NewSize;
				return nullptr;
			}
		}
		void* Moved = std::realloc(Block, NewSize);
		if (Moved != nullptr)
		{
			Faults.LiveBytes = Faults.LiveBytes - HeldSize + NewSize;
		}
		return Moved;
	}

	// An empty library and an actor, made once per test.
	const char* const SceneScript = R"(
		assert(editor.create_library("/Game/DMX/Stage"))
		assert(editor.spawn_actor("Truss", "Front Truss"))
	)";

	// Handles and params, set up in every Lua state a sweep uses.
	const char* const HandlesScript = R"(
		lib = dmx_library("/Game/DMX/Stage")
		comp = dmx_component("Truss")
		sub = dmx_subsystem()
		assert(lib.valid and comp.valid and sub.valid)
		rich_modes = {
			{ name = "Basic", auto_channel_span = false, channel_span = 24,
				functions = {
					{ attribute = "Dimmer", name = "Dim", description = "master", default_value = 255, channel = 1,
						data_type = "16bit", use_lsb = true, physical_default_value = 50, physical_from = 0, physical_to = 100 },
					"skipped",
					{ attribute = "Pan", name = "Pan", data_type = "E24Bit", physical_to = 540 },
				},
				matrix = { enabled = true, x_cells = 4, y_cells = 2, first_cell_channel = 8, distribution = "TopLeftToBottom",
					cell_attributes = {
						{ attribute = "Red", description = "r", default_value = 1, data_type = "8bit", use_lsb = false },
						{ attribute = "Green" },
					} } },
			{ name = "Extended", functions = { { attribute = "Tilt" } } },
		}

		-- The same params behind metatables that build every value afresh when it is read, so the
		-- module's reads allocate too, all through the call and not only while it answers. Lists
		-- stay plain tables (they are walked, not read); their entries are proxies again.
		function proxy(value)
			if type(value) ~= "table" then
				return value
			end
			if value[1] ~= nil then
				local list = {}
				for index, entry in ipairs(value) do
					list[index] = proxy(entry)
				end
				return list
			end
			return setmetatable({}, { __index = function(_, key) return proxy(value[key]) end })
		end
	)";

	// The library's content and the actor's DMX component, made once per test.
	const char* const ContentScript = R"(
		assert(lib:add("fixture_type", { name = "Spot", category = "Moving Head", modes = rich_modes }))
		assert(lib:add("fixture_patch", { name = "Spot1", fixture_type = "Spot", universe = 2, starting_channel = 17,
			tags = { "front", "stage" }, receive_dmx_in_editor = true, editor_color = { r = 1, g = 0.5, b = 0.25, a = 1 } }))
		assert(lib:add("fixture_patch", { name = "Spot2", fixture_type = "Spot", active_mode_index = 1, universe = 3 }))
		assert(comp:add({ name = "Rig", library = "/Game/DMX/Stage", fixture_patch = "Spot1", receive = false }))
	)";

	struct FSweepCase
	{
		const char* Name;
		// Lua expressions: the function, then its arguments (the handle first for a method).
		const char* Call;
		// The undo step a call may leave behind, or null when it never opens one.
		const TCHAR* StepTitle;
		// Null for a call that succeeds; otherwise part of the Lua error it ends with.
		const char* Error = nullptr;
	};

	// How the Lua registry stands when the call starts: the session's own state, whose registry
	// has free references left by earlier calls (bFresh false); or a fresh state per run with the
	// registry's free references taken and Padding more new ones, so that the call's own
	// references need new slots and one of them makes the registry grow.
	struct FRegistryMode
	{
		bool bFresh = false;
		int Padding = 0;
	};

	// Lua 5.4.3 and later keep the head of the registry's list of free references at this index.
	static_assert(LUA_VERSION_RELEASE_NUM >= 50403, "the registry's free list moved in Lua 5.4.3");
	const lua_Integer RegistryFreeListIndex = LUA_RIDX_LAST + 1;

	struct FSweepFigures
	{
		int32 Calls = 0;
		int64 RefusedAllocations = 0;
		int64 RefusedGrowths = 0;
	};

	struct FCallOutcome
	{
		int Status = LUA_OK;
		int Results = 0;
		bool bRefused = false;
		int64 Requests = 0;
		int ValueType = LUA_TNONE;
		std::string Message;
	};

	class FAllocationFailureTest : public ::testing::Test
	{
	protected:
		void SetUp() override
		{
			Session = std::make_unique<FKestDMXSession>(FHeadlessEditorOptions(), &AllocateLuaMemory, &Faults);
			RunLua(SceneScript);
			RunLua(HandlesScript);
			RunLua(ContentScript);
			L = Session->GetLua().GetState().lua_state();
		}

		void TearDown() override
		{
			Session.reset();
			EXPECT_EQ(Faults.LiveBytes, 0u) << "closing the Lua state returns all its memory";
		}

		void RunLua(const std::string& Code)
		{
			std::string Error;
			ASSERT_TRUE(Session->RunScript(Code, "allocation_failure_test", Error)) << Error;
		}

		std::string Describe() { return DescribeKestDMXProject(Session->GetEditor()); }

		int32 CountSteps() const { return GEditor->Trans->GetUndoTitles().Num(); }

		static void CollectGarbage(lua_State* State)
		{
			lua_gc(State, LUA_GCCOLLECT);
			lua_gc(State, LUA_GCCOLLECT);
		}

		// A fresh host session on the same editor, with the handles and the call set up.
		std::unique_ptr<FVorlithLuaSession> OpenFreshSession(const FSweepCase& Case)
		{
			auto Fresh = std::make_unique<FVorlithLuaSession>(&AllocateLuaMemory, &Faults);
			std::string Error;
			const bool bReady = Fresh->RunScript(HandlesScript, "allocation_failure_test", Error)
				&& Fresh->RunScript(std::string("sweep_call = table.pack(") + Case.Call + ")", "allocation_failure_test", Error);
			EXPECT_TRUE(bReady) << Error;
			return Fresh;
		}

		// Takes every free reference of the registry, then Padding new ones.
		void HoldRegistrySlots(lua_State* State, int Padding)
		{
			for (;;)
			{
				lua_rawgeti(State, LUA_REGISTRYINDEX, RegistryFreeListIndex);
				const lua_Integer Head = lua_tointeger(State, -1);
				lua_pop(State, 1);
				if (Head == 0 && Padding-- <= 0)
				{
					break;
				}
				lua_pushboolean(State, 1);
				HeldReferences.push_back(luaL_ref(State, LUA_REGISTRYINDEX));
			}
		}

		void ReleaseRegistrySlots(lua_State* State)
		{
			for (const int Reference : HeldReferences)
			{
				luaL_unref(State, LUA_REGISTRYINDEX, Reference);
			}
			HeldReferences.clear();
		}

		// The references in the registry that are not on its free list.
		static int32 CountRegistryReferences(lua_State* State)
		{
			std::unordered_set<lua_Integer> Free;
			lua_rawgeti(State, LUA_REGISTRYINDEX, RegistryFreeListIndex);
			for (lua_Integer Next = lua_tointeger(State, -1); Next != 0 && Free.insert(Next).second;)
			{
				lua_pop(State, 1);
				lua_rawgeti(State, LUA_REGISTRYINDEX, Next);
				Next = lua_tointeger(State, -1);
			}
			lua_pop(State, 1);
			int32 Count = 0;
			lua_pushnil(State);
			while (lua_next(State, LUA_REGISTRYINDEX) != 0)
			{
				lua_pop(State, 1);
				if (lua_isinteger(State, -1) && lua_tointeger(State, -1) > RegistryFreeListIndex && !Free.count(lua_tointeger(State, -1)))
				{
					++Count;
				}
			}
			return Count;
		}

		// Pushes the case's function and arguments; answers the number of arguments.
		static int PushCall(lua_State* State)
		{
			lua_getglobal(State, "sweep_call");
			const int CallIndex = lua_gettop(State);
			lua_getfield(State, CallIndex, "n");
			const int Count = static_cast<int>(lua_tointeger(State, -1));
			lua_pop(State, 1);
			luaL_checkstack(State, Count + LUA_MINSTACK, "sweep call");
			for (int Index = 1; Index <= Count; ++Index)
			{
				lua_rawgeti(State, CallIndex, Index);
			}
			lua_remove(State, CallIndex);
			return Count - 1;
		}

		// How many new references a fresh state takes, set up as for a run, before one makes the
		// registry grow (-1 when none does), and the requests of that growth.
		int ProbeRegistryGrowth(const FSweepCase& Case, std::vector<FLuaRequest>& OutGrowth)
		{
			std::unique_ptr<FVorlithLuaSession> Fresh = OpenFreshSession(Case);
			lua_State* State = Fresh->GetState().lua_state();
			PushCall(State);
			CollectGarbage(State);
			lua_gc(State, LUA_GCSTOP);
			HoldRegistrySlots(State, 0);
			int Taken = -1;
			for (int Index = 0; Index < 4096 && Taken < 0; ++Index)
			{
				lua_pushboolean(State, 1);
				OutGrowth.clear();
				Faults.Log = &OutGrowth;
				Faults.Arm(0);
				HeldReferences.push_back(luaL_ref(State, LUA_REGISTRYINDEX));
				Faults.Disarm();
				Faults.Log = nullptr;
				if (Faults.Requests > 0)
				{
					Taken = Index;
				}
			}
			ReleaseRegistrySlots(State);
			return Taken;
		}

		// Runs the call once with the Nth allocation refused (0: none refused). The collector rests
		// from before the registry is filled until the call returns, so that every run allocates alike.
		FCallOutcome CallWithRefusal(const FSweepCase& Case, int64 FailAt, const FRegistryMode& Mode, const FLuaRequest* Only = nullptr)
		{
			std::unique_ptr<FVorlithLuaSession> Fresh = Mode.bFresh ? OpenFreshSession(Case) : nullptr;
			lua_State* State = Fresh ? Fresh->GetState().lua_state() : L;
			const int Top = lua_gettop(State);
			const int ArgumentCount = PushCall(State);
			CollectGarbage(State);
			lua_gc(State, LUA_GCSTOP);
			if (Mode.bFresh)
			{
				HoldRegistrySlots(State, Mode.Padding);
			}
			Faults.Only = Only;
			Faults.Arm(FailAt);
			FCallOutcome Outcome;
			Outcome.Status = lua_pcall(State, ArgumentCount, LUA_MULTRET, 0);
			Faults.Disarm();
			Faults.Only = nullptr;
			lua_gc(State, LUA_GCRESTART);
			Outcome.bRefused = Faults.bRefused;
			Outcome.Requests = Faults.Requests;
			Outcome.Results = lua_gettop(State) - Top;
			Outcome.ValueType = lua_type(State, -1);
			if (Outcome.ValueType == LUA_TSTRING)
			{
				Outcome.Message = lua_tostring(State, -1);
			}
			lua_settop(State, Top);
			ReleaseRegistrySlots(State);
			return Outcome;
		}

		// The call's own outcome, when no allocation was refused.
		static void ExpectOutcome(const FSweepCase& Case, const FCallOutcome& Outcome, const std::string& When)
		{
			EXPECT_EQ(Outcome.Results, 1) << When;
			if (Case.Error == nullptr)
			{
				EXPECT_EQ(Outcome.Status, LUA_OK) << When << ": " << Outcome.Message;
				EXPECT_NE(Outcome.ValueType, LUA_TNIL) << When;
			}
			else
			{
				EXPECT_EQ(Outcome.Status, LUA_ERRRUN) << When;
				EXPECT_NE(Outcome.Message.find(Case.Error), std::string::npos) << When << ": " << Outcome.Message;
			}
		}

		// Brings the editor back to where it was before the call: one undo when the call left its
		// step, then whatever Restore puts back of the changes made outside any step.
		void ExpectCallUndoes(const FSweepCase& Case, int32 StepsBefore, const std::string& Before, const std::function<void()>& Restore, const std::string& When)
		{
			EXPECT_EQ(GEditor->Trans->GetActiveCount(), 0) << When;
			const TArray<FText> Titles = GEditor->Trans->GetUndoTitles();
			if (Titles.Num() == StepsBefore + 1)
			{
				ASSERT_NE(Case.StepTitle, nullptr) << When << ": left a step it never opens";
				EXPECT_TRUE(Titles.Last().ToString().Equals(FString(Case.StepTitle))) << When << ": " << ConvertEngineText(Titles.Last().ToString());
				ASSERT_TRUE(GEditor->UndoTransaction()) << When;
			}
			else
			{
				ASSERT_EQ(Titles.Num(), StepsBefore) << When << ": more than one step";
			}
			if (Restore)
			{
				Restore();
			}
			EXPECT_EQ(Describe(), Before) << When << ": one undo does not restore the editor";
		}

		// One run with an allocation refused: Lua's memory error, and the editor one undo away.
		void ExpectRefusedCall(const FSweepCase& Case, const FCallOutcome& Outcome, int32 StepsBefore, const std::string& Before,
			const std::function<void()>& Restore, const std::string& When)
		{
			EXPECT_EQ(Outcome.Status, LUA_ERRMEM) << When << ": " << Outcome.Message;
			EXPECT_EQ(Outcome.Results, 1) << When;
			EXPECT_EQ(Outcome.Message, "not enough memory") << When;
			ExpectCallUndoes(Case, StepsBefore, Before, Restore, When);
		}

		// Refuses each of the call's allocations in turn, in the session's own Lua state.
		void Sweep(const FSweepCase& Case, const std::function<void()>& Restore = {})
		{
			SCOPED_TRACE(Case.Name);
			const FRegistryMode Warm;
			RunLua(std::string("sweep_call = table.pack(") + Case.Call + ")");
			const int32 StepsBefore = CountSteps();
			const std::string Before = Describe();

			// Twice without a refusal: the second run counts the allocations once the first has grown
			// what Lua keeps (the string table, the registry).
			int64 Allocations = 0;
			for (int Run = 0; Run < 2; ++Run)
			{
				const FCallOutcome Outcome = CallWithRefusal(Case, 0, Warm);
				Allocations = Outcome.Requests;
				ExpectOutcome(Case, Outcome, "nothing refused");
				ExpectCallUndoes(Case, StepsBefore, Before, Restore, "nothing refused");
			}
			CollectGarbage(L);
			const int32 ReferencesBefore = CountRegistryReferences(L);

			bool bComplete = false;
			for (int64 FailAt = 1; FailAt <= Allocations + 64 && !::testing::Test::HasFailure(); ++FailAt)
			{
				const std::string When = "allocation " + std::to_string(FailAt) + " refused";
				const FCallOutcome Outcome = CallWithRefusal(Case, FailAt, Warm);
				if (!Outcome.bRefused)
				{
					// The call made fewer allocations than that: the sweep is complete.
					ExpectOutcome(Case, Outcome, When);
					ExpectCallUndoes(Case, StepsBefore, Before, Restore, When);
					bComplete = true;
					break;
				}
				++Figures.RefusedAllocations;
				ExpectRefusedCall(Case, Outcome, StepsBefore, Before, Restore, When);
				CollectGarbage(L);
				EXPECT_EQ(CountRegistryReferences(L), ReferencesBefore) << When << ": a reference outlives the call";
			}
			EXPECT_TRUE(bComplete || ::testing::Test::HasFailure()) << "the call keeps allocating beyond its count";
			++Figures.Calls;
		}

		// For each of the call's first new references in turn, a fresh Lua state whose registry must
		// grow for exactly that reference, and the growth's allocations refused one by one. They are
		// told apart from the call's other allocations by their kind: every allocation of the same
		// kind as one of the growth's is refused in turn (Lua's cache of API strings makes some
		// counts differ between fresh states, but not these).
		void SweepRegistryGrowth(const FSweepCase& Case, const std::function<void()>& Restore = {})
		{
			SCOPED_TRACE(std::string(Case.Name) + ", registry growth");
			const int32 StepsBefore = CountSteps();
			const std::string Before = Describe();
			std::vector<FLuaRequest> Growth;
			const int GrowsAfter = ProbeRegistryGrowth(Case, Growth);
			ASSERT_GE(GrowsAfter, 0);
			ASSERT_FALSE(Growth.empty());

			const FRegistryMode GrownBefore{true, GrowsAfter + 1};
			for (int Reference = 0; Reference < 3 && Reference <= GrowsAfter && !::testing::Test::HasFailure(); ++Reference)
			{
				const std::string When = "registry grows for new reference " + std::to_string(Reference + 1);
				const FRegistryMode Growing{true, GrowsAfter - Reference};
				std::vector<FLuaRequest> Requests[2];
				for (int Run = 0; Run < 2; ++Run)
				{
					Faults.Log = &Requests[Run];
					const FCallOutcome Outcome = CallWithRefusal(Case, 0, Run == 0 ? Growing : GrownBefore);
					Faults.Log = nullptr;
					ExpectOutcome(Case, Outcome, When);
					ExpectCallUndoes(Case, StepsBefore, Before, Restore, When);
				}
				bool bGrew = false;
				for (const FLuaRequest& Kind : Growth)
				{
					const int64 Seen = std::count(Requests[0].begin(), Requests[0].end(), Kind);
					if (Seen <= std::count(Requests[1].begin(), Requests[1].end(), Kind))
					{
						continue;
					}
					bGrew = true;
					for (int64 Occurrence = 1; Occurrence <= Seen && !::testing::Test::HasFailure(); ++Occurrence)
					{
						const std::string Refused = When + ", allocation " + std::to_string(Occurrence) + " of its kind refused";
						const FCallOutcome Outcome = CallWithRefusal(Case, Occurrence, Growing, &Kind);
						if (!Outcome.bRefused)
						{
							ExpectOutcome(Case, Outcome, Refused);
							ExpectCallUndoes(Case, StepsBefore, Before, Restore, Refused);
							continue;
						}
						++Figures.RefusedGrowths;
						ExpectRefusedCall(Case, Outcome, StepsBefore, Before, Restore, Refused);
					}
				}
				if (!bGrew)
				{
					// The call makes fewer new references than that.
					break;
				}
			}
		}

		void RecordFigures()
		{
			RecordProperty("calls_swept", Figures.Calls);
			RecordProperty("allocations_refused", static_cast<int>(Figures.RefusedAllocations));
			RecordProperty("registry_growths_refused", static_cast<int>(Figures.RefusedGrowths));
			std::printf("[ figures  ] %d calls swept, %lld allocations refused one by one, %lld registry growth allocations refused\n",
				Figures.Calls, static_cast<long long>(Figures.RefusedAllocations), static_cast<long long>(Figures.RefusedGrowths));
		}

		void SweepAll(const FSweepCase& Case, const std::function<void()>& Restore = {})
		{
			Sweep(Case, Restore);
			SweepRegistryGrowth(Case, Restore);
		}

		FLuaAllocationFaults Faults;
		std::unique_ptr<FKestDMXSession> Session;
		lua_State* L = nullptr;
		std::vector<int> HeldReferences;
		FSweepFigures Figures;
	};

	const TCHAR* const AddEntityTitle = TEXT("Vorlith: Add DMX Library Entity");
	const TCHAR* const ConfigureEntityTitle = TEXT("Vorlith: Configure DMX Library Entity");
	const TCHAR* const RemoveEntityTitle = TEXT("Vorlith: Remove DMX Library Entity");
	const TCHAR* const AddComponentTitle = TEXT("Vorlith: Add DMX Component");
	const TCHAR* const ConfigureComponentTitle = TEXT("Vorlith: Configure DMX Component");
}

TEST_F(FAllocationFailureTest, LibraryAuthoringAndInspection)
{
	const FSweepCase Cases[] = {
		{"library add fixture_type", R"(lib.add, lib, "fixture_type", { name = "Wash", category = "Wash", modes = rich_modes })", AddEntityTitle},
		{"library add fixture_type, proxy params", R"(lib.add, lib, "fixture_type", proxy({ name = "Wash", category = "Wash", modes = rich_modes }))", AddEntityTitle},
		{"library add fixture_patch", R"(lib.add, lib, "fixture_patch", { name = "Wash1", fixture_type = "spot", active_mode_index = 1,
			universe = 4, starting_channel = 100, tags = { "a", 5, "b" }, receive_dmx_in_editor = false, editor_color = { r = 0.1, a = 0.5 } })", AddEntityTitle},
		{"library add fixture_patch, proxy params", R"(lib.add, lib, "fixture_patch", proxy({ name = "Wash1", fixture_type = "spot",
			active_mode_index = 1, universe = 4, starting_channel = 100, tags = { "a", 5, "b" }, receive_dmx_in_editor = false,
			editor_color = { r = 0.1, a = 0.5 } }))", AddEntityTitle},
		{"library configure fixture_type", R"(lib.configure, lib, "FIXTURE_TYPE", "spot", { name = "Spot Mk2", category = "Spot", modes = rich_modes })", ConfigureEntityTitle},
		{"library configure fixture_type, proxy params", R"(lib.configure, lib, "fixture_type", "Spot", proxy({ name = "Spot Mk2",
			category = "Spot", modes = rich_modes }))", ConfigureEntityTitle},
		{"library configure fixture_patch", R"(lib.configure, lib, "fixture_patch", "Spot2", { name = "Spot 2", fixture_type = "Spot", universe = 5,
			starting_channel = 33, active_mode_index = 0, tags = { "x" }, receive_dmx_in_editor = true, editor_color = { g = 0.75 } })", ConfigureEntityTitle},
		{"library configure fixture_patch, proxy params", R"(lib.configure, lib, "fixture_patch", "Spot2", proxy({ name = "Spot 2",
			fixture_type = "Spot", universe = 5, starting_channel = 33, active_mode_index = 0, tags = { "x" }, receive_dmx_in_editor = true,
			editor_color = { g = 0.75 } }))", ConfigureEntityTitle},
		{"library remove fixture_patch", R"(lib.remove, lib, "fixture_patch", "spot2")", RemoveEntityTitle},
		{"library remove fixture_type", R"(lib.remove, lib, "fixture_type", "Spot")", RemoveEntityTitle},
		{"library info", R"(lib.info, lib)", nullptr},
		{"library add with a number as the kind", R"(lib.add, lib, 5, {})", nullptr, "stack index 2, expected string, received number"},
	};
	for (const FSweepCase& Case : Cases)
	{
		SweepAll(Case);
	}
	RecordFigures();
}

TEST_F(FAllocationFailureTest, ComponentHandle)
{
	AActor* Actor = VorLuaActor::FindByNameOrLabel(Session->GetEditor().GetEditorWorld(), FString(TEXT("Truss")));
	ASSERT_NE(Actor, nullptr);
	UDMXComponent* Rig = FindDMXComponentByName(Actor, FString(TEXT("Rig")));
	ASSERT_NE(Rig, nullptr);
	const FBoolProperty* ReceiveProperty = FindFProperty<FBoolProperty>(UDMXComponent::StaticClass(), TEXT("bReceiveDMXFromPatch"));
	ASSERT_NE(ReceiveProperty, nullptr);

	SweepAll({"component add creating", R"(comp.add, comp, { name = "Second", library = "/Game/DMX/Stage", fixture_patch = "Spot2", receive = true })", AddComponentTitle});
	SweepAll({"component add creating, proxy params", R"(comp.add, comp, proxy({ name = "Second", library = "/Game/DMX/Stage",
		fixture_patch = "Spot2", receive = true }))", AddComponentTitle});

	// Reusing a component records nothing for undo, on purpose: its patch and receive changes are
	// put back by hand.
	const FDMXEntityFixturePatchRef RigPatch = Rig->FixturePatchRef;
	const bool bRigReceive = ReceiveProperty->GetPropertyValue_InContainer(Rig);
	SweepAll({"component add reusing", R"(comp.add, comp, { name = "rig", library = "/Game/DMX/Stage", fixture_patch = "Spot2", receive = true })", nullptr},
		[&]()
		{
			Rig->FixturePatchRef = RigPatch;
			ReceiveProperty->SetPropertyValue_InContainer(Rig, bRigReceive);
		});

	SweepAll({"component configure", R"(comp.configure, comp, "Rig", { library = "/Game/DMX/Stage", fixture_patch = "Spot2", receive = true })", ConfigureComponentTitle});
	SweepAll({"component configure, proxy params", R"(comp.configure, comp, "Rig", proxy({ library = "/Game/DMX/Stage",
		fixture_patch = "Spot2", receive = true }))", ConfigureComponentTitle});
	SweepAll({"component info", R"(comp.info, comp)", nullptr});
	RecordFigures();
}

TEST_F(FAllocationFailureTest, ConversionsAndGlobals)
{
	const FSweepCase Cases[] = {
		{"int_to_bytes", R"(sub.int_to_bytes, sub, 300, "16bit", false)", nullptr},
		{"bytes_to_int", R"(sub.bytes_to_int, sub, { 1, 2, 300, -4 }, true)", nullptr},
		{"normalized_to_bytes", R"(sub.normalized_to_bytes, sub, 0.5, "E32Bit", true)", nullptr},
		{"bytes_to_normalized", R"(sub.bytes_to_normalized, sub, { 255, 0 }, false)", nullptr},
		{"bytes_to_int with a float byte", R"(sub.bytes_to_int, sub, { 1, 2.5 }, false)", nullptr,
			"not a numeric type that fits exactly an integer (number maybe has significant decimals)"},
		{"dmx_library", R"(dmx_library, "/Game/DMX/Stage")", nullptr},
		{"dmx_component", R"(dmx_component, "Front Truss")", nullptr},
		{"dmx_subsystem", R"(dmx_subsystem)", nullptr},
	};
	for (const FSweepCase& Case : Cases)
	{
		SweepAll(Case);
	}
	RecordFigures();
}
