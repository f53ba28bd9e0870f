// What dmx_component leaves on the engine's objects, beyond what its info table shows.
#include <gtest/gtest.h>

#include "Engine/Engine.h"
#include "KestSessionTest.h"
#include "UObject/Package.h"
#include "component/DMXComponentLookup.h"
#include "library/DMXLibraryLookup.h"

namespace
{
	class FComponentTest : public FKestSessionTest
	{
	protected:
		void SetUp() override
		{
			FKestSessionTest::SetUp();
			RunSpotOnTrussScene();
			Actor = FindEditorActorByNameOrLabel(FString(TEXT("Truss")));
			ASSERT_NE(Actor, nullptr);
		}
		AActor* Actor = nullptr;
	};
}

TEST_F(FComponentTest, CreatedComponentIsATransactionalInstanceComponentAndAddsDirtyThePackage)
{
	UPackage* Package = Actor->GetOutermost();
	Package->SetDirtyFlag(false);
	Run(R"(assert(dmx_component("Truss"):add({ name = "Rig" })))");
	UDMXComponent* Component = FindDMXComponentByName(Actor, FString(TEXT("rig")));
	ASSERT_NE(Component, nullptr);
	EXPECT_TRUE(Component->GetOuter() == Actor && Component->HasAnyFlags(RF_Transactional) && Actor->GetInstanceComponents().Contains(Component));
	EXPECT_TRUE(Package->IsDirty());
	// A reusing add that changes nothing still marks the actor's package dirty.
	Package->SetDirtyFlag(false);
	Run(R"(assert(dmx_component("Truss"):add({ name = "Rig" }).component_count == 1))");
	EXPECT_TRUE(Package->IsDirty());
}

TEST_F(FComponentTest, PatchNotFoundHandsTheEngineNoPatch)
{
	UDMXLibrary* Library = LoadDMXLibrary(FString(TEXT("/Game/DMX/Stage")));
	UDMXEntityFixturePatch* Patch = FindFixturePatchByName(Library, FString(TEXT("Spot1")));
	Run(R"(assert(dmx_component("Truss"):add({ library = "/Game/DMX/Stage", fixture_patch = "Spot1" })))");
	UDMXComponent* Component = FindDMXComponentByName(Actor, FString());
	ASSERT_NE(Component, nullptr);
	EXPECT_TRUE(Component->FixturePatchRef == FDMXEntityFixturePatchRef(Patch));
	// The reference keeps its library but no longer names a patch: by add or configure, for a patch
	// the library lacks or a library that does not load.
	FDMXEntityFixturePatchRef Cleared;
	Cleared.DMXLibrary = Library;
	Run(R"(assert(dmx_component("Truss"):add({ library = "/Game/DMX/Stage", fixture_patch = "Nope" })))");
	EXPECT_TRUE(Component->FixturePatchRef == Cleared);
	Component->FixturePatchRef = FDMXEntityFixturePatchRef(Patch);
	Run(R"(assert(dmx_component("Truss"):configure("", { library = "/Game/DMX/Missing", fixture_patch = "Spot1" })))");
	EXPECT_TRUE(Component->FixturePatchRef == Cleared);
}

TEST_F(FComponentTest, OnlyTheEditorWorldIsSearched)
{
	UWorld* PlayWorld = UWorld::CreateWorld(EWorldType::PIE, TEXT("UEDPIE_0_Untitled"));
	ASSERT_NE(PlayWorld->SpawnActor(AActor::StaticClass(), FName(TEXT("PlayOnly"))), nullptr);
	GEngine->CreateNewWorldContext(EWorldType::PIE).SetCurrentWorld(PlayWorld);
	Run(R"(assert(dmx_component("PlayOnly").valid == false and dmx_component("Truss").valid == true))");
	UEditorEngine* Editor = GEditor;
	GEditor = nullptr;
	Run(R"(assert(dmx_component("Truss").valid == false))");
	GEditor = Editor;
}
