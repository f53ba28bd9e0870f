// A Lua session as the assistant host opens one: a sol2 state with the standard libraries, on which
// every registered binder is called once.
#pragma once

#include <memory>
#include <string>
#include "CoreMinimal.h"
#include "host/LuaBindingRegistry.h"

class FVorlithLuaSession
{
public:
	// Allocator may be null (Lua's default allocator).
	explicit FVorlithLuaSession(lua_Alloc Allocator = nullptr, void* AllocatorData = nullptr);
	~FVorlithLuaSession();
	FVorlithLuaSession(const FVorlithLuaSession&) = delete;
	FVorlithLuaSession& operator=(const FVorlithLuaSession&) = delete;

	sol::state& GetState() { return *State; }
	const FLuaSessionData& GetSessionData() const { return SessionData; }

	// Runs a chunk; answers false with the Lua error message (and traceback) on failure.
	bool RunScript(const std::string& Code, const std::string& ChunkName, std::string& OutError);
	bool RunFile(const std::string& Path, std::string& OutError);

private:
	std::unique_ptr<sol::state> State;
	FLuaSessionData SessionData;
};
