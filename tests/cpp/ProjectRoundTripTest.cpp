// The project on disk: everything saved comes back identical (by the digest, which knows nothing of
// the files), and a broken file is named while nothing is written.
#include <gtest/gtest.h>

#include <filesystem>
#include <fstream>
#include <map>
#include <unistd.h>
#include "DMXStateDigest.h"
#include "Editor.h"
#include "KestDMXProject.h"
#include "KestDMXRunner.h"
#include "library/DMXLibraryLookup.h"

namespace
{
	using namespace DMXStateDigest;

	std::map<std::string, std::string> ReadAllFiles(const std::filesystem::path& Folder)
	{
		std::map<std::string, std::string> Files;
		for (const auto& Entry : std::filesystem::recursive_directory_iterator(Folder))
		{
			std::ifstream Stream(Entry.path(), std::ios::binary);
			if (Entry.is_regular_file())
			{
				Files[Entry.path().lexically_relative(Folder).generic_string()].assign(std::istreambuf_iterator<char>(Stream), std::istreambuf_iterator<char>());
			}
		}
		return Files;
	}

	class FProjectRoundTripTest : public ::testing::Test
	{
	protected:
		void SetUp() override { std::filesystem::remove_all(ProjectDir); }
		void TearDown() override { std::filesystem::remove_all(ProjectDir); }

		// Two libraries and a level, with values the module's own calls would not make: a physical
		// unit, a reversed range, a span that disagrees with its functions, a patch without a type and
		// one ahead of its type, a fixture ID and universe set by hand. Saved; answers the digest.
		FDigest BuildAndSave()
		{
			FKestDMXSession Session;
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
			std::vector<std::string> Saved;
			EXPECT_TRUE(SaveKestDMXProject(ProjectDir.string(), Session.GetEditor(), Error, &Saved)) << Error;
			EXPECT_EQ(Saved.size(), 3u);
			EXPECT_TRUE(Session.GetEditor().GetDirtyPackageNames().IsEmpty());
			return Digest;
		}

		const std::filesystem::path ProjectDir = std::filesystem::temp_directory_path() / ("kest_project_" + std::to_string(getpid()));
	};
}

TEST_F(FProjectRoundTripTest, EveryValueSurvivesSaveAndLoad)
{
	const FDigest Before = BuildAndSave();
	const std::map<std::string, std::string> Files = ReadAllFiles(ProjectDir);
	EXPECT_EQ(Files.size(), 3u) << "no temporary file left";
	EXPECT_EQ(Files.count("Content/DMX/Sub/Floor.dmxlib.json") + Files.count("Content/Maps/Untitled.level.json"), 2u);

	FKestDMXSession Session;
	std::string Error;
	ASSERT_TRUE(LoadKestDMXProject(ProjectDir.string(), Session.GetEditor(), Error)) << Error;
	EXPECT_TRUE(DigestsMatch(Before, TakeDigest(Session.GetEditor().GetEditorWorld())));
	// Loading is not an edit: nothing to save, nothing to undo.
	EXPECT_TRUE(Session.GetEditor().GetDirtyPackageNames().IsEmpty());
	EXPECT_TRUE(GEditor->Trans->GetUndoTitles().IsEmpty());

	// Saved again, the loaded project writes the same bytes.
	LoadDMXLibrary(FString(TEXT("/Game/DMX/Stage")))->MarkPackageDirty();
	LoadDMXLibrary(FString(TEXT("/Game/DMX/Sub/Floor")))->MarkPackageDirty();
	Session.GetEditor().GetEditorWorld()->MarkPackageDirty();
	ASSERT_TRUE(SaveKestDMXProject(ProjectDir.string(), Session.GetEditor(), Error)) << Error;
	EXPECT_EQ(Files, ReadAllFiles(ProjectDir));
}

TEST_F(FProjectRoundTripTest, ABrokenFileIsNamedAndNothingIsWritten)
{
	BuildAndSave();
	const std::filesystem::path Broken = ProjectDir / "Content/DMX/Sub/Floor.dmxlib.json";
	const std::string Header = R"({"format": "kestdmx-dmx-library", "version": 1, "entities": [)";
	// Cut short; a missing field; a patch whose type is not in its library; not a library at all.
	const std::pair<std::string, const char*> Cases[] = {
		{Header, ""},
		{Header + R"({"kind": "fixture_type", "name": "A"}]})", "object"},
		{Header + R"({"kind": "fixture_patch", "name": "P", "object": "P", "id": "00000000000000000000000000000001", "fixture_type": {"name": "Missing"}}]})",
			"fixture type"},
		{"[1, 2]", "format"},
	};
	std::ofstream(ProjectDir / "edit.lua") << "assert(editor.create_library('/Game/Other'))\n";
	for (const auto& [Text, Expected] : Cases)
	{
		std::ofstream(Broken, std::ios::binary) << Text;
		{
			FKestDMXSession Session;
			std::string Error;
			EXPECT_FALSE(LoadKestDMXProject(ProjectDir.string(), Session.GetEditor(), Error));
			EXPECT_NE(Error.find(Broken.string()), std::string::npos) << Error;
			EXPECT_NE(Error.find(Expected), std::string::npos) << Error;
		}
		// The runner stops before any script runs and saves nothing.
		const std::map<std::string, std::string> Files = ReadAllFiles(ProjectDir);
		testing::internal::CaptureStderr();
		EXPECT_EQ(RunKestDMXCommandLine({"run", "--project", ProjectDir.string(), (ProjectDir / "edit.lua").string()}), 1);
		EXPECT_NE(testing::internal::GetCapturedStderr().find("Floor.dmxlib.json"), std::string::npos);
		EXPECT_EQ(ReadAllFiles(ProjectDir), Files);
	}
}
