#include "Misc/PackageName.h"

namespace
{
	// Content roots the editor mounts, and the read-only roots it knows besides.
	const TCHAR* const MountedRoots[] = {TEXT("/Game/"), TEXT("/Engine/")};
	const TCHAR* const ReadOnlyRoots[] = {TEXT("/Script/"), TEXT("/Memory/"), TEXT("/Temp/")};

	bool IsInvalidLongPackageCharacter(TCHAR C)
	{
		for (const TCHAR* Invalid = INVALID_LONGPACKAGE_CHARACTERS; *Invalid; ++Invalid)
		{
			if (C == *Invalid)
			{
				return true;
			}
		}
		return false;
	}

	bool Fail(FPackageName::EErrorCode Code, FPackageName::EErrorCode* OutReason)
	{
		if (OutReason)
		{
			*OutReason = Code;
		}
		return false;
	}

	FString JoinRoots(bool bIncludeReadOnlyRoots)
	{
		FString Joined;
		for (const TCHAR* Root : MountedRoots)
		{
			Joined += (Joined.IsEmpty() ? TEXT("") : TEXT(", ")) + FString(Root);
		}
		if (bIncludeReadOnlyRoots)
		{
			for (const TCHAR* Root : ReadOnlyRoots)
			{
				Joined += TEXT(", ") + FString(Root);
			}
		}
		return Joined;
	}
}

bool FPackageName::IsValidTextForLongPackageName(const FString& InLongPackageName, EErrorCode* OutReason)
{
	const int32 Length = InLongPackageName.Len();
	if (Length == 0)
	{
		return Fail(EErrorCode::PackageNameEmptyPath, OutReason);
	}
	if (InLongPackageName[0] != u'/')
	{
		return Fail(EErrorCode::LongPackageNames_PathWithNoStartingSlash, OutReason);
	}
	if (InLongPackageName[Length - 1] == u'/')
	{
		return Fail(EErrorCode::LongPackageNames_PathWithTrailingSlash, OutReason);
	}
	for (int32 Index = 1; Index < Length; ++Index)
	{
		if (InLongPackageName[Index] == u'/' && InLongPackageName[Index - 1] == u'/')
		{
			return Fail(EErrorCode::LongPackageNames_PathWithDoubleSlash, OutReason);
		}
	}
	for (int32 Index = 0; Index < Length; ++Index)
	{
		if (IsInvalidLongPackageCharacter(InLongPackageName[Index]))
		{
			return Fail(EErrorCode::PackageNameContainsInvalidCharacters, OutReason);
		}
	}
	return true;
}

bool FPackageName::IsValidTextForLongPackageName(const FString& InLongPackageName, FText* OutReason)
{
	EErrorCode Reason = EErrorCode::PackageNameUnknown;
	const bool bValid = IsValidTextForLongPackageName(InLongPackageName, &Reason);
	if (!bValid && OutReason)
	{
		*OutReason = FormatErrorAsText(InLongPackageName, Reason);
	}
	return bValid;
}

bool FPackageName::IsValidLongPackageName(const FString& InLongPackageName, bool bIncludeReadOnlyRoots, EErrorCode* OutReason)
{
	if (!IsValidTextForLongPackageName(InLongPackageName, OutReason))
	{
		return false;
	}
	// A root alone ("/Game") has no name below it and so no root either.
	for (const TCHAR* Root : MountedRoots)
	{
		if (InLongPackageName.StartsWith(FString(Root), ESearchCase::IgnoreCase))
		{
			return true;
		}
	}
	if (bIncludeReadOnlyRoots)
	{
		for (const TCHAR* Root : ReadOnlyRoots)
		{
			if (InLongPackageName.StartsWith(FString(Root), ESearchCase::IgnoreCase))
			{
				return true;
			}
		}
	}
	return Fail(EErrorCode::PackageNamePathNotMounted, OutReason);
}

bool FPackageName::IsValidLongPackageName(const FString& InLongPackageName, bool bIncludeReadOnlyRoots, FText* OutReason)
{
	EErrorCode Reason = EErrorCode::PackageNameUnknown;
	const bool bValid = IsValidLongPackageName(InLongPackageName, bIncludeReadOnlyRoots, &Reason);
	if (!bValid && OutReason)
	{
		*OutReason = FormatErrorAsText(InLongPackageName, Reason);
	}
	return bValid;
}

FText FPackageName::FormatErrorAsText(const FString& InPath, EErrorCode ErrorCode)
{
	switch (ErrorCode)
	{
	case EErrorCode::PackageNameEmptyPath:
		return FText::FromString(TEXT("Input package name is empty."));
	case EErrorCode::PackageNamePathNotMounted:
		return FText::FromString(TEXT("Path '") + InPath + TEXT("' does not start with a valid root. Path must begin with: ") + JoinRoots(false));
	case EErrorCode::PackageNameContainsInvalidCharacters:
		return FText::FromString(TEXT("Input '") + InPath + TEXT("' contains one or more invalid characters: \\:*?\"<>|' ,.&!~@# (or a tab, carriage return or line feed)"));
	case EErrorCode::LongPackageNames_PathTooShort:
		return FText::FromString(TEXT("Path '") + InPath + TEXT("' is too short."));
	case EErrorCode::LongPackageNames_PathWithNoStartingSlash:
		return FText::FromString(TEXT("Path '") + InPath + TEXT("' should start with a '/'."));
	case EErrorCode::LongPackageNames_PathWithTrailingSlash:
		return FText::FromString(TEXT("Path '") + InPath + TEXT("' may not end with a '/'."));
	case EErrorCode::LongPackageNames_PathWithDoubleSlash:
		return FText::FromString(TEXT("Path '") + InPath + TEXT("' contains a '//'."));
	case EErrorCode::PackageNameUnknown:
	default:
		return FText::FromString(TEXT("Unknown error for package '") + InPath + TEXT("'."));
	}
}
