// FName: compares ignoring case and keeps the spelling it was made with (as editor builds do).
// A trailing "_<digits>" without a leading zero is the name's number (digits + 1); ToString()
// gives the text back exactly as written. The empty text and any spelling of "None" are NAME_None.
#pragma once

#include "Containers/UnrealString.h"

enum EName : uint32
{
	NAME_None = 0,
};

#define NAME_NO_NUMBER_INTERNAL 0

class FName
{
public:
	FName() = default;
	FName(EName) {}
	FName(const TCHAR* Text) : FName(FString(Text)) {}
	FName(const FString& Text);

	bool IsNone() const { return Display.IsEmpty(); }
	FString ToString() const { return IsNone() ? FString(TEXT("None")) : Display; }
	void ToString(FString& Out) const { Out = ToString(); }
	// The part before the number suffix ("Light" for "Light_1"); the whole text when there is no number.
	FString GetPlainNameString() const;
	int32 GetNumber() const { return Number; }

	bool IsEqual(const FName& Other) const { return Display.Equals(Other.Display, ESearchCase::IgnoreCase); }
	bool operator==(const FName& Other) const { return IsEqual(Other); }
	bool operator!=(const FName& Other) const { return !IsEqual(Other); }
	bool operator==(EName) const { return IsNone(); }
	bool operator!=(EName) const { return !IsNone(); }
	bool LexicalLess(const FName& Other) const { return ToString().Compare(Other.ToString(), ESearchCase::IgnoreCase) < 0; }

	friend uint32 GetTypeHash(const FName& Name) { return GetTypeHash(Name.Display); }

private:
	FString Display;
	int32 Number = NAME_NO_NUMBER_INTERNAL;
};

#define NAME_INTERNAL_TO_EXTERNAL(x) ((x) - 1)
