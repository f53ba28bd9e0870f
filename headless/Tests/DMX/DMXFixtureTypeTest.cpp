// Fixture types: channel alignment, span, function insertion, physical values, removal and its undo.
#include "DMXTestUtils.h"
#include "Editor/TransBuffer.h"

using namespace DMXRuntimeTests;

using DMXRuntimeFixtureType = FDMXTestBase;

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
	EXPECT_EQ(Mode.ChannelSpan, 1);

	// Disabled 2x2 matrix of three cell attributes at 1, plus a dimmer at 1.
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
}

TEST_F(DMXRuntimeFixtureType, InsertFunctionInTheMiddleTakesTheDisplacedChannel)
{
	UDMXEntityFixtureType* FixtureType = CreateFixtureType(TEXT("Spot"), {MakeFunction(TEXT("Dimmer"), 1), MakeFunction(TEXT("Pan"), 4)});
	FDMXFixtureMode& Mode = FixtureType->Modes[0];
	Mode.bFixtureMatrixEnabled = true;
	Mode.FixtureMatrixConfig.FirstCellChannel = 5;

	FDMXFixtureFunction NewFunction = MakeFunction(TEXT("Dimmer"), 300);
	EXPECT_EQ(FixtureType->InsertFunction(0, 1, NewFunction), 1);
	EXPECT_TRUE(NewFunction.FunctionName.Equals(TEXT("Dimmer_1")));
	EXPECT_EQ(NewFunction.Channel, INT32_MAX);
	// The gap before Pan is kept; an 8 bit insert moves a matrix at or after the insert point.
	EXPECT_TRUE(Mode.Functions[1].FunctionName.Equals(TEXT("Dimmer_1")));
	EXPECT_EQ(GetChannels(Mode), (TArray<int32>{1, 4, 5}));
	EXPECT_EQ(Mode.FixtureMatrixConfig.FirstCellChannel, 6);
	EXPECT_EQ(Mode.ChannelSpan, 6);

	// A wider insert leaves the matrix where it was.
	UDMXEntityFixtureType* Wide = CreateFixtureType(TEXT("Wide"), {MakeFunction(TEXT("Dimmer"), 1), MakeFunction(TEXT("Shutter"), 2)});
	Wide->Modes[0].bFixtureMatrixEnabled = true;
	Wide->Modes[0].FixtureMatrixConfig.FirstCellChannel = 3;
	FDMXFixtureFunction Tilt = MakeFunction(TEXT("Tilt"), 1, EFormat::E16Bit);
	EXPECT_EQ(Wide->InsertFunction(0, 0, Tilt), 0);
	EXPECT_EQ(GetChannels(Wide->Modes[0]), (TArray<int32>{1, 3, 4}));
	EXPECT_EQ(Wide->Modes[0].FixtureMatrixConfig.FirstCellChannel, 3);
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
	EXPECT_EQ(Mode.Functions[2].Channel, 11);
}

TEST_F(DMXRuntimeFixtureType, PhysicalValuesRescaleTheDefaultValue)
{
	FDMXFixtureFunction Function;
	Function.DefaultValue = 255;
	Function.SetPhysicalValueRange(0.0, 100.0);
	EXPECT_EQ(Function.DefaultValue, 0);
	Function.SetPhysicalDefaultValue(50.0);
	EXPECT_EQ(Function.DefaultValue, 127);
	Function.SetPhysicalDefaultValue(150.0);
	EXPECT_EQ(Function.GetPhysicalDefaultValue(), 100.0);
	EXPECT_EQ(Function.DefaultValue, 255);

	// A new range keeps the physical position, not the default value.
	Function.SetPhysicalDefaultValue(75.0);
	Function.SetPhysicalValueRange(0.0, 1000.0);
	EXPECT_DOUBLE_EQ(Function.GetPhysicalDefaultValue(), 750.0);
	EXPECT_EQ(Function.DefaultValue, 191);

	FDMXFixtureFunction Inverted;
	Inverted.SetPhysicalValueRange(100.0, 0.0);
	Inverted.SetPhysicalDefaultValue(25.0);
	EXPECT_EQ(Inverted.DefaultValue, 191);

	FDMXFixtureFunction Wide;
	Wide.DataType = EFormat::E16Bit;
	Wide.SetPhysicalValueRange(0.0, 100.0);
	Wide.SetPhysicalDefaultValue(50.0);
	EXPECT_EQ(Wide.DefaultValue, 32767);
}

TEST_F(DMXRuntimeFixtureType, RemovingATypeKeepsItsPatchesAndUndoBringsBackOnlyTheType)
{
	UDMXEntityFixtureType* FixtureType = CreateFixtureType(TEXT("Spot"), {MakeFunction(TEXT("Dimmer"), 1)});
	FixtureType->Modes[FixtureType->AddMode()].Functions.Add(MakeFunction(TEXT("Pan"), 1, EFormat::E16Bit));
	UDMXEntityFixturePatch* Patch = CreatePatch(FixtureType, TEXT("Spot1"), 1, 1);
	ASSERT_EQ(Patch->GetChannelSpan(), 2);
	const FGuid TypeId = FixtureType->GetID();

	// Recorded as the editor records it, then applied back the way its undo and redo do.
	FTransaction Transaction(FString(), FText::FromString(TEXT("Remove")), nullptr);
	GUndo = &Transaction;
	UDMXEntityFixtureType::RemoveFixtureTypeFromLibrary(FixtureType);
	GUndo = nullptr;
	EXPECT_FALSE(Transaction.ContainsObject(Patch));
	EXPECT_EQ(Patch->GetFixtureType(), nullptr);
	EXPECT_EQ(Patch->GetActiveModeIndex(), 1);
	EXPECT_EQ(Patch->GetChannelSpan(), 0);
	EXPECT_EQ(Library->GetEntities(), (TArray<UDMXEntity*>{Patch}));
	EXPECT_FALSE(FixtureType->GetID().IsValid());

	// Undo gives the type back whole; its former patch was never recorded and stays without one.
	GIsTransacting = true;
	Transaction.Apply(true);
	GIsTransacting = false;
	EXPECT_EQ(Library->GetEntities(), (TArray<UDMXEntity*>{FixtureType, Patch}));
	EXPECT_EQ(FixtureType->GetID(), TypeId);
	EXPECT_EQ(FixtureType->Name, TEXT("Spot"));
	EXPECT_EQ(FixtureType->GetParentLibrary(), Library);
	ASSERT_EQ(FixtureType->Modes.Num(), 2);
	EXPECT_EQ(FixtureType->Modes[1].Functions[0].DataType, EFormat::E16Bit);
	EXPECT_EQ(Patch->GetFixtureType(), nullptr);
	EXPECT_EQ(Patch->GetActiveModeIndex(), 1);
	EXPECT_EQ(Patch->GetChannelSpan(), 0);

	GIsTransacting = true;
	Transaction.Apply(false);
	GIsTransacting = false;
	EXPECT_EQ(Library->GetEntities(), (TArray<UDMXEntity*>{Patch}));
	EXPECT_FALSE(FixtureType->GetID().IsValid());
	EXPECT_EQ(Patch->GetFixtureType(), nullptr);
}
