// The check's wrappers under memory pressure: each observed call run with its 1st, 2nd, ... growing
// Lua allocation refused until it gets through. A refusal inside the module reaches the script as
// Lua's memory error; one inside the check's own reading only costs that call its findings. The
// editor never stops, no transaction stays open and the Lua stack is left as it was.
#include <gtest/gtest.h>

#include <cstdlib>
#include <string>
#include "Editor.h"
#include "Editor/TransBuffer.h"
#include "KestDMXCheck.h"
#include "KestDMXRunner.h"

namespace
{
	// Refuses the FailAt-th request for more memory while armed, and Lua's one retry of it after its
	// emergency collection.
	struct FRefusals
	{
		bool bArmed = false;
		long long FailAt = 0;
		long long Requests = 0;
		bool bRefused = false;
		bool bRetryPending = false;
		const void* RetryBlock = nullptr;
		size_t RetrySize = 0;
	};

	void* Allocate(void* UserData, void* Block, size_t OldSize, size_t NewSize)
	{
		FRefusals& Refusals = *static_cast<FRefusals*>(UserData);
		if (NewSize == 0)
		{
			std::free(Block);
			return nullptr;
		}
		if (Refusals.bArmed && NewSize > (Block != nullptr ? OldSize : 0))
		{
			const bool bRetry = Refusals.bRetryPending && Block == Refusals.RetryBlock && NewSize == Refusals.RetrySize;
			Refusals.bRetryPending = false;
			if (bRetry)
			{
				return nullptr;
			}
			if (!Refusals.bRefused && ++Refusals.Requests == Refusals.FailAt)
			{
				Refusals.bRefused = true;
				Refusals.bRetryPending = true;
				Refusals.RetryBlock = Block;
				Refusals.RetrySize = NewSize;
				return nullptr;
			}
		}
		return std::realloc(Block, NewSize);
	}

	const char* const Scene = R"lua(
assert(editor.create_library("/Game/DMX/Stage") and editor.spawn_actor("Truss"))
lib, comp, sub = dmx_library("/Game/DMX/Stage"), dmx_component("Truss"), dmx_subsystem()
assert(lib:add("fixture_type", {name = "Spot", modes = {{functions = {{attribute = "Dimmer"}}}}}))
assert(lib:add("fixture_patch", {name = "Spot1", fixture_type = "Spot"}))
calls = {
	function() return dmx_library("/Game/DMX/Stage") end,
	function() return dmx_library("/Game/DMX/Nope") end,
	function() return lib:add("fixture_type", {nmae = "x", modes = {{functions = {{attribute = "Red", data_type = "16-bit", channel = 600}, "s"}}, {name = "A"}}}) end,
	function() return lib:add("fixture_patch", {fixture_type = "Spot", universe = "2", startingchannel = 3, tags = {1}, editor_color = {red = 1}}) end,
	function() return lib:configure("fixture_patch", "Spot1", {fixture_type = "Nope", active_mode_index = 4}) end,
	function() return lib:remove("fixture_type", "Nope") end,
	function() return comp:add({library = "/Game/DMX/Nope", fixture_patch = "X"}) end,
	function() return sub:bytes_to_int({1, 300, "x"}, false) end,
}
)lua";
}

TEST(FCheckAllocationFailureTest, RefusalsAnywhereInACheckedCall)
{
	FRefusals Refusals;
	FKestCheckLog Log;
	FKestDMXSession Session(FHeadlessEditorOptions(), &Allocate, &Refusals);
	InstallKestDMXCheck(Session, Log);
	std::string Error;
	ASSERT_TRUE(Session.RunScript(Scene, "scene.lua", Error)) << Error;
	lua_State* L = Session.GetLua().GetState().lua_state();

	int Swept = 0;
	for (int CallIndex = 1; CallIndex <= 8; ++CallIndex)
	{
		bool bThrough = false;
		for (long long FailAt = 1; FailAt <= 4000 && !bThrough; ++FailAt)
		{
			const int Top = lua_gettop(L);
			lua_getglobal(L, "calls");
			lua_rawgeti(L, -1, CallIndex);
			Refusals = FRefusals();
			Refusals.FailAt = FailAt;
			Refusals.bArmed = true;
			const int Status = lua_pcall(L, 0, 1, 0);
			Refusals.bArmed = false;
			const std::string Problem = Status == LUA_OK ? std::string() : lua_tostring(L, -1) != nullptr ? lua_tostring(L, -1) : "(no message)";
			EXPECT_TRUE(Status == LUA_OK || Problem.find("not enough memory") != std::string::npos) << "call " << CallIndex << " refused at " << FailAt << ": " << Problem;
			EXPECT_EQ(GEditor->Trans->GetActiveCount(), 0) << "call " << CallIndex << " refused at " << FailAt;
			lua_settop(L, Top + 1);
			lua_settop(L, Top);
			bThrough = !Refusals.bRefused;
			++Swept;
		}
		EXPECT_TRUE(bThrough) << "call " << CallIndex << " never got through";
	}
	EXPECT_GT(Swept, 100);
	// The calls went on being checked once memory was there.
	EXPECT_FALSE(Log.Findings.empty());
	Log.bActive = false;
}
