#include "library/DMXFixtureModeParams.h"

#include "DMXAttribute.h"
#include "library/DMXParamsLists.h"
#include "module/DMXLuaParams.h"

namespace
{
	const int32 MaxDMXChannel = 512;

	// The mode is looked up afresh after every read of a script table: a metamethod run by the
	// read may have rebuilt the fixture type's modes in the meantime. Once the mode is gone, the
	// rest of its table has nothing to apply to.
	FDMXFixtureMode* FindMode(UDMXEntityFixtureType* FixtureType, int32 ModeIndex)
	{
		return FixtureType->Modes.IsValidIndex(ModeIndex) ? &FixtureType->Modes[ModeIndex] : nullptr;
	}

	bool HasMode(const UDMXEntityFixtureType* FixtureType, int32 ModeIndex)
	{
		return FixtureType->Modes.IsValidIndex(ModeIndex);
	}

	FDMXAttributeName MakeAttributeName(const FString& Text)
	{
		return FDMXAttributeName(FName(*Text));
	}

	// Script numbers for 64-bit default values go through 32 bits, as every other integer key does.
	int64 GetDefaultValueParam(sol::table& Params)
	{
		return static_cast<int64>(GetIntParam(Params, "default_value", 0, INT32_MIN, INT32_MAX));
	}

	FDMXFixtureFunction MakeFixtureFunction(sol::table& Params)
	{
		FDMXFixtureFunction Function;
		Function.Attribute = MakeAttributeName(GetStringParam(Params, "attribute", TEXT("")));
		Function.FunctionName = GetStringParam(Params, "name", TEXT("Function"));
		Function.Description = GetStringParam(Params, "description", TEXT(""));
		Function.DefaultValue = GetDefaultValueParam(Params);
		Function.Channel = GetIntParam(Params, "channel", 1, 1, MaxDMXChannel);
		Function.DataType = ParseSignalFormat(GetStringParam(Params, "data_type", TEXT("E8Bit")), Function.DataType);
		Function.bUseLSBMode = GetBoolParam(Params, "use_lsb", Function.bUseLSBMode);

		// The physical default is set before the range, so a range given as well rescales it.
		if (GetParamType(Params, "physical_default_value") == LUA_TNUMBER)
		{
			Function.SetPhysicalDefaultValue(GetNumberParam(Params, "physical_default_value", 0.0));
		}
		if (GetParamType(Params, "physical_from") == LUA_TNUMBER || GetParamType(Params, "physical_to") == LUA_TNUMBER)
		{
			const double PhysicalFrom = GetNumberParam(Params, "physical_from", 0.0);
			const double PhysicalTo = GetNumberParam(Params, "physical_to", 1.0);
			Function.SetPhysicalValueRange(PhysicalFrom, PhysicalTo);
		}
		return Function;
	}

	FDMXFixtureCellAttribute MakeCellAttribute(sol::table& Params)
	{
		FDMXFixtureCellAttribute CellAttribute;
		CellAttribute.Attribute = MakeAttributeName(GetStringParam(Params, "attribute", TEXT("")));
		CellAttribute.Description = GetStringParam(Params, "description", TEXT(""));
		CellAttribute.DefaultValue = GetDefaultValueParam(Params);
		CellAttribute.DataType = ParseSignalFormat(GetStringParam(Params, "data_type", TEXT("E8Bit")), CellAttribute.DataType);
		CellAttribute.bUseLSBMode = GetBoolParam(Params, "use_lsb", CellAttribute.bUseLSBMode);
		return CellAttribute;
	}

	void ApplyFunctionListParams(UDMXEntityFixtureType* FixtureType, int32 ModeIndex, const sol::object& FunctionList)
	{
		if (FDMXFixtureMode* Mode = FindMode(FixtureType, ModeIndex))
		{
			Mode->Functions.Reset();
		}
		int32 InsertAtIndex = 0;
		ForEachParamsListTable(FunctionList, [FixtureType, ModeIndex, &InsertAtIndex](sol::table FunctionParams)
		{
			FDMXFixtureFunction Function = MakeFixtureFunction(FunctionParams);
			if (HasMode(FixtureType, ModeIndex))
			{
				FixtureType->InsertFunction(ModeIndex, InsertAtIndex, Function);
				++InsertAtIndex;
			}
		});
		if (HasMode(FixtureType, ModeIndex))
		{
			FixtureType->AlignFunctionChannels(ModeIndex);
		}
	}

	// Reads one cell count or channel of the matrix (clamped to 1..512, the current value when the
	// key is not given) and writes it at once.
	void ApplyMatrixIntParam(UDMXEntityFixtureType* FixtureType, int32 ModeIndex, sol::table& MatrixParams, const char* Key, int32 FDMXFixtureMatrix::*Field)
	{
		const FDMXFixtureMode* Mode = FindMode(FixtureType, ModeIndex);
		if (Mode == nullptr)
		{
			return;
		}
		const int32 Value = GetIntParam(MatrixParams, Key, Mode->FixtureMatrixConfig.*Field, 1, MaxDMXChannel);
		if (FDMXFixtureMode* ModeToWrite = FindMode(FixtureType, ModeIndex))
		{
			ModeToWrite->FixtureMatrixConfig.*Field = Value;
		}
	}

	void ApplyMatrixParams(UDMXEntityFixtureType* FixtureType, int32 ModeIndex, sol::table MatrixParams)
	{
		const FDMXFixtureMode* Mode = FindMode(FixtureType, ModeIndex);
		if (Mode == nullptr)
		{
			return;
		}
		const bool bMatrixEnabled = GetBoolParam(MatrixParams, "enabled", Mode->bFixtureMatrixEnabled);

		ApplyMatrixIntParam(FixtureType, ModeIndex, MatrixParams, "x_cells", &FDMXFixtureMatrix::XCells);
		ApplyMatrixIntParam(FixtureType, ModeIndex, MatrixParams, "y_cells", &FDMXFixtureMatrix::YCells);
		ApplyMatrixIntParam(FixtureType, ModeIndex, MatrixParams, "first_cell_channel", &FDMXFixtureMatrix::FirstCellChannel);

		const FString DistributionText = GetStringParam(MatrixParams, "distribution", TEXT("TopLeftToRight"));
		if (FDMXFixtureMode* ModeToWrite = FindMode(FixtureType, ModeIndex))
		{
			FDMXFixtureMatrix& Matrix = ModeToWrite->FixtureMatrixConfig;
			Matrix.PixelMappingDistribution = ParsePixelMappingDistribution(DistributionText, Matrix.PixelMappingDistribution);
		}

		const sol::object CellAttributeList = GetNestedParam(MatrixParams, "cell_attributes");
		if (CellAttributeList.valid())
		{
			if (FDMXFixtureMode* ModeToWrite = FindMode(FixtureType, ModeIndex))
			{
				ModeToWrite->FixtureMatrixConfig.CellAttributes.Reset();
			}
			ForEachParamsListTable(CellAttributeList, [FixtureType, ModeIndex](sol::table CellAttributeParams)
			{
				const FDMXFixtureCellAttribute CellAttribute = MakeCellAttribute(CellAttributeParams);
				if (FDMXFixtureMode* ModeToWrite = FindMode(FixtureType, ModeIndex))
				{
					ModeToWrite->FixtureMatrixConfig.CellAttributes.Add(CellAttribute);
				}
			});
		}

		if (HasMode(FixtureType, ModeIndex))
		{
			FixtureType->SetFixtureMatrixEnabled(ModeIndex, bMatrixEnabled);
		}
	}
}

void ApplyFixtureModeParams(UDMXEntityFixtureType* FixtureType, int32 ModeIndex, sol::table ModeParams)
{
	if (FixtureType == nullptr || !FixtureType->Modes.IsValidIndex(ModeIndex))
	{
		return;
	}

	if (GetParamType(ModeParams, "name") == LUA_TSTRING)
	{
		const FString ModeName = GetStringParam(ModeParams, "name", TEXT(""));
		// The engine may settle on another name to keep the mode names unique; that is fine.
		FString UniqueModeName;
		if (HasMode(FixtureType, ModeIndex))
		{
			FixtureType->SetModeName(ModeIndex, ModeName, UniqueModeName);
		}
	}

	if (const FDMXFixtureMode* Mode = FindMode(FixtureType, ModeIndex))
	{
		const bool bAutoChannelSpan = GetBoolParam(ModeParams, "auto_channel_span", Mode->bAutoChannelSpan);
		if (FDMXFixtureMode* ModeToWrite = FindMode(FixtureType, ModeIndex))
		{
			ModeToWrite->bAutoChannelSpan = bAutoChannelSpan;
		}
	}
	if (const FDMXFixtureMode* Mode = FindMode(FixtureType, ModeIndex))
	{
		const int32 ChannelSpan = GetIntParam(ModeParams, "channel_span", Mode->ChannelSpan, 0, MaxDMXChannel);
		if (FDMXFixtureMode* ModeToWrite = FindMode(FixtureType, ModeIndex))
		{
			ModeToWrite->ChannelSpan = ChannelSpan;
		}
	}

	const sol::object FunctionList = GetNestedParam(ModeParams, "functions");
	if (FunctionList.valid())
	{
		ApplyFunctionListParams(FixtureType, ModeIndex, FunctionList);
	}

	const sol::object MatrixParams = GetNestedParam(ModeParams, "matrix");
	if (MatrixParams.valid())
	{
		ApplyMatrixParams(FixtureType, ModeIndex, MatrixParams.as<sol::table>());
	}

	if (HasMode(FixtureType, ModeIndex))
	{
		FixtureType->UpdateChannelSpan(ModeIndex);
	}
}

void ReplaceFixtureModes(UDMXEntityFixtureType* FixtureType, const sol::object& ModeList)
{
	if (FixtureType == nullptr)
	{
		return;
	}
	FixtureType->Modes.Reset();
	ForEachParamsListTable(ModeList, [FixtureType](sol::table ModeParams)
	{
		const int32 ModeIndex = FixtureType->AddMode(TEXT("Mode"));
		ApplyFixtureModeParams(FixtureType, ModeIndex, ModeParams);
	});
}

EDMXFixtureSignalFormat ParseSignalFormat(const FString& Text, EDMXFixtureSignalFormat Current)
{
	auto IsEither = [&Text](const TCHAR* Short, const TCHAR* Long)
	{
		return Text.Equals(Short, ESearchCase::IgnoreCase) || Text.Equals(Long, ESearchCase::IgnoreCase);
	};
	if (IsEither(TEXT("16bit"), TEXT("E16Bit")))
	{
		return EDMXFixtureSignalFormat::E16Bit;
	}
	if (IsEither(TEXT("24bit"), TEXT("E24Bit")))
	{
		return EDMXFixtureSignalFormat::E24Bit;
	}
	if (IsEither(TEXT("32bit"), TEXT("E32Bit")))
	{
		return EDMXFixtureSignalFormat::E32Bit;
	}
	if (IsEither(TEXT("8bit"), TEXT("E8Bit")))
	{
		return EDMXFixtureSignalFormat::E8Bit;
	}
	return Current;
}

EDMXPixelMappingDistribution ParsePixelMappingDistribution(const FString& Text, EDMXPixelMappingDistribution Current)
{
	auto Is = [&Text](const TCHAR* Name)
	{
		return Text.Equals(Name, ESearchCase::IgnoreCase);
	};
	if (Is(TEXT("TopLeftToBottom")))
	{
		return EDMXPixelMappingDistribution::TopLeftToBottom;
	}
	if (Is(TEXT("TopLeftToClockwise")))
	{
		return EDMXPixelMappingDistribution::TopLeftToClockwise;
	}
	if (Is(TEXT("TopLeftToAntiClockwise")))
	{
		return EDMXPixelMappingDistribution::TopLeftToAntiClockwise;
	}
	if (Is(TEXT("TopRightToLeft")))
	{
		return EDMXPixelMappingDistribution::TopRightToLeft;
	}
	if (Is(TEXT("BottomLeftToTop")))
	{
		return EDMXPixelMappingDistribution::BottomLeftToTop;
	}
	if (Is(TEXT("BottomRightToClockwise")))
	{
		return EDMXPixelMappingDistribution::BottomRightToClockwise;
	}
	// TopLeftToRight and the other names are not offered to scripts.
	return Current;
}
