// The kestdmx command line: run scripts in the headless editor, run Lua test files, print the docs.
#pragma once

#include <memory>
#include <string>
#include <vector>
#include "CoreMinimal.h"
#include "HeadlessEditor.h"
#include "VorlithLuaSession.h"

// A started headless editor with the module loaded and one Lua session opened through the host,
// with the headless-only "editor" global installed.
class FKestDMXSession
{
public:
	explicit FKestDMXSession(const FHeadlessEditorOptions& Options = FHeadlessEditorOptions(), lua_Alloc Allocator = nullptr, void* AllocatorData = nullptr);
	~FKestDMXSession();

	FHeadlessEditor& GetEditor() { return *Editor; }
	FVorlithLuaSession& GetLua() { return *Lua; }
	bool RunScript(const std::string& Code, const std::string& ChunkName, std::string& OutError) { return Lua->RunScript(Code, ChunkName, OutError); }

private:
	std::unique_ptr<FHeadlessEditor> Editor;
	std::unique_ptr<FVorlithLuaSession> Lua;
};

// Installs the "editor" global (scene set-up and undo checks) on a Lua state.
void InstallEditorLuaGlobal(sol::state& Lua, FHeadlessEditor& Editor);

// The whole command line; answers the process exit code.
int RunKestDMXCommandLine(const std::vector<std::string>& Args);
