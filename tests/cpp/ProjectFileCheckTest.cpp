// Every value a project file holds is checked on load: what the engine could not hold, or no save
// writes, stops the load with an error naming the file and the place in it; a reference that does not
// resolve, or a patch on a mode its type lacks, loads with a warning of the same form.
#include "ProjectTestFolder.h"

#include <nlohmann/json.hpp>
#include "KestDMXProject.h"

namespace
{
	using FJson = nlohmann::ordered_json;
	using namespace ProjectTestFolder;

	FJson MakeLibrary()
	{
		return FJson::parse(R"({"format": "kestdmx-dmx-library", "version": 1, "entities": [
			{"kind": "fixture_type", "name": "Spot", "object": "Spot", "id": "00000000-0000-0000-0000-000000000001", "category": "Static",
				"export_generated_gdtf": false, "show_only_latest_gdtf_mode_revisions": true, "modes": [{"name": "Basic",
				"auto_channel_span": true, "channel_span": 1, "functions": [{"attribute": "Dimmer", "function_name": "Dimmer", "description": "",
					"default_value": 0, "channel": 1, "signal_format": 8, "lsb": false, "physical_unit": "None", "physical_from": 0,
					"physical_to": 1, "physical_default": 0}],
				"matrix_enabled": false, "matrix": {"first_cell_channel": 1, "x_cells": 1, "y_cells": 1, "pixel_mapping_distribution": "TopLeftToRight",
					"cell_attributes": [{"attribute": "Red", "description": "", "default_value": 0, "signal_format": 8, "lsb": false}]}}]},
			{"kind": "fixture_patch", "name": "Spot 1", "object": "Spot_1", "id": "00000000-0000-0000-0000-000000000002",
				"fixture_type": {"name": "Spot", "id": "00000000-0000-0000-0000-000000000001"}, "universe": 1, "starting_channel": 1,
				"active_mode": 0, "fixture_id": 1, "mvr_fixture_uuid": "00000000-0000-0000-0000-000000000003", "tags": ["front"],
				"editor_color": [1, 0, 0, 1], "receive_dmx_in_editor": false}]})");
	}

	FJson MakeLevel()
	{
		return FJson::parse(R"({"format": "kestdmx-level", "version": 1, "actors": [{"name": "Truss", "label": "", "dmx_components": [
			{"name": "DMX", "fixture_patch": {"library": "/Game/DMX/Stage.Stage", "name": "Spot 1", "id": "00000000-0000-0000-0000-000000000002"},
				"receive_dmx_from_patch": true}]}]})");
	}

	struct FCase
	{
		const char* Pointer;
		FJson Value;
		const char* Expected;
	};

	class FProjectFileCheckTest : public FProjectFolderTest
	{
	protected:
		std::filesystem::path LibraryFile() const { return ProjectDir / "Content/DMX/Stage.dmxlib.json"; }
		std::filesystem::path LevelFile() const { return ProjectDir / "Content/Maps/Untitled.level.json"; }

		// Loads the folder for reading; answers the error (empty when it loaded) and the warnings.
		std::string Load(std::vector<std::string>* OutWarnings = nullptr)
		{
			FKestDMXSession Session;
			FKestDMXProject Project;
			std::string Error;
			const bool bLoaded = LoadKestDMXProject(ProjectDir.string(), Session.GetEditor(), Project, Error, EKestDMXProjectAccess::Read);
			EXPECT_EQ(bLoaded, Error.empty()) << Error;
			if (OutWarnings != nullptr)
			{
				*OutWarnings = Project.Warnings;
			}
			return Error;
		}

		// Each case changes one value of a valid file (null: removes it); the load must fail, naming
		// the file and Expected.
		void ExpectRefused(const FJson& Valid, const std::filesystem::path& File, const std::vector<FCase>& Cases)
		{
			WriteFile(File, Valid.dump());
			ASSERT_EQ(Load(), "");
			for (const FCase& Case : Cases)
			{
				FJson Changed = Valid;
				const FJson::json_pointer Pointer(Case.Pointer);
				if (Case.Value.is_discarded())
				{
					Changed[Pointer.parent_pointer()].erase(Pointer.back());
				}
				else
				{
					Changed[Pointer] = Case.Value;
				}
				WriteFile(File, Changed.dump());
				const std::string Error = Load();
				EXPECT_EQ(Error.rfind(File.string() + ": ", 0), 0u) << Case.Pointer << ": " << Error;
				EXPECT_NE(Error.find(Case.Expected), std::string::npos) << Case.Pointer << ": " << Error;
			}
			WriteFile(File, Valid.dump());
		}
	};

	const FJson Removed = FJson(FJson::value_t::discarded);
}

TEST_F(FProjectFileCheckTest, LibraryValuesOutsideWhatTheEngineHoldsAreRefusedByPlace)
{
	WriteFile(LevelFile(), MakeLevel().dump());
	ExpectRefused(MakeLibrary(), LibraryFile(), {
		{"/format", "kestdmx-level", "not a file of format \"kestdmx-dmx-library\""},
		{"/version", 1.5, "version: this kestdmx reads version 1 only, not 1.5"},
		{"/version", "1", "version: this kestdmx reads version 1 only"},
		{"/entities", FJson::object(), "entities: must be a list"},
		{"/entities/1/universe", 1e300, "entities[1].universe: must be a whole number from -2147483648 to 2147483647, not 1e+300"},
		{"/entities/1/universe", 2147483648ll, "entities[1].universe: must be a whole number"},
		{"/entities/1/fixture_id", 1e20, "entities[1].fixture_id: must be a whole number"},
		{"/entities/0/modes/0/functions/0/default_value", 1e30, "entities[0].modes[0].functions[0].default_value: must be a whole number"},
		{"/entities/0/modes/0/functions/0/default_value", 18446744073709551615ull, "functions[0].default_value: must be a whole number"},
		{"/entities/0/modes/0/functions/0/physical_unit", 300, "functions[0].physical_unit: must be one of \"None\", \"Percent\""},
		{"/entities/0/modes/0/functions/0/physical_from", "nan", "functions[0].physical_from: must be a number, \"NaN\""},
		{"/entities/0/modes/0/functions/0/channel", -3, "functions[0].channel: must be a whole number from 1 to 2147483647"},
		{"/entities/0/modes/0/functions/0/signal_format", 12, "functions[0].signal_format: must be 8, 16, 24 or 32"},
		{"/entities/0/modes/0/functions/0/lsb", 1, "functions[0].lsb: must be true or false, not 1"},
		{"/entities/0/modes/0/channel_span", -1, "entities[0].modes[0].channel_span: must be a whole number from 0"},
		{"/entities/0/modes/0/matrix/x_cells", -2, "entities[0].modes[0].matrix.x_cells: must be a whole number from 0"},
		{"/entities/0/modes/0/matrix/pixel_mapping_distribution", 3, "matrix.pixel_mapping_distribution: must be one of \"TopLeftToRight\""},
		{"/entities/0/modes/0/matrix/cell_attributes/0", "Red", "matrix.cell_attributes[0]: must be an object"},
		{"/entities/0/modes", Removed, "entities[0]: \"modes\" is missing"},
		{"/entities/0/name", std::string("a\0b", 3), "entities[0].name: must not hold a NUL character"},
		{"/entities/0/id", "00000000-0000-0000-0000-000000000000", "entities[0].id: must not be the zero GUID"},
		{"/entities/1/id", "00000000-0000-0000-0000-000000000001", "entities[1].id: entities[0] has the same id"},
		{"/entities/1/kind", "fixture", "entities[1].kind: must be \"fixture_type\" or \"fixture_patch\""},
		{"/entities/1/object", "spot", "entities[1].object: another entity of the library has the object name \"spot\""},
		{"/entities/1/object", "None", "entities[1].object: must name the entity's object"},
		{"/entities/1/starting_channel", -1, "entities[1].starting_channel: must be a whole number from 1"},
		{"/entities/1/active_mode", -2, "entities[1].active_mode: must be a whole number from -1"},
		{"/entities/1/mvr_fixture_uuid", "xyz", "entities[1].mvr_fixture_uuid: must be a GUID"},
		{"/entities/1/tags/0", 5, "entities[1].tags[0]: must be a text or null, not 5"},
		{"/entities/1/editor_color/2", 1e300, "entities[1].editor_color[2]: must be a number within the range of single precision"},
		{"/entities/1/editor_color", FJson::array({1, 0, 0}), "entities[1].editor_color: must list four numbers"},
		{"/entities/1/fixture_type", "Spot", "entities[1].fixture_type: must be an object"},
	});
}

TEST_F(FProjectFileCheckTest, LevelValuesAreRefusedByPlace)
{
	WriteFile(LibraryFile(), MakeLibrary().dump());
	FJson Level = MakeLevel();
	Level["actors"].push_back(FJson::parse(R"({"name": "Pole", "label": "Pole", "dmx_components": []})"));
	ExpectRefused(Level, LevelFile(), {
		{"/version", 2, "version: this kestdmx reads version 1 only, not 2"},
		{"/actors/1/name", "truss", "actors[1].name: another actor of the level has the name \"truss\""},
		{"/actors/1/name", "", "actors[1].name: must name the actor"},
		{"/actors/0/label", FJson(nullptr), "actors[0].label: must be a text, not null"},
		{"/actors/0/dmx_components/0/fixture_patch", 5, "actors[0].dmx_components[0].fixture_patch: must be an object"},
		{"/actors/0/dmx_components/0/fixture_patch/library", FJson(nullptr), "dmx_components[0].fixture_patch.library: must be a text"},
		{"/actors/0/dmx_components/0/receive_dmx_from_patch", "yes", "dmx_components[0].receive_dmx_from_patch: must be true or false"},
		{"/actors/0/dmx_components/0/name", "None", "dmx_components[0].name: must name the component"},
	});
}

// A 100,000-deep list used to overflow the stack; nesting is bounded before the parser runs.
TEST_F(FProjectFileCheckTest, DeepNestingIsRefusedWithoutRecursion)
{
	WriteFile(LibraryFile(), std::string(100000, '[') + std::string(100000, ']'));
	EXPECT_NE(Load().find("Stage.dmxlib.json: lists and objects are nested deeper than 64 levels at line 1, column 65"), std::string::npos);

	// Brackets inside texts are text.
	FJson Library = MakeLibrary();
	Library["entities"][0]["name"] = std::string(1000, '[') + "\"{";
	WriteFile(LibraryFile(), Library.dump());
	EXPECT_EQ(Load(), "");
}

// What the engine loads as no reference, or as it stands, loads with a warning naming the place.
TEST_F(FProjectFileCheckTest, UnresolvedReferencesLoadWithWarnings)
{
	FJson Library = MakeLibrary();
	Library["entities"][1]["active_mode"] = 1000;
	Library["entities"].push_back(Library["entities"][1]);
	Library["entities"][2]["object"] = "Spot_2";
	Library["entities"][2]["id"] = "00000000-0000-0000-0000-000000000004";
	Library["entities"][2]["fixture_type"] = FJson::parse(R"({"name": "Wash", "id": "00000000-0000-0000-0000-000000000009"})");
	WriteFile(LibraryFile(), Library.dump());
	FJson Level = MakeLevel();
	Level["actors"][0]["dmx_components"].push_back(Level["actors"][0]["dmx_components"][0]);
	Level["actors"][0]["dmx_components"][1]["name"] = "Gone";
	Level["actors"][0]["dmx_components"][1]["fixture_patch"]["library"] = "/Game/DMX/Gone.Gone";
	Level["actors"][0]["dmx_components"][0]["fixture_patch"].erase("id");
	Level["actors"][0]["dmx_components"][0]["fixture_patch"]["name"] = "Spot 9";
	WriteFile(LevelFile(), Level.dump());

	std::vector<std::string> Warnings;
	ASSERT_EQ(Load(&Warnings), "");
	ASSERT_EQ(Warnings.size(), 4u);
	EXPECT_EQ(Warnings[0], LibraryFile().string() + ": entities[1].active_mode: fixture type \"Spot\" has no mode 1000 (it has 1); the patch has no "
		"active mode until one is set");
	EXPECT_EQ(Warnings[1], LibraryFile().string() + ": entities[2].fixture_type: the library has no fixture type with id "
		"00000000-0000-0000-0000-000000000009; the patch is loaded without one");
	EXPECT_EQ(Warnings[2], LevelFile().string() + ": actors[0].dmx_components[0].fixture_patch.name: /Game/DMX/Stage.Stage has no fixture patch "
		"named \"Spot 9\"; the component is loaded without a fixture patch");
	EXPECT_EQ(Warnings[3], LevelFile().string() + ": actors[0].dmx_components[1].fixture_patch.library: no DMX Library at /Game/DMX/Gone.Gone; "
		"the component is loaded without a fixture patch");

	// The runner goes on, printing them.
	std::string Stderr;
	EXPECT_EQ(RunOnProject("assert(dmx_component('Truss'):info().components[1].fixture_patch == '')", &Stderr), 0) << Stderr;
	EXPECT_NE(Stderr.find("kestdmx: warning: " + Warnings[2]), std::string::npos) << Stderr;
	EXPECT_EQ(RunKestDMX({"inspect", "--project", ProjectDir.string()}, &Stderr), 0);
	EXPECT_NE(Stderr.find("kestdmx: warning: " + Warnings[0]), std::string::npos) << Stderr;
}

// A file whose path maps to a package the editor could not create is named at load.
TEST_F(FProjectFileCheckTest, LibraryPathsTheEditorRefusesAreErrors)
{
	const char* const Refused[] = {"Content/DMX/Clay.Paky.dmxlib.json", "Content/American DJ/Par.dmxlib.json", "Content/DMX/R&D.dmxlib.json",
		"Content/DMX/Hi!.dmxlib.json", "Content/DMX/a~b.dmxlib.json", "Content/DMX/at@home.dmxlib.json", "Content/DMX/No#1.dmxlib.json",
		"Content/DMX/a,b.dmxlib.json"};
	for (const char* Path : Refused)
	{
		std::filesystem::remove_all(ProjectDir);
		WriteFile(ProjectDir / Path, MakeLibrary().dump());
		const std::string Error = Load();
		EXPECT_EQ(Error.rfind((ProjectDir / Path).string() + ": ", 0), 0u) << Error;
		EXPECT_NE(Error.find("is not a package name the editor can use"), std::string::npos) << Error;
	}
	std::filesystem::remove_all(ProjectDir);
	WriteFile(ProjectDir / "Content/DMX/American_DJ.dmxlib.json", MakeLibrary().dump());
	EXPECT_EQ(Load(), "");
}
