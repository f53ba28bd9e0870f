// The project on disk: everything saved comes back identical (by the digest, which knows nothing of
// the files), values JSON has no number for included, at 10,000 patches too; and a broken file is
// named while nothing is written.
#include "ProjectTestFolder.h"

#include "DMXStateDigest.h"
#include "Editor.h"
#include "KestDMXProject.h"
#include "UObject/UObjectGlobals.h"
#include "library/DMXLibraryLookup.h"

namespace
{
	using namespace DMXStateDigest;
	using namespace ProjectTestFolder;

	class FProjectRoundTripTest : public FProjectFolderTest
	{
	protected:
		// Loads the folder for editing into Session (an empty folder is an empty project).
		FKestDMXProject Load(FKestDMXSession& Session)
		{
			std::filesystem::create_directories(ProjectDir);
			FKestDMXProject Project;
			std::string Error;
			EXPECT_TRUE(LoadKestDMXProject(ProjectDir.string(), Session.GetEditor(), Project, Error)) << Error;
			return Project;
		}

		void Save(FKestDMXProject& Project, FKestDMXSession& Session, size_t ExpectedFiles)
		{
			std::string Error;
			std::vector<std::string> Saved;
			EXPECT_TRUE(SaveKestDMXProject(Project, Session.GetEditor(), Error, &Saved)) << Error;
			EXPECT_EQ(Saved.size(), ExpectedFiles);
			EXPECT_TRUE(Session.GetEditor().GetDirtyPackageNames().IsEmpty());
		}

		// Loads the folder into a fresh editor and compares it with Before; answers the warnings.
		std::vector<std::string> ExpectLoadsAs(const FDigest& Before)
		{
			FKestDMXSession Session;
			FKestDMXProject Project;
			std::string Error;
			EXPECT_TRUE(LoadKestDMXProject(ProjectDir.string(), Session.GetEditor(), Project, Error, EKestDMXProjectAccess::Read)) << Error;
			EXPECT_TRUE(DigestsMatch(Before, TakeDigest(Session.GetEditor().GetEditorWorld())));
			// Loading is not an edit: nothing to save, nothing to undo.
			EXPECT_TRUE(Session.GetEditor().GetDirtyPackageNames().IsEmpty());
			EXPECT_TRUE(GEditor->Trans->GetUndoTitles().IsEmpty());
			return Project.Warnings;
		}

		// Two libraries and a level, with values the module's own calls would not make: a physical
		// unit, a reversed range, a span that disagrees with its functions, a patch without a type and
		// one ahead of its type, a fixture ID and universe set by hand. Saved; answers the digest.
		FDigest BuildAndSave()
		{
			FKestDMXSession Session;
			FKestDMXProject Project = Load(Session);
			std::string Error;
			EXPECT_TRUE(Session.RunScript(R"(
				assert(editor.create_library("/Game/DMX/Stage") and editor.create_library("/Game/DMX/Sub/Floor"))
				assert(editor.spawn_actor("Spot_1", "Spot Left") and editor.spawn_actor("Bar") and editor.spawn_actor("Empty", "Nothing here"))
				local Stage, Floor = dmx_library("/Game/DMX/Stage"), dmx_library("/Game/DMX/Sub/Floor")
				assert(Stage:add("fixture_type", {name = "Spot", category = "Moving Head", modes = {
					{name = 'Standard "16" \u{e9}', auto_channel_span = false, channel_span = 12, functions = {
						{attribute = "Pan", name = "Pan", description = "line one\nline two", data_type = "16bit", use_lsb = true, default_value = 40000,
							physical_from = -270, physical_to = 270, physical_default_value = 0.1 + 0.2},
						{attribute = "Dimmer", name = "Dimmer", channel = 3, data_type = "32bit", default_value = 4294967295}}},
					{name = "Pixels", matrix = {enabled = true, x_cells = 4, y_cells = 2, first_cell_channel = 2, distribution = "BottomRightToAntiClockwise",
						cell_attributes = {{attribute = "Green", description = "g", default_value = 7, data_type = "24bit", use_lsb = true}}}}}}))
				assert(Stage:add("fixture_patch", {name = "Spot 1", fixture_type = "Spot", universe = 3, starting_channel = 500, active_mode_index = 1,
					tags = {"truss", "Stage Left"}, editor_color = {r = 0.1, g = 1 / 3, b = 2.5, a = 0.25}, receive_dmx_in_editor = true}))
				assert(Stage:add("fixture_patch", {name = "Spot 2", fixture_type = "Spot"}) and Stage:add("fixture_patch", {name = "Orphan", fixture_type = "Spot"}))
				assert(Floor:add("fixture_type", {name = "Par", modes = {{name = "1ch", functions = {{}}}}}))
				assert(Floor:add("fixture_patch", {name = "Par", fixture_type = "Par"}))
				assert(dmx_component("Spot_1"):add({library = "/Game/DMX/Stage", fixture_patch = "Spot 1", receive = false}))
				assert(dmx_component("Spot_1"):add({name = "Second", library = "/Game/DMX/Sub/Floor", fixture_patch = "Par"}))
				assert(dmx_component("Bar"):add({name = "Unpatched", receive = false})))", "setup", Error)) << Error;
			UDMXLibrary* Stage = LoadDMXLibrary(FString(TEXT("/Game/DMX/Stage")));
			UDMXEntityFixtureType* Spot = FindFixtureTypeByName(Stage, FString(TEXT("Spot")));
			Spot->bExportGeneratedGDTF = true;
			Spot->Modes[0].Functions[0].SetPhysicalUnit(EDMXGDTFPhysicalUnit::Angle);
			Spot->Modes[0].Functions[1].SetPhysicalValueRange(1.0, 0.0);
			Spot->Modes[1].ChannelSpan = 99;
			FindFixturePatchByName(Stage, FString(TEXT("Spot 1")))->GenerateFixtureID(42);
			FindFixturePatchByName(Stage, FString(TEXT("Spot 2")))->SetUniverseID(-4);
			FindFixturePatchByName(Stage, FString(TEXT("Orphan")))->SetFixtureType(nullptr);
			Stage->SetEntityIndex(FindFixturePatchByName(Stage, FString(TEXT("Spot 2"))), 0);
			const FDigest Digest = TakeDigest(Session.GetEditor().GetEditorWorld());
			Save(Project, Session, 3);
			return Digest;
		}
	};
}

TEST_F(FProjectRoundTripTest, EveryValueSurvivesSaveAndLoad)
{
	const FDigest Before = BuildAndSave();
	std::map<std::string, std::string> Files = ReadAllFiles(ProjectDir);
	EXPECT_EQ(Files.size(), 3u) << "no temporary file left";
	EXPECT_EQ(Files.count("Content/DMX/Sub/Floor.dmxlib.json") + Files.count("Content/Maps/Untitled.level.json"), 2u);
	EXPECT_TRUE(ExpectLoadsAs(Before).empty());

	// Saved again, the loaded project writes the same bytes.
	FKestDMXSession Session;
	FKestDMXProject Project = Load(Session);
	LoadDMXLibrary(FString(TEXT("/Game/DMX/Stage")))->MarkPackageDirty();
	LoadDMXLibrary(FString(TEXT("/Game/DMX/Sub/Floor")))->MarkPackageDirty();
	Session.GetEditor().GetEditorWorld()->MarkPackageDirty();
	Save(Project, Session, 3);
	EXPECT_EQ(Files, ReadAllFiles(ProjectDir));
}

// Scripts can store numbers JSON has no numbers for, and leave a patch on a mode its type no longer
// has; such a project used to save and then not load.
TEST_F(FProjectRoundTripTest, ValuesJsonHasNoNumbersForComeBack)
{
	FDigest Before;
	{
		FKestDMXSession Session;
		FKestDMXProject Project = Load(Session);
		std::string Error;
		ASSERT_TRUE(Session.RunScript(R"(
			assert(editor.create_library("/Game/DMX/Odd"))
			local Odd = dmx_library("/Game/DMX/Odd")
			assert(Odd:add("fixture_type", {name = "T", modes = {{name = "A"}, {name = "B"}}}))
			assert(Odd:add("fixture_type", {name = "U", modes = {{name = "A", functions = {{physical_from = 0/0, physical_to = math.huge},
				{physical_from = -math.huge, physical_to = -(0/0)}}}}}))
			assert(Odd:add("fixture_patch", {name = "P", fixture_type = "T", active_mode_index = 1,
				editor_color = {r = 1e308, g = -1e308, b = 0/0, a = -0.0}}))
			assert(Odd:configure("fixture_type", "T", {modes = {{name = "Only"}}})))", "odd", Error)) << Error;
		Before = TakeDigest(Session.GetEditor().GetEditorWorld());
		Save(Project, Session, 1);
	}
	const std::vector<std::string> Warnings = ExpectLoadsAs(Before);
	ASSERT_EQ(Warnings.size(), 1u);
	EXPECT_NE(Warnings[0].find("Odd.dmxlib.json: entities[2].active_mode: fixture type \"T\" has no mode 1"), std::string::npos) << Warnings[0];
}

// 10,000 patches of one type in one library, each used by a component: saved and loaded back whole.
// Release build only: the headless engine finds an object by name by walking every object, which
// the sanitizers slow down too far for 20,000 creations.
TEST_F(FProjectRoundTripTest, TenThousandPatchesComeBack)
{
#if defined(__SANITIZE_ADDRESS__)
	GTEST_SKIP() << "release build only";
#elif defined(__has_feature)
#if __has_feature(address_sanitizer)
	GTEST_SKIP() << "release build only";
#endif
#endif
	const int PatchCount = 10000;
	FDigest Before;
	std::map<std::string, std::string> Files;
	{
		FKestDMXSession Session;
		FKestDMXProject Project = Load(Session);
		std::string Error;
		ASSERT_TRUE(Session.RunScript(R"(
			assert(editor.create_library("/Game/DMX/Big") and editor.spawn_actor("Rig"))
			assert(dmx_library("/Game/DMX/Big"):add("fixture_type", {name = "Par", modes = {{name = "RGB", functions = {
				{attribute = "Red"}, {attribute = "Green"}, {attribute = "Blue"}}}}})))", "big", Error)) << Error;
		UDMXLibrary* Big = LoadDMXLibrary(FString(TEXT("/Game/DMX/Big")));
		UDMXEntityFixtureType* Par = FindFixtureTypeByName(Big, FString(TEXT("Par")));
		AActor* Rig = Session.GetEditor().GetEditorWorld()->GetActors()[0];
		for (int Index = 0; Index < PatchCount; ++Index)
		{
			// Made as a load makes them, not as CreateFixturePatchInLibrary does: its unique naming
			// compares each new name with every patch's, which is not what this test measures.
			UDMXEntityFixturePatch* Patch = NewObject<UDMXEntityFixturePatch>(Big, UDMXEntityFixturePatch::StaticClass(),
				FName(FString(TEXT("Patch_")) + FString::FromInt(Index)), RF_Transactional);
			ASSERT_NE(Patch, nullptr);
			Patch->Name = FString::FromInt(Index);
			Patch->SetFixtureType(Par);
			Patch->SetUniverseID(1 + Index / 170);
			Patch->SetStartingChannel(1 + 3 * (Index % 170));
			Patch->SetFixtureIDFromSaved(Index + 1);
			UDMXComponent* Component = NewObject<UDMXComponent>(Rig, UDMXComponent::StaticClass(), FName(FString(TEXT("DMX_")) + FString::FromInt(Index)),
				RF_Transactional);
			Rig->AddInstanceComponent(Component);
			Component->RegisterComponent();
			Component->SetFixturePatch(Patch);
		}
		Big->MarkPackageDirty();
		Rig->MarkPackageDirty();
		Before = TakeDigest(Session.GetEditor().GetEditorWorld());
		Save(Project, Session, 2);
		Files = ReadAllFiles(ProjectDir);
	}
	EXPECT_TRUE(ExpectLoadsAs(Before).empty());

	FKestDMXSession Session;
	FKestDMXProject Project = Load(Session);
	EXPECT_EQ(LoadDMXLibrary(FString(TEXT("/Game/DMX/Big")))->GetEntities().Num(), PatchCount + 1);
	LoadDMXLibrary(FString(TEXT("/Game/DMX/Big")))->MarkPackageDirty();
	Session.GetEditor().GetEditorWorld()->MarkPackageDirty();
	Save(Project, Session, 2);
	EXPECT_EQ(Files, ReadAllFiles(ProjectDir));
}

TEST_F(FProjectRoundTripTest, ABrokenFileIsNamedAndNothingIsWritten)
{
	BuildAndSave();
	const std::filesystem::path Broken = ProjectDir / "Content/DMX/Sub/Floor.dmxlib.json";
	const std::string Header = R"({"format": "kestdmx-dmx-library", "version": 1, "entities": [)";
	// Cut short; a missing field; not a library at all.
	const std::pair<std::string, const char*> Cases[] = {
		{Header, "unexpected end of input"},
		{Header + R"({"kind": "fixture_type", "name": "A"}]})", "entities[0]: \"object\" is missing"},
		{"[1, 2]", "format"},
	};
	const std::filesystem::path Edit = ProjectDir.parent_path() / (ProjectDir.filename().string() + "-edit.lua");
	WriteFile(Edit, "assert(editor.create_library('/Game/Other'))\n");
	for (const auto& [Text, Expected] : Cases)
	{
		WriteFile(Broken, Text);
		{
			FKestDMXSession Session;
			FKestDMXProject Project;
			std::string Error;
			EXPECT_FALSE(LoadKestDMXProject(ProjectDir.string(), Session.GetEditor(), Project, Error));
			EXPECT_NE(Error.find(Broken.string() + ": "), std::string::npos) << Error;
			EXPECT_NE(Error.find(Expected), std::string::npos) << Error;
			// A project that did not load whole is never saved.
			EXPECT_FALSE(SaveKestDMXProject(Project, Session.GetEditor(), Error));
			EXPECT_NE(Error.find("did not load whole"), std::string::npos) << Error;
		}
		// The runner stops before any script runs and saves nothing.
		const std::map<std::string, std::string> Files = ReadAllFiles(ProjectDir);
		std::string Stderr;
		EXPECT_EQ(RunKestDMX({"run", "--project", ProjectDir.string(), Edit.string()}, &Stderr), 1);
		EXPECT_NE(Stderr.find("Floor.dmxlib.json"), std::string::npos);
		EXPECT_EQ(ReadAllFiles(ProjectDir), Files);
	}
	std::filesystem::remove(Edit);
}
