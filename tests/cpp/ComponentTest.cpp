#include <gtest/gtest.h>

#include <memory>
#include <string>
#include "Editor.h"
#include "Engine/Engine.h"
#include "Engine/World.h"
#include "Game/DMXComponent.h"
#include "GameFramework/Actor.h"
#include "KestDMXRunner.h"
#include "Library/DMXEntityFixturePatch.h"
#include "Library/DMXLibrary.h"
#include "UObject/Package.h"
#include "UObject/UObjectGlobals.h"
#include "component/DMXComponentLookup.h"
#include "host/VorLuaActor.h"
#include "library/DMXLibraryLookup.h"

namespace
{
	class FComponentTest : public ::testing::Test
	{
	protected:
		void SetUp() override
		{
			Session = std::make_unique<FKestDMXSession>();
			Run(R"(
				assert(editor.create_library("/Game/DMX/Stage"))
				local lib = dmx_library("/Game/DMX/Stage")
				assert(lib:add("fixture_type", { name = "Spot" }))
				assert(lib:add("fixture_patch", { name = "Spot1", fixture_type = "Spot" }))
				assert(editor.spawn_actor("Truss"))
			)");
			Library = LoadDMXLibrary(FString(TEXT("/Game/DMX/Stage")));
			Actor = VorLuaActor::FindByNameOrLabel(Session->GetEditor().GetEditorWorld(), FString(TEXT("Truss")));
			ASSERT_NE(Library, nullptr);
			ASSERT_NE(Actor, nullptr);
		}
		void TearDown() override { Session.reset(); }

		void Run(const std::string& Code)
		{
			std::string Error;
			EXPECT_TRUE(Session->RunScript(Code, "component_test", Error)) << Error;
		}

		std::unique_ptr<FKestDMXSession> Session;
		UDMXLibrary* Library = nullptr;
		AActor* Actor = nullptr;
	};
}

TEST_F(FComponentTest, CreationRefusedByTheEngineAnswersNilAndLeavesOneStep)
{
	// An object of another class holds the name inside the actor, so NewObject refuses it.
	ASSERT_NE(NewObject<UActorComponent>(Actor, UActorComponent::StaticClass(), FName(TEXT("Blocker")), RF_Transactional), nullptr);
	const int32 StepsBefore = GEditor->Trans->GetQueueLength();
	Run(R"(
		local h = dmx_component("Truss")
		assert(h:add({ name = "Blocker", library = "/Game/DMX/Stage", fixture_patch = "Spot1" }) == nil)
		assert(h:info().component_count == 0 and editor.transaction_depth() == 0)
	)");
	ASSERT_EQ(GEditor->Trans->GetQueueLength(), StepsBefore + 1);
	const FTransaction* Step = GEditor->Trans->GetTransaction(StepsBefore);
	EXPECT_EQ(Step->GetTitle().ToString(), FString(TEXT("Vorlith: Add DMX Component")));
	EXPECT_TRUE(Step->ContainsObject(Actor)) << "the actor is marked before the engine refuses";
}

TEST_F(FComponentTest, CreatedComponentIsATransactionalInstanceComponent)
{
	UPackage* Package = Actor->GetOutermost();
	Package->SetDirtyFlag(false);
	Run(R"(assert(dmx_component("Truss"):add({ name = "Rig" })))");
	UDMXComponent* Component = FindDMXComponentByName(Actor, FString(TEXT("rig")));
	ASSERT_NE(Component, nullptr);
	EXPECT_EQ(Component->GetOuter(), Actor);
	EXPECT_TRUE(Component->HasAnyFlags(RF_Transactional));
	EXPECT_TRUE(Actor->GetInstanceComponents().Contains(Component));
	EXPECT_TRUE(Package->IsDirty());

	// A reusing add that changes nothing still marks the actor's package dirty.
	Package->SetDirtyFlag(false);
	Run(R"(assert(dmx_component("Truss"):add({ name = "Rig" }).component_count == 1))");
	EXPECT_TRUE(Package->IsDirty());
}

TEST_F(FComponentTest, PatchNotFoundHandsTheEngineNoPatch)
{
	UDMXEntityFixturePatch* Patch = FindFixturePatchByName(Library, FString(TEXT("Spot1")));
	ASSERT_NE(Patch, nullptr);
	Run(R"(assert(dmx_component("Truss"):add({ library = "/Game/DMX/Stage", fixture_patch = "Spot1" })))");
	UDMXComponent* Component = FindDMXComponentByName(Actor, FString());
	ASSERT_NE(Component, nullptr);
	EXPECT_TRUE(Component->FixturePatchRef == FDMXEntityFixturePatchRef(Patch));

	// The reference keeps its library but no longer names a patch.
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
