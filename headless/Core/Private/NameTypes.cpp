#include "UObject/NameTypes.h"

namespace
{
	// Splits "Base_123" into its number (123 + 1); 0 when the text carries no number. A number
	// with a leading zero ("_01") or one too large for int32 stays part of the base name.
	int32 ParseNameNumber(const FString& Text, int32& OutBaseLen)
	{
		OutBaseLen = Text.Len();
		int32 Digits = 0;
		while (Digits < Text.Len() && FChar::IsDigit(Text[Text.Len() - 1 - Digits]))
		{
			++Digits;
		}
		const int32 Underscore = Text.Len() - Digits - 1;
		if (Digits == 0 || Digits > 10 || Underscore < 1 || Text[Underscore] != u'_')
		{
			return NAME_NO_NUMBER_INTERNAL;
		}
		if (Digits > 1 && Text[Underscore + 1] == u'0')
		{
			return NAME_NO_NUMBER_INTERNAL;
		}
		int64 Value = 0;
		for (int32 Index = Underscore + 1; Index < Text.Len(); ++Index)
		{
			Value = Value * 10 + (Text[Index] - u'0');
		}
		if (Value >= 0x7fffffffLL)
		{
			return NAME_NO_NUMBER_INTERNAL;
		}
		OutBaseLen = Underscore;
		return static_cast<int32>(Value + 1);
	}
}

FName::FName(const FString& Text)
{
	if (Text.IsEmpty() || Text.Equals(FString(TEXT("None")), ESearchCase::IgnoreCase))
	{
		return;
	}
	Display = Text;
	int32 BaseLen = 0;
	Number = ParseNameNumber(Text, BaseLen);
}

FString FName::GetPlainNameString() const
{
	if (IsNone())
	{
		return FString(TEXT("None"));
	}
	int32 BaseLen = 0;
	ParseNameNumber(Display, BaseLen);
	return Display.Left(BaseLen);
}
