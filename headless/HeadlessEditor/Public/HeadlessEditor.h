// Starts and stops the headless editor: the engine and editor objects, the undo buffer, the editor
// world and the engine subsystems. One may exist at a time; the destructor returns everything the
// editor made (modules, objects, host registrations) so the next one starts clean.
#pragma once

#include "CoreMinimal.h"

class UWorld;
class UEditorEngine;

struct FHeadlessEditorOptions
{
	// Without it the engine-subsystem collection holds no DMX subsystem.
	bool bWithDMXSubsystem = true;
	// Seed of the editor's random generator (colours, GUIDs): the same seed repeats a run exactly.
	int32 RandomSeed = 0x4b455354;
};

class FHeadlessEditor
{
public:
	explicit FHeadlessEditor(const FHeadlessEditorOptions& Options = FHeadlessEditorOptions());
	~FHeadlessEditor();
	FHeadlessEditor(const FHeadlessEditor&) = delete;
	FHeadlessEditor& operator=(const FHeadlessEditor&) = delete;

	UEditorEngine* GetEditor() const { return Editor; }
	UWorld* GetEditorWorld() const { return EditorWorld; }

	// Loads (and starts) a module linked into the program; false when there is none of that name.
	bool LoadModule(const TCHAR* ModuleName);
	// Shuts down every loaded module, most recently loaded first.
	void UnloadModules();

	// Names of the packages marked dirty, sorted.
	TArray<FString> GetDirtyPackageNames() const;

private:
	UEditorEngine* Editor = nullptr;
	UWorld* EditorWorld = nullptr;
};
