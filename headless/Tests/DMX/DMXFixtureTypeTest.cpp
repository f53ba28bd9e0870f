// Fixture types: the default matrix, creation and removal, and the mode, function and matrix helpers.
#include "DMXTestUtils.h"

using namespace DMXRuntimeTests;

using EFormat = EDMXFixtureSignalFormat;

class DMXRuntimeFixtureType : public FDMXTestBase
{
protected:
	// A type whose first mode holds Dimmer (8 bit, channel 1) and Pan (16 bit, channels 2-3).
	UDMXEntityFixtureType* CreateDimmerPanType()
	{
		return CreateFixtureType(TEXT("Spot"), {MakeFunction(TEXT("Dimmer"), 1), MakeFunction(TEXT("Pan"), 2, EFormat::E16Bit)});
	}
};

TEST_F(DMXRuntimeFixtureType, DefaultMatrixHasOneRedCell)
{
	// One "Red" 8 bit cell, nothing else.
	const FDMXFixtureMatrix Matrix;
	ASSERT_EQ(Matrix.CellAttributes.Num(), 1);
	EXPECT_TRUE(Matrix.CellAttributes[0].Attribute.Name.ToString().Equals(TEXT("Red")));
	EXPECT_EQ(Matrix.CellAttributes[0].DataType, EFormat::E8Bit);
	EXPECT_EQ(Matrix.GetNumChannels(), 1);

	FDMXFixtureMatrix Empty;
	Empty.CellAttributes.Reset();
	Empty.FirstCellChannel = 5;
	EXPECT_EQ(Empty.GetLastChannel(), 4);
	Empty.XCells = 0;
	EXPECT_EQ(Empty.GetLastChannel(), 5);
}

TEST_F(DMXRuntimeFixtureType, CreateCopiesParamsVerbatimAndAppendsToTheLibrary)
{
	FDMXEntityFixtureTypeConstructionParams Params;
	Params.ParentDMXLibrary = Library;
	Params.DMXCategory = FDMXFixtureCategory(FName(TEXT("Moving Head")));
	FDMXFixtureMode Mode;
	Mode.ModeName = TEXT("Mode");
	Mode.Functions.Add(MakeFunction(TEXT("Dimmer"), 7));
	Mode.Functions.Add(MakeFunction(TEXT("Dimmer"), 7));
	Params.Modes = {Mode, Mode};

	UDMXEntityFixtureType* FixtureType = UDMXEntityFixtureType::CreateFixtureTypeInLibrary(Params, TEXT("Head"));
	ASSERT_NE(FixtureType, nullptr);
	EXPECT_EQ(FixtureType->GetParentLibrary(), Library);
	EXPECT_TRUE(FixtureType->DMXCategory.Name.ToString().Equals(TEXT("Moving Head")));
	// No alignment, no span update, no name uniquing.
	ASSERT_EQ(FixtureType->Modes.Num(), 2);
	EXPECT_TRUE(FixtureType->Modes[1].ModeName.Equals(TEXT("Mode")));
	EXPECT_EQ(GetChannels(FixtureType->Modes[0]), (TArray<int32>{7, 7}));
	EXPECT_EQ(FixtureType->Modes[0].ChannelSpan, 0);
	EXPECT_EQ(Library->GetEntities().Last(), FixtureType);
	EXPECT_EQ(UDMXEntityFixtureType::CreateFixtureTypeInLibrary(FDMXEntityFixtureTypeConstructionParams()), nullptr);
}

TEST_F(DMXRuntimeFixtureType, ModeHelpersNameUniquelyAndLeaveTheSpan)
{
	UDMXEntityFixtureType* FixtureType = CreateFixtureType(TEXT("Spot"));
	EXPECT_EQ(FixtureType->AddMode(), 1);
	EXPECT_EQ(FixtureType->AddMode(), 2);
	EXPECT_TRUE(FixtureType->Modes[1].ModeName.Equals(TEXT("Mode_1")));
	EXPECT_TRUE(FixtureType->Modes[2].ModeName.Equals(TEXT("Mode_2")));
	EXPECT_EQ(FixtureType->Modes[2].ChannelSpan, 0);

	FString Unique;
	FixtureType->SetModeName(1, TEXT("Mode_1"), Unique);
	EXPECT_TRUE(Unique.Equals(TEXT("Mode_1")));
	FixtureType->SetModeName(1, TEXT("MODE"), Unique);
	EXPECT_TRUE(Unique.Equals(TEXT("MODE_1")));
	EXPECT_TRUE(FixtureType->Modes[1].ModeName.Equals(TEXT("MODE_1")));
	FixtureType->SetModeName(2, TEXT(""), Unique);
	EXPECT_TRUE(Unique.Equals(TEXT("Default name_1")));

}

TEST_F(DMXRuntimeFixtureType, MatrixEnableMovesChannelsWithoutAddingAnything)
{
	UDMXEntityFixtureType* FixtureType = CreateDimmerPanType();
	FDMXFixtureMode& Mode = FixtureType->Modes[0];

	FixtureType->SetFixtureMatrixEnabled(0, true);
	EXPECT_EQ(Mode.FixtureMatrixConfig.FirstCellChannel, 1);
	EXPECT_EQ(GetChannels(Mode), (TArray<int32>{2, 3}));
	EXPECT_EQ(Mode.ChannelSpan, 4);
	EXPECT_EQ(Mode.FixtureMatrixConfig.CellAttributes.Num(), 1);

	FixtureType->SetFixtureMatrixEnabled(0, false);
	EXPECT_EQ(GetChannels(Mode), (TArray<int32>{1, 2}));
	EXPECT_EQ(Mode.ChannelSpan, 3);
	EXPECT_EQ(Mode.FixtureMatrixConfig.FirstCellChannel, 1);

	// Setting the current state does nothing, not even alignment.
	Mode.Functions[1].Channel = 40;
	FixtureType->SetFixtureMatrixEnabled(0, false);
	EXPECT_EQ(Mode.Functions[1].Channel, 40);
}

TEST_F(DMXRuntimeFixtureType, AlignFunctionChannelsLeavesAMatrixBehindTheFunctionsInPlace)
{
	UDMXEntityFixtureType* FixtureType = CreateFixtureType(TEXT("Bar"), {MakeFunction(TEXT("Dimmer"), 3), MakeFunction(TEXT("Strobe"), 9)});
	FDMXFixtureMode& Mode = FixtureType->Modes[0];
	Mode.bFixtureMatrixEnabled = true;
	Mode.FixtureMatrixConfig.FirstCellChannel = 20;

	FixtureType->AlignFunctionChannels(0);
	EXPECT_EQ(GetChannels(Mode), (TArray<int32>{1, 2}));
	EXPECT_EQ(Mode.FixtureMatrixConfig.FirstCellChannel, 20);

	// A matrix at or before a function's old channel is placed in front of it.
	Mode.Functions[1].Channel = 25;
	FixtureType->AlignFunctionChannels(0);
	EXPECT_EQ(GetChannels(Mode), (TArray<int32>{1, 3}));
	EXPECT_EQ(Mode.FixtureMatrixConfig.FirstCellChannel, 2);
}

TEST_F(DMXRuntimeFixtureType, UpdateChannelSpanCountsTheMatrixEvenWhenDisabled)
{
	UDMXEntityFixtureType* FixtureType = CreateFixtureType(TEXT("Empty"));
	FDMXFixtureMode& Mode = FixtureType->Modes[0];
	FixtureType->UpdateChannelSpan(0);
	EXPECT_EQ(Mode.ChannelSpan, 1);

	// Disabled 2x2 RGB matrix at 1 plus a dimmer at 1.
	Mode.FixtureMatrixConfig.XCells = 2;
	Mode.FixtureMatrixConfig.YCells = 2;
	Mode.FixtureMatrixConfig.CellAttributes.Add(FDMXFixtureCellAttribute());
	Mode.FixtureMatrixConfig.CellAttributes.Add(FDMXFixtureCellAttribute());
	Mode.Functions.Add(MakeFunction(TEXT("Dimmer"), 1));
	FixtureType->UpdateChannelSpan(0);
	EXPECT_EQ(Mode.ChannelSpan, 12);

	// Measured from the lowest channel, here the matrix's.
	Mode.FixtureMatrixConfig = FDMXFixtureMatrix();
	Mode.Functions[0] = MakeFunction(TEXT("Pan"), 5, EFormat::E16Bit);
	FixtureType->UpdateChannelSpan(0);
	EXPECT_EQ(Mode.ChannelSpan, 6);

	Mode.Functions.Reset();
	Mode.FixtureMatrixConfig.CellAttributes.Reset();
	FixtureType->UpdateChannelSpan(0);
	EXPECT_EQ(Mode.ChannelSpan, 0);

	// A manual span is kept.
	Mode.bAutoChannelSpan = false;
	Mode.ChannelSpan = 600;
	FixtureType->UpdateChannelSpan(0);
	EXPECT_EQ(Mode.ChannelSpan, 600);
}

TEST_F(DMXRuntimeFixtureType, InsertFunctionInTheMiddleShiftsLaterFunctionsAndTheMatrix)
{
	UDMXEntityFixtureType* FixtureType = CreateFixtureType(TEXT("Spot"), {MakeFunction(TEXT("Dimmer"), 1), MakeFunction(TEXT("Pan"), 4)});
	FDMXFixtureMode& Mode = FixtureType->Modes[0];
	Mode.bFixtureMatrixEnabled = true;
	Mode.FixtureMatrixConfig.FirstCellChannel = 5;

	FDMXFixtureFunction NewFunction = MakeFunction(TEXT("Dimmer"), 300);
	EXPECT_EQ(FixtureType->InsertFunction(0, 1, NewFunction), 1);
	EXPECT_TRUE(NewFunction.FunctionName.Equals(TEXT("Dimmer_1")));
	EXPECT_EQ(NewFunction.Channel, INT32_MAX);

	// The new function takes the displaced channel; the gap before Pan is kept.
	ASSERT_EQ(Mode.Functions.Num(), 3);
	EXPECT_TRUE(Mode.Functions[1].FunctionName.Equals(TEXT("Dimmer_1")));
	EXPECT_EQ(GetChannels(Mode), (TArray<int32>{1, 4, 5}));
	// An 8 bit insert moves a matrix at or after the insert point.
	EXPECT_EQ(Mode.FixtureMatrixConfig.FirstCellChannel, 6);
	EXPECT_EQ(Mode.ChannelSpan, 6);
}

TEST_F(DMXRuntimeFixtureType, InsertingAWideFunctionLeavesTheMatrixWhereItWas)
{
	UDMXEntityFixtureType* FixtureType = CreateFixtureType(TEXT("Spot"), {MakeFunction(TEXT("Dimmer"), 1), MakeFunction(TEXT("Shutter"), 2)});
	FDMXFixtureMode& Mode = FixtureType->Modes[0];
	Mode.bFixtureMatrixEnabled = true;
	Mode.FixtureMatrixConfig.FirstCellChannel = 3;

	FDMXFixtureFunction Tilt = MakeFunction(TEXT("Tilt"), 1, EFormat::E16Bit);
	EXPECT_EQ(FixtureType->InsertFunction(0, 0, Tilt), 0);
	EXPECT_EQ(GetChannels(Mode), (TArray<int32>{1, 3, 4}));
	EXPECT_EQ(Mode.FixtureMatrixConfig.FirstCellChannel, 3);
}

TEST_F(DMXRuntimeFixtureType, InsertFunctionAtAnInvalidIndexAppendsAfterFunctionsAndEnabledMatrix)
{
	UDMXEntityFixtureType* FixtureType = CreateFixtureType(TEXT("Spot"), {MakeFunction(TEXT("Dimmer"), 1)});
	FDMXFixtureMode& Mode = FixtureType->Modes[0];

	FDMXFixtureFunction Unnamed = MakeFunction(TEXT("Pan"), 99, EFormat::E16Bit);
	Unnamed.FunctionName.Reset();
	EXPECT_EQ(FixtureType->InsertFunction(0, -1, Unnamed), 1);
	EXPECT_TRUE(Unnamed.FunctionName.Equals(TEXT("Default name_1")));
	EXPECT_EQ(Unnamed.Channel, 2);
	EXPECT_EQ(Mode.ChannelSpan, 3);

	Mode.bFixtureMatrixEnabled = true;
	Mode.FixtureMatrixConfig.FirstCellChannel = 10;
	FDMXFixtureFunction Tilt = MakeFunction(TEXT("Tilt"), 1);
	EXPECT_EQ(FixtureType->InsertFunction(0, 7, Tilt), 2);
	EXPECT_EQ(Tilt.Channel, 11);
	EXPECT_EQ(Mode.Functions[2].Channel, 11);

	FDMXFixtureFunction Lost = MakeFunction(TEXT("Lost"), 1);
	EXPECT_EQ(FixtureType->InsertFunction(5, 0, Lost), INDEX_NONE);
	EXPECT_TRUE(Lost.FunctionName.Equals(TEXT("Lost")));
}

TEST_F(DMXRuntimeFixtureType, AddReorderAndRemoveFunctionsKeepChannelsConsecutive)
{
	UDMXEntityFixtureType* FixtureType = CreateDimmerPanType();
	FDMXFixtureMode& Mode = FixtureType->Modes[0];

	EXPECT_EQ(FixtureType->AddFunction(0), 2);
	EXPECT_EQ(FixtureType->AddFunction(0), 3);
	EXPECT_TRUE(Mode.Functions[2].FunctionName.Equals(TEXT("Function")));
	EXPECT_TRUE(Mode.Functions[3].FunctionName.Equals(TEXT("Function_1")));
	EXPECT_EQ(GetChannels(Mode), (TArray<int32>{1, 2, 4, 5}));
	EXPECT_EQ(Mode.ChannelSpan, 5);

	// Pan (2 channels) moved to the end ends where the last function ended.
	FixtureType->ReorderFunction(0, 1, 3);
	EXPECT_TRUE(Mode.Functions[3].FunctionName.Equals(TEXT("Pan")));
	EXPECT_EQ(GetChannels(Mode), (TArray<int32>{1, 2, 3, 4}));

	FixtureType->RemoveFunctions(0, {0, 2});
	ASSERT_EQ(Mode.Functions.Num(), 2);
	EXPECT_TRUE(Mode.Functions[0].FunctionName.Equals(TEXT("Function")));
	EXPECT_EQ(GetChannels(Mode), (TArray<int32>{1, 2}));
	EXPECT_EQ(Mode.ChannelSpan, 3);
}

TEST_F(DMXRuntimeFixtureType, PhysicalDefaultValueClampsAndRewritesTheDefaultValue)
{
	FDMXFixtureFunction Function;
	Function.SetPhysicalValueRange(0.0, 100.0);
	Function.SetPhysicalDefaultValue(50.0);
	EXPECT_EQ(Function.DefaultValue, 127);
	Function.SetPhysicalDefaultValue(150.0);
	EXPECT_EQ(Function.GetPhysicalDefaultValue(), 100.0);
	EXPECT_EQ(Function.DefaultValue, 255);

	FDMXFixtureFunction Inverted;
	Inverted.SetPhysicalValueRange(100.0, 0.0);
	Inverted.SetPhysicalDefaultValue(25.0);
	EXPECT_EQ(Inverted.DefaultValue, 191);

	FDMXFixtureFunction Wide;
	Wide.DataType = EFormat::E16Bit;
	Wide.SetPhysicalValueRange(0.0, 100.0);
	Wide.SetPhysicalDefaultValue(50.0);
	EXPECT_EQ(Wide.DefaultValue, 32767);
	Wide.DataType = EFormat::E32Bit;
	Wide.SetPhysicalDefaultValue(100.0);
	EXPECT_EQ(Wide.DefaultValue, 4294967295LL);
}

TEST_F(DMXRuntimeFixtureType, PhysicalRangeKeepsThePhysicalPositionNotTheDefaultValue)
{
	FDMXFixtureFunction Function;
	Function.DefaultValue = 255;
	Function.SetPhysicalValueRange(0.0, 100.0);
	EXPECT_EQ(Function.DefaultValue, 0);

	Function.SetPhysicalDefaultValue(75.0);
	Function.SetPhysicalValueRange(0.0, 1000.0);
	EXPECT_DOUBLE_EQ(Function.GetPhysicalDefaultValue(), 750.0);
	EXPECT_EQ(Function.DefaultValue, 191);

	Function.SetPhysicalValueRange(5.0, 5.0);
	EXPECT_EQ(Function.GetPhysicalDefaultValue(), 5.0);
	EXPECT_EQ(Function.DefaultValue, 0);

	FDMXFixtureFunction Derived;
	Derived.SetPhysicalValueRange(0.0, 100.0);
	Derived.DefaultValue = 127;
	Derived.UpdatePhysicalDefaultValue();
	EXPECT_NEAR(Derived.GetPhysicalDefaultValue(), 49.8, 1e-9);
	EXPECT_EQ(Derived.DefaultValue, 127);
}

TEST_F(DMXRuntimeFixtureType, RemovingATypeKeepsItsPatchesAndUndoRestoresEverything)
{
	UDMXEntityFixtureType* FixtureType = CreateFixtureType(TEXT("Spot"), {MakeFunction(TEXT("Dimmer"), 1)});
	FixtureType->Modes[FixtureType->AddMode()].Functions.Add(MakeFunction(TEXT("Pan"), 1, EFormat::E16Bit));
	UDMXEntityFixturePatch* Patch = CreatePatch(FixtureType, TEXT("Spot1"), 1, 1);
	ASSERT_EQ(Patch->GetActiveModeIndex(), 1);
	ASSERT_EQ(Patch->GetChannelSpan(), 2);
	const FGuid TypeId = FixtureType->GetID();

	FDMXTestTransaction Transaction;
	UDMXEntityFixtureType::RemoveFixtureTypeFromLibrary(FixtureType);
	Transaction.Close();

	EXPECT_EQ(Patch->GetFixtureType(), nullptr);
	EXPECT_EQ(Patch->GetActiveModeIndex(), 1);
	EXPECT_EQ(Patch->GetChannelSpan(), 0);
	EXPECT_EQ(Library->GetEntities().Num(), 1);
	EXPECT_EQ(Library->GetEntities()[0], Patch);
	EXPECT_FALSE(FixtureType->GetID().IsValid());
	EXPECT_EQ(FixtureType->GetParentLibrary(), nullptr);
	EXPECT_TRUE(FixtureType->Name.Equals(TEXT("Destroyed_Entity")));
	EXPECT_TRUE(Transaction.Contains(Patch));

	Transaction.Apply(true);
	EXPECT_EQ(Library->GetEntities().Num(), 2);
	EXPECT_EQ(Library->GetEntities()[0], FixtureType);
	EXPECT_TRUE(FixtureType->Name.Equals(TEXT("Spot")));
	EXPECT_EQ(FixtureType->GetID(), TypeId);
	EXPECT_EQ(FixtureType->GetParentLibrary(), Library);
	EXPECT_EQ(Patch->GetFixtureType(), FixtureType);
	// The restored patch rebuilt its cache.
	EXPECT_EQ(Patch->GetChannelSpan(), 2);
}

TEST_F(DMXRuntimeFixtureType, FixtureTypesAreAlwaysValidEntities)
{
	UDMXEntityFixtureType* FixtureType = CreateFixtureType(TEXT("Empty"));
	FixtureType->Modes.Reset();
	FText Reason = FText::FromString(TEXT("kept"));
	EXPECT_TRUE(FixtureType->IsValidEntity(Reason));
	EXPECT_TRUE(Reason.ToString().Equals(TEXT("kept")));
}
