// dmx_library(path):info() on engine values that scripts cannot author: stored distributions and
// signal formats outside the enumerations, 64-bit defaults, an embedded NUL, and a patch made
// without the creation helper. Also a mode table applied over such stored values.
#include <gtest/gtest.h>

#include "KestSessionTest.h"
#include "UObject/UObjectGlobals.h"
#include "library/DMXFixtureModeParams.h"

using FLibraryInfoTest = FKestSessionTest;

TEST_F(FLibraryInfoTest, ReportsValuesScriptsCannotAuthor)
{
	Run("assert(editor.create_library('/Game/DMX/Raw'))");
	UDMXLibrary* Library = LoadObject<UDMXLibrary>(nullptr, TEXT("/Game/DMX/Raw.Raw"));
	ASSERT_NE(Library, nullptr);
	// Each mode stores the distribution of its number (16 and 200 lie outside the enumeration), its
	// function the signal format of that number.
	FDMXEntityFixtureTypeConstructionParams Params;
	Params.ParentDMXLibrary = Library;
	for (const int32 Value : {0, 1, 2, 3, 4, 5, 6, 14, 15, 16, 200, 255})
	{
		Params.Modes.AddDefaulted();
		Params.Modes.Last().ModeName = FString::FromInt(Value);
		Params.Modes.Last().FixtureMatrixConfig.PixelMappingDistribution = static_cast<EDMXPixelMappingDistribution>(Value);
		Params.Modes.Last().Functions.AddDefaulted();
		Params.Modes.Last().Functions[0].DataType = static_cast<EDMXFixtureSignalFormat>(Value);
	}
	Params.Modes[0].Functions[0].DefaultValue = 4294967295LL;
	Params.Modes[1].Functions[0].DefaultValue = -2147483649LL;
	FDMXFixtureCellAttribute& Cell = Params.Modes[0].FixtureMatrixConfig.CellAttributes[0];
	Cell.DataType = static_cast<EDMXFixtureSignalFormat>(9);
	Cell.DefaultValue = -5;
	Cell.Description = TEXT("cut");
	Cell.Description.AppendChar(TEXT('\0'));
	Cell.Description += TEXT("here");
	ASSERT_NE(UDMXEntityFixtureType::CreateFixtureTypeInLibrary(Params, TEXT("Odd")), nullptr);
	UDMXEntityFixturePatch* Patch = NewObject<UDMXEntityFixturePatch>(Library, UDMXEntityFixturePatch::StaticClass(), NAME_None, RF_Transactional);
	Patch->SetName(TEXT("Bare"));
	Patch->CustomTags = {FName(TEXT("One")), FName(TEXT("")), FName(TEXT("Light_1"))};

	Run(R"(
		local distributions = {[0] = "TopLeftToRight", "TopLeftToBottom", "TopLeftToClockwise", "TopLeftToAntiClockwise", "TopRightToLeft",
			"BottomLeftToTop", [14] = "BottomRightToClockwise"}
		local formats = {[0] = "E8Bit", "E16Bit", "E24Bit", "E32Bit"}
		local info = dmx_library("/Game/DMX/Raw"):info()
		local modes = info.fixture_types[1].modes
		assert(#modes == 12)
		for _, mode in ipairs(modes) do
			local stored, f = tonumber(mode.name), mode.functions[1]
			assert(mode.matrix_distribution == (distributions[stored] or "TopLeftToRight"), mode.name .. ": " .. mode.matrix_distribution)
			assert(f.data_type == (formats[stored] or "E8Bit"), mode.name .. ": " .. f.data_type)
			-- Counted in a byte: 255 + 1 wraps to 0.
			assert(f.num_channels == (stored + 1) % 256, mode.name .. ": " .. f.num_channels .. " channels")
		end
		assert(modes[1].functions[1].default_value == -1 and modes[2].functions[1].default_value == 2147483647)
		local cell = modes[1].cell_attributes[1]
		assert(cell.data_type == "E8Bit" and cell.num_channels == 10 and cell.default_value == -5 and cell.description == "cut")

		assert(info.entity_count == 2 and info.fixture_type_count == 1 and info.fixture_patch_count == 1)
		local p = info.fixture_patches[1]
		assert(p.name == "Bare" and p.fixture_type == "" and p.mvr_fixture_uuid == string.rep("0", 32), p.mvr_fixture_uuid)
		assert(p.fixture_id == 0 and p.starting_channel == 0 and p.channel_span == 0 and p.ending_channel == -1)
		assert(p.valid == false and p.validity_reason == "Fixture Type is null")
		assert(p.editor_color_r == 1.0 and p.editor_color_g == 0.0 and math.type(p.editor_color_g) == "float")
		assert(p.tag_count == 3 and p.tags[1] == "One" and p.tags[2] == "None" and p.tags[3] == "Light_1")
		assert(next(p.attribute_defaults) == nil and next(p.attribute_signal_formats) == nil and next(p.default_raw_channels) == nil)
	)");
}

TEST_F(FLibraryInfoTest, AModeTablePullsStoredValuesIntoRangeAndKeepsWhatItCannotName)
{
	Run("assert(editor.create_library('/Game/DMX/Stored'))");
	FDMXEntityFixtureTypeConstructionParams Params;
	Params.ParentDMXLibrary = LoadObject<UDMXLibrary>(nullptr, TEXT("/Game/DMX/Stored.Stored"));
	FDMXFixtureMode& Stored = Params.Modes.AddDefaulted_GetRef();
	Stored.ModeName = TEXT("Raw");
	Stored.bAutoChannelSpan = false;
	Stored.ChannelSpan = 900;
	Stored.bFixtureMatrixEnabled = true;
	Stored.FixtureMatrixConfig.XCells = 0;
	Stored.FixtureMatrixConfig.YCells = 600;
	Stored.FixtureMatrixConfig.FirstCellChannel = -3;
	Stored.FixtureMatrixConfig.PixelMappingDistribution = EDMXPixelMappingDistribution::TopRightToAntiClockwise;
	UDMXEntityFixtureType* FixtureType = UDMXEntityFixtureType::CreateFixtureTypeInLibrary(Params, TEXT("Stored"));
	ASSERT_NE(FixtureType, nullptr);

	sol::state Lua;
	// No type, or no mode at the index: nothing happens.
	const sol::table Renaming = Lua.script("return {name = 'Other', channel_span = 4}");
	ApplyFixtureModeParams(nullptr, 0, Renaming);
	ApplyFixtureModeParams(FixtureType, -1, Renaming);
	ApplyFixtureModeParams(FixtureType, 1, Renaming);
	ASSERT_EQ(FixtureType->Modes.Num(), 1);
	EXPECT_EQ(FixtureType->Modes[0].ModeName, TEXT("Raw"));
	EXPECT_EQ(FixtureType->Modes[0].ChannelSpan, 900);

	// Absent keys keep the stored values, clamped; "TopLeftToRight" is no name a script may choose.
	ApplyFixtureModeParams(FixtureType, 0, Lua.script("return {matrix = {distribution = 'TopLeftToRight'}}"));
	const FDMXFixtureMode& Mode = FixtureType->Modes[0];
	EXPECT_EQ(Mode.ModeName, TEXT("Raw"));
	EXPECT_EQ(Mode.ChannelSpan, 512);
	EXPECT_TRUE(Mode.bFixtureMatrixEnabled);
	EXPECT_EQ(Mode.FixtureMatrixConfig.XCells, 1);
	EXPECT_EQ(Mode.FixtureMatrixConfig.YCells, 512);
	EXPECT_EQ(Mode.FixtureMatrixConfig.FirstCellChannel, 1);
	EXPECT_EQ(Mode.FixtureMatrixConfig.PixelMappingDistribution, EDMXPixelMappingDistribution::TopRightToAntiClockwise);
}
