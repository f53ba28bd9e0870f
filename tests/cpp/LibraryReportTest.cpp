// The text report with real names: a golden rig whose names break naive column code, and every fixture
// definition of Debian's qlcplus-data package (when installed) checked for lines that stay whole and
// columns that line up.
#include <gtest/gtest.h>

#include <algorithm>
#include <cstdlib>
#include <filesystem>
#include <fstream>
#include <iostream>
#include <map>
#include <pugixml.hpp>
#include <sstream>
#include "ChannelMapPage.h"
#include "KestDMXRunner.h"
#include "KestDMXText.h"
#include "LibraryReport.h"
#include "Library/DMXEntityFixtureType.h"
#include "Library/DMXLibrary.h"
#include "TextColumns.h"
#include "UObject/UObjectGlobals.h"

namespace
{
	const std::filesystem::path GoldenDir = std::filesystem::path(KEST_SOURCE_DIR) / "tests" / "golden";
	const std::filesystem::path FixtureDefinitions = "/usr/share/qlcplus/fixtures";

	std::string ReadFile(const std::filesystem::path& Path)
	{
		std::ifstream In(Path, std::ios::binary);
		std::stringstream Text;
		Text << In.rdbuf();
		return Text.str();
	}

	std::vector<std::string> SplitLines(const std::string& Text)
	{
		std::vector<std::string> Lines;
		std::istringstream In(Text);
		for (std::string Line; std::getline(In, Line);)
		{
			Lines.push_back(Line);
		}
		return Lines;
	}

	// The first line where two texts differ, with both lines, for a readable failure.
	std::string DescribeDifference(const std::string& Expected, const std::string& Actual)
	{
		const std::vector<std::string> ExpectedLines = SplitLines(Expected);
		const std::vector<std::string> ActualLines = SplitLines(Actual);
		size_t Line = 0;
		while (Line < ExpectedLines.size() && Line < ActualLines.size() && ExpectedLines[Line] == ActualLines[Line])
		{
			++Line;
		}
		const auto Show = [](const std::vector<std::string>& Lines, size_t At) { return At < Lines.size() ? "'" + Lines[At] + "'" : std::string("(end)"); };
		return "first difference at line " + std::to_string(Line + 1) + "\n  expected: " + Show(ExpectedLines, Line) + "\n  actual:   " + Show(ActualLines, Line);
	}
}

// KESTDMX_UPDATE_GOLDEN=1 rewrites the golden file from the current report.
TEST(FLibraryReportTest, ReportOfARigWithRealNamesMatchesTheGoldenFile)
{
	FKestDMXSession Session;
	std::string Error;
	ASSERT_TRUE(Session.GetLua().RunFile((GoldenDir / "library_report.lua").string(), Error)) << Error;
	const std::string Report = FormatLibraryReport(LoadLibraryForReport("/Game/DMX/Names"));

	const std::filesystem::path GoldenFile = GoldenDir / "library_report.txt";
	if (const char* Update = std::getenv("KESTDMX_UPDATE_GOLDEN"); Update != nullptr && std::string(Update) == "1")
	{
		std::ofstream(GoldenFile, std::ios::binary) << Report;
	}
	const std::string Golden = ReadFile(GoldenFile);
	ASSERT_FALSE(Golden.empty()) << GoldenFile;
	EXPECT_EQ(Report, Golden) << DescribeDifference(Golden, Report);
}

namespace
{
	struct FDefinitionChannel
	{
		std::string Name;
		std::string Attribute;
	};

	// A fixture definition file as a fixture type: every mode with its channels as 8-bit functions in
	// the file's order, the attribute taken from the channel's preset or group. Answers false for a
	// file without modes.
	bool AddFixtureTypeFromDefinition(UDMXLibrary* Library, const std::filesystem::path& File)
	{
		pugi::xml_document Document;
		if (!Document.load_file(File.c_str()))
		{
			return false;
		}
		const pugi::xml_node Definition = Document.child("FixtureDefinition");
		std::map<std::string, FDefinitionChannel> Channels;
		for (const pugi::xml_node Channel : Definition.children("Channel"))
		{
			FDefinitionChannel& Defined = Channels[Channel.attribute("Name").value()];
			Defined.Name = Channel.attribute("Name").value();
			Defined.Attribute = Channel.attribute("Preset") ? Channel.attribute("Preset").value() : Channel.child_value("Group");
		}

		FDMXEntityFixtureTypeConstructionParams TypeParams;
		TypeParams.ParentDMXLibrary = Library;
		TypeParams.DMXCategory = FDMXFixtureCategory(FName(*ToEngine(Definition.child_value("Type"))));
		for (const pugi::xml_node ModeNode : Definition.children("Mode"))
		{
			FDMXFixtureMode Mode;
			Mode.ModeName = ToEngine(ModeNode.attribute("Name").value());
			for (const pugi::xml_node Channel : ModeNode.children("Channel"))
			{
				const FDefinitionChannel& Defined = Channels[Channel.child_value()];
				FDMXFixtureFunction Function;
				Function.FunctionName = ToEngine(Channel.child_value());
				Function.Attribute = FDMXAttributeName(FName(*ToEngine(Defined.Attribute.empty() ? "Generic" : Defined.Attribute)));
				Function.Channel = Channel.attribute("Number").as_int() + 1;
				Mode.Functions.Add(Function);
			}
			Mode.ChannelSpan = Mode.Functions.Num();
			TypeParams.Modes.Add(Mode);
		}
		if (TypeParams.Modes.Num() == 0)
		{
			return false;
		}
		const std::string Name = std::string(Definition.child_value("Manufacturer")) + " " + Definition.child_value("Model");
		return UDMXEntityFixtureType::CreateFixtureTypeInLibrary(TypeParams, ToEngine(Name)) != nullptr;
	}

	// Where each cell of a function row starts, in display columns; empty when the row is not laid
	// out as channels, name, attribute, data type and default with at least two blanks between cells.
	std::vector<size_t> FindCellColumns(const std::string& Row, const std::vector<std::string>& Cells)
	{
		std::vector<size_t> Columns;
		size_t Offset = 0;
		for (size_t Index = 0; Index < Cells.size(); ++Index)
		{
			if (Index > 0)
			{
				// The blanks between cells, less those the cell itself starts with.
				const size_t Blanks = std::min(Row.find_first_not_of(' ', Offset), Row.size());
				const size_t Leading = std::min(Cells[Index].find_first_not_of(' '), Cells[Index].size());
				if (Blanks < Offset + 2 + Leading)
				{
					return {};
				}
				Offset = Blanks - Leading;
			}
			if (Row.compare(Offset, Cells[Index].size(), Cells[Index]) != 0)
			{
				return {};
			}
			Columns.push_back(GetDisplayWidth(Row.substr(0, Offset)));
			Offset += Cells[Index].size();
		}
		return Offset == Row.size() ? Columns : std::vector<size_t>();
	}
}

TEST(FLibraryReportTest, EveryFixtureDefinitionReportsWholeLinesInAlignedColumns)
{
	if (!std::filesystem::is_directory(FixtureDefinitions))
	{
		GTEST_SKIP() << FixtureDefinitions << " is missing (Debian's qlcplus-data)";
	}
	std::vector<std::filesystem::path> Files;
	for (const auto& Entry : std::filesystem::recursive_directory_iterator(FixtureDefinitions))
	{
		if (Entry.path().extension() == ".qxf")
		{
			Files.push_back(Entry.path());
		}
	}
	std::sort(Files.begin(), Files.end());
	ASSERT_GT(Files.size(), 1000u);

	FKestDMXSession Session;
	std::string Error;
	ASSERT_TRUE(Session.RunScript("assert(editor.create_library('/Game/DMX/Definitions'))", "test", Error)) << Error;
	UDMXLibrary* Library = LoadLibraryForReport("/Game/DMX/Definitions");
	ASSERT_NE(Library, nullptr);
	for (const std::filesystem::path& File : Files)
	{
		AddFixtureTypeFromDefinition(Library, File);
	}

	const std::vector<std::string> Lines = SplitLines(FormatLibraryReport(Library));
	size_t Line = std::find(Lines.begin(), Lines.end(), "Fixture types") - Lines.begin() + 1;
	int32 CheckedRows = 0;
	for (const UDMXEntity* Entity : Library->GetEntities())
	{
		const UDMXEntityFixtureType* FixtureType = Cast<UDMXEntityFixtureType>(Entity);
		ASSERT_LT(Line, Lines.size());
		ASSERT_EQ(Lines[Line++], "  " + EscapeForDisplay(ToUTF8(FixtureType->Name)) + " [" + EscapeForDisplay(ToUTF8(FixtureType->DMXCategory.Name.ToString())) + "]");
		for (const FDMXFixtureMode& Mode : FixtureType->Modes)
		{
			ASSERT_LT(Line, Lines.size());
			ASSERT_EQ(Lines[Line++].rfind("    mode ", 0), 0u) << ToUTF8(FixtureType->Name);

			// Rows by channel, as the report lists them; the cells of every row start at the same columns.
			std::vector<const FDMXFixtureFunction*> Functions;
			for (const FDMXFixtureFunction& Function : Mode.Functions)
			{
				Functions.push_back(&Function);
			}
			std::stable_sort(Functions.begin(), Functions.end(), [](const FDMXFixtureFunction* A, const FDMXFixtureFunction* B) { return A->Channel < B->Channel; });
			std::vector<size_t> ModeColumns;
			for (const FDMXFixtureFunction* Function : Functions)
			{
				ASSERT_LT(Line, Lines.size());
				const std::string& Row = Lines[Line++];
				const std::vector<size_t> Columns = FindCellColumns(Row, {"      ch " + std::to_string(Function->Channel), EscapeForDisplay(ToUTF8(Function->FunctionName)),
					EscapeForDisplay(ToUTF8(Function->Attribute.Name.ToString())), "8 bit", "default 0"});
				ASSERT_FALSE(Columns.empty()) << "in " << ToUTF8(FixtureType->Name) << ": '" << Row << "'";
				if (ModeColumns.empty())
				{
					ModeColumns = Columns;
				}
				ASSERT_EQ(Columns, ModeColumns) << "in " << ToUTF8(FixtureType->Name) << ": '" << Row << "'";
				++CheckedRows;
			}
		}
	}
	EXPECT_EQ(Lines[Line], "") << "the fixture types end where their data ends";
	RecordProperty("rows", CheckedRows);
	std::cout << "[ report   ] " << Files.size() << " fixture definitions, " << CheckedRows << " function rows aligned\n";
}

// Patches piled on one channel (the default starting channel) would list every pair: the report and
// the page name the first few and count the rest, so their size grows with the patches, not with
// their square.
TEST(FLibraryReportTest, PatchesPiledOnOneChannelNameAFewAndCountTheRest)
{
	FKestDMXSession Session;
	std::string Error;
	ASSERT_TRUE(Session.RunScript(R"(assert(editor.create_library("/Game/DMX/Pile"))
		local lib = dmx_library("/Game/DMX/Pile")
		assert(lib:add("fixture_type", { name = "Par", modes = { { name = "1ch", functions = { { attribute = "Dimmer" } } } } }))
		for i = 1, 40 do assert(lib:add("fixture_patch", { name = "Par " .. i, fixture_type = "Par" })) end)", "test", Error)) << Error;
	UDMXLibrary* Library = LoadLibraryForReport("/Game/DMX/Pile");

	const std::vector<std::string> Lines = SplitLines(FormatLibraryReport(Library));
	const auto First = std::find(Lines.begin(), Lines.end(), "       OVERLAPS: Par 2, Par 3, Par 4, Par 5, Par 6, Par 7, Par 8, Par 9 and 31 more");
	ASSERT_NE(First, Lines.end());
	EXPECT_EQ(*(First + 2), "       OVERLAPS: Par 1, Par 3, Par 4, Par 5, Par 6, Par 7, Par 8, Par 9 and 31 more");
	EXPECT_EQ(Lines.back(), "40 patches in 1 universes, 0 invalid, 40 overlapping");

	const std::string Page = FormatChannelMapPage({Library});
	EXPECT_NE(Page.find("Shares channels with: Par 2, Par 3, Par 4, Par 5, Par 6, Par 7, Par 8, Par 9 and 31 more</title>"), std::string::npos);
	EXPECT_NE(Page.find("<title>Channel 1 claimed by Par 1, Par 2, Par 3, Par 4, Par 5, Par 6, Par 7, Par 8 and 32 more</title>"), std::string::npos);
	EXPECT_EQ(Page.find("Par 10, "), std::string::npos);
}
