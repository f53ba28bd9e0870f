// The fixture definitions of Debian's qlcplus-data (test data, installed by scripts/install-deps.sh)
// imported and run in the headless editor: no file fails, no add raises, every mode's channel_span
// in info() is the definition's channel count and the engine holds what the import meant; three
// fixtures checked by hand come out exactly.
#include "KestSessionTest.h"

#include <algorithm>
#include <cstdlib>
#include <filesystem>
#include <map>
#include <set>
#include <sstream>
#include "FixtureImport.h"
#include "KestDMXText.h"
#include "LibraryReport.h"
#include "Library/DMXEntityFixtureType.h"
#include "Library/DMXLibrary.h"

namespace
{
	std::string GetCorpusFolder()
	{
		const char* Folder = std::getenv("KESTDMX_FIXTURE_DEFINITIONS");
		return Folder != nullptr ? Folder : "/usr/share/qlcplus/fixtures";
	}

#if defined(__SANITIZE_ADDRESS__)
	constexpr bool bSanitized = true;
#elif defined(__has_feature)
	constexpr bool bSanitized = __has_feature(address_sanitizer);
#else
	constexpr bool bSanitized = false;
#endif
	// The sanitizer build imports every fourth manufacturer's folder, which keeps its run short.
	constexpr size_t FolderStride = bSanitized ? 4 : 1;

	std::vector<std::string> GetCorpusPaths()
	{
		std::vector<std::string> Folders;
		for (const std::filesystem::directory_entry& Entry : std::filesystem::directory_iterator(GetCorpusFolder()))
		{
			if (Entry.is_directory())
			{
				Folders.push_back(Entry.path().string());
			}
		}
		std::sort(Folders.begin(), Folders.end());
		std::vector<std::string> Paths;
		for (size_t Index = 0; Index < Folders.size(); Index += FolderStride)
		{
			Paths.push_back(Folders[Index]);
		}
		return Paths;
	}

	std::string GetString(const sol::table& Table, const char* Key)
	{
		return Table.get<std::string>(Key);
	}

	// One line per function and one for the matrix: how a mode reads back from the engine.
	std::string DescribeMode(const FDMXFixtureMode& Mode)
	{
		std::ostringstream Out;
		Out << "span " << Mode.ChannelSpan << "\n";
		if (Mode.bFixtureMatrixEnabled)
		{
			const FDMXFixtureMatrix& Matrix = Mode.FixtureMatrixConfig;
			Out << "matrix " << Matrix.XCells << "x" << Matrix.YCells << " at " << Matrix.FirstCellChannel << ":";
			for (const FDMXFixtureCellAttribute& CellAttribute : Matrix.CellAttributes)
			{
				Out << " " << ToUTF8(CellAttribute.Attribute.Name.ToString()) << "/" << 8 * (static_cast<int32>(CellAttribute.DataType) + 1);
			}
			Out << "\n";
		}
		for (const FDMXFixtureFunction& Function : Mode.Functions)
		{
			Out << Function.Channel << " " << ToUTF8(Function.FunctionName) << " = " << ToUTF8(Function.Attribute.Name.ToString())
				<< "/" << 8 * (static_cast<int32>(Function.DataType) + 1) << (Function.bUseLSBMode ? " LSB" : "") << " default " << Function.DefaultValue;
			if (Function.GetPhysicalFrom() != 0.0 || Function.GetPhysicalTo() != 1.0)
			{
				Out << " range " << Function.GetPhysicalFrom() << ".." << Function.GetPhysicalTo();
			}
			Out << "\n";
		}
		return Out.str();
	}
}

class FImportCorpusTest : public FKestSessionTest
{
protected:
	void SetUp() override
	{
		ASSERT_TRUE(std::filesystem::is_directory(GetCorpusFolder())) << GetCorpusFolder() << " is missing: scripts/install-deps.sh installs qlcplus-data";
		FKestSessionTest::SetUp();
	}

	// Imports the definitions into fresh libraries and runs the script.
	FImportResult Import(const std::vector<std::string>& Paths)
	{
		FImportResult Result = ImportFixtureDefinitions(Paths);
		SettleFixtureTypeNames(Result.FixtureTypes, nullptr, Result.Notes);
		std::set<std::string> Libraries;
		for (const FImportFixtureType& FixtureType : Result.FixtureTypes)
		{
			if (Libraries.insert(FixtureType.LibraryPath).second)
			{
				Run("assert(editor.create_library('" + FixtureType.LibraryPath + "'))");
			}
		}
		Run(WriteFixtureImportScript(Result.FixtureTypes));
		return Result;
	}

	const FDMXFixtureMode& FindMode(const std::string& LibraryPath, const TCHAR* TypeName, const TCHAR* ModeName)
	{
		UDMXLibrary* Library = LoadLibraryForReport(LibraryPath);
		check(Library != nullptr);
		for (UDMXEntity* Entity : Library->GetEntities())
		{
			UDMXEntityFixtureType* FixtureType = Cast<UDMXEntityFixtureType>(Entity);
			if (FixtureType != nullptr && FixtureType->Name == TypeName)
			{
				const FDMXFixtureMode* Mode = FixtureType->Modes.FindByPredicate([ModeName](const FDMXFixtureMode& Candidate) { return Candidate.ModeName == ModeName; });
				if (Mode != nullptr)
				{
					return *Mode;
				}
			}
		}
		ADD_FAILURE() << "no fixture type " << ToUTF8(TypeName);
		static const FDMXFixtureMode NoMode;
		return NoMode;
	}
};

TEST_F(FImportCorpusTest, EveryDefinitionImportsAndEveryModeSpansTheChannelsItStates)
{
	const FImportResult Result = Import(GetCorpusPaths());
	EXPECT_TRUE(Result.Failures.empty()) << Result.Failures.front();
	ASSERT_GE(Result.FixtureTypes.size(), bSanitized ? 250u : 1300u);

	// Read back through info(), one library at a time, and compare with what the import meant.
	sol::state& Lua = Session->GetLua().GetState();
	std::set<std::string> ReadLibraries;
	std::map<std::string, sol::table> InfoTypes;
	std::vector<std::string> Mismatches;
	size_t ModeCount = 0;
	for (const FImportFixtureType& FixtureType : Result.FixtureTypes)
	{
		if (ReadLibraries.insert(FixtureType.LibraryPath).second)
		{
			sol::table Handle = Lua["dmx_library"](FixtureType.LibraryPath);
			sol::table Info = Handle["info"](Handle);
			for (const auto& [Key, Value] : Info.get<sol::table>("fixture_types"))
			{
				const sol::table Type = Value.as<sol::table>();
				InfoTypes.emplace(FixtureType.LibraryPath + "\n" + GetString(Type, "name"), Type);
			}
		}
		const sol::table Type = InfoTypes.at(FixtureType.LibraryPath + "\n" + FixtureType.Name);
		const std::string Where = FixtureType.SourceFile + ": ";
		if (Type.get<size_t>("mode_count") != FixtureType.Modes.size())
		{
			Mismatches.push_back(Where + "mode count");
			continue;
		}
		for (size_t ModeIndex = 0; ModeIndex < FixtureType.Modes.size(); ++ModeIndex, ++ModeCount)
		{
			const FImportMode& Mode = FixtureType.Modes[ModeIndex];
			const sol::table InfoMode = Type["modes"][ModeIndex + 1];
			const std::string ModeWhere = Where + "mode " + Mode.Name + ": ";
			if (InfoMode.get<int32>("channel_span") != Mode.ChannelCount)
			{
				Mismatches.push_back(ModeWhere + "span " + std::to_string(InfoMode.get<int32>("channel_span")) + ", channels " + std::to_string(Mode.ChannelCount));
			}
			if (GetString(InfoMode, "name") != Mode.Name || InfoMode.get<size_t>("function_count") != Mode.Functions.size() || InfoMode.get<bool>("matrix_enabled") != Mode.Matrix.has_value())
			{
				Mismatches.push_back(ModeWhere + "name, function count or matrix");
				continue;
			}
			for (size_t Index = 0; Index < Mode.Functions.size(); ++Index)
			{
				const FImportFunction& Function = Mode.Functions[Index];
				const sol::table InfoFunction = InfoMode["functions"][Index + 1];
				if (GetString(InfoFunction, "attribute") != Function.Attribute || GetString(InfoFunction, "name") != Function.Name
					|| GetString(InfoFunction, "description") != Function.Description || InfoFunction.get<int64>("default_value") != Function.DefaultValue
					|| InfoFunction.get<int32>("num_channels") != Function.NumChannels || InfoFunction.get<bool>("use_lsb") != Function.bUseLSB)
				{
					Mismatches.push_back(ModeWhere + "function " + Function.Name);
				}
			}
			if (Mode.Matrix && (InfoMode.get<int32>("matrix_first_cell_channel") != Mode.Matrix->FirstCellChannel
				|| InfoMode.get<int32>("matrix_x_cells") * InfoMode.get<int32>("matrix_y_cells") != Mode.Matrix->XCells * Mode.Matrix->YCells
				|| InfoMode.get<size_t>("cell_attribute_count") != Mode.Matrix->CellAttributes.size()))
			{
				Mismatches.push_back(ModeWhere + "matrix");
			}
		}
	}
	EXPECT_TRUE(Mismatches.empty()) << Mismatches.size() << " mismatches, the first: " << Mismatches.front();
	EXPECT_GE(ModeCount, Result.FixtureTypes.size());
}

TEST_F(FImportCorpusTest, AMovingHeadWithSixteenBitPanAndTilt)
{
	Import({GetCorpusFolder() + "/Robe/Robe-Robin-Spikie.qxf"});
	EXPECT_EQ(DescribeMode(FindMode("/Game/DMX/Robe", TEXT("Robe Robin Spikie"), TEXT("Standard 16-bit (RGB)"))),
		"span 27\n"
		"1 Pan (8 bit) = Pan/16 default 32768 range 0..540\n"
		"3 Tilt (8 bit) = Tilt/16 default 32768 range 0..360\n"
		"5 Pan Control = Pan2/8 default 0\n"
		"6 Tilt control = Tilt2/8 default 0\n"
		"7 Pan/Tilt speed, Pan/Til time = PanTiltSpeed/8 default 0\n"
		"8 Power/Special functions = Maintenance/8 default 0\n"
		"9 Virtual colour wheel = Color/8 default 0\n"
		"10 Red (8 bit) = Red/16 default 0\n"
		"12 Green (8 bit) = Green/16 default 0\n"
		"14 Blue (8 bit) = Blue/16 default 0\n"
		"16 White (8 bit) = White/16 default 0\n"
		"18 CTC = CTC/8 default 0\n"
		"19 Colour Mix control = Color2/8 default 0\n"
		"20 Rotating Prism = Prism/8 default 0\n"
		"21 Flower Effect = Effect/8 default 0\n"
		"22 Flower Effect & Rotating prism macros = Effect2/8 default 0\n"
		"23 Zoom = Zoom/16 default 0\n"
		"25 Shutter/Strobe = Shutter/8 default 32\n"
		"26 Dimmer intensity (8 bit) = Dimmer/16 default 0\n");
}

TEST_F(FImportCorpusTest, AnLEDBarWithHeads)
{
	Import({GetCorpusFolder() + "/American_DJ/American-DJ-Mega-Bar-LED.qxf"});
	EXPECT_EQ(DescribeMode(FindMode("/Game/DMX/American_DJ", TEXT("American DJ Mega Bar LED"), TEXT("11 Channels"))),
		"span 11\n"
		"matrix 3x1 at 1: Red/8 Green/8 Blue/8\n"
		"10 Strobe Speed = Shutter/8 default 0\n"
		"11 Dimmer Control = Dimmer/8 default 0\n");
}

TEST_F(FImportCorpusTest, APixelPanel)
{
	Import({GetCorpusFolder() + "/American_DJ/American-DJ-Dotz-Matrix.qxf"});
	EXPECT_EQ(DescribeMode(FindMode("/Game/DMX/American_DJ", TEXT("American DJ Dotz Matrix"), TEXT("48 Channel"))),
		"span 48\n"
		"matrix 4x4 at 1: Red/8 Green/8 Blue/8\n");
	EXPECT_EQ(DescribeMode(FindMode("/Game/DMX/American_DJ", TEXT("American DJ Dotz Matrix"), TEXT("52 Channel"))),
		"span 52\n"
		"matrix 4x4 at 1: Red/8 Green/8 Blue/8\n"
		"49 Colour Macros & Programs = Effect/8 default 0\n"
		"50 Master Dimmer/Program Speed = Dimmer/8 default 0\n"
		"51 Strobing = Shutter/8 default 0\n"
		"52 Dimmer Curves = Maintenance/8 default 0\n");
}
