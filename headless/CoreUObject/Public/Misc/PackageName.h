#pragma once

#include "CoreMinimal.h"

class UPackage;

class FPackageName
{
public:
	// Why a text is not a long package name.
	enum class EErrorCode : uint8
	{
		PackageNameUnknown,
		PackageNameEmptyPath,
		PackageNamePathNotMounted,
		PackageNameContainsInvalidCharacters,
		LongPackageNames_PathTooShort,
		LongPackageNames_PathWithNoStartingSlash,
		LongPackageNames_PathWithTrailingSlash,
		LongPackageNames_PathWithDoubleSlash,
	};

	// Everything after the last "/" (the whole text when there is none).
	static FString GetShortName(const FString& LongName);
	static FString GetShortName(const TCHAR* LongName) { return GetShortName(FString(LongName)); }
	static FString GetShortName(const FName& LongName) { return GetShortName(LongName.ToString()); }
	static FString GetShortName(const UPackage* Package);
	// "/Game/DMX/Stage.Stage" -> "/Game/DMX/Stage".
	static FString ObjectPathToPackageName(const FString& ObjectPath);

	// The text is a package name the editor can create and save: it passes
	// IsValidTextForLongPackageName and starts with a mounted content root ("/Game/", "/Engine/"),
	// or, with bIncludeReadOnlyRoots, a read-only one ("/Script/", "/Memory/", "/Temp/").
	static bool IsValidLongPackageName(const FString& InLongPackageName, bool bIncludeReadOnlyRoots = false, EErrorCode* OutReason = nullptr);
	static bool IsValidLongPackageName(const FString& InLongPackageName, bool bIncludeReadOnlyRoots, FText* OutReason);
	// The text alone, whatever its root: starts with "/", has no empty folder ("//"), does not end
	// with "/" and holds none of the invalid long package characters.
	static bool IsValidTextForLongPackageName(const FString& InLongPackageName, EErrorCode* OutReason = nullptr);
	static bool IsValidTextForLongPackageName(const FString& InLongPackageName, FText* OutReason);
	// The reason as the editor shows it, naming the path.
	static FText FormatErrorAsText(const FString& InPath, EErrorCode ErrorCode);
};

// The characters a long package name may not hold: \ : * ? " < > | ' , . & ! ~ @ #, space, tab,
// carriage return and line feed.
#define INVALID_LONGPACKAGE_CHARACTERS TEXT("\\:*?\"<>|' ,.&!~\n\r\t@#")
