#include "KestDMXRunner.h"

FKestDMXSession::FKestDMXSession(const FHeadlessEditorOptions& Options, lua_Alloc Allocator, void* AllocatorData)
{
	Editor = std::make_unique<FHeadlessEditor>(Options);
	Editor->LoadModule(TEXT("Kest_DMXEngine_Integration"));
	Lua = std::make_unique<FVorlithLuaSession>(Allocator, AllocatorData);
	InstallEditorLuaGlobal(Lua->GetState(), *Editor);
}

FKestDMXSession::~FKestDMXSession()
{
	// The Lua state goes first: its closures point at engine objects the editor is about to free.
	Lua.reset();
	Editor.reset();
}
