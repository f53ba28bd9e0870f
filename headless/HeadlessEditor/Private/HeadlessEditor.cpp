#include "HeadlessEditor.h"

#include "DMXSubsystem.h"
#include "Editor.h"
#include "Engine/World.h"
#include "Modules/ModuleManager.h"
#include "UObject/HeadlessObjectRegistry.h"
#include "UObject/Package.h"
#include "UObject/UObjectGlobals.h"
#include "VorlithHostRecorder.h"

namespace
{
	bool GHeadlessEditorRunning = false;
}

FHeadlessEditor::FHeadlessEditor(const FHeadlessEditorOptions& Options)
{
	check(!GHeadlessEditorRunning);
	GHeadlessEditorRunning = true;
	FMath::RandInit(Options.RandomSeed);

	UPackage* EnginePackage = CreatePackage(TEXT("/Engine/Transient"));
	EnginePackage->SetFlags(RF_Transient);
	Editor = NewObject<UEditorEngine>(EnginePackage, UEditorEngine::StaticClass(), FName(TEXT("EditorEngine")), RF_Transient);
	Editor->Trans = NewObject<UTransBuffer>(Editor, UTransBuffer::StaticClass(), FName(TEXT("TransBuffer")), RF_Transient);
	GEngine = Editor;
	GEditor = Editor;

	EditorWorld = UWorld::CreateWorld(EWorldType::Editor, TEXT("Untitled"));
	Editor->CreateNewWorldContext(EWorldType::Editor).SetCurrentWorld(EditorWorld);

	TArray<UClass*> Excluded;
	if (!Options.bWithDMXSubsystem)
	{
		Excluded.Add(UDMXSubsystem::StaticClass());
	}
	Editor->EngineSubsystemCollection.Initialize(Editor, Excluded);
}

FHeadlessEditor::~FHeadlessEditor()
{
	UnloadModules();
	Editor->EngineSubsystemCollection.Deinitialize();
	Editor->Trans->Reset(FText::GetEmpty());
	GUndo = nullptr;
	GIsTransacting = false;
	GEditor = nullptr;
	GEngine = nullptr;
	FHeadlessObjectRegistry::Get().DestroyAll();
	FVorlithHostRecorder::Get().Reset();
	GHeadlessEditorRunning = false;
}

bool FHeadlessEditor::LoadModule(const TCHAR* ModuleName)
{
	return FModuleManager::Get().LoadModule(FName(ModuleName)) != nullptr;
}

void FHeadlessEditor::UnloadModules()
{
	FModuleManager::Get().UnloadModulesAtShutdown();
}

TArray<FString> FHeadlessEditor::GetDirtyPackageNames() const
{
	TArray<FString> Names;
	FHeadlessObjectRegistry::Get().ForEachObject([&Names](UObject* Object)
	{
		const UPackage* Package = Cast<UPackage>(Object);
		if (Package && Package->IsDirty() && !Package->HasAnyFlags(RF_Transient))
		{
			Names.Add(Package->GetName());
		}
	});
	Names.Sort([](const FString& A, const FString& B) { return A.Compare(B, ESearchCase::CaseSensitive) < 0; });
	return Names;
}
