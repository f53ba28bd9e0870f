// Fixture patches: creation, identification, the channel cache, attribute maps, validity, undo.
#include "DMXTestUtils.h"

using namespace DMXRuntimeTests;

using EFormat = EDMXFixtureSignalFormat;

class DMXRuntimeFixturePatch : public FDMXTestBase
{
protected:
	UDMXEntityFixtureType* CreateMovingHead() { return CreateFixtureType(TEXT("Head"), {MakeFunction(TEXT("Dimmer"), 1)}); }
};

TEST_F(DMXRuntimeFixturePatch, CreateAppliesParamsWithoutValidation)
{
	UDMXEntityFixtureType* Head = CreateMovingHead();
	Head->AddMode();

	FDMXEntityFixturePatchConstructionParams Params;
	Params.FixtureTypeRef = Head;
	Params.UniverseID = -4;
	Params.StartingAddress = 600;
	Params.ActiveMode = 1;
	UDMXEntityFixturePatch* Patch = UDMXEntityFixturePatch::CreateFixturePatchInLibrary(Params, TEXT("Head"));
	ASSERT_NE(Patch, nullptr);
	EXPECT_TRUE(Patch->Name.Equals(TEXT("Head")));
	EXPECT_EQ(Patch->GetFixtureType(), Head);
	EXPECT_EQ(Patch->GetUniverseID(), -4);
	EXPECT_EQ(Patch->GetStartingChannel(), 600);
	EXPECT_EQ(Patch->GetActiveModeIndex(), 1);
	EXPECT_FALSE(Patch->bReceiveDMXInEditor);

	// An out of range mode leaves the first mode; a type without modes gives INDEX_NONE.
	Params.ActiveMode = 5;
	EXPECT_EQ(UDMXEntityFixturePatch::CreateFixturePatchInLibrary(Params)->GetActiveModeIndex(), 0);
	UDMXEntityFixtureType* Empty = CreateFixtureType(TEXT("Empty"));
	Empty->Modes.Reset();
	EXPECT_EQ(CreatePatch(Empty)->GetActiveModeIndex(), INDEX_NONE);

	EXPECT_EQ(UDMXEntityFixturePatch::CreateFixturePatchInLibrary(FDMXEntityFixturePatchConstructionParams()), nullptr);
}

TEST_F(DMXRuntimeFixturePatch, FixtureIDsCountUpFromTheHighestAndSkipGaps)
{
	UDMXEntityFixtureType* Head = CreateMovingHead();
	UDMXEntityFixturePatch* First = CreatePatch(Head);
	UDMXEntityFixturePatch* Second = CreatePatch(Head);
	EXPECT_EQ(First->GetFixtureID(), 1);
	EXPECT_EQ(Second->GetFixtureID(), 2);

	Second->GenerateFixtureID(10);
	EXPECT_EQ(Second->GetFixtureID(), 10);
	First->GenerateFixtureID(10);
	EXPECT_EQ(First->GetFixtureID(), 11);
	First->GenerateFixtureID(1);
	EXPECT_EQ(First->GetFixtureID(), 1);
	EXPECT_EQ(CreatePatch(Head)->GetFixtureID(), 11);

	// Removing the highest lets its number be used again.
	UDMXEntityFixturePatch* Highest = CreatePatch(Head);
	ASSERT_EQ(Highest->GetFixtureID(), 12);
	UDMXEntityFixturePatch::RemoveFixturePatchFromLibrary(Highest);
	EXPECT_EQ(CreatePatch(Head)->GetFixtureID(), 12);
}

TEST_F(DMXRuntimeFixturePatch, MVRUUIDAndEditorColorAreGeneratedUnlessGivenOrShared)
{
	UDMXEntityFixtureType* Head = CreateMovingHead();
	UDMXEntityFixturePatch* Generated = CreatePatch(Head);
	EXPECT_TRUE(Generated->GetMVRFixtureUUID().IsValid());
	EXPECT_NE(Generated->EditorColor, FLinearColor(1.0f, 0.0f, 1.0f));

	// A free UUID is kept, a taken one replaced; the colour follows the first patch of the type.
	Generated->EditorColor = FLinearColor(0.1f, 0.2f, 0.3f, 0.4f);
	FDMXEntityFixturePatchConstructionParams Params;
	Params.FixtureTypeRef = Head;
	Params.MVRFixtureUUID = FGuid(1, 2, 3, 4);
	UDMXEntityFixturePatch* Given = UDMXEntityFixturePatch::CreateFixturePatchInLibrary(Params);
	EXPECT_EQ(Given->GetMVRFixtureUUID(), FGuid(1, 2, 3, 4));
	EXPECT_EQ(Given->EditorColor, FLinearColor(0.1f, 0.2f, 0.3f, 0.4f));
	const FGuid Replaced = UDMXEntityFixturePatch::CreateFixturePatchInLibrary(Params)->GetMVRFixtureUUID();
	EXPECT_TRUE(Replaced.IsValid());
	EXPECT_NE(Replaced, FGuid(1, 2, 3, 4));
	EXPECT_NE(CreatePatch(CreateFixtureType(TEXT("Other")))->EditorColor, FLinearColor(0.1f, 0.2f, 0.3f, 0.4f));
}

TEST_F(DMXRuntimeFixturePatch, ChannelSpanSumsFunctionsAndAddsAnEnabledMatrix)
{
	// Functions with a gap: the span only sums their sizes.
	UDMXEntityFixtureType* Gapped = CreateFixtureType(TEXT("Gapped"), {MakeFunction(TEXT("Dimmer"), 1), MakeFunction(TEXT("Pan"), 10, EFormat::E16Bit)});
	UDMXEntityFixturePatch* Patch = CreatePatch(Gapped, TEXT("P"), 5);
	EXPECT_EQ(Patch->GetChannelSpan(), 3);
	EXPECT_EQ(Patch->GetEndingChannel(), 7);

	// The matrix counts only when enabled: max(sum, first cell channel - 1) + cells.
	FDMXFixtureMode& Mode = Gapped->Modes[0];
	Mode.FixtureMatrixConfig.FirstCellChannel = 8;
	Mode.FixtureMatrixConfig.XCells = 2;
	Mode.FixtureMatrixConfig.YCells = 3;
	Patch->RebuildCache();
	EXPECT_EQ(Patch->GetChannelSpan(), 3);
	Mode.bFixtureMatrixEnabled = true;
	Patch->RebuildCache();
	EXPECT_EQ(Patch->GetChannelSpan(), 7 + 6);

	Mode.bAutoChannelSpan = false;
	Mode.ChannelSpan = 40;
	Patch->RebuildCache();
	EXPECT_EQ(Patch->GetChannelSpan(), 40);

	// Starting channels outside 1..512 invalidate the cache.
	Patch->SetStartingChannel(0);
	EXPECT_EQ(Patch->GetChannelSpan(), 0);
	EXPECT_EQ(Patch->GetEndingChannel(), -1);
	Patch->SetStartingChannel(513);
	EXPECT_EQ(Patch->GetChannelSpan(), 0);
	Patch->SetStartingChannel(512);
	EXPECT_EQ(Patch->GetChannelSpan(), 40);
	EXPECT_EQ(Patch->GetEndingChannel(), 551);
}

TEST_F(DMXRuntimeFixturePatch, AttributeMapsSkipFunctionsBeyondTheSpan)
{
	FDMXFixtureFunction Far = MakeFunction(TEXT("Zoom"), 10, EFormat::E8Bit, 9);
	UDMXEntityFixtureType* Head = CreateFixtureType(TEXT("Head"),
		{MakeFunction(TEXT("Dimmer"), 1, EFormat::E8Bit, 200), MakeFunction(TEXT("Pan"), 2, EFormat::E16Bit, 300), Far});
	Head->Modes[0].bFixtureMatrixEnabled = true;
	Head->Modes[0].FixtureMatrixConfig.FirstCellChannel = 4;
	UDMXEntityFixturePatch* Patch = CreatePatch(Head, TEXT("P"), 17);
	ASSERT_EQ(Patch->GetChannelSpan(), 5);

	const TMap<FDMXAttributeName, int32> Defaults = Patch->GetAttributeDefaultMap();
	EXPECT_EQ(Defaults.Num(), 2);
	EXPECT_EQ(Defaults.FindRef(FName(TEXT("Dimmer"))), 200);
	EXPECT_EQ(Defaults.FindRef(FName(TEXT("Pan"))), 300);
	EXPECT_FALSE(Defaults.Contains(FName(TEXT("Zoom"))));
	EXPECT_FALSE(Defaults.Contains(FName(TEXT("Red"))));

	const TMap<FDMXAttributeName, int32> Channels = Patch->GetAttributeChannelAssignments();
	EXPECT_EQ(Channels.FindRef(FName(TEXT("Dimmer"))), 17);
	EXPECT_EQ(Channels.FindRef(FName(TEXT("Pan"))), 18);
	EXPECT_EQ(Patch->GetAttributeSignalFormats().FindRef(FName(TEXT("Pan"))), EFormat::E16Bit);
	// Containment does not look at the span.
	EXPECT_TRUE(Patch->ContainsAttribute(FName(TEXT("Zoom"))));

	// The later of two functions with one attribute wins.
	Head->Modes[0].Functions[1].Attribute = FName(TEXT("Dimmer"));
	Patch->RebuildCache();
	EXPECT_EQ(Patch->GetAttributeDefaultMap().FindRef(FName(TEXT("Dimmer"))), 300);

	Patch->SetFixtureType(nullptr);
	EXPECT_EQ(Patch->GetAttributeDefaultMap().Num(), 0);
}

TEST_F(DMXRuntimeFixturePatch, RawMapWritesBytesInFunctionOrderClampedToTheFormat)
{
	UDMXEntityFixtureType* Head = CreateFixtureType(TEXT("Head"), {MakeFunction(TEXT("Dimmer"), 1), MakeFunction(TEXT("Pan"), 3, EFormat::E16Bit)});
	UDMXEntityFixturePatch* Patch = CreatePatch(Head, TEXT("P"), 10);
	ASSERT_EQ(Patch->GetChannelSpan(), 3);

	TMap<FDMXAttributeName, int32> Values;
	Values.Add(FName(TEXT("pan")), 0x1234);
	Values.Add(FName(TEXT("Dimmer")), -5);
	Values.Add(FName(TEXT("Unknown")), 1);
	// Pan's last channel (4) lies beyond the span of 3 channels.
	TMap<int32, uint8> Raw = Patch->ConvertAttributeMapToRawMap(Values);
	EXPECT_EQ(Raw.Num(), 1);

	Head->Modes[0].Functions[1].Channel = 2;
	Patch->RebuildCache();
	Raw = Patch->ConvertAttributeMapToRawMap(Values);
	EXPECT_EQ(Raw.Num(), 3);
	EXPECT_EQ(Raw.FindRef(11), 0x12);
	EXPECT_EQ(Raw.FindRef(12), 0x34);
	EXPECT_EQ(Raw.FindRef(10), 0);

	Head->Modes[0].Functions[1].bUseLSBMode = true;
	Patch->RebuildCache();
	Raw = Patch->ConvertAttributeMapToRawMap(Values);
	EXPECT_EQ(Raw.FindRef(11), 0x34);
	EXPECT_EQ(Raw.FindRef(12), 0x12);

	Values.Add(FName(TEXT("pan")), 70000);
	Raw = Patch->ConvertAttributeMapToRawMap(Values);
	EXPECT_EQ(Raw.FindRef(11), 0xFF);
	EXPECT_EQ(Raw.FindRef(12), 0xFF);
}

TEST_F(DMXRuntimeFixturePatch, IsValidEntityReportsTheFirstProblem)
{
	UDMXEntityFixtureType* Head = CreateFixtureType(TEXT("Head"), {MakeFunction(TEXT("Dimmer"), 1)});
	UDMXEntityFixturePatch* Patch = CreatePatch(Head, TEXT("P"), 500);
	FText Reason = FText::FromString(TEXT("stale"));
	EXPECT_TRUE(Patch->IsValidEntity(Reason));
	EXPECT_TRUE(Reason.IsEmpty());

	const auto ExpectReason = [Patch](const TCHAR* Key, const TCHAR* Text)
	{
		FText OutReason;
		EXPECT_FALSE(Patch->IsValidEntity(OutReason));
		EXPECT_TRUE(OutReason.GetNamespace().Equals(TEXT("DMXEntityFixturePatch")));
		EXPECT_TRUE(OutReason.GetKey().Equals(Key));
		EXPECT_TRUE(OutReason.ToString().Equals(Text));
	};

	// Span 0 with a starting channel outside the universe: only 514+ overflows.
	Patch->SetStartingChannel(513);
	ExpectReason(TEXT("InvalidReason_ParentChannelSpanIsZero"), TEXT("'P' cannot be assigned as its parent Fixture Type 'Head' overrides channel span with 0."));
	Patch->SetStartingChannel(514);
	ExpectReason(TEXT("InvalidReason_ChannelOverflow"), TEXT("Channels range overflows max channel address (512)"));
	Patch->SetStartingChannel(1);

	Head->Modes[0].Functions.Reset();
	Patch->RebuildCache();
	ExpectReason(TEXT("InvalidReason_ParentChannelSpanIsZero"), TEXT("'P' cannot be assigned as its parent Fixture Type 'Head' overrides channel span with 0."));
	Head->Modes[0].FixtureMatrixConfig.CellAttributes.Reset();
	ExpectReason(TEXT("InvalidReason_NoFunctionsDefined"),
		TEXT("'P' cannot be assigned as its parent Fixture Type 'Head' does not define any Functions in the Active Mode."));
	Head->AddMode();
	Head->Modes.RemoveAt(0);
	Head->Modes[0].Functions.Add(MakeFunction(TEXT("Dimmer"), 1));
	Patch->RebuildCache();
	EXPECT_TRUE(Patch->IsValidEntity());

	const FDMXFixtureMode Kept = Head->Modes[0];
	Head->Modes.Reset();
	ExpectReason(TEXT("InvalidReason_NoModesDefined"), TEXT("'P' cannot be assigned as its parent Fixture Type 'Head' does not define any Modes."));
	Head->Modes.Add(Kept);
	EXPECT_FALSE(Patch->SetActiveModeIndex(3));
	Head->AddMode();
	ASSERT_TRUE(Patch->SetActiveModeIndex(1));
	Head->Modes.RemoveAt(1);
	ExpectReason(TEXT("InvalidReason_NoActiveModes"), TEXT("'P' cannot be assigned as its parent Fixture Type 'Head' does no longer contain Active Mode."));

	Patch->SetFixtureType(nullptr);
	ExpectReason(TEXT("InvalidReason_NullParentTemplate"), TEXT("Fixture Type is null"));
}

TEST_F(DMXRuntimeFixturePatch, SetFixtureTypeAndActiveModeFollowTheEngine)
{
	UDMXEntityFixtureType* Head = CreateFixtureType(TEXT("Head"), {MakeFunction(TEXT("Dimmer"), 1)});
	Head->AddMode();
	Head->AddMode();
	UDMXEntityFixtureType* Empty = CreateFixtureType(TEXT("Empty"));
	Empty->Modes.Reset();
	UDMXEntityFixturePatch* Patch = CreatePatch(Head);

	EXPECT_TRUE(Patch->SetActiveModeIndex(2));
	EXPECT_FALSE(Patch->SetActiveModeIndex(3));
	EXPECT_EQ(Patch->GetActiveModeIndex(), 2);

	// The same type keeps the mode; null keeps it too; another type starts at its first mode.
	Patch->SetFixtureType(Head);
	EXPECT_EQ(Patch->GetActiveModeIndex(), 2);
	Patch->SetFixtureType(nullptr);
	EXPECT_EQ(Patch->GetActiveModeIndex(), 2);
	EXPECT_FALSE(Patch->SetActiveModeIndex(0));
	Patch->SetFixtureType(Head);
	EXPECT_EQ(Patch->GetActiveModeIndex(), 0);
	EXPECT_EQ(Patch->GetChannelSpan(), 1);
	Patch->SetFixtureType(Empty);
	EXPECT_EQ(Patch->GetActiveModeIndex(), INDEX_NONE);
	EXPECT_EQ(Patch->GetActiveMode(), nullptr);
}

TEST_F(DMXRuntimeFixturePatch, ModifyRecordsTheLibraryFirstAndUndoRestoresThePatch)
{
	UDMXEntityFixtureType* Head = CreateFixtureType(TEXT("Head"), {MakeFunction(TEXT("Dimmer"), 1), MakeFunction(TEXT("Pan"), 2, EFormat::E16Bit)});
	Head->AddMode();
	UDMXEntityFixturePatch* Patch = CreatePatch(Head, TEXT("P"), 3);
	EXPECT_FALSE(Patch->Modify());

	FDMXTestTransaction Transaction;
	EXPECT_TRUE(Patch->Modify());
	EXPECT_TRUE(Transaction.Contains(Library));
	EXPECT_TRUE(Transaction.Contains(Patch));
	Patch->SetStartingChannel(20);
	Patch->SetUniverseID(7);
	Patch->SetActiveModeIndex(1);
	Patch->CustomTags.Add(FName(TEXT("Stage")));
	Patch->bReceiveDMXInEditor = true;
	Transaction.Close();

	Transaction.Apply(true);
	EXPECT_EQ(Patch->GetStartingChannel(), 3);
	EXPECT_EQ(Patch->GetUniverseID(), 1);
	EXPECT_EQ(Patch->GetActiveModeIndex(), 0);
	EXPECT_EQ(Patch->GetCustomTags().Num(), 0);
	EXPECT_FALSE(Patch->bReceiveDMXInEditor);
	EXPECT_EQ(Patch->GetChannelSpan(), 3);

	Transaction.Apply(false);
	EXPECT_EQ(Patch->GetStartingChannel(), 20);
	EXPECT_EQ(Patch->GetChannelSpan(), 0);
}
