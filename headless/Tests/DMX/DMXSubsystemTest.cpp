// The DMX subsystem's value conversions and its registration as an engine subsystem.
#include "DMXSubsystem.h"
#include "DMXTestUtils.h"

using namespace DMXRuntimeTests;
#include "Subsystems/SubsystemCollection.h"

using EFormat = EDMXFixtureSignalFormat;

class DMXRuntimeSubsystemConversions : public FDMXTestBase
{
protected:
	void SetUp() override
	{
		FDMXTestBase::SetUp();
		Subsystem = NewObject<UDMXSubsystem>(Package);
		ASSERT_NE(Subsystem, nullptr);
	}

	UDMXSubsystem* Subsystem = nullptr;
};

TEST_F(DMXRuntimeSubsystemConversions, IntValueToBytesClampsAsUnsignedInEitherByteOrder)
{
	TArray<uint8> Bytes = {9, 9, 9, 9, 9, 9};
	UDMXSubsystem::IntValueToBytes(0x1234, EFormat::E16Bit, Bytes);
	EXPECT_EQ(Bytes, (TArray<uint8>{0x12, 0x34}));
	UDMXSubsystem::IntValueToBytes(0x1234, EFormat::E16Bit, Bytes, true);
	EXPECT_EQ(Bytes, (TArray<uint8>{0x34, 0x12}));
	UDMXSubsystem::IntValueToBytes(0x123456, EFormat::E24Bit, Bytes);
	EXPECT_EQ(Bytes, (TArray<uint8>{0x12, 0x34, 0x56}));
	UDMXSubsystem::IntValueToBytes(0x12345678, EFormat::E32Bit, Bytes, true);
	EXPECT_EQ(Bytes, (TArray<uint8>{0x78, 0x56, 0x34, 0x12}));

	// Values above the maximum clamp; negative values are huge unsigned ones.
	UDMXSubsystem::IntValueToBytes(300, EFormat::E8Bit, Bytes);
	EXPECT_EQ(Bytes, (TArray<uint8>{0xFF}));
	UDMXSubsystem::IntValueToBytes(-1, EFormat::E8Bit, Bytes);
	EXPECT_EQ(Bytes, (TArray<uint8>{0xFF}));
	UDMXSubsystem::IntValueToBytes(-7, EFormat::E24Bit, Bytes);
	EXPECT_EQ(Bytes, (TArray<uint8>{0xFF, 0xFF, 0xFF}));
	UDMXSubsystem::IntValueToBytes(-2, EFormat::E32Bit, Bytes);
	EXPECT_EQ(Bytes, (TArray<uint8>{0xFF, 0xFF, 0xFF, 0xFE}));
}

TEST_F(DMXRuntimeSubsystemConversions, NormalizedValueToBytesClampsAndTruncates)
{
	TArray<uint8> Bytes;
	Subsystem->NormalizedValueToBytes(0.5f, EFormat::E8Bit, Bytes);
	EXPECT_EQ(Bytes, (TArray<uint8>{0x7F}));
	Subsystem->NormalizedValueToBytes(1.0f, EFormat::E8Bit, Bytes);
	EXPECT_EQ(Bytes, (TArray<uint8>{0xFF}));
	Subsystem->NormalizedValueToBytes(7.0f, EFormat::E8Bit, Bytes);
	EXPECT_EQ(Bytes, (TArray<uint8>{0xFF}));
	Subsystem->NormalizedValueToBytes(-1.0f, EFormat::E16Bit, Bytes);
	EXPECT_EQ(Bytes, (TArray<uint8>{0, 0}));
	Subsystem->NormalizedValueToBytes(0.5f, EFormat::E16Bit, Bytes);
	EXPECT_EQ(Bytes, (TArray<uint8>{0x7F, 0xFF}));
	Subsystem->NormalizedValueToBytes(0.5f, EFormat::E16Bit, Bytes, true);
	EXPECT_EQ(Bytes, (TArray<uint8>{0xFF, 0x7F}));
	// The out-of-range float conversion of a full 32 bit value saturates.
	Subsystem->NormalizedValueToBytes(1.0f, EFormat::E32Bit, Bytes);
	EXPECT_EQ(Bytes.Num(), 4);
}

TEST_F(DMXRuntimeSubsystemConversions, BytesToIntReadsUpToFourBytes)
{
	EXPECT_EQ(Subsystem->BytesToInt({}), 0);
	EXPECT_EQ(Subsystem->BytesToInt({0x12, 0x34}), 0x1234);
	EXPECT_EQ(Subsystem->BytesToInt({0x12, 0x34}, true), 0x3412);
	EXPECT_EQ(Subsystem->BytesToInt({0x01, 0x02, 0x03}), 0x010203);
	EXPECT_EQ(Subsystem->BytesToInt({0xFF, 0xFF, 0xFF, 0xFF}), -1);
	EXPECT_EQ(Subsystem->BytesToInt({0x80, 0, 0, 0}), INT32_MIN);

	const int32 WarningsBefore = FHeadlessObjectRegistry::Get().Warnings.Num();
	EXPECT_EQ(Subsystem->BytesToInt({0x01, 0x02, 0x03, 0x04, 0x05}), 0x01020304);
	EXPECT_EQ(Subsystem->BytesToInt({0x01, 0x02, 0x03, 0x04, 0x05}, true), 0x04030201);
	EXPECT_EQ(FHeadlessObjectRegistry::Get().Warnings.Num(), WarningsBefore + 2);
}

TEST_F(DMXRuntimeSubsystemConversions, NormalizedReadsDivideByTheFormatMaximum)
{
	EXPECT_EQ(Subsystem->BytesToNormalizedValue({}), 0.0f);
	EXPECT_EQ(Subsystem->BytesToNormalizedValue({255}), 1.0f);
	EXPECT_FLOAT_EQ(Subsystem->BytesToNormalizedValue({128}), 128.0f / 255.0f);
	EXPECT_EQ(Subsystem->BytesToNormalizedValue({0xFF, 0xFF, 0xFF, 0xFF}), 1.0f);

	// Not clamped.
	EXPECT_FLOAT_EQ(Subsystem->IntToNormalizedValue(510, EFormat::E8Bit), 2.0f);
	EXPECT_GT(Subsystem->IntToNormalizedValue(-1, EFormat::E8Bit), 1.0e7f);
}

TEST(DMXRuntimeSubsystemRegistration, EngineSubsystemCollectionsCreateTheDMXSubsystem)
{
	UPackage* Outer = CreatePackage(TEXT("/Temp/DMXSubsystemOuter"));
	FSubsystemCollection<UEngineSubsystem> Collection;
	Collection.Initialize(Outer);
	EXPECT_NE(Collection.GetSubsystem<UDMXSubsystem>(UDMXSubsystem::StaticClass()), nullptr);
	Collection.Deinitialize();
	FHeadlessObjectRegistry::Get().DestroyAll();
}
