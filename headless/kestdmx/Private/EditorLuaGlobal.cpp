#include "KestDMXRunner.h"
#include "LibraryReport.h"
#include "KestDMXText.h"

#include "Editor.h"
#include "Engine/World.h"
#include "GameFramework/Actor.h"
#include "Library/DMXLibrary.h"
#include "Misc/PackageName.h"
#include "UObject/HeadlessObjectRegistry.h"
#include "UObject/Package.h"
#include "UObject/UObjectGlobals.h"

void InstallEditorLuaGlobal(sol::state& Lua, FHeadlessEditor& Editor)
{
	sol::table EditorTable = Lua.create_named_table("editor");

	EditorTable.set_function("create_library", [](const std::string& Path) -> bool
	{
		// Only a path the editor could create and save an asset at.
		const FString PackageName = ToEngine(Path);
		if (!FPackageName::IsValidLongPackageName(PackageName, false, static_cast<FText*>(nullptr)) || FindPackage(nullptr, *PackageName) != nullptr)
		{
			return false;
		}
		UPackage* Package = CreatePackage(*PackageName);
		const FName AssetName(FPackageName::GetShortName(PackageName));
		UDMXLibrary* Library = NewObject<UDMXLibrary>(Package, UDMXLibrary::StaticClass(), AssetName, RF_Public | RF_Standalone | RF_Transactional);
		if (!Library)
		{
			return false;
		}
		Package->SetDirtyFlag(true);
		return true;
	});

	EditorTable.set_function("spawn_actor", [&Editor](const std::string& Name, sol::optional<std::string> Label) -> bool
	{
		UWorld* World = Editor.GetEditorWorld();
		const FName ActorName(ToEngine(Name));
		if (ActorName.IsNone() || StaticFindObjectFast(nullptr, World->GetCurrentLevel(), ActorName))
		{
			return false;
		}
		AActor* Actor = World->SpawnActor(AActor::StaticClass(), ActorName);
		if (!Actor)
		{
			return false;
		}
		if (Label)
		{
			Actor->SetActorLabel(ToEngine(*Label), false);
		}
		Actor->MarkPackageDirty();
		return true;
	});

	EditorTable.set_function("library_report", [](const std::string& Path) -> sol::optional<std::string>
	{
		UDMXLibrary* Library = LoadLibraryForReport(Path);
		if (!Library)
		{
			return sol::nullopt;
		}
		return FormatLibraryReport(Library);
	});

	// Fault injection: engine calls that fail the way the engine's can.
	EditorTable.set_function("fail_next", [](const std::string& ClassName, sol::optional<int> Count)
	{
		const int32 Failures = Count.value_or(1);
		TMap<FString, int32>& FailingNewObjects = FHeadlessObjectRegistry::Get().FailingNewObjects;
		if (Failures > 0)
		{
			FailingNewObjects.Add(ToEngine(ClassName), Failures);
		}
		else
		{
			FailingNewObjects.Remove(ToEngine(ClassName));
		}
	});
	EditorTable.set_function("fail_load", [](const std::string& ObjectPath, sol::optional<bool> bFail)
	{
		TSet<FString>& FailingLoads = FHeadlessObjectRegistry::Get().FailingLoads;
		if (bFail.value_or(true))
		{
			FailingLoads.Add(ToEngine(ObjectPath));
		}
		else
		{
			FailingLoads.Remove(ToEngine(ObjectPath));
		}
	});

	EditorTable.set_function("undo", []() { return GEditor->UndoTransaction(); });
	EditorTable.set_function("redo", []() { return GEditor->RedoTransaction(); });

	EditorTable.set_function("undo_history", [](sol::this_state S)
	{
		sol::state_view View(S);
		sol::table History = View.create_table();
		int Index = 1;
		for (const FText& Title : GEditor->Trans->GetUndoTitles())
		{
			History[Index++] = ToUTF8(Title.ToString());
		}
		return History;
	});

	EditorTable.set_function("transaction_depth", []() { return GEditor->Trans->GetActiveCount(); });

	EditorTable.set_function("dirty_packages", [&Editor](sol::this_state S)
	{
		sol::state_view View(S);
		sol::table Names = View.create_table();
		int Index = 1;
		for (const FString& Name : Editor.GetDirtyPackageNames())
		{
			Names[Index++] = ToUTF8(Name);
		}
		return Names;
	});
}
