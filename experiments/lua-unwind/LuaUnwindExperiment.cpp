// What happens to a module routine's scoped undo transaction when a Lua error is raised while the
// routine is on the stack, with the C build of Lua (errors are longjmp) and with the C++ build
// (errors are C++ exceptions). Not part of the product build: run.sh next to this file builds it
// once against each library and runs both.
//
// ChangeLibrary stands for any changing module method: it opens a scoped step (as
// FScopedTransaction does), owns some heap memory, and reads a params field with a plain field
// read, which runs the table's __index. The script makes that __index raise and catches the error
// with pcall.
#include <cstdio>
#include <string>
#include <vector>

#if defined(KEST_LUA_C_BUILD)
#include <lua.hpp>
#define KEST_LUA_BUILD_NAME "C build (liblua5.4.so, errors are longjmp)"
#else
#include <lauxlib.h>
#include <lua.h>
#include <lualib.h>
#define KEST_LUA_BUILD_NAME "C++ build (liblua5.4-c++.so, errors are exceptions)"
#endif

namespace
{
	int OpenSteps = 0;
	int LiveScratchBuffers = 0;

	// Opened by the constructor, closed by the destructor, like the editor's scoped transaction.
	struct FScopedStep
	{
		FScopedStep() { ++OpenSteps; }
		~FScopedStep() { --OpenSteps; }
	};

	// Heap memory owned by the routine's frame.
	struct FScratchBuffer
	{
		std::vector<char> Bytes = std::vector<char>(4096, 'x');
		FScratchBuffer() { ++LiveScratchBuffers; }
		~FScratchBuffer() { --LiveScratchBuffers; }
	};

	int ChangeLibrary(lua_State* L)
	{
		FScopedStep Step;
		FScratchBuffer Scratch;
		lua_getfield(L, 1, "name");
		lua_pop(L, 1);
		return 0;
	}
}

int main()
{
	lua_State* L = luaL_newstate();
	luaL_openlibs(L);
	lua_register(L, "change_library", ChangeLibrary);
	const char* const Script =
		"local Raised = {}\n"
		"local Params = setmetatable({}, {__index = function() error(Raised) end})\n"
		"local Ok, Got = pcall(change_library, Params)\n"
		"Report = string.format('pcall answered %s, same error value: %s', tostring(Ok), tostring(rawequal(Got, Raised)))\n"
		"Ok = pcall(change_library, {name = 'fine'})\n"
		"Report = Report .. string.format('; a later call answered %s', tostring(Ok))\n";
	if (luaL_dostring(L, Script) != LUA_OK)
	{
		std::printf("script failed: %s\n", lua_tostring(L, -1));
		return 2;
	}
	lua_getglobal(L, "Report");
	std::printf("%s\n  %s\n  scoped steps still open: %d\n  scratch buffers never freed: %d\n", KEST_LUA_BUILD_NAME, lua_tostring(L, -1), OpenSteps,
		LiveScratchBuffers);
	lua_close(L);
	return OpenSteps == 0 && LiveScratchBuffers == 0 ? 0 : 1;
}
