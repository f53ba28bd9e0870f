// The DMX subsystem's value conversions and its registration as an engine subsystem.
#include "DMXSubsystem.h"
#include "DMXTestUtils.h"
#include "Subsystems/SubsystemCollection.h"

using namespace DMXRuntimeTests;

TEST(DMXRuntimeSubsystem, IntValueToBytesClampsAsUnsignedInEitherByteOrder)
{
	TArray<uint8> Bytes = {9, 9, 9, 9, 9, 9};
	UDMXSubsystem::IntValueToBytes(0x1234, EFormat::E16Bit, Bytes);
	EXPECT_EQ(Bytes, (TArray<uint8>{0x12, 0x34}));
	UDMXSubsystem::IntValueToBytes(0x12345678, EFormat::E32Bit, Bytes, true);
	EXPECT_EQ(Bytes, (TArray<uint8>{0x78, 0x56, 0x34, 0x12}));
	// Values above the maximum clamp; negative values are huge unsigned ones.
	UDMXSubsystem::IntValueToBytes(-7, EFormat::E24Bit, Bytes);
	EXPECT_EQ(Bytes, (TArray<uint8>{0xFF, 0xFF, 0xFF}));
	UDMXSubsystem::IntValueToBytes(-2, EFormat::E32Bit, Bytes);
	EXPECT_EQ(Bytes, (TArray<uint8>{0xFF, 0xFF, 0xFF, 0xFE}));
}

TEST(DMXRuntimeSubsystem, ConversionsOfTheSubsystemObject)
{
	UPackage* Outer = CreatePackage(TEXT("/Temp/DMXSubsystemOuter"));
	FSubsystemCollection<UEngineSubsystem> Collection;
	Collection.Initialize(Outer);
	UDMXSubsystem* Subsystem = Collection.GetSubsystem<UDMXSubsystem>(UDMXSubsystem::StaticClass());
	ASSERT_NE(Subsystem, nullptr);

	// Normalised values clamp to 0..1 and truncate.
	TArray<uint8> Bytes;
	Subsystem->NormalizedValueToBytes(-1.0f, EFormat::E16Bit, Bytes);
	EXPECT_EQ(Bytes, (TArray<uint8>{0, 0}));
	Subsystem->NormalizedValueToBytes(0.5f, EFormat::E16Bit, Bytes, true);
	EXPECT_EQ(Bytes, (TArray<uint8>{0xFF, 0x7F}));

	// Up to four bytes are read as a signed 32-bit value; more are cut off with a warning.
	EXPECT_EQ(Subsystem->BytesToInt({0x12, 0x34}, true), 0x3412);
	EXPECT_EQ(Subsystem->BytesToInt({0x80, 0, 0, 0}), INT32_MIN);
	const int32 WarningsBefore = FHeadlessObjectRegistry::Get().Warnings.Num();
	EXPECT_EQ(Subsystem->BytesToInt({0x01, 0x02, 0x03, 0x04, 0x05}), 0x01020304);
	EXPECT_EQ(Subsystem->BytesToInt({0x01, 0x02, 0x03, 0x04, 0x05}, true), 0x04030201);
	EXPECT_EQ(FHeadlessObjectRegistry::Get().Warnings.Num(), WarningsBefore + 2);

	EXPECT_FLOAT_EQ(Subsystem->BytesToNormalizedValue({128}), 128.0f / 255.0f);
	EXPECT_EQ(Subsystem->BytesToNormalizedValue({0xFF, 0xFF, 0xFF, 0xFF}), 1.0f);
	Collection.Deinitialize();
	FHeadlessObjectRegistry::Get().DestroyAll();
}
