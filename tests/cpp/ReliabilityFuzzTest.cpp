// Regressions for what kest_fuzz found: script values that a plain Lua script cannot make (userdata
// with chosen metatables), handed to the module's Lua entry points.
#include <gtest/gtest.h>

#include <string>
#include "KestSessionTest.h"

namespace
{
	// make_userdata(kind): 0 no metatable; 1 a metatable without __index; 2 __index = false;
	// 3 __index = a table holding universe = 7.
	int MakeUserdata(lua_State* L)
	{
		const lua_Integer Kind = luaL_checkinteger(L, 1);
		lua_newuserdatauv(L, 8, 0);
		if (Kind == 0)
		{
			return 1;
		}
		lua_newtable(L);
		if (Kind == 2)
		{
			lua_pushboolean(L, 0);
			lua_setfield(L, -2, "__index");
		}
		else if (Kind == 3)
		{
			lua_newtable(L);
			lua_pushinteger(L, 7);
			lua_setfield(L, -2, "universe");
			lua_setfield(L, -2, "__index");
		}
		lua_setmetatable(L, -2);
		return 1;
	}

	class FReliabilityFuzzTest : public FKestSessionTest
	{
	protected:
		void SetUp() override
		{
			FKestSessionTest::SetUp();
			lua_register(Session->GetLua().GetState().lua_state(), "make_userdata", &MakeUserdata);
			Run(R"(
				assert(editor.create_library("/Game/DMX/Stage"))
				local lib = dmx_library("/Game/DMX/Stage")
				assert(lib:add("fixture_type", { name = "Spot", modes = { { name = "Basic", functions = { { attribute = "Dimmer" } } } } }))
				assert(lib:add("fixture_patch", { name = "Spot1", fixture_type = "Spot", universe = 3, starting_channel = 5,
					tags = { "front" }, editor_color = { r = 0.25, g = 0.5, b = 0.75, a = 1 } }))
				assert(editor.spawn_actor("Truss"))
			)");
		}
		// Every script must also leave no transaction open.
		void Run(const std::string& Code)
		{
			FKestSessionTest::Run(Code);
			EXPECT_EQ(GEditor->Trans->GetActiveCount(), 0);
		}
	};
}

// A userdata params whose metatable has no __index table or function used to make every getter
// raise Lua's "attempt to index a userdata value"; it now reads as a params table with no keys.
TEST_F(FReliabilityFuzzTest, UserdataWithoutIndexReadsAsNoKeys)
{
	Run(R"(
		local lib = dmx_library("/Game/DMX/Stage")
		for kind = 0, 2 do
			local params = make_userdata(kind)
			local added = lib:add("fixture_type", params)
			assert(added and added.name:find("^FixtureType") and added.mode_count == 1, "kind " .. kind .. ": add fixture_type")
			assert(lib:add("fixture_patch", params) == nil, "kind " .. kind .. ": no fixture type is named")
			assert(lib:configure("fixture_patch", "Spot1", params) == true, "kind " .. kind .. ": configure patch")
			assert(lib:configure("fixture_type", "Spot", params) == true, "kind " .. kind .. ": configure type")

			local component = dmx_component("Truss")
			local info = component:add(params)
			assert(info and info.component_count == 1, "kind " .. kind .. ": component add")
			assert(component:configure("", params), "kind " .. kind .. ": component configure")
		end

		local info = lib:info()
		local patch = info.fixture_patches[1]
		assert(patch.universe == 3 and patch.starting_channel == 5, "the patch kept its channels")
		assert(#patch.tags == 1 and patch.tags[1] == "front", "the patch kept its tags")
		assert(patch.editor_color_r == 0.25 and patch.editor_color_a == 1, "the patch kept its colour")
		assert(#info.fixture_types[1].modes == 1 and info.fixture_types[1].modes[1].name == "Basic", "Spot kept its mode")
	)");
}

// The same userdata under a nested key counts as given (lists are emptied, colours and matrices are
// read with no keys), and a userdata whose __index is a table is still read through it.
TEST_F(FReliabilityFuzzTest, NestedUserdataWithoutIndex)
{
	Run(R"(
		local lib = dmx_library("/Game/DMX/Stage")
		local bare = make_userdata(1)
		assert(lib:configure("fixture_patch", "Spot1", { tags = bare, editor_color = bare }))
		assert(lib:configure("fixture_type", "Spot", { modes = { { name = "Pixel", matrix = bare, functions = bare } } }))
		local info = lib:info()
		local patch = info.fixture_patches[1]
		assert(#patch.tags == 0, "a userdata tag list has no entries")
		assert(patch.editor_color_g == 0.5, "a userdata colour without keys keeps every component")
		local mode = info.fixture_types[1].modes[1]
		assert(mode.name == "Pixel" and #mode.functions == 0, "a userdata function list has no entries")

		assert(lib:configure("fixture_patch", "Spot1", make_userdata(3)))
		assert(lib:info().fixture_patches[1].universe == 7, "a userdata with an __index table is read through it")
	)");
}
