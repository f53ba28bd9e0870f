#pragma once

#include "CoreMinimal.h"

class UPackage;

class FPackageName
{
public:
	// Everything after the last "/" (the whole text when there is none).
	static FString GetShortName(const FString& LongName);
	static FString GetShortName(const TCHAR* LongName) { return GetShortName(FString(LongName)); }
	static FString GetShortName(const FName& LongName) { return GetShortName(LongName.ToString()); }
	static FString GetShortName(const UPackage* Package);
	// "/Game/DMX/Stage.Stage" -> "/Game/DMX/Stage".
	static FString ObjectPathToPackageName(const FString& ObjectPath);
	static bool IsValidLongPackageName(const FString& LongName);
};
