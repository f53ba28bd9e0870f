// Every Lua-facing call, run with its 1st, 2nd, ... Lua allocation refused until it gets through: each
// refusal reaches the caller as Lua's memory error with the stack as it was, no transaction open, no
// registry reference left, and one undo (or none) gives back the state before. Then again in fresh
// Lua states whose registry must grow for the call's 1st, 2nd or 3rd new reference, refusing that.
#include <gtest/gtest.h>

#include <cstdio>
#include <cstdlib>
#include <functional>
#include <memory>
#include <optional>
#include <set>
#include <tuple>
#include <utility>
#include "KestSessionTest.h"
#include "VorlithLuaSession.h"
#include "component/DMXComponentLookup.h"
#include "library/DMXLibraryLookup.h"
#include "module/DMXLuaParams.h"

namespace
{
	// A request for more memory: (no block yet, old size or kind of object, new size).
	using FLuaRequest = std::tuple<bool, size_t, size_t>;

	// Lua's allocator, armed for one call to refuse its FailAt-th request for more memory (counting
	// only requests like *Only, when set; FailAt 0 refuses none), or to log them. Lua answers a
	// refusal with an emergency collection and asks again for the same block: that is refused too.
	struct FLuaAllocationFaults
	{
		bool bArmed = false;
		int64 FailAt = 0;
		const FLuaRequest* Only = nullptr;
		std::vector<FLuaRequest>* Log = nullptr;
		int64 Requests = 0;
		bool bRefused = false;
		std::optional<std::pair<const void*, FLuaRequest>> Retry = std::nullopt;
	};

	void* AllocateLuaMemory(void* UserData, void* Block, size_t OldSize, size_t NewSize)
	{
		FLuaAllocationFaults& Faults = *static_cast<FLuaAllocationFaults*>(UserData);
		if (NewSize == 0)
		{
			std::free(Block);
			return nullptr;
		}
		const FLuaRequest Request(Block == nullptr, OldSize, NewSize);
		if (Faults.bArmed && NewSize > (Block != nullptr ? OldSize : 0))
		{
			if (const auto Retry = std::exchange(Faults.Retry, std::nullopt))
			{
				if (*Retry == std::make_pair(static_cast<const void*>(Block), Request))
				{
					return nullptr;
				}
			}
			else if (Faults.Log != nullptr)
			{
				Faults.Log->push_back(Request);
			}
			else if (!Faults.bRefused && (Faults.Only == nullptr || *Faults.Only == Request) && ++Faults.Requests == Faults.FailAt)
			{
				Faults.bRefused = true;
				Faults.Retry.emplace(Block, Request);
				return nullptr;
			}
		}
		return std::realloc(Block, NewSize);
	}

	// Handles and params, set up in every Lua state a sweep uses. proxy(params) gives the same params
	// behind metatables that build every value afresh when read, so the module's reads allocate too,
	// in the middle of building modes and lists; lists stay plain (they are walked, not read).
	const char* const HandlesScript = R"(
		lib, comp, sub = dmx_library("/Game/DMX/Stage"), dmx_component("Truss"), dmx_subsystem()
		rich_modes = {{name = "Basic", auto_channel_span = false, channel_span = 24, functions = {
				{attribute = "Dimmer", name = "Dim", description = "master", default_value = 255, channel = 1, data_type = "16bit", use_lsb = true,
					physical_default_value = 50, physical_from = 0, physical_to = 100}, "skipped", {attribute = "Pan", data_type = "E24Bit", physical_to = 540}},
			matrix = {enabled = true, x_cells = 4, y_cells = 2, first_cell_channel = 8, distribution = "TopLeftToBottom",
				cell_attributes = {{attribute = "Red", description = "r", default_value = 1, data_type = "8bit", use_lsb = false}, {attribute = "Green"}}}},
			{name = "Extended", functions = {{attribute = "Tilt"}}}}
		function proxy(value)
			if type(value) ~= "table" then return value end
			local list = {}
			for index, entry in ipairs(value) do list[index] = proxy(entry) end
			return value[1] ~= nil and list or setmetatable({}, {__index = function(_, key) return proxy(value[key]) end})
		end
	)";

	// The function and its first arguments as Lua expressions; a params table passed last, swept as
	// it is and behind proxy(); the undo step the call may leave; part of the error it ends with.
	struct FSweepCase
	{
		const char* Call;
		const char* Params = nullptr;
		const char* Title = nullptr;
		const char* Error = nullptr;
	};

	// Lua 5.4.3 and later keep the head of the registry's list of free references here.
	static_assert(LUA_VERSION_RELEASE_NUM >= 50403, "the registry's free list moved in Lua 5.4.3");
	const lua_Integer RegistryFreeListIndex = LUA_RIDX_LAST + 1;

	class FAllocationFailureTest : public FKestSessionTest
	{
	protected:
		void SetUp() override
		{
			Session = std::make_unique<FKestDMXSession>(FHeadlessEditorOptions(), &AllocateLuaMemory, &Faults);
			L = Session->GetLua().GetState().lua_state();
			Run(std::string(R"(assert(editor.create_library("/Game/DMX/Stage") and editor.spawn_actor("Truss", "Front Truss")))") + HandlesScript);
			Run(R"(assert(lib:add("fixture_type", {name = "Spot", category = "Moving Head", modes = rich_modes}))
				assert(lib:add("fixture_patch", {name = "Spot1", fixture_type = "Spot", universe = 2, starting_channel = 17,
					tags = {"front", "stage"}, receive_dmx_in_editor = true, editor_color = {r = 1, g = 0.5, b = 0.25, a = 1}}))
				assert(lib:add("fixture_patch", {name = "Spot2", fixture_type = "Spot", active_mode_index = 1, universe = 3}))
				assert(comp:add({name = "Rig", library = "/Game/DMX/Stage", fixture_patch = "Spot1", receive = false})))");
		}

		void TearDown() override
		{
			std::printf("[ figures  ] %d calls swept, %lld allocations refused one by one, %lld registry growth allocations refused\n",
				Calls, static_cast<long long>(Refused), static_cast<long long>(RefusedGrowths));
			Fresh.reset();
			FKestSessionTest::TearDown();
		}

		// The registry's references (free slots hold numbers; references here are to objects).
		int32 CountRegistryReferences()
		{
			lua_gc(L, LUA_GCCOLLECT);
			int32 Count = 0;
			for (lua_pushnil(L); lua_next(L, LUA_REGISTRYINDEX) != 0; lua_pop(L, 1))
			{
				Count += lua_type(L, -1) != LUA_TNUMBER;
			}
			return Count;
		}

		// The call pushed, the collector stopped so that every run allocates alike, in the session's own
		// state (Padding below 0) or in a fresh one on the same editor whose free registry references are
		// all taken, then Padding more, so that the call's own need new slots. Answers state and arguments.
		std::pair<lua_State*, int> PrepareCall(int Padding)
		{
			lua_State* State = L;
			if (Padding >= 0)
			{
				Fresh = std::make_unique<FVorlithLuaSession>(&AllocateLuaMemory, &Faults);
				std::string Error;
				EXPECT_TRUE(Fresh->RunScript(HandlesScript, "sweep", Error) && Fresh->RunScript("sweep_call = table.pack(" + CallText + ")", "sweep", Error)) << Error;
				State = Fresh->GetState().lua_state();
			}
			lua_getglobal(State, "sweep_call");
			lua_getfield(State, -1, "n");
			const int Count = static_cast<int>(lua_tointeger(State, -1));
			lua_pop(State, 1);
			for (int Index = 1; Index <= Count; ++Index)
			{
				lua_rawgeti(State, -Index, Index);
			}
			lua_remove(State, -Count - 1);
			lua_gc(State, LUA_GCCOLLECT);
			lua_gc(State, LUA_GCSTOP);
			while (Padding >= 0)
			{
				lua_rawgeti(State, LUA_REGISTRYINDEX, RegistryFreeListIndex);
				const bool bFreeLeft = lua_tointeger(State, -1) != 0;
				lua_pop(State, 1);
				if (!bFreeLeft && Padding-- == 0)
				{
					break;
				}
				lua_pushboolean(State, 1);
				luaL_ref(State, LUA_REGISTRYINDEX);
			}
			return {State, Count - 1};
		}

		// One run with the FailAt-th allocation refused: its outcome, exactly one value above where the
		// stack was, no open transaction, and one undo (with Restore) back to the state before.
		bool RunRefusing(int64 FailAt, int Padding, const FLuaRequest* Only)
		{
			const auto [State, ArgumentCount] = PrepareCall(Padding);
			const int Top = lua_gettop(State) - ArgumentCount - 1;
			Faults = FLuaAllocationFaults();
			Faults.bArmed = true;
			Faults.FailAt = FailAt;
			Faults.Only = Only;
			const int Status = lua_pcall(State, ArgumentCount, LUA_MULTRET, 0);
			Faults.bArmed = false;
			lua_gc(State, LUA_GCRESTART);
			const std::string Message = lua_type(State, -1) == LUA_TSTRING ? lua_tostring(State, -1) : "";
			EXPECT_EQ(lua_gettop(State) - Top, 1);
			EXPECT_EQ(Status, Faults.bRefused ? LUA_ERRMEM : Case->Error ? LUA_ERRRUN : LUA_OK) << Message;
			EXPECT_TRUE(Faults.bRefused ? Message == "not enough memory" : Case->Error ? Message.find(Case->Error) != std::string::npos : !lua_isnil(State, -1))
				<< Message;
			lua_settop(State, Top);
			EXPECT_EQ(GEditor->Trans->GetActiveCount(), 0);
			const TArray<FText> Titles = GEditor->Trans->GetUndoTitles();
			EXPECT_LE(Titles.Num(), StepsBefore + 1) << "more than one step";
			if (Titles.Num() > StepsBefore)
			{
				EXPECT_EQ(ConvertEngineText(Titles.Last().ToString()), Case->Title ? Case->Title : "(no step)");
				EXPECT_TRUE(GEditor->UndoTransaction());
			}
			if (Restore)
			{
				Restore();
			}
			EXPECT_TRUE(DMXStateDigest::DigestsMatch(Before, Digest())) << "one undo does not restore";
			return Faults.bRefused;
		}

		// Refuses the call's first, second, ... allocation (of kind Only, when set) until it gets
		// through without reaching the refused one. Twice unrefused first: the second run counts once
		// the first has grown what Lua keeps.
		void Sweep(int Padding, const FLuaRequest* Only, int64& Count)
		{
			RunRefusing(0, Padding, Only);
			RunRefusing(0, Padding, Only);
			const int64 Requests = Faults.Requests;
			const int32 ReferencesBefore = CountRegistryReferences();
			for (int64 FailAt = 1; FailAt <= Requests + 64; ++FailAt)
			{
				SCOPED_TRACE("allocation " + std::to_string(FailAt) + " refused");
				if (!RunRefusing(FailAt, Padding, Only) || HasFailure())
				{
					return;
				}
				++Count;
				EXPECT_EQ(CountRegistryReferences(), ReferencesBefore) << "a reference outlives the call";
			}
			ADD_FAILURE() << "the call keeps allocating beyond its count";
		}

		void SweepAll(const FSweepCase& SweepCase, const std::function<void()>& InRestore = {})
		{
			Case = &SweepCase;
			Restore = InRestore;
			for (const char* Wrap : {"", "proxy"})
			{
				CallText = std::string(SweepCase.Call) + (SweepCase.Params ? ", " + std::string(Wrap) + "(" + SweepCase.Params + ")" : "");
				SCOPED_TRACE(CallText);
				Run("sweep_call = table.pack(" + CallText + ")");
				StepsBefore = UndoableSteps();
				Before = Digest();
				Sweep(-1, nullptr, Refused);
				// The new references a fresh state takes before one makes the registry grow, and the
				// kinds of that growth's requests; then the growth at the call's 1st to 3rd reference.
				std::vector<FLuaRequest> Log;
				lua_State* State = PrepareCall(0).first;
				Faults = FLuaAllocationFaults();
				Faults.bArmed = true;
				Faults.Log = &Log;
				int GrowsAfter = 0;
				for (; Log.empty() && GrowsAfter < 4096; ++GrowsAfter)
				{
					lua_pushboolean(State, 1);
					luaL_ref(State, LUA_REGISTRYINDEX);
				}
				Faults = {};
				ASSERT_FALSE(Log.empty());
				for (int Reference = 0; Reference < 3 && Reference < GrowsAfter; ++Reference)
				{
					SCOPED_TRACE("registry grows for new reference " + std::to_string(Reference + 1));
					for (const FLuaRequest& Kind : std::set<FLuaRequest>(Log.begin(), Log.end()))
					{
						Sweep(GrowsAfter - 1 - Reference, &Kind, RefusedGrowths);
					}
				}
				++Calls;
				if (!SweepCase.Params)
				{
					break;
				}
			}
		}

		FLuaAllocationFaults Faults;
		std::unique_ptr<FVorlithLuaSession> Fresh;
		lua_State* L = nullptr;
		const FSweepCase* Case = nullptr;
		std::function<void()> Restore;
		std::string CallText;
		int32 StepsBefore = 0;
		DMXStateDigest::FDigest Before;
		int Calls = 0;
		int64 Refused = 0;
		int64 RefusedGrowths = 0;
	};

	const char* const AddEntityTitle = "Vorlith: Add DMX Library Entity";
	const char* const ConfigureEntityTitle = "Vorlith: Configure DMX Library Entity";
}

TEST_F(FAllocationFailureTest, LibraryAuthoringAndInspection)
{
	// Undo gives a removed type back but not its patches' link to it, which the engine does not record:
	// relinked by hand, keeping the active mode the undo left.
	UDMXLibrary* Library = LoadDMXLibrary(FString(TEXT("/Game/DMX/Stage")));
	const TArray<UDMXEntityFixturePatch*> Patches = Library->GetEntitiesTypeCast<UDMXEntityFixturePatch>();
	const auto Relink = [Spot = FindFixtureTypeByName(Library, FString(TEXT("Spot"))), Patches]()
	{
		for (UDMXEntityFixturePatch* Patch : Patches)
		{
			const int32 Mode = Patch->GetActiveModeIndex();
			Patch->SetFixtureType(Spot);
			Patch->SetActiveModeIndex(Mode);
		}
	};
	const FSweepCase RemoveType{"lib.remove, lib, 'fixture_type', 'Spot'", nullptr, "Vorlith: Remove DMX Library Entity"};
	for (const FSweepCase& SweepCase : {
		FSweepCase{"lib.add, lib, 'fixture_type'", "{name = 'Wash', category = 'Wash', modes = rich_modes}", AddEntityTitle},
		FSweepCase{"lib.add, lib, 'fixture_patch'", "{name = 'Wash1', fixture_type = 'spot', active_mode_index = 1, universe = 4, starting_channel = 100, "
			"tags = {'a', 5, 'b'}, receive_dmx_in_editor = false, editor_color = {r = 0.1, a = 0.5}}", AddEntityTitle},
		FSweepCase{"lib.configure, lib, 'FIXTURE_TYPE', 'spot'", "{name = 'Spot Mk2', category = 'Spot', modes = rich_modes}", ConfigureEntityTitle},
		FSweepCase{"lib.configure, lib, 'fixture_patch', 'Spot2'", "{name = 'Spot 2', fixture_type = 'Spot', universe = 5, starting_channel = 33, "
			"active_mode_index = 0, tags = {'x'}, receive_dmx_in_editor = true, editor_color = {g = 0.75}}", ConfigureEntityTitle},
		FSweepCase{"lib.remove, lib, 'fixture_patch', 'spot2'", nullptr, "Vorlith: Remove DMX Library Entity"},
		RemoveType,
		FSweepCase{"lib.info, lib"},
		FSweepCase{"lib.add, lib, 5, {}", nullptr, nullptr, "stack index 2, expected string, received number"}})
	{
		SweepAll(SweepCase, SweepCase.Call == RemoveType.Call ? Relink : std::function<void()>());
	}
}

TEST_F(FAllocationFailureTest, ComponentHandle)
{
	SweepAll({"comp.add, comp", "{name = 'Second', library = '/Game/DMX/Stage', fixture_patch = 'Spot2', receive = true}", "Vorlith: Add DMX Component"});
	// A reusing add records nothing for undo, on purpose: its patch and receive changes are put back by hand.
	UDMXComponent* Rig = FindDMXComponentByName(FindEditorActorByNameOrLabel(FString(TEXT("Truss"))), FString(TEXT("Rig")));
	ASSERT_NE(Rig, nullptr);
	const FDMXEntityFixturePatchRef RigPatch = Rig->FixturePatchRef;
	SweepAll({"comp.add, comp, {name = 'rig', library = '/Game/DMX/Stage', fixture_patch = 'Spot2', receive = true}"},
		[Rig, RigPatch]() { Rig->FixturePatchRef = RigPatch; Rig->SetReceiveDMXFromPatch(false); });
	SweepAll({"comp.configure, comp, 'Rig'", "{library = '/Game/DMX/Stage', fixture_patch = 'Spot2', receive = true}", "Vorlith: Configure DMX Component"});
	SweepAll({"comp.info, comp"});
}

TEST_F(FAllocationFailureTest, ConversionsAndGlobals)
{
	for (const FSweepCase& SweepCase : {FSweepCase{"sub.int_to_bytes, sub, 300, '16bit', false"}, FSweepCase{"sub.bytes_to_int, sub, {1, 2, 300, -4}, true"},
		FSweepCase{"sub.normalized_to_bytes, sub, 0.5, 'E32Bit', true"}, FSweepCase{"sub.bytes_to_normalized, sub, {255, 0}, false"},
		FSweepCase{"sub.bytes_to_int, sub, {1, 2.5}, false", nullptr, nullptr, "not a numeric type that fits exactly an integer (number maybe has significant decimals)"},
		FSweepCase{"dmx_library, '/Game/DMX/Stage'"}, FSweepCase{"dmx_component, 'Front Truss'"}, FSweepCase{"dmx_subsystem"}})
	{
		SweepAll(SweepCase);
	}
}
