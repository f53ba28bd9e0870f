#include "DMXSubsystem.h"

#include "DMXConversions.h"
#include "Engine/Engine.h"
#include "Library/DMXEntityFixturePatch.h"
#include "Library/DMXEntityFixtureType.h"
#include "Library/DMXLibrary.h"
#include "Subsystems/SubsystemCollection.h"
#include "UObject/HeadlessObjectRegistry.h"

IMPLEMENT_HEADLESS_CLASS(UDMXSubsystem, UEngineSubsystem, "DMXSubsystem")

namespace
{
	// Announces the subsystem to the engine-subsystem collections, as the engine finds every
	// subclass of UEngineSubsystem.
	const bool bDMXSubsystemRegistered = []()
	{
		FSubsystemCollectionBase::RegisterSubsystemClass(UDMXSubsystem::StaticClass());
		return true;
	}();

	// The format of a byte count: 1 to 4 bytes; more are read as 4 (with a warning).
	EDMXFixtureSignalFormat GetSignalFormatForByteCount(int32 NumBytes)
	{
		switch (NumBytes)
		{
		case 1:
			return EDMXFixtureSignalFormat::E8Bit;
		case 2:
			return EDMXFixtureSignalFormat::E16Bit;
		case 3:
			return EDMXFixtureSignalFormat::E24Bit;
		case 4:
			return EDMXFixtureSignalFormat::E32Bit;
		default:
			FHeadlessObjectRegistry::Get().Warnings.Add(FString(TEXT("LogDMXSubsystem: Warning: Bytes contains more than 4 bytes (")) + FString::FromInt(NumBytes)
				+ TEXT("). Only the first 4 bytes are converted."));
			return EDMXFixtureSignalFormat::E32Bit;
		}
	}
}

void UDMXSubsystem::SerializeHeadlessState(FHeadlessStateArchive& Ar)
{
	Super::SerializeHeadlessState(Ar);
}

UDMXSubsystem* UDMXSubsystem::GetDMXSubsystem_Pure()
{
	check(GEngine);
	return GEngine->GetEngineSubsystem<UDMXSubsystem>();
}

UDMXSubsystem* UDMXSubsystem::GetDMXSubsystem_Callable()
{
	return GetDMXSubsystem_Pure();
}

int32 UDMXSubsystem::BytesToInt(const TArray<uint8>& Bytes, bool bUseLSB) const
{
	if (Bytes.Num() == 0)
	{
		return 0;
	}

	const EDMXFixtureSignalFormat SignalFormat = GetSignalFormatForByteCount(Bytes.Num());
	return static_cast<int32>(UDMXEntityFixtureType::BytesToInt(SignalFormat, bUseLSB, Bytes.GetData()));
}

float UDMXSubsystem::BytesToNormalizedValue(const TArray<uint8>& Bytes, bool bUseLSB) const
{
	if (Bytes.Num() == 0)
	{
		return 0.0f;
	}

	const EDMXFixtureSignalFormat SignalFormat = GetSignalFormatForByteCount(Bytes.Num());
	return UDMXEntityFixtureType::BytesToNormalizedValue(SignalFormat, bUseLSB, Bytes.GetData());
}

void UDMXSubsystem::NormalizedValueToBytes(float InValue, EDMXFixtureSignalFormat InSignalFormat, TArray<uint8>& Bytes, bool bUseLSB) const
{
	const uint8 NumBytes = FDMXConversions::GetSizeOfSignalFormat(InSignalFormat);
	Bytes.Reset(NumBytes);
	Bytes.AddZeroed(NumBytes);

	UDMXEntityFixtureType::NormalizedValueToBytes(InSignalFormat, bUseLSB, InValue, Bytes.GetData());
}

void UDMXSubsystem::IntValueToBytes(int32 InValue, EDMXFixtureSignalFormat InSignalFormat, TArray<uint8>& Bytes, bool bUseLSB)
{
	const uint8 NumBytes = FDMXConversions::GetSizeOfSignalFormat(InSignalFormat);
	Bytes.Reset(NumBytes);
	Bytes.AddZeroed(NumBytes);

	UDMXEntityFixtureType::IntToBytes(InSignalFormat, bUseLSB, static_cast<uint32>(InValue), Bytes.GetData());
}

float UDMXSubsystem::IntToNormalizedValue(int32 InValue, EDMXFixtureSignalFormat InSignalFormat) const
{
	return static_cast<float>(static_cast<uint32>(InValue)) / static_cast<float>(FDMXConversions::GetSignalFormatMaxValue(InSignalFormat));
}

TArray<UDMXEntityFixturePatch*> UDMXSubsystem::GetAllFixturesInLibrary(const UDMXLibrary* DMXLibrary) const
{
	TArray<UDMXEntityFixturePatch*> Result;
	if (DMXLibrary)
	{
		Result = DMXLibrary->GetEntitiesTypeCast<UDMXEntityFixturePatch>();
		Result.StableSort([](const UDMXEntityFixturePatch* A, const UDMXEntityFixturePatch* B)
		{
			if (A->GetUniverseID() != B->GetUniverseID())
			{
				return A->GetUniverseID() < B->GetUniverseID();
			}
			return A->GetStartingChannel() < B->GetStartingChannel();
		});
	}
	return Result;
}

UDMXEntityFixturePatch* UDMXSubsystem::GetFixtureByName(const UDMXLibrary* DMXLibrary, const FString& Name) const
{
	if (DMXLibrary)
	{
		for (UDMXEntityFixturePatch* FixturePatch : DMXLibrary->GetEntitiesTypeCast<UDMXEntityFixturePatch>())
		{
			if (FixturePatch->Name.Equals(Name))
			{
				return FixturePatch;
			}
		}
	}
	return nullptr;
}

TArray<UDMXEntityFixturePatch*> UDMXSubsystem::GetAllFixturesWithTag(const UDMXLibrary* DMXLibrary, FName CustomTag) const
{
	TArray<UDMXEntityFixturePatch*> Result;
	if (DMXLibrary)
	{
		for (UDMXEntityFixturePatch* FixturePatch : DMXLibrary->GetEntitiesTypeCast<UDMXEntityFixturePatch>())
		{
			if (FixturePatch->CustomTags.Contains(CustomTag))
			{
				Result.Add(FixturePatch);
			}
		}
	}
	return Result;
}
