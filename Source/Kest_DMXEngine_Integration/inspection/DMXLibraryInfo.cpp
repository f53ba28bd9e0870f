#include "inspection/DMXLibraryInfo.h"

#include "Library/DMXEntity.h"
#include "Library/DMXEntityFixturePatch.h"
#include "Library/DMXEntityFixtureType.h"
#include "Library/DMXLibrary.h"
#include "inspection/DMXEnumText.h"
#include "inspection/DMXFixturePatchInfo.h"
#include "inspection/DMXInfoText.h"

namespace
{
	// Channels taken by one value of the signal format, counted in a byte as the engine does.
	int32 GetSignalFormatChannelCount(EDMXFixtureSignalFormat SignalFormat)
	{
		return static_cast<uint8>(static_cast<uint8>(SignalFormat) + 1);
	}

	sol::table BuildFunctionTable(sol::state_view& Lua, const FDMXFixtureFunction& Function)
	{
		sol::table Info = Lua.create_table(0, 9);
		SetTextField(Info, "name", Function.FunctionName);
		SetTextField(Info, "attribute", Function.Attribute.Name.ToString());
		SetTextField(Info, "description", Function.Description);
		Info.set("default_value", static_cast<int32>(Function.DefaultValue));
		Info.set("channel", Function.Channel);
		Info.set("last_channel", Function.GetLastChannel());
		Info.set("data_type", SignalFormatToText(Function.DataType));
		Info.set("num_channels", GetSignalFormatChannelCount(Function.DataType));
		Info.set("use_lsb", Function.bUseLSBMode);
		return Info;
	}

	sol::table BuildCellAttributeTable(sol::state_view& Lua, const FDMXFixtureCellAttribute& CellAttribute)
	{
		sol::table Info = Lua.create_table(0, 6);
		SetTextField(Info, "attribute", CellAttribute.Attribute.Name.ToString());
		SetTextField(Info, "description", CellAttribute.Description);
		Info.set("default_value", static_cast<int32>(CellAttribute.DefaultValue));
		Info.set("data_type", SignalFormatToText(CellAttribute.DataType));
		Info.set("num_channels", GetSignalFormatChannelCount(CellAttribute.DataType));
		Info.set("use_lsb", CellAttribute.bUseLSBMode);
		return Info;
	}

	sol::table BuildModeTable(sol::state_view& Lua, const FDMXFixtureMode& Mode, int32 ModeIndex)
	{
		const FDMXFixtureMatrix& Matrix = Mode.FixtureMatrixConfig;
		sol::table Info = Lua.create_table(0, 15);
		Info.set("index", ModeIndex);
		SetTextField(Info, "name", Mode.ModeName);
		Info.set("function_count", Mode.Functions.Num());
		Info.set("auto_channel_span", Mode.bAutoChannelSpan);
		Info.set("channel_span", Mode.ChannelSpan);
		Info.set("matrix_enabled", Mode.bFixtureMatrixEnabled);
		Info.set("matrix_x_cells", Matrix.XCells);
		Info.set("matrix_y_cells", Matrix.YCells);
		Info.set("matrix_first_cell_channel", Matrix.FirstCellChannel);
		Info.set("matrix_num_channels", Matrix.GetNumChannels());
		Info.set("matrix_last_channel", Matrix.GetLastChannel());
		Info.set("matrix_distribution", PixelMappingDistributionToText(Matrix.PixelMappingDistribution));

		sol::table Functions = Lua.create_table(Mode.Functions.Num(), 0);
		for (int32 FunctionIndex = 0; FunctionIndex < Mode.Functions.Num(); ++FunctionIndex)
		{
			Functions.set(FunctionIndex + 1, BuildFunctionTable(Lua, Mode.Functions[FunctionIndex]));
		}
		Info.set("functions", Functions);

		sol::table CellAttributes = Lua.create_table(Matrix.CellAttributes.Num(), 0);
		for (int32 CellAttributeIndex = 0; CellAttributeIndex < Matrix.CellAttributes.Num(); ++CellAttributeIndex)
		{
			CellAttributes.set(CellAttributeIndex + 1, BuildCellAttributeTable(Lua, Matrix.CellAttributes[CellAttributeIndex]));
		}
		Info.set("cell_attributes", CellAttributes);
		Info.set("cell_attribute_count", Matrix.CellAttributes.Num());
		return Info;
	}

	sol::table BuildFixtureTypeTable(sol::state_view& Lua, const UDMXEntityFixtureType* FixtureType)
	{
		const TArray<FDMXFixtureMode>& Modes = FixtureType->Modes;
		sol::table Info = Lua.create_table(0, 4);
		SetTextField(Info, "name", FixtureType->Name);
		SetTextField(Info, "category", FixtureType->DMXCategory.Name.ToString());
		Info.set("mode_count", Modes.Num());

		sol::table ModeList = Lua.create_table(Modes.Num(), 0);
		for (int32 ModeIndex = 0; ModeIndex < Modes.Num(); ++ModeIndex)
		{
			ModeList.set(ModeIndex + 1, BuildModeTable(Lua, Modes[ModeIndex], ModeIndex));
		}
		Info.set("modes", ModeList);
		return Info;
	}
}

sol::object BuildLibraryInfoTable(sol::this_state S, UDMXLibrary* Library)
{
	sol::state_view Lua(S);
	sol::table Info = Lua.create_table(0, 7);
	Info.set("valid", Library != nullptr);
	if (!Library)
	{
		return Info;
	}

	SetTextField(Info, "path", Library->GetPathName());
	const TArray<UDMXEntity*>& Entities = Library->GetEntities();
	Info.set("entity_count", Entities.Num());

	TArray<const UDMXEntityFixtureType*> FixtureTypes;
	TArray<const UDMXEntityFixturePatch*> FixturePatches;
	for (const UDMXEntity* Entity : Entities)
	{
		if (const UDMXEntityFixtureType* FixtureType = Cast<UDMXEntityFixtureType>(Entity))
		{
			FixtureTypes.Add(FixtureType);
		}
		else if (const UDMXEntityFixturePatch* FixturePatch = Cast<UDMXEntityFixturePatch>(Entity))
		{
			FixturePatches.Add(FixturePatch);
		}
	}
	Info.set("fixture_type_count", FixtureTypes.Num());
	Info.set("fixture_patch_count", FixturePatches.Num());

	sol::table FixtureTypeList = Lua.create_table(FixtureTypes.Num(), 0);
	int32 FixtureTypeIndex = 1;
	for (const UDMXEntityFixtureType* FixtureType : FixtureTypes)
	{
		FixtureTypeList.set(FixtureTypeIndex++, BuildFixtureTypeTable(Lua, FixtureType));
	}
	Info.set("fixture_types", FixtureTypeList);

	sol::table FixturePatchList = Lua.create_table(FixturePatches.Num(), 0);
	int32 FixturePatchIndex = 1;
	for (const UDMXEntityFixturePatch* FixturePatch : FixturePatches)
	{
		FixturePatchList.set(FixturePatchIndex++, BuildFixturePatchInfoTable(S, FixturePatch));
	}
	Info.set("fixture_patches", FixturePatchList);
	return Info;
}
