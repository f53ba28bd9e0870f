// Engine calls made to fail through the headless model: what the module leaves behind when an
// entity or a component cannot be created, and what a cleared component patch really is.
#include <gtest/gtest.h>

#include <filesystem>
#include <memory>
#include <string>
#include <unistd.h>
#include "Editor.h"
#include "Game/DMXComponent.h"
#include "GameFramework/Actor.h"
#include "KestDMXProject.h"
#include "KestDMXRunner.h"
#include "Library/DMXEntityFixturePatch.h"
#include "Library/DMXLibrary.h"
#include "UObject/HeadlessObjectRegistry.h"
#include "component/DMXComponentLookup.h"
#include "host/VorLuaActor.h"
#include "library/DMXLibraryLookup.h"

namespace
{
	const char* const LibraryObjectPath = "/Game/DMX/Stage.Stage";

	class FEngineFaultTest : public ::testing::Test
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
				assert(dmx_component("Truss"):add({ name = "Rig", library = "/Game/DMX/Stage", fixture_patch = "Spot1" }))
			)");
			Library = LoadDMXLibrary(FString(TEXT("/Game/DMX/Stage")));
			ASSERT_NE(Library, nullptr);
			Spot1 = FindFixturePatchByName(Library, FString(TEXT("Spot1")));
			ASSERT_NE(Spot1, nullptr);
			Actor = VorLuaActor::FindByNameOrLabel(Session->GetEditor().GetEditorWorld(), FString(TEXT("Truss")));
			ASSERT_NE(Actor, nullptr);
			Rig = FindDMXComponentByName(Actor, FString(TEXT("Rig")));
			ASSERT_NE(Rig, nullptr);
		}

		void TearDown() override { Session.reset(); }

		void Run(const std::string& Code)
		{
			std::string Error;
			EXPECT_TRUE(Session->RunScript(Code, "engine_fault_test", Error)) << Error;
		}

		std::string Describe() { return DescribeKestDMXProject(Session->GetEditor()); }

		bool RigHoldsSpot1() const { return Rig->FixturePatchRef == FDMXEntityFixturePatchRef(Spot1); }

		std::unique_ptr<FKestDMXSession> Session;
		UDMXLibrary* Library = nullptr;
		UDMXEntityFixturePatch* Spot1 = nullptr;
		AActor* Actor = nullptr;
		UDMXComponent* Rig = nullptr;
	};
}

TEST_F(FEngineFaultTest, RefusedCreationsLeaveOneStepThatChangesNothing)
{
	struct FCase
	{
		const TCHAR* ClassName;
		const char* Call;
		const TCHAR* Title;
		const UObject* Marked;
	};
	const FCase Cases[] = {
		{TEXT("DMXEntityFixtureType"), R"(assert(dmx_library("/Game/DMX/Stage"):add("fixture_type", { name = "Wash" }) == nil))",
			TEXT("Vorlith: Add DMX Library Entity"), Library},
		{TEXT("DMXEntityFixturePatch"), R"(assert(dmx_library("/Game/DMX/Stage"):add("fixture_patch", { name = "Wash1", fixture_type = "Spot" }) == nil))",
			TEXT("Vorlith: Add DMX Library Entity"), Library},
		{TEXT("DMXComponent"), R"(assert(dmx_component("Truss"):add({ name = "Second", library = "/Game/DMX/Stage", fixture_patch = "Spot1", receive = false }) == nil))",
			TEXT("Vorlith: Add DMX Component"), Actor},
	};
	for (const FCase& Case : Cases)
	{
		SCOPED_TRACE(Case.Call);
		const std::string Before = Describe();
		const int32 Objects = FHeadlessObjectRegistry::Get().Num();
		const int32 Steps = GEditor->Trans->GetUndoTitles().Num();
		FHeadlessObjectRegistry::Get().FailingNewObjects.Add(FString(Case.ClassName), 1);
		Run(Case.Call);
		EXPECT_FALSE(FHeadlessObjectRegistry::Get().FailingNewObjects.Contains(FString(Case.ClassName))) << "the refusal was used";
		EXPECT_EQ(FHeadlessObjectRegistry::Get().Num(), Objects) << "nothing was created";
		EXPECT_EQ(GEditor->Trans->GetActiveCount(), 0);
		ASSERT_EQ(GEditor->Trans->GetQueueLength(), Steps + 1);
		const FTransaction* Step = GEditor->Trans->GetTransaction(Steps);
		EXPECT_TRUE(Step->GetTitle().ToString().Equals(FString(Case.Title)));
		EXPECT_EQ(Step->GetRecordCount(), 1) << "only the target, marked before the engine refused";
		EXPECT_TRUE(Step->ContainsObject(Case.Marked));
		EXPECT_EQ(Describe(), Before);
		ASSERT_TRUE(GEditor->UndoTransaction());
		EXPECT_EQ(Describe(), Before) << "the step changes nothing";
	}
}

// SetFixturePatch(nullptr), as a failed "library" load makes it, invalidates the reference's id but
// keeps the engine's weak cache of the patch: the component goes on answering the patch while it
// lives, yet the reference no longer holds it, and a saved level has no patch for it.
TEST_F(FEngineFaultTest, FailingLibraryLoadClearsTheComponentsReference)
{
	ASSERT_TRUE(RigHoldsSpot1());
	FHeadlessObjectRegistry::Get().FailingLoads.Add(FString(LibraryObjectPath));

	const int32 Steps = GEditor->Trans->GetQueueLength();
	Run(R"(
		local info = dmx_component("Truss"):add({ name = "Rig", library = "/Game/DMX/Stage", fixture_patch = "Spot1" })
		assert(info and info.component_count == 1, "the info table, not nil")
		-- What the engine answers for the component: its cached patch.
		assert(info.components[1].fixture_patch == "Spot1")
	)");
	EXPECT_FALSE(RigHoldsSpot1()) << "add cleared the reference";
	EXPECT_EQ(Rig->GetFixturePatch(), Spot1) << "the weak cache still answers the patch";
	EXPECT_EQ(GEditor->Trans->GetQueueLength(), Steps) << "a reusing add records nothing";

	// A configure step restores the reference when undone.
	Rig->FixturePatchRef = FDMXEntityFixturePatchRef(Spot1);
	Run(R"(assert(dmx_component("Truss"):configure("Rig", { library = "/Game/DMX/Stage.Stage", fixture_patch = "Spot1" })))");
	EXPECT_FALSE(RigHoldsSpot1()) << "configure cleared the reference";
	ASSERT_EQ(GEditor->Trans->GetQueueLength(), Steps + 1);
	ASSERT_TRUE(GEditor->UndoTransaction());
	EXPECT_TRUE(RigHoldsSpot1()) << "undo gives the reference back";
	ASSERT_TRUE(GEditor->RedoTransaction());
	EXPECT_FALSE(RigHoldsSpot1());

	// Saved and loaded again, the cleared component has no patch, as the engine saves only the
	// reference's library and id.
	const std::filesystem::path ProjectDir = std::filesystem::temp_directory_path() / ("kest_engine_faults_" + std::to_string(getpid()));
	std::filesystem::remove_all(ProjectDir);
	std::string Error;
	ASSERT_TRUE(SaveKestDMXProject(ProjectDir.string(), Session->GetEditor(), Error)) << Error;
	FHeadlessObjectRegistry::Get().FailingLoads.Empty();
	Session.reset();
	Session = std::make_unique<FKestDMXSession>();
	const bool bLoaded = LoadKestDMXProject(ProjectDir.string(), Session->GetEditor(), Error);
	std::filesystem::remove_all(ProjectDir);
	ASSERT_TRUE(bLoaded) << Error;
	Run(R"(
		local info = dmx_component("Truss"):info()
		assert(info.component_count == 1 and info.components[1].name == "Rig")
		assert(info.components[1].fixture_patch == "", "no patch after loading: " .. info.components[1].fixture_patch)
	)");
}
