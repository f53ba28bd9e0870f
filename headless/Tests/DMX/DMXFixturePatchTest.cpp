// Fixture patches: creation, fixture IDs, the channel cache, attribute maps, validity.
#include "DMXTestUtils.h"

using namespace DMXRuntimeTests;

using DMXRuntimeFixturePatch = FDMXTestBase;

TEST_F(DMXRuntimeFixturePatch, CreateTypeAndActiveModeFollowTheEngine)
{
	UDMXEntityFixtureType* Head = CreateFixtureType(TEXT("Head"), {MakeFunction(TEXT("Dimmer"), 1)});
	Head->AddMode();
	Head->AddMode();
	UDMXEntityFixtureType* Empty = CreateFixtureType(TEXT("Empty"));
	Empty->Modes.Reset();

	// Creation takes an out of range starting channel as given, but a mode the type lacks leaves the first.
	UDMXEntityFixturePatch* Patch = CreatePatch(Head, TEXT("Head"), 600, 2);
	EXPECT_EQ(Patch->GetActiveModeIndex(), 2);
	EXPECT_EQ(CreatePatch(Head, TEXT(""), 1, 5)->GetActiveModeIndex(), 0);
	EXPECT_EQ(CreatePatch(Empty)->GetActiveModeIndex(), INDEX_NONE);

	EXPECT_FALSE(Patch->SetActiveModeIndex(3));
	EXPECT_EQ(Patch->GetActiveModeIndex(), 2);
	// The same type keeps the mode, null keeps it too; another type starts at its first mode.
	Patch->SetFixtureType(Head);
	EXPECT_EQ(Patch->GetActiveModeIndex(), 2);
	Patch->SetFixtureType(nullptr);
	EXPECT_EQ(Patch->GetActiveModeIndex(), 2);
	EXPECT_FALSE(Patch->SetActiveModeIndex(0));
	Patch->SetFixtureType(Head);
	EXPECT_EQ(Patch->GetActiveModeIndex(), 0);
	Patch->SetFixtureType(Empty);
	EXPECT_EQ(Patch->GetActiveModeIndex(), INDEX_NONE);
}

TEST_F(DMXRuntimeFixturePatch, FixtureIDsCountUpFromTheHighest)
{
	UDMXEntityFixtureType* Head = CreateFixtureType(TEXT("Head"), {MakeFunction(TEXT("Dimmer"), 1)});
	UDMXEntityFixturePatch* First = CreatePatch(Head);
	UDMXEntityFixturePatch* Second = CreatePatch(Head);
	EXPECT_EQ(First->GetFixtureID(), 1);
	EXPECT_EQ(Second->GetFixtureID(), 2);
	Second->GenerateFixtureID(10);
	UDMXEntityFixturePatch* Third = CreatePatch(Head);
	EXPECT_EQ(Third->GetFixtureID(), 11);

	// Removing the highest lets its number be used again.
	UDMXEntityFixturePatch::RemoveFixturePatchFromLibrary(Third);
	EXPECT_EQ(CreatePatch(Head)->GetFixtureID(), 11);
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
	Patch->SetStartingChannel(512);
	EXPECT_EQ(Patch->GetEndingChannel(), 551);

	// Starting channels outside 1..512 empty the cache.
	Patch->SetStartingChannel(513);
	EXPECT_EQ(Patch->GetChannelSpan(), 0);
	EXPECT_EQ(Patch->GetEndingChannel(), 512);
}

TEST_F(DMXRuntimeFixturePatch, AttributeMapsSkipFunctionsBeyondTheSpan)
{
	UDMXEntityFixtureType* Head = CreateFixtureType(TEXT("Head"), {MakeFunction(TEXT("Dimmer"), 1, EFormat::E8Bit, 200),
		MakeFunction(TEXT("Pan"), 2, EFormat::E16Bit, 300), MakeFunction(TEXT("Zoom"), 10, EFormat::E8Bit, 9)});
	Head->Modes[0].bFixtureMatrixEnabled = true;
	Head->Modes[0].FixtureMatrixConfig.FirstCellChannel = 4;
	UDMXEntityFixturePatch* Patch = CreatePatch(Head, TEXT("P"), 17);
	ASSERT_EQ(Patch->GetChannelSpan(), 5);

	// Zoom lies beyond the span, matrix cells are never in the maps; containment ignores the span.
	const TMap<FDMXAttributeName, int32> Defaults = Patch->GetAttributeDefaultMap();
	EXPECT_EQ(Defaults.Num(), 2);
	EXPECT_EQ(Defaults.FindRef(FName(TEXT("Pan"))), 300);
	EXPECT_EQ(Patch->GetAttributeChannelAssignments().FindRef(FName(TEXT("Pan"))), 18);
	EXPECT_EQ(Patch->GetAttributeSignalFormats().FindRef(FName(TEXT("Pan"))), EFormat::E16Bit);
	EXPECT_TRUE(Patch->ContainsAttribute(FName(TEXT("Zoom"))));

	// The later of two functions with one attribute wins.
	Head->Modes[0].Functions[1].Attribute = FName(TEXT("Dimmer"));
	Patch->RebuildCache();
	EXPECT_EQ(Patch->GetAttributeDefaultMap().FindRef(FName(TEXT("Dimmer"))), 300);
}

TEST_F(DMXRuntimeFixturePatch, RawMapWritesBytesClampedToTheFormatInEitherOrder)
{
	UDMXEntityFixtureType* Head = CreateFixtureType(TEXT("Head"), {MakeFunction(TEXT("Dimmer"), 1), MakeFunction(TEXT("Pan"), 3, EFormat::E16Bit)});
	UDMXEntityFixturePatch* Patch = CreatePatch(Head, TEXT("P"), 10);
	TMap<FDMXAttributeName, int32> Values;
	Values.Add(FName(TEXT("pan")), 0x1234);
	Values.Add(FName(TEXT("Dimmer")), -5);
	Values.Add(FName(TEXT("Unknown")), 1);
	// Pan's last channel (4) lies beyond the span of 3 channels.
	EXPECT_EQ(Patch->ConvertAttributeMapToRawMap(Values).Num(), 1);

	Head->Modes[0].Functions[1].Channel = 2;
	Patch->RebuildCache();
	TMap<int32, uint8> Raw = Patch->ConvertAttributeMapToRawMap(Values);
	EXPECT_EQ(Raw.Num(), 3);
	EXPECT_EQ(Raw.FindRef(10), 0);
	EXPECT_EQ(Raw.FindRef(11), 0x12);
	EXPECT_EQ(Raw.FindRef(12), 0x34);

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
	const TCHAR* SpanIsZero = TEXT("'P' cannot be assigned as its parent Fixture Type 'Head' overrides channel span with 0.");

	// Span 0 with a starting channel outside the universe: only 514+ overflows.
	Patch->SetStartingChannel(513);
	ExpectReason(TEXT("InvalidReason_ParentChannelSpanIsZero"), SpanIsZero);
	Patch->SetStartingChannel(514);
	ExpectReason(TEXT("InvalidReason_ChannelOverflow"), TEXT("Channels range overflows max channel address (512)"));
	Patch->SetStartingChannel(1);

	Head->Modes[0].Functions.Reset();
	Patch->RebuildCache();
	ExpectReason(TEXT("InvalidReason_ParentChannelSpanIsZero"), SpanIsZero);
	Head->Modes[0].FixtureMatrixConfig.CellAttributes.Reset();
	ExpectReason(TEXT("InvalidReason_NoFunctionsDefined"),
		TEXT("'P' cannot be assigned as its parent Fixture Type 'Head' does not define any Functions in the Active Mode."));

	Head->Modes[0].Functions.Add(MakeFunction(TEXT("Dimmer"), 1));
	const FDMXFixtureMode Kept = Head->Modes[0];
	Head->Modes.Reset();
	ExpectReason(TEXT("InvalidReason_NoModesDefined"), TEXT("'P' cannot be assigned as its parent Fixture Type 'Head' does not define any Modes."));
	Head->Modes.Add(Kept);
	Head->AddMode();
	ASSERT_TRUE(Patch->SetActiveModeIndex(1));
	Head->Modes.RemoveAt(1);
	ExpectReason(TEXT("InvalidReason_NoActiveModes"), TEXT("'P' cannot be assigned as its parent Fixture Type 'Head' does no longer contain Active Mode."));

	Patch->SetFixtureType(nullptr);
	ExpectReason(TEXT("InvalidReason_NullParentTemplate"), TEXT("Fixture Type is null"));
}
