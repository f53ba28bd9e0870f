// Name helpers of the DMX runtime: unique names for modes, functions and library entities.
#pragma once

#include "CoreMinimal.h"
#include "UObject/Class.h"

#ifndef DMXRUNTIME_API
#define DMXRUNTIME_API
#endif

class UDMXEntity;
class UDMXLibrary;

class DMXRUNTIME_API FDMXRuntimeUtils
{
public:
	// Answers the base name when it is non-empty and free. Otherwise splits it into stem and
	// trailing index ("Mode 2" -> "Mode", 2) and counts "<stem>_<n>" up from the index (from 1 when
	// there is none) until a free name is found. An empty base counts up from "Default name_1".
	// Membership ignores case, as FString hashing and equality do.
	static FString GenerateUniqueNameFromExisting(const TSet<FString>& InExistingNames, const FString& InBaseName);

	// Splits trailing digits off the text ("Dimmer_5" -> "Dimmer", 5). Trailing whitespace is
	// trimmed before and after the digits, then trailing '_', '.' and '-' are stripped. The index
	// is 0 when there are no digits; answers whether there were.
	static bool GetNameAndIndexFromString(const FString& InString, FString& OutName, int32& OutIndex);

	// A name for a new entity of the class that no entity of that class in the library uses
	// (fixture types and patches have separate namespaces). An empty base stands for the class name.
	static FString FindUniqueEntityName(const UDMXLibrary* InLibrary, TSubclassOf<UDMXEntity> InEntityClass, const FString& InBaseName = TEXT(""));
};
