// Import scripts run in the headless editor: what the engine stores is what the definition says
// (spans, 16-bit functions, defaults under a physical range, matrices, texts of any bytes), and a
// script that cannot add everything adds nothing.
#include "KestSessionTest.h"

#include "FixtureImport.h"
#include "LibraryReport.h"
#include "Library/DMXEntityFixtureType.h"
#include "Library/DMXLibrary.h"

namespace
{
	const char* const MovingHeadAndBar = R"(<?xml version="1.0" encoding="UTF-8"?>
<FixtureDefinition>
 <Manufacturer>Acme &amp; "Sons"</Manufacturer>
 <Model>Beam\Bar
2</Model>
 <Type>LED Bar (Pixels)</Type>
 <Channel Name="Pan" Preset="PositionPan" Default="128"/>
 <Channel Name="Pan fine" Preset="PositionPanFine"/>
 <Channel Name="Tilt fine" Preset="PositionTiltFine" Default="1"/>
 <Channel Name="Tilt" Preset="PositionTilt" Default="200"/>
 <Channel Name="Red" Preset="IntensityRed" Default="3"/>
 <Channel Name="Green" Preset="IntensityGreen"/>
 <Channel Name="Shutter"><Group Byte="0">Shutter</Group><Capability Min="0" Max="9">Closed "shut"</Capability><Capability Min="10" Max="255">Open	wide</Capability></Channel>
 <Mode Name="Move">
  <Channel Number="0">Pan</Channel><Channel Number="1">Pan fine</Channel><Channel Number="2">Tilt fine</Channel><Channel Number="3">Tilt</Channel>
 </Mode>
 <Mode Name="Pixels">
  <Channel Number="0">Shutter</Channel>
  <Channel Number="1">Red</Channel><Channel Number="2">Green</Channel><Channel Number="3">Red</Channel><Channel Number="4">Green</Channel>
  <Channel Number="5">Red</Channel><Channel Number="6">Green</Channel>
  <Channel Number="7">Pan</Channel>
  <Head><Channel>1</Channel><Channel>2</Channel></Head><Head><Channel>3</Channel><Channel>4</Channel></Head><Head><Channel>5</Channel><Channel>6</Channel></Head>
 </Mode>
 <Mode Name="Off"/>
 <Physical><Focus PanMax="540" TiltMax="270"/></Physical>
</FixtureDefinition>
)";

	std::vector<FImportFixtureType> MapTexts(const std::vector<std::string>& Texts)
	{
		std::vector<FImportFixtureType> Types;
		std::vector<FImportNote> Notes;
		for (const std::string& Text : Texts)
		{
			FFixtureDefinition Definition;
			Definition.File = "acme.qxf";
			std::string Error;
			EXPECT_TRUE(ParseFixtureDefinition(Text, Definition, Error)) << Error;
			Types.push_back(MapFixtureDefinition(Definition, Notes));
		}
		SettleFixtureTypeNames(Types, nullptr, Notes);
		return Types;
	}

	const FDMXFixtureFunction& FindFunction(const FDMXFixtureMode& Mode, const TCHAR* Name)
	{
		const FDMXFixtureFunction* Found = Mode.Functions.FindByPredicate([Name](const FDMXFixtureFunction& Function) { return Function.FunctionName == Name; });
		check(Found != nullptr);
		return *Found;
	}
}

class FImportScriptTest : public FKestSessionTest
{
protected:
	UDMXEntityFixtureType* ImportOne(const std::string& Text)
	{
		const std::vector<FImportFixtureType> Types = MapTexts({Text});
		Run("assert(editor.create_library('" + Types[0].LibraryPath + "'))");
		Run(WriteFixtureImportScript(Types));
		UDMXLibrary* Library = LoadLibraryForReport(Types[0].LibraryPath);
		return Library && Library->GetEntities().Num() == 1 ? Cast<UDMXEntityFixtureType>(Library->GetEntities()[0]) : nullptr;
	}
};

TEST_F(FImportScriptTest, TheEngineStoresWhatTheDefinitionSays)
{
	UDMXEntityFixtureType* FixtureType = ImportOne(MovingHeadAndBar);
	ASSERT_NE(FixtureType, nullptr);
	EXPECT_TRUE(FixtureType->Name.Equals(FString(TEXT("Acme & \"Sons\" Beam\\Bar\n2"))));
	EXPECT_EQ(FixtureType->DMXCategory.Name, FName(TEXT("Matrix/Pixel Bar")));
	ASSERT_EQ(FixtureType->Modes.Num(), 3);

	const FDMXFixtureMode& Move = FixtureType->Modes[0];
	EXPECT_EQ(Move.ChannelSpan, 4);
	const FDMXFixtureFunction& Pan = FindFunction(Move, TEXT("Pan"));
	EXPECT_EQ(Pan.DataType, EDMXFixtureSignalFormat::E16Bit);
	EXPECT_FALSE(Pan.bUseLSBMode);
	EXPECT_EQ(Pan.DefaultValue, 128 * 256);
	EXPECT_EQ(Pan.GetPhysicalTo(), 540.0);
	EXPECT_NEAR(Pan.GetPhysicalDefaultValue(), 270.0, 0.01);
	const FDMXFixtureFunction& Tilt = FindFunction(Move, TEXT("Tilt"));
	EXPECT_EQ(Tilt.Channel, 3);
	EXPECT_TRUE(Tilt.bUseLSBMode);
	EXPECT_EQ(Tilt.DefaultValue, 200 * 256 + 1);
	EXPECT_EQ(Tilt.GetPhysicalTo(), 270.0);

	// Shutter, three RGB cells, then a pan channel after the matrix.
	const FDMXFixtureMode& Pixels = FixtureType->Modes[1];
	EXPECT_EQ(Pixels.ChannelSpan, 8);
	EXPECT_TRUE(Pixels.bFixtureMatrixEnabled);
	EXPECT_EQ(Pixels.FixtureMatrixConfig.FirstCellChannel, 2);
	EXPECT_EQ(Pixels.FixtureMatrixConfig.XCells, 3);
	ASSERT_EQ(Pixels.FixtureMatrixConfig.CellAttributes.Num(), 2);
	EXPECT_EQ(Pixels.FixtureMatrixConfig.CellAttributes[0].DefaultValue, 3);
	const FDMXFixtureFunction& Shutter = FindFunction(Pixels, TEXT("Shutter"));
	EXPECT_EQ(Shutter.Description, FString(TEXT("0-9: Closed \"shut\"; 10-255: Open\twide")));
	EXPECT_EQ(FindFunction(Pixels, TEXT("Pan")).Channel, 8);
	EXPECT_EQ(FindFunction(Pixels, TEXT("Pan")).DefaultValue, 128);

	// A mode without channels spans none, although the engine's span counts a disabled matrix's cell.
	EXPECT_EQ(FixtureType->Modes[2].ChannelSpan, 0);
}

TEST_F(FImportScriptTest, AScriptThatCannotAddEverythingAddsNothing)
{
	const std::string Script = WriteFixtureImportScript(MapTexts({MovingHeadAndBar}));
	std::string Error;
	EXPECT_FALSE(Session->RunScript(Script, "import", Error));
	EXPECT_NE(Error.find("there is no DMX Library at /Game/DMX/Acme_Sons; create it first"), std::string::npos) << Error;

	Run("assert(editor.create_library('/Game/DMX/Acme_Sons'))");
	Run("assert(dmx_library('/Game/DMX/Acme_Sons'):add('fixture_type', {name = 'ACME & \"SONS\" BEAM\\\\BAR\\n2'}))");
	const int32 StepsBefore = UndoableSteps();
	EXPECT_FALSE(Session->RunScript(Script, "import", Error));
	EXPECT_NE(Error.find("already has a fixture type named"), std::string::npos) << Error;
	EXPECT_EQ(UndoableSteps(), StepsBefore);
	EXPECT_EQ(LoadLibraryForReport("/Game/DMX/Acme_Sons")->GetEntities().Num(), 1);
}

TEST_F(FImportScriptTest, AModeBeyondAUniverseKeepsAllItsChannels)
{
	// 256 16-bit dimmers, then two heads of two 8-bit channels and four more.
	std::string Text = "<FixtureDefinition><Manufacturer>Acme</Manufacturer><Model>Wall</Model><Channel Name=\"D\" Preset=\"IntensityDimmer\"/>"
		"<Channel Name=\"D fine\" Preset=\"IntensityDimmerFine\"/><Mode Name=\"All\">";
	for (int32 Number = 0; Number < 520; ++Number)
	{
		Text += "<Channel Number=\"" + std::to_string(Number) + (Number % 2 == 0 || Number >= 512 ? "\">D</Channel>" : "\">D fine</Channel>");
	}
	Text += "<Head><Channel>512</Channel><Channel>513</Channel></Head><Head><Channel>514</Channel><Channel>515</Channel></Head></Mode></FixtureDefinition>";
	FFixtureDefinition Definition;
	std::string Error;
	ASSERT_TRUE(ParseFixtureDefinition(Text, Definition, Error)) << Error;
	std::vector<FImportNote> Notes;
	MapFixtureDefinition(Definition, Notes);
	ASSERT_EQ(Notes.size(), 2u);
	EXPECT_EQ(Notes[0].Text, "mode 'All': heads kept as separate functions: the heads start at channel 513, past channel 512 where a matrix must start");
	EXPECT_EQ(Notes[1].Text, "mode 'All': it has 520 channels, more than the 512 of a universe; imported as it is, but no patch of it fits a universe");

	UDMXEntityFixtureType* FixtureType = ImportOne(Text);
	ASSERT_NE(FixtureType, nullptr);
	EXPECT_EQ(FixtureType->Modes[0].ChannelSpan, 520);
	EXPECT_EQ(FixtureType->Modes[0].Functions.Num(), 256 + 8);
	EXPECT_EQ(FixtureType->Modes[0].Functions.Last().Channel, 520);
}
