// Fixture definitions read and mapped to the module's vocabulary: what fails a file, which channels
// pair into 16-bit functions, when heads become a matrix, names, ranges and library paths.
#include <gtest/gtest.h>

#include <algorithm>
#include "FixtureImport.h"

namespace
{
	std::string MakeDefinition(const std::string& Body, const std::string& Physical = std::string())
	{
		return "<?xml version=\"1.0\" encoding=\"UTF-8\"?>\n<!DOCTYPE FixtureDefinition>\n<FixtureDefinition>\n"
			" <Manufacturer>Acme</Manufacturer>\n <Model>Spot 1</Model>\n <Type>Moving Head</Type>\n" + Body
			+ " <Physical>" + Physical + "</Physical>\n</FixtureDefinition>\n";
	}

	std::string ParseProblem(const std::string& Text)
	{
		FFixtureDefinition Definition;
		std::string Error;
		return ParseFixtureDefinition(Text, Definition, Error) ? std::string("parsed") : Error;
	}

	struct FMapped
	{
		FImportFixtureType FixtureType;
		std::vector<std::string> Notes;

		const FImportMode& Mode(size_t Index = 0) const { return FixtureType.Modes.at(Index); }
		bool Noted(const std::string& Part) const
		{
			return std::any_of(Notes.begin(), Notes.end(), [&Part](const std::string& Note) { return Note.find(Part) != std::string::npos; });
		}
	};

	FMapped Map(const std::string& Text)
	{
		FFixtureDefinition Definition;
		Definition.File = "acme.qxf";
		std::string Error;
		EXPECT_TRUE(ParseFixtureDefinition(Text, Definition, Error)) << Error;
		std::vector<FImportNote> Notes;
		FMapped Mapped{MapFixtureDefinition(Definition, Notes), {}};
		for (const FImportNote& Note : Notes)
		{
			EXPECT_EQ(Note.File, "acme.qxf");
			Mapped.Notes.push_back(Note.Text);
		}
		return Mapped;
	}

	// A mode listing the named channels in order, with heads of channel numbers.
	std::string MakeMode(const std::vector<std::string>& Channels, const std::vector<std::vector<int>>& Heads = {})
	{
		std::string Mode = " <Mode Name=\"Main\">\n";
		for (size_t Index = 0; Index < Channels.size(); ++Index)
		{
			Mode += "  <Channel Number=\"" + std::to_string(Index) + "\">" + Channels[Index] + "</Channel>\n";
		}
		for (const std::vector<int>& Head : Heads)
		{
			Mode += "  <Head>";
			for (const int Number : Head)
			{
				Mode += "<Channel>" + std::to_string(Number) + "</Channel>";
			}
			Mode += "</Head>\n";
		}
		return Mode + " </Mode>\n";
	}

	std::string Preset(const std::string& Name, const std::string& PresetName, const std::string& Extra = std::string())
	{
		return " <Channel Name=\"" + Name + "\" Preset=\"" + PresetName + "\"" + Extra + "/>\n";
	}

	std::string Grouped(const std::string& Name, const std::string& Group, int Byte = 0)
	{
		return " <Channel Name=\"" + Name + "\"><Group Byte=\"" + std::to_string(Byte) + "\">" + Group + "</Group>"
			"<Capability Min=\"0\" Max=\"127\">Open</Capability><Capability Min=\"128\" Max=\"255\">Strobe</Capability></Channel>\n";
	}
}

TEST(FImportMappingTest, FilesThatAreNoFixtureDefinitionsFailNamingTheProblem)
{
	EXPECT_NE(ParseProblem("<FixtureDefinition><Model>").find("not XML"), std::string::npos);
	EXPECT_NE(ParseProblem("<Workspace/>").find("not a fixture definition: the document is <Workspace>"), std::string::npos);
	EXPECT_NE(ParseProblem("<FixtureDefinition><Model>X</Model></FixtureDefinition>").find("names no manufacturer"), std::string::npos);
	EXPECT_NE(ParseProblem(MakeDefinition(Preset("Red", "IntensityRed"))).find("no modes"), std::string::npos);
	EXPECT_NE(ParseProblem(MakeDefinition(Preset("Red", "IntensityRed") + MakeMode({"Red", "Blue"}))).find("channel 'Blue' is not defined"), std::string::npos);
	const std::string Twice = " <Mode Name=\"M\"><Channel Number=\"0\">Red</Channel><Channel Number=\"0\">Red</Channel></Mode>\n";
	EXPECT_NE(ParseProblem(MakeDefinition(Preset("Red", "IntensityRed") + Twice)).find("mode 'M': channel number 0 is given twice"), std::string::npos);
	const std::string Gap = " <Mode Name=\"M\"><Channel Number=\"1\">Red</Channel></Mode>\n";
	EXPECT_NE(ParseProblem(MakeDefinition(Preset("Red", "IntensityRed") + Gap)).find("there is no channel number 0"), std::string::npos);

	FFixtureDefinition Definition;
	std::string Error;
	EXPECT_FALSE(ReadFixtureDefinition("/nonexistent/acme.qxf", Definition, Error));
	EXPECT_EQ(Error, "/nonexistent/acme.qxf: no such file");
}

TEST(FImportMappingTest, ValuesTheImportCanDoWithoutAreDroppedWithANote)
{
	const FMapped Mapped = Map(MakeDefinition(Preset("Dim", "IntensityDimmer", " Default=\"300\"") + Preset("Dim", "IntensityRed")
		+ MakeMode({"Dim"}), "<Focus PanMax=\"lots\"/>"));
	EXPECT_TRUE(Mapped.Noted("channel 'Dim' default: Default '300' is not a value from 0 to 255"));
	EXPECT_TRUE(Mapped.Noted("channel 'Dim' is defined twice; the first definition is used"));
	EXPECT_TRUE(Mapped.Noted("PanMax 'lots' is not a number of degrees"));
	ASSERT_EQ(Mapped.Mode().Functions.size(), 1u);
	EXPECT_EQ(Mapped.Mode().Functions[0].Attribute, "Dimmer");
	EXPECT_EQ(Mapped.Mode().Functions[0].DefaultValue, 0);
}

TEST(FImportMappingTest, AdjacentCoarseAndFineChannelsOfOneAttributeBecomeOneSixteenBitFunction)
{
	const FMapped Mapped = Map(MakeDefinition(
		Preset("Pan", "PositionPan", " Default=\"128\"") + Preset("Pan fine", "PositionPanFine", " Default=\"7\"")
		+ Preset("Tilt fine", "PositionTiltFine") + Preset("Tilt", "PositionTilt")
		+ Grouped("Colour macro", "Colour") + Grouped("Colour temperature", "Colour", 1)
		+ Grouped("Zoom", "Beam") + Grouped("Zoom, fine (LSB)", "Beam", 1)
		+ Grouped("Gobo 1 MSB", "Gobo") + Grouped("Gobo 1 LSB", "Gobo", 1) + Grouped("Gobo 2 LSB", "Gobo", 1) + Grouped("Gobo 3", "Gobo")
		+ Preset("Dimmer fine", "IntensityDimmerFine")
		+ MakeMode({"Pan", "Pan fine", "Tilt fine", "Tilt", "Colour macro", "Colour temperature", "Zoom", "Zoom, fine (LSB)",
			"Gobo 1 MSB", "Gobo 1 LSB", "Gobo 2 LSB", "Gobo 3", "Dimmer fine"})));
	const std::vector<FImportFunction>& Functions = Mapped.Mode().Functions;
	ASSERT_EQ(Functions.size(), 9u);
	EXPECT_EQ(Functions[0].Attribute, "Pan");
	EXPECT_EQ(Functions[0].NumChannels, 2);
	EXPECT_FALSE(Functions[0].bUseLSB);
	EXPECT_EQ(Functions[0].DefaultValue, 128 * 256 + 7);
	EXPECT_EQ(Functions[1].Name, "Tilt");
	EXPECT_EQ(Functions[1].NumChannels, 2);
	EXPECT_TRUE(Functions[1].bUseLSB);

	// A fine group byte must call itself fine, and numbers in the names must agree.
	EXPECT_EQ(Functions[2].Attribute, "Color");
	EXPECT_EQ(Functions[2].Description, "0-127: Open; 128-255: Strobe");
	EXPECT_EQ(Functions[3].Attribute, "ColorFine");
	EXPECT_TRUE(Mapped.Noted("fine channel 'Colour temperature' and 'Colour macro' do not read as one 16-bit value"));
	EXPECT_EQ(Functions[4].Attribute, "Zoom");
	EXPECT_EQ(Functions[4].NumChannels, 2);
	EXPECT_EQ(Functions[5].Name, "Gobo 1 MSB");
	EXPECT_EQ(Functions[5].NumChannels, 2);
	EXPECT_EQ(Functions[6].Attribute, "GoboFine");
	EXPECT_EQ(Functions[7].Attribute, "Gobo2");
	EXPECT_EQ(Functions[7].NumChannels, 1);
	EXPECT_EQ(Functions[8].Attribute, "DimmerFine");
	EXPECT_TRUE(Mapped.Noted("fine channel 'Dimmer fine' has no coarse Dimmer channel beside it; kept as the 8-bit function DimmerFine"));
}

TEST(FImportMappingTest, AttributesAndNamesAreUniqueWithinAMode)
{
	const FMapped Mapped = Map(MakeDefinition(Preset("Red", "IntensityRed") + Preset("RED", "IntensityRed") + Grouped("red", "Shutter")
		+ Grouped("Spare", "None") + MakeMode({"Red", "RED", "red", "Spare"}) + MakeMode({"Red"})));
	const std::vector<FImportFunction>& Functions = Mapped.Mode().Functions;
	ASSERT_EQ(Functions.size(), 4u);
	EXPECT_EQ(Functions[0].Attribute, "Red");
	EXPECT_EQ(Functions[1].Attribute, "Red2");
	EXPECT_EQ(Functions[1].Name, "RED 2");
	EXPECT_EQ(Functions[2].Name, "red 3");
	EXPECT_EQ(Functions[3].Attribute, "NoFunction") << "the engine reads a None attribute as no name";
	EXPECT_EQ(Mapped.Mode(0).Name, "Main");
	EXPECT_EQ(Mapped.Mode(1).Name, "Main 2");
	EXPECT_EQ(Mapped.FixtureType.Name, "Acme Spot 1");
	EXPECT_EQ(Mapped.FixtureType.Category, "Moving Head");
	EXPECT_EQ(Mapped.FixtureType.LibraryPath, "/Game/DMX/Acme");
}

TEST(FImportMappingTest, IdenticalContiguousHeadsBecomeTheMatrix)
{
	const std::string Channels = Preset("Master", "IntensityMasterDimmer") + Preset("R1", "IntensityRed") + Preset("R1 fine", "IntensityRedFine")
		+ Preset("G1", "IntensityGreen") + Preset("R2", "IntensityRed") + Preset("R2 fine", "IntensityRedFine") + Preset("G2", "IntensityGreen")
		+ Grouped("Strobe", "Shutter");
	const std::vector<std::string> Order = {"Master", "R1", "R1 fine", "G1", "R2", "R2 fine", "G2", "Strobe"};
	const FMapped Mapped = Map(MakeDefinition(Channels + MakeMode(Order, {{3, 1, 2}, {4, 5, 6}}), "<Layout Width=\"1\" Height=\"2\"/>"));
	ASSERT_TRUE(Mapped.Mode().Matrix.has_value()) << (Mapped.Notes.empty() ? "" : Mapped.Notes[0]);
	const FImportMatrix& Matrix = *Mapped.Mode().Matrix;
	EXPECT_EQ(Matrix.FirstCellChannel, 2);
	EXPECT_EQ(Matrix.XCells, 1);
	EXPECT_EQ(Matrix.YCells, 2);
	ASSERT_EQ(Matrix.CellAttributes.size(), 2u);
	EXPECT_EQ(Matrix.CellAttributes[0].Attribute, "Red");
	EXPECT_EQ(Matrix.CellAttributes[0].NumChannels, 2);
	EXPECT_EQ(Matrix.CellAttributes[1].Attribute, "Green");
	ASSERT_EQ(Mapped.Mode().Functions.size(), 2u);
	EXPECT_EQ(Mapped.Mode().Functions[1].Name, "Strobe");
	EXPECT_EQ(Mapped.Mode().ChannelCount, 8);

	const std::vector<std::pair<std::vector<std::vector<int>>, std::string>> Refused = {
		{{{1, 2, 3}}, "it has a single head"},
		{{{1, 2, 3}, {4, 5, 7}}, "the channels of head 2 are not next to each other"},
		{{{4, 5, 6}, {1, 2, 3}}, "the heads are not in channel order"},
		{{{1, 2}, {4, 5}}, "channels between head 1 and head 2 belong to no head"},
		{{{1, 2, 3}, {3, 4, 5}}, "heads 1 and 2 share channel 3"},
		{{{1, 2, 3}, {4, 5, 6, 7}}, "head 2 has 3 functions, head 1 has 2"},
		{{{1, 2, 3}, {4, 5, 9}}, "head 2 names channel 9, which the mode does not have"},
		{{{0, 1, 2, 3}, {4, 5, 6, 7}}, "'R2' of head 2 differs from 'Master' of head 1"},
	};
	for (const auto& [Heads, Reason] : Refused)
	{
		const FMapped Kept = Map(MakeDefinition(Channels + MakeMode(Order, Heads)));
		EXPECT_FALSE(Kept.Mode().Matrix.has_value()) << Reason;
		EXPECT_TRUE(Kept.Noted("mode 'Main': heads kept as separate functions: " + Reason)) << Reason << "\n" << (Kept.Notes.empty() ? "" : Kept.Notes.back());
		EXPECT_EQ(Kept.Mode().Functions.size(), 6u) << Reason;
	}
}

TEST(FImportMappingTest, PanAndTiltGetThePhysicalRangeWithTheirDefaultKept)
{
	const std::string Channels = Preset("Pan", "PositionPan", " Default=\"128\"") + Preset("Pan fine", "PositionPanFine") + Preset("Tilt", "PositionTilt", " Default=\"255\"");
	const std::string WithModePhysical = " <Mode Name=\"Wide\"><Channel Number=\"0\">Tilt</Channel><Physical><Focus PanMax=\"0\" TiltMax=\"300\"/></Physical></Mode>\n";
	const FMapped Mapped = Map(MakeDefinition(Channels + Grouped("Pan control", "Pan") + MakeMode({"Pan", "Pan fine", "Tilt", "Pan control"}) + WithModePhysical,
		"<Focus PanMax=\"540\" TiltMax=\"270\"/>"));
	const FImportFunction& Pan = Mapped.Mode().Functions.at(0);
	ASSERT_TRUE(Pan.PhysicalRange.has_value());
	EXPECT_EQ(Pan.PhysicalRange->To, 540.0);
	EXPECT_EQ(static_cast<int64>(Pan.PhysicalRange->NormalizedDefault * 65535.0), 128 * 256);
	const FImportFunction& Tilt = Mapped.Mode().Functions.at(1);
	ASSERT_TRUE(Tilt.PhysicalRange.has_value());
	EXPECT_EQ(Tilt.PhysicalRange->To, 270.0);
	EXPECT_EQ(Tilt.PhysicalRange->NormalizedDefault, 1.0);
	EXPECT_EQ(Mapped.Mode().Functions.at(2).Attribute, "Pan2");
	EXPECT_FALSE(Mapped.Mode().Functions.at(2).PhysicalRange.has_value());
	ASSERT_TRUE(Mapped.Mode(1).Functions.at(0).PhysicalRange.has_value());
	EXPECT_EQ(Mapped.Mode(1).Functions.at(0).PhysicalRange->To, 300.0);

	const FMapped Still = Map(MakeDefinition(Channels + MakeMode({"Pan"}), "<Focus PanMax=\"0\"/>"));
	EXPECT_FALSE(Still.Mode().Functions.at(0).PhysicalRange.has_value());
}

TEST(FImportMappingTest, LibraryPathsAreValidPackageNamesAndNamesAreSettledBeforeAdding)
{
	EXPECT_EQ(MakeManufacturerLibraryPath("American DJ"), "/Game/DMX/American_DJ");
	EXPECT_EQ(MakeManufacturerLibraryPath("Clay.Paky"), "/Game/DMX/Clay_Paky");
	EXPECT_EQ(MakeManufacturerLibraryPath("  Rock & Roll! / Co. "), "/Game/DMX/Rock_Roll_Co");
	EXPECT_EQ(MakeManufacturerLibraryPath("Flash-Butrym"), "/Game/DMX/Flash-Butrym");
	EXPECT_EQ(MakeManufacturerLibraryPath("?!"), "/Game/DMX/Fixtures");

	std::string Problem;
	EXPECT_TRUE(IsValidImportLibraryPath("/Game/DMX/Rig_2", Problem));
	for (const char* Path : {"/Game/", "/Engine/DMX/Rig", "/Game/DMX//Rig", "/Game/DMX/Rig/", "/Game/DMX/My Rig", "/Game/DMX/Rig.Rig", "Game/DMX"})
	{
		EXPECT_FALSE(IsValidImportLibraryPath(Path, Problem)) << Path;
	}

	std::vector<FImportFixtureType> Types(4);
	Types[0].Name = Types[1].Name = "Acme Spot";
	Types[2].Name = "ACME SPOT";
	Types[3].Name = "Acme Spot";
	Types[0].LibraryPath = Types[1].LibraryPath = Types[2].LibraryPath = "/Game/DMX/Acme";
	Types[3].LibraryPath = "/Game/DMX/Other";
	std::vector<FImportNote> Notes;
	SettleFixtureTypeNames(Types, [](const std::string& Path)
	{
		return Path == "/Game/DMX/Acme" ? std::vector<std::string>{"acme spot 2"} : std::vector<std::string>{};
	}, Notes);
	EXPECT_EQ(Types[0].Name, "Acme Spot");
	EXPECT_EQ(Types[1].Name, "Acme Spot 3");
	EXPECT_EQ(Types[2].Name, "ACME SPOT 4");
	EXPECT_EQ(Types[3].Name, "Acme Spot");
	ASSERT_EQ(Notes.size(), 2u);
	EXPECT_EQ(Notes[0].Text, "named 'Acme Spot 3': /Game/DMX/Acme already has a fixture type 'Acme Spot'");
}
