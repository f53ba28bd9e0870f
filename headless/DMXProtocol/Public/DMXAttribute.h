// Attribute names of fixture functions and matrix cells.
#pragma once

#include "CoreMinimal.h"
#include "UObject/ObjectMacros.h"

#ifndef DMXPROTOCOL_API
#define DMXPROTOCOL_API
#endif

// An attribute as the protocol settings list it: its name and search keywords.
USTRUCT()
struct DMXPROTOCOL_API FDMXAttribute
{
	GENERATED_BODY()

	UPROPERTY(EditAnywhere, Category = "DMX")
	FName Name;

	// Comma separated alternative names.
	UPROPERTY(EditAnywhere, Category = "DMX")
	FString Keywords;

	bool operator==(const FDMXAttribute& Other) const { return Name == Other.Name; }
	friend uint32 GetTypeHash(const FDMXAttribute& Attribute) { return GetTypeHash(Attribute.Name); }
};

// The attribute of a function or cell. Defaults to "Color"; any other name is stored verbatim.
USTRUCT(BlueprintType, Category = "DMX")
struct DMXPROTOCOL_API FDMXAttributeName
{
	GENERATED_BODY()

	FDMXAttributeName();
	explicit FDMXAttributeName(const FDMXAttribute& InAttribute);
	FDMXAttributeName(const FName& NameAttribute);

	void SetFromName(const FName& InName);
	bool IsValid() const { return !Name.IsNone(); }

	// The attribute names of the protocol settings, in their order.
	static TArray<FName> GetPredefinedValues();

	UPROPERTY(EditAnywhere, Category = "DMX")
	FName Name;
};

// Equality ignores case (FName comparison)...
DMXPROTOCOL_API bool operator==(const FDMXAttributeName& A, const FDMXAttributeName& B);
DMXPROTOCOL_API bool operator!=(const FDMXAttributeName& A, const FDMXAttributeName& B);
// ...but the hash is a CRC of the name's text and so respects case: keys of a map that differ
// only in letter case generally do not find each other.
DMXPROTOCOL_API uint32 GetTypeHash(const FDMXAttributeName& DMXAttributeName);
