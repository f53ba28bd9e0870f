// The DMX engine subsystem: value conversions and library queries for scripts and blueprints.
#pragma once

#include "CoreMinimal.h"
#include "DMXProtocolTypes.h"
#include "Library/DMXEntityReference.h"
#include "Subsystems/EngineSubsystem.h"

class UDMXLibrary;
class UDMXEntityFixturePatch;
class UDMXEntityFixtureType;

UCLASS()
class DMXRUNTIME_API UDMXSubsystem : public UEngineSubsystem
{
	DECLARE_HEADLESS_CLASS(UDMXSubsystem, UEngineSubsystem)

public:
	// The subsystem of the engine's engine-subsystem collection (GEngine must exist).
	static UDMXSubsystem* GetDMXSubsystem_Pure();
	static UDMXSubsystem* GetDMXSubsystem_Callable();

	// The value of up to 4 bytes (more: only the first 4 are read, with a warning); 0 for none.
	// 4 bytes of 0x80000000 and above come back negative.
	UFUNCTION(BlueprintPure, Category = "DMX")
	int32 BytesToInt(const TArray<uint8>& Bytes, bool bUseLSB = false) const;

	// The value of up to 4 bytes relative to the maximum of that many bytes; 0 for none.
	UFUNCTION(BlueprintPure, Category = "DMX", meta = (Keywords = "float"))
	float BytesToNormalizedValue(const TArray<uint8>& Bytes, bool bUseLSB = false) const;

	// Exactly as many bytes as the format has: the value clamped to 0..1, scaled to the format's
	// maximum and truncated.
	UFUNCTION(BlueprintPure, Category = "DMX", meta = (Keywords = "float"))
	void NormalizedValueToBytes(float InValue, EDMXFixtureSignalFormat InSignalFormat, TArray<uint8>& Bytes, bool bUseLSB = false) const;

	// Exactly as many bytes as the format has. The value is taken as unsigned, so negative values
	// clamp to the maximum of 8 to 24 bit formats and keep their bit pattern in 32 bit.
	UFUNCTION(BlueprintPure, Category = "DMX", Meta = (DisplayName = "Int To Bytes"))
	static void IntValueToBytes(int32 InValue, EDMXFixtureSignalFormat InSignalFormat, TArray<uint8>& Bytes, bool bUseLSB = false);

	// The value (taken as unsigned) relative to the format's maximum, not clamped.
	UFUNCTION(BlueprintPure, Category = "DMX", meta = (Keywords = "float"))
	float IntToNormalizedValue(int32 InValue, EDMXFixtureSignalFormat InSignalFormat) const;

	// The library's patches sorted by universe, then starting channel.
	UFUNCTION(BlueprintCallable, Category = "DMX")
	TArray<UDMXEntityFixturePatch*> GetAllFixturesInLibrary(const UDMXLibrary* DMXLibrary) const;

	// The first patch whose name equals the text, case-sensitively.
	UFUNCTION(BlueprintCallable, Category = "DMX")
	UDMXEntityFixturePatch* GetFixtureByName(const UDMXLibrary* DMXLibrary, const FString& Name) const;

	UFUNCTION(BlueprintCallable, Category = "DMX")
	TArray<UDMXEntityFixturePatch*> GetAllFixturesWithTag(const UDMXLibrary* DMXLibrary, FName CustomTag) const;

	UFUNCTION(BlueprintPure, Category = "DMX")
	UDMXEntityFixturePatch* GetFixturePatch(FDMXEntityFixturePatchRef InFixturePatch) const { return InFixturePatch.GetFixturePatch(); }

	UFUNCTION(BlueprintPure, Category = "DMX")
	UDMXEntityFixtureType* GetFixtureType(FDMXEntityFixtureTypeRef InFixtureType) const { return InFixtureType.GetFixtureType(); }
};
