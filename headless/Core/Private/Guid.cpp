#include "Misc/Guid.h"

#include <cstdio>
#include "Math/UnrealMathUtility.h"

FGuid FGuid::NewGuid()
{
	FGuid Result;
	do
	{
		Result.A = static_cast<uint32>(FMath::RandRange(0, 0x7fffffff)) ^ (static_cast<uint32>(FMath::RandRange(0, 1)) << 31);
		Result.B = static_cast<uint32>(FMath::RandRange(0, 0x7fffffff)) ^ (static_cast<uint32>(FMath::RandRange(0, 1)) << 31);
		Result.C = static_cast<uint32>(FMath::RandRange(0, 0x7fffffff)) ^ (static_cast<uint32>(FMath::RandRange(0, 1)) << 31);
		Result.D = static_cast<uint32>(FMath::RandRange(0, 0x7fffffff)) ^ (static_cast<uint32>(FMath::RandRange(0, 1)) << 31);
	} while (!Result.IsValid());
	return Result;
}

void FGuid::AppendString(FString& Out, EGuidFormats Format) const
{
	char Buffer[80];
	switch (Format)
	{
	case EGuidFormats::DigitsLower:
		std::snprintf(Buffer, sizeof(Buffer), "%08x%08x%08x%08x", A, B, C, D);
		break;
	case EGuidFormats::DigitsWithHyphens:
		std::snprintf(Buffer, sizeof(Buffer), "%08X-%04X-%04X-%04X-%04X%08X", A, B >> 16, B & 0xFFFF, C >> 16, C & 0xFFFF, D);
		break;
	case EGuidFormats::DigitsWithHyphensLower:
		std::snprintf(Buffer, sizeof(Buffer), "%08x-%04x-%04x-%04x-%04x%08x", A, B >> 16, B & 0xFFFF, C >> 16, C & 0xFFFF, D);
		break;
	case EGuidFormats::DigitsWithHyphensInBraces:
		std::snprintf(Buffer, sizeof(Buffer), "{%08X-%04X-%04X-%04X-%04X%08X}", A, B >> 16, B & 0xFFFF, C >> 16, C & 0xFFFF, D);
		break;
	case EGuidFormats::DigitsWithHyphensInParentheses:
		std::snprintf(Buffer, sizeof(Buffer), "(%08X-%04X-%04X-%04X-%04X%08X)", A, B >> 16, B & 0xFFFF, C >> 16, C & 0xFFFF, D);
		break;
	default:
		std::snprintf(Buffer, sizeof(Buffer), "%08X%08X%08X%08X", A, B, C, D);
		break;
	}
	Out += FString(Buffer);
}

bool FGuid::Parse(const FString& GuidString, FGuid& OutGuid)
{
	FString Digits;
	for (int32 Index = 0; Index < GuidString.Len(); ++Index)
	{
		const TCHAR C = GuidString[Index];
		if (C == u'-' || C == u'{' || C == u'}' || C == u'(' || C == u')')
		{
			continue;
		}
		const bool bHex = FChar::IsDigit(C) || (FChar::ToLower(C) >= u'a' && FChar::ToLower(C) <= u'f');
		if (!bHex)
		{
			return false;
		}
		Digits.AppendChar(C);
	}
	if (Digits.Len() != 32)
	{
		return false;
	}
	uint32 Parts[4] = {0, 0, 0, 0};
	for (int32 Index = 0; Index < 32; ++Index)
	{
		const TCHAR C = FChar::ToLower(Digits[Index]);
		const uint32 Nibble = FChar::IsDigit(C) ? uint32(C - u'0') : uint32(C - u'a' + 10);
		Parts[Index / 8] = (Parts[Index / 8] << 4) | Nibble;
	}
	OutGuid = FGuid(Parts[0], Parts[1], Parts[2], Parts[3]);
	return true;
}
