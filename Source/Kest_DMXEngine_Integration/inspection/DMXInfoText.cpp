#include "inspection/DMXInfoText.h"

namespace
{
	const ANSICHAR* GetConvertedText(const FTCHARToUTF8& Converted)
	{
		const ANSICHAR* Text = Converted.Get();
		return Text ? Text : "";
	}
}

void SetTextField(sol::table& Table, const char* Key, const FString& Text)
{
	const FTCHARToUTF8 Converted(*Text);
	Table.set(Key, GetConvertedText(Converted));
}

void SetTextElement(sol::table& Table, int32 Index, const FString& Text)
{
	const FTCHARToUTF8 Converted(*Text);
	Table.set(Index, GetConvertedText(Converted));
}
