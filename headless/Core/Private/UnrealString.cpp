#include "Containers/UnrealString.h"

#include <cmath>
#include <cstdio>
#include <string>

int32 FCString::Strlen(const TCHAR* String)
{
	int32 Length = 0;
	while (String && String[Length])
	{
		++Length;
	}
	return Length;
}

int32 FCString::Strcmp(const TCHAR* A, const TCHAR* B)
{
	for (;; ++A, ++B)
	{
		if (*A != *B || *A == 0)
		{
			return int32(*A) - int32(*B);
		}
	}
}

int32 FCString::Stricmp(const TCHAR* A, const TCHAR* B)
{
	for (;; ++A, ++B)
	{
		const TCHAR LA = FChar::ToLower(*A);
		const TCHAR LB = FChar::ToLower(*B);
		if (LA != LB || LA == 0)
		{
			return int32(LA) - int32(LB);
		}
	}
}

int32 FCString::Atoi(const TCHAR* String)
{
	int64 Value = 0;
	bool bNegative = false;
	while (*String && FChar::IsWhitespace(*String))
	{
		++String;
	}
	if (*String == u'-' || *String == u'+')
	{
		bNegative = *String == u'-';
		++String;
	}
	while (FChar::IsDigit(*String))
	{
		Value = Value * 10 + (*String - u'0');
		if (Value > 0x7fffffffLL)
		{
			Value = 0x7fffffffLL;
		}
		++String;
	}
	return static_cast<int32>(bNegative ? -Value : Value);
}

FString::FString(const ANSICHAR* Str)
{
	if (Str)
	{
		while (*Str)
		{
			Data.push_back(static_cast<TCHAR>(static_cast<unsigned char>(*Str++)));
		}
	}
}

namespace
{
	bool CharsEqual(TCHAR A, TCHAR B, ESearchCase::Type SearchCase)
	{
		return SearchCase == ESearchCase::CaseSensitive ? A == B : FChar::ToLower(A) == FChar::ToLower(B);
	}
}

bool FString::Equals(const FString& Other, ESearchCase::Type SearchCase) const
{
	if (Len() != Other.Len())
	{
		return false;
	}
	for (int32 Index = 0; Index < Len(); ++Index)
	{
		if (!CharsEqual(Data[Index], Other.Data[Index], SearchCase))
		{
			return false;
		}
	}
	return true;
}

int32 FString::Compare(const FString& Other, ESearchCase::Type SearchCase) const
{
	const int32 Common = Len() < Other.Len() ? Len() : Other.Len();
	for (int32 Index = 0; Index < Common; ++Index)
	{
		TCHAR A = Data[Index];
		TCHAR B = Other.Data[Index];
		if (SearchCase == ESearchCase::IgnoreCase)
		{
			A = FChar::ToLower(A);
			B = FChar::ToLower(B);
		}
		if (A != B)
		{
			return int32(A) - int32(B);
		}
	}
	return Len() - Other.Len();
}

int32 FString::Find(const FString& SubStr, ESearchCase::Type SearchCase, ESearchDir::Type SearchDir, int32 StartPosition) const
{
	const int32 SubLen = SubStr.Len();
	if (SubLen > Len())
	{
		return INDEX_NONE;
	}
	auto MatchesAt = [&](int32 Pos)
	{
		for (int32 Index = 0; Index < SubLen; ++Index)
		{
			if (!CharsEqual(Data[Pos + Index], SubStr.Data[Index], SearchCase))
			{
				return false;
			}
		}
		return true;
	};
	if (SearchDir == ESearchDir::FromStart)
	{
		const int32 Start = StartPosition == INDEX_NONE ? 0 : (StartPosition < 0 ? 0 : StartPosition);
		for (int32 Pos = Start; Pos + SubLen <= Len(); ++Pos)
		{
			if (MatchesAt(Pos))
			{
				return Pos;
			}
		}
	}
	else
	{
		int32 Start = Len() - SubLen;
		if (StartPosition != INDEX_NONE && StartPosition - SubLen < Start)
		{
			Start = StartPosition - SubLen;
		}
		for (int32 Pos = Start; Pos >= 0; --Pos)
		{
			if (MatchesAt(Pos))
			{
				return Pos;
			}
		}
	}
	return INDEX_NONE;
}

bool FString::FindChar(TCHAR C, int32& OutIndex) const
{
	const size_t Pos = Data.find(C);
	OutIndex = Pos == std::u16string::npos ? INDEX_NONE : static_cast<int32>(Pos);
	return OutIndex != INDEX_NONE;
}

bool FString::FindLastChar(TCHAR C, int32& OutIndex) const
{
	const size_t Pos = Data.rfind(C);
	OutIndex = Pos == std::u16string::npos ? INDEX_NONE : static_cast<int32>(Pos);
	return OutIndex != INDEX_NONE;
}

bool FString::StartsWith(const FString& Prefix, ESearchCase::Type SearchCase) const
{
	return Prefix.Len() <= Len() && Left(Prefix.Len()).Equals(Prefix, SearchCase);
}

bool FString::EndsWith(const FString& Suffix, ESearchCase::Type SearchCase) const
{
	return Suffix.Len() <= Len() && Right(Suffix.Len()).Equals(Suffix, SearchCase);
}

FString FString::Left(int32 Count) const
{
	Count = Count < 0 ? 0 : (Count > Len() ? Len() : Count);
	return FString(std::u16string_view(Data).substr(0, static_cast<size_t>(Count)));
}

FString FString::Right(int32 Count) const
{
	Count = Count < 0 ? 0 : (Count > Len() ? Len() : Count);
	return FString(std::u16string_view(Data).substr(static_cast<size_t>(Len() - Count)));
}

FString FString::Mid(int32 Start, int32 Count) const
{
	if (Start < 0)
	{
		Count += Start;
		Start = 0;
	}
	if (Start >= Len() || Count <= 0)
	{
		return FString();
	}
	const int64 End = static_cast<int64>(Start) + Count;
	const int32 Clipped = static_cast<int32>(End > Len() ? Len() - Start : Count);
	return FString(std::u16string_view(Data).substr(static_cast<size_t>(Start), static_cast<size_t>(Clipped)));
}

FString FString::LeftChop(int32 Count) const { return Left(Len() - Count); }
FString FString::RightChop(int32 Count) const { return Right(Len() - Count); }

FString FString::ToLower() const
{
	FString Result(*this);
	for (TCHAR& C : Result.Data)
	{
		C = FChar::ToLower(C);
	}
	return Result;
}

FString FString::ToUpper() const
{
	FString Result(*this);
	for (TCHAR& C : Result.Data)
	{
		C = FChar::ToUpper(C);
	}
	return Result;
}

FString FString::TrimStart() const
{
	int32 Pos = 0;
	while (Pos < Len() && FChar::IsWhitespace(Data[Pos]))
	{
		++Pos;
	}
	return RightChop(Pos);
}

FString FString::TrimEnd() const
{
	int32 End = Len();
	while (End > 0 && FChar::IsWhitespace(Data[End - 1]))
	{
		--End;
	}
	return Left(End);
}

FString FString::Replace(const TCHAR* From, const TCHAR* To, ESearchCase::Type SearchCase) const
{
	const FString FromString(From);
	if (FromString.IsEmpty())
	{
		return *this;
	}
	FString Result;
	int32 Pos = 0;
	for (;;)
	{
		const int32 Found = Find(FromString, SearchCase, ESearchDir::FromStart, Pos);
		if (Found == INDEX_NONE)
		{
			break;
		}
		Result += Mid(Pos, Found - Pos);
		Result += To;
		Pos = Found + FromString.Len();
	}
	Result += RightChop(Pos);
	return Result;
}

bool FString::Split(const FString& InS, FString* LeftS, FString* RightS, ESearchCase::Type SearchCase, ESearchDir::Type SearchDir) const
{
	const int32 Pos = Find(InS, SearchCase, SearchDir);
	if (Pos == INDEX_NONE)
	{
		return false;
	}
	if (LeftS)
	{
		*LeftS = Left(Pos);
	}
	if (RightS)
	{
		*RightS = Mid(Pos + InS.Len());
	}
	return true;
}

bool FString::IsNumeric() const
{
	if (IsEmpty())
	{
		return false;
	}
	int32 Pos = (Data[0] == u'-' || Data[0] == u'+') ? 1 : 0;
	bool bDot = false;
	bool bDigit = false;
	for (; Pos < Len(); ++Pos)
	{
		if (Data[Pos] == u'.' && !bDot)
		{
			bDot = true;
		}
		else if (FChar::IsDigit(Data[Pos]))
		{
			bDigit = true;
		}
		else
		{
			return false;
		}
	}
	return bDigit;
}

void FString::AppendInt(int32 Value)
{
	*this += FromInt(Value);
}

FString FString::FromInt(int32 Value)
{
	const std::string Text = std::to_string(Value);
	return FString(Text.c_str());
}

FString FString::SanitizeFloat(double Value)
{
	char Buffer[64];
	std::snprintf(Buffer, sizeof(Buffer), "%.17g", Value);
	std::string Text(Buffer);
	if (Text.find_first_of(".eEni") == std::string::npos)
	{
		Text += ".0";
	}
	return FString(Text.c_str());
}

FString FString::PrintfImpl(const TCHAR* Format, std::initializer_list<FFormatArg> Args)
{
	FString Result;
	auto Arg = Args.begin();
	for (const TCHAR* P = Format; *P; ++P)
	{
		if (*P != u'%')
		{
			Result.AppendChar(*P);
			continue;
		}
		++P;
		std::string Conversion = "%";
		while (*P && (FChar::IsDigit(*P) || *P == u'.' || *P == u'-' || *P == u'l' || *P == u'0'))
		{
			if (*P != u'l')
			{
				Conversion.push_back(static_cast<char>(*P));
			}
			++P;
		}
		if (*P == u'%')
		{
			Result.AppendChar(u'%');
			continue;
		}
		if (*P == 0 || Arg == Args.end())
		{
			break;
		}
		const FFormatArg& Value = *Arg++;
		char Buffer[128];
		switch (*P)
		{
		case u's':
			if (const TCHAR* const* Text = std::get_if<const TCHAR*>(&Value))
			{
				Result += *Text ? *Text : u"";
			}
			break;
		case u'd':
		case u'i':
		case u'u':
		case u'x':
		case u'X':
		{
			Conversion += "ll";
			Conversion.push_back(*P == u'i' ? 'd' : static_cast<char>(*P));
			long long Integer = 0;
			if (const int64* Signed = std::get_if<int64>(&Value))
			{
				Integer = *Signed;
			}
			else if (const uint64* Unsigned = std::get_if<uint64>(&Value))
			{
				Integer = static_cast<long long>(*Unsigned);
			}
			std::snprintf(Buffer, sizeof(Buffer), Conversion.c_str(), Integer);
			Result += FString(Buffer);
			break;
		}
		default:
		{
			Conversion.push_back(static_cast<char>(*P));
			const double* Floating = std::get_if<double>(&Value);
			std::snprintf(Buffer, sizeof(Buffer), Conversion.c_str(), Floating ? *Floating : 0.0);
			Result += FString(Buffer);
			break;
		}
		}
	}
	return Result;
}

uint32 GetTypeHash(const FString& S)
{
	// FNV-1a over the lower-cased text: equal ignoring case means equal hashes.
	uint32 Hash = 2166136261u;
	for (int32 Index = 0; Index < S.Len(); ++Index)
	{
		Hash ^= FChar::ToLower(S[Index]);
		Hash *= 16777619u;
	}
	return Hash;
}
