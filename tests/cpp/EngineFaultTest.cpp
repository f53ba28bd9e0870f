// Engine calls made to fail: what the module leaves behind when an entity or a component cannot be
// created, and what a component patch cleared by a library that fails to load really is.
#include <gtest/gtest.h>

#include <filesystem>
#include <unistd.h>
#include "KestDMXProject.h"
#include "KestSessionTest.h"
#include "UObject/UObjectGlobals.h"
#include "component/DMXComponentLookup.h"
#include "library/DMXLibraryLookup.h"
#include "module/DMXLuaParams.h"

namespace
{
	class FEngineFaultTest : public FKestSessionTest
	{
	protected:
		void SetUp() override
		{
			FKestSessionTest::SetUp();
			RunSpotOnTrussScene();
			Run(R"(assert(dmx_component("Truss"):add({ name = "Rig", library = "/Game/DMX/Stage", fixture_patch = "Spot1" })))");
			Library = LoadDMXLibrary(FString(TEXT("/Game/DMX/Stage")));
			Actor = FindEditorActorByNameOrLabel(FString(TEXT("Truss")));
			Rig = FindDMXComponentByName(Actor, FString(TEXT("Rig")));
			ASSERT_TRUE(Library && Actor && Rig);
		}

		bool RigHoldsSpot1() const { return Rig->FixturePatchRef == FDMXEntityFixturePatchRef(FindFixturePatchByName(Library, FString(TEXT("Spot1")))); }

		UDMXLibrary* Library = nullptr;
		AActor* Actor = nullptr;
		UDMXComponent* Rig = nullptr;
	};
}

TEST_F(FEngineFaultTest, RefusedCreationsLeaveOneStepThatHoldsOnlyTheTargetAndChangesNothing)
{
	// An object of another class holds the name "Blocker" inside the actor, so the engine refuses a component of that name.
	NewObject<UActorComponent>(Actor, UActorComponent::StaticClass(), FName(TEXT("Blocker")), RF_Transactional);
	const struct
	{
		const TCHAR* FailingClass;
		const char* Call;
		const TCHAR* Title;
		const UObject* Target;
	} Cases[] = {
		{TEXT("DMXEntityFixtureType"), R"(dmx_library("/Game/DMX/Stage"):add("fixture_type", { name = "Wash" }))", TEXT("Vorlith: Add DMX Library Entity"), Library},
		{TEXT("DMXEntityFixturePatch"), R"(dmx_library("/Game/DMX/Stage"):add("fixture_patch", { name = "Wash1", fixture_type = "Spot" }))",
			TEXT("Vorlith: Add DMX Library Entity"), Library},
		{TEXT("DMXComponent"), R"(dmx_component("Truss"):add({ name = "Second", library = "/Game/DMX/Stage", fixture_patch = "Spot1", receive = false }))",
			TEXT("Vorlith: Add DMX Component"), Actor},
		{nullptr, R"(dmx_component("Truss"):add({ name = "Blocker", library = "/Game/DMX/Stage", fixture_patch = "Spot1" }))", TEXT("Vorlith: Add DMX Component"), Actor},
	};
	for (const auto& Case : Cases)
	{
		SCOPED_TRACE(Case.Call);
		if (Case.FailingClass != nullptr)
		{
			FHeadlessObjectRegistry::Get().FailingNewObjects.Add(FString(Case.FailingClass), 1);
		}
		const DMXStateDigest::FDigest Before = Digest();
		const int32 Objects = FHeadlessObjectRegistry::Get().Num();
		const int32 Steps = UndoableSteps();
		Run(std::string("assert(") + Case.Call + " == nil and editor.transaction_depth() == 0)");
		EXPECT_TRUE(FHeadlessObjectRegistry::Get().FailingNewObjects.IsEmpty()) << "the refusal was used";
		EXPECT_EQ(FHeadlessObjectRegistry::Get().Num(), Objects) << "nothing was created";
		ASSERT_EQ(GEditor->Trans->GetQueueLength(), Steps + 1);
		const FTransaction* Step = GEditor->Trans->GetTransaction(Steps);
		EXPECT_TRUE(Step->GetTitle().ToString().Equals(FString(Case.Title)));
		EXPECT_EQ(Step->GetRecordCount(), 1) << "only the target, marked before the engine refused";
		EXPECT_TRUE(Step->ContainsObject(Case.Target));
		EXPECT_TRUE(DMXStateDigest::DigestsMatch(Before, Digest()));
		ASSERT_TRUE(GEditor->UndoTransaction());
		EXPECT_TRUE(DMXStateDigest::DigestsMatch(Before, Digest())) << "the step changes nothing";
	}
}

// A library path that loads nothing leaves the engine's own warning: the load is not made quiet.
TEST_F(FEngineFaultTest, AnUnresolvedLibraryPathKeepsTheEnginesLoadWarning)
{
	TArray<FString>& Warnings = FHeadlessObjectRegistry::Get().Warnings;
	Warnings.Reset();
	Run(R"(assert(dmx_library("").valid == false and dmx_library("/Game/DMX/Stage").valid))");
	EXPECT_TRUE(Warnings.IsEmpty()) << "an empty path is never loaded";
	Run(R"(assert(dmx_library("/Game/DMX/Missing").valid == false))");
	ASSERT_EQ(Warnings.Num(), 1);
	EXPECT_NE(Warnings[0].Find(TEXT("Failed to find object"), ESearchCase::CaseSensitive), INDEX_NONE) << ConvertEngineText(Warnings[0]);
	EXPECT_NE(Warnings[0].Find(TEXT("/Game/DMX/Missing.Missing"), ESearchCase::CaseSensitive), INDEX_NONE) << ConvertEngineText(Warnings[0]);
	Warnings.Reset();
}

// SetFixturePatch(nullptr), as a failed "library" load makes it, clears the component's patch: the
// reference holds no patch, the component answers none, and a saved level has none for it.
TEST_F(FEngineFaultTest, FailingLibraryLoadClearsTheComponentsReference)
{
	ASSERT_TRUE(RigHoldsSpot1());
	FHeadlessObjectRegistry::Get().FailingLoads.Add(FString(TEXT("/Game/DMX/Stage.Stage")));
	const int32 Steps = GEditor->Trans->GetQueueLength();
	Run(R"(assert(assert(dmx_component("Truss"):add({ name = "Rig", library = "/Game/DMX/Stage", fixture_patch = "Spot1" })).components[1].fixture_patch == ""))");
	EXPECT_FALSE(RigHoldsSpot1()) << "add cleared the reference";
	EXPECT_EQ(Rig->GetFixturePatch(), nullptr) << "the cleared reference answers no patch";
	EXPECT_EQ(GEditor->Trans->GetQueueLength(), Steps) << "a reusing add records nothing";

	Rig->FixturePatchRef = FDMXEntityFixturePatchRef(FindFixturePatchByName(Library, FString(TEXT("Spot1"))));
	Run(R"(assert(dmx_component("Truss"):configure("Rig", { library = "/Game/DMX/Stage.Stage", fixture_patch = "Spot1" })))");
	EXPECT_FALSE(RigHoldsSpot1()) << "configure cleared the reference";
	ASSERT_TRUE(GEditor->UndoTransaction());
	EXPECT_TRUE(RigHoldsSpot1()) << "undo gives the reference back";
	ASSERT_TRUE(GEditor->RedoTransaction());

	// The engine saves only the reference's library and id.
	const std::filesystem::path ProjectDir = std::filesystem::temp_directory_path() / ("kest_engine_faults_" + std::to_string(getpid()));
	std::string Error;
	std::filesystem::create_directories(ProjectDir);
	{
		FKestDMXProject Project;
		ASSERT_TRUE(LoadKestDMXProject(ProjectDir.string(), Session->GetEditor(), Project, Error)) << Error;
		ASSERT_TRUE(SaveKestDMXProject(Project, Session->GetEditor(), Error)) << Error;
	}
	FHeadlessObjectRegistry::Get().FailingLoads.Empty();
	Session.reset();
	Session = std::make_unique<FKestDMXSession>();
	FKestDMXProject Project;
	const bool bLoaded = LoadKestDMXProject(ProjectDir.string(), Session->GetEditor(), Project, Error, EKestDMXProjectAccess::Read);
	std::filesystem::remove_all(ProjectDir);
	ASSERT_TRUE(bLoaded) << Error;
	Run(R"(assert(dmx_component("Truss"):info().components[1].fixture_patch == "", "no patch after loading"))");
}
