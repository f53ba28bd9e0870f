// dmx_library(path):info() on engine values that scripts cannot author: every stored distribution
// and signal format, 64-bit defaults, an embedded NUL, and a patch made without the creation helper.
#include <gtest/gtest.h>

#include "KestDMXRunner.h"
#include "Library/DMXEntityFixturePatch.h"
#include "Library/DMXEntityFixtureType.h"
#include "Library/DMXLibrary.h"
#include "UObject/UObjectGlobals.h"

namespace
{
	UDMXLibrary* CreateLibrary(FKestDMXSession& Session)
	{
		std::string Error;
		EXPECT_TRUE(Session.RunScript("assert(editor.create_library('/Game/DMX/Raw'))", "setup", Error)) << Error;
		return LoadObject<UDMXLibrary>(nullptr, TEXT("/Game/DMX/Raw.Raw"));
	}

	void ExpectScriptPasses(FKestDMXSession& Session, const std::string& Code)
	{
		std::string Error;
		EXPECT_TRUE(Session.RunScript(Code, "LibraryInfoTest", Error)) << Error;
	}

	TEST(LibraryInfoTest, ReportsStoredEnumerationValuesAndWideDefaults)
	{
		FKestDMXSession Session;
		UDMXLibrary* Library = CreateLibrary(Session);
		ASSERT_NE(Library, nullptr);

		// Mode i stores distribution i (16 and 200 lie outside the enumeration); its function i
		// stores signal format i.
		FDMXEntityFixtureTypeConstructionParams Params;
		Params.ParentDMXLibrary = Library;
		for (const int32 Value : {0, 1, 2, 3, 4, 5, 6, 7, 8, 9, 10, 11, 12, 13, 14, 15, 16, 200, 255})
		{
			FDMXFixtureMode Mode;
			Mode.ModeName = FString::FromInt(Value);
			Mode.FixtureMatrixConfig.PixelMappingDistribution = static_cast<EDMXPixelMappingDistribution>(Value);
			FDMXFixtureFunction Function;
			Function.DataType = static_cast<EDMXFixtureSignalFormat>(Value);
			Mode.Functions.Add(Function);
			Params.Modes.Add(Mode);
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

		ExpectScriptPasses(Session, R"(
			local distributions = { [0] = "TopLeftToRight", "TopLeftToBottom", "TopLeftToClockwise", "TopLeftToAntiClockwise",
				"TopRightToLeft", "BottomLeftToTop", [14] = "BottomRightToClockwise" }
			local formats = { [0] = "E8Bit", "E16Bit", "E24Bit", "E32Bit" }
			local modes = dmx_library("/Game/DMX/Raw"):info().fixture_types[1].modes
			assert(#modes == 19)
			for _, mode in ipairs(modes) do
				local stored = tonumber(mode.name)
				assert(mode.matrix_distribution == (distributions[stored] or "TopLeftToRight"), mode.name .. ": " .. mode.matrix_distribution)
				local f = mode.functions[1]
				assert(f.data_type == (formats[stored] or "E8Bit"), mode.name .. ": " .. f.data_type)
				-- Counted in a byte: 255 + 1 wraps to 0.
				assert(f.num_channels == (stored + 1) % 256, mode.name .. ": " .. f.num_channels .. " channels")
			end
			assert(modes[1].functions[1].default_value == -1 and modes[2].functions[1].default_value == 2147483647)
			local cell = modes[1].cell_attributes[1]
			assert(cell.data_type == "E8Bit" and cell.num_channels == 10 and cell.default_value == -5 and cell.description == "cut")
		)");
	}

	TEST(LibraryInfoTest, ReportsAPatchMadeWithoutTheCreationHelper)
	{
		FKestDMXSession Session;
		UDMXLibrary* Library = CreateLibrary(Session);
		ASSERT_NE(Library, nullptr);
		UDMXEntityFixturePatch* Patch = NewObject<UDMXEntityFixturePatch>(Library, UDMXEntityFixturePatch::StaticClass(), NAME_None, RF_Transactional);
		ASSERT_NE(Patch, nullptr);
		Patch->SetName(TEXT("Bare"));
		Patch->CustomTags = {FName(TEXT("One")), FName(TEXT("")), FName(TEXT("Light_1"))};

		ExpectScriptPasses(Session, R"(
			local info = dmx_library("/Game/DMX/Raw"):info()
			assert(info.entity_count == 1 and info.fixture_type_count == 0 and info.fixture_patch_count == 1)
			local p = info.fixture_patches[1]
			assert(p.name == "Bare" and p.fixture_type == "" and p.mvr_fixture_uuid == string.rep("0", 32), p.mvr_fixture_uuid)
			assert(p.fixture_id == 0 and p.starting_channel == 0 and p.channel_span == 0 and p.ending_channel == -1)
			assert(p.valid == false and p.validity_reason == "Fixture Type is null")
			assert(p.editor_color_r == 1.0 and p.editor_color_g == 0.0 and math.type(p.editor_color_g) == "float")
			assert(p.tag_count == 3 and p.tags[1] == "One" and p.tags[2] == "None" and p.tags[3] == "Light_1")
			assert(next(p.attribute_defaults) == nil and next(p.attribute_signal_formats) == nil and next(p.default_raw_channels) == nil)
		)");
	}
}
