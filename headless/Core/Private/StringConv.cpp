#include "Containers/StringConv.h"
#include "Misc/CString.h"

#include <cstring>

namespace UE::Core::Private
{
	void ConvertUTF8ToTCHAR(const ANSICHAR* Source, int32 Len, std::u16string& Out)
	{
		const unsigned char* P = reinterpret_cast<const unsigned char*>(Source);
		const unsigned char* End = P + (Len > 0 ? Len : 0);
		auto Emit = [&Out](uint32 CodePoint)
		{
			if (CodePoint >= 0x10000)
			{
				CodePoint -= 0x10000;
				Out.push_back(static_cast<char16_t>(0xD800 + (CodePoint >> 10)));
				Out.push_back(static_cast<char16_t>(0xDC00 + (CodePoint & 0x3FF)));
			}
			else
			{
				Out.push_back(static_cast<char16_t>(CodePoint));
			}
		};
		while (P < End)
		{
			const unsigned char Lead = *P;
			int32 Extra = 0;
			uint32 CodePoint = 0;
			uint32 Minimum = 0;
			if (Lead < 0x80)
			{
				Emit(Lead);
				++P;
				continue;
			}
			else if ((Lead & 0xE0) == 0xC0)
			{
				Extra = 1;
				CodePoint = Lead & 0x1F;
				Minimum = 0x80;
			}
			else if ((Lead & 0xF0) == 0xE0)
			{
				Extra = 2;
				CodePoint = Lead & 0x0F;
				Minimum = 0x800;
			}
			else if ((Lead & 0xF8) == 0xF0)
			{
				Extra = 3;
				CodePoint = Lead & 0x07;
				Minimum = 0x10000;
			}
			else
			{
				Emit(0xFFFD);
				++P;
				continue;
			}
			int32 Taken = 1;
			bool bValid = true;
			while (Taken <= Extra)
			{
				if (P + Taken >= End || (P[Taken] & 0xC0) != 0x80)
				{
					bValid = false;
					break;
				}
				CodePoint = (CodePoint << 6) | (P[Taken] & 0x3F);
				++Taken;
			}
			if (bValid && (CodePoint < Minimum || CodePoint > 0x10FFFF || (CodePoint >= 0xD800 && CodePoint <= 0xDFFF)))
			{
				bValid = false;
			}
			Emit(bValid ? CodePoint : 0xFFFD);
			P += Taken;
		}
	}

	void ConvertTCHARToUTF8(const TCHAR* Source, int32 Len, std::string& Out)
	{
		auto Emit = [&Out](uint32 CodePoint)
		{
			if (CodePoint < 0x80)
			{
				Out.push_back(static_cast<char>(CodePoint));
			}
			else if (CodePoint < 0x800)
			{
				Out.push_back(static_cast<char>(0xC0 | (CodePoint >> 6)));
				Out.push_back(static_cast<char>(0x80 | (CodePoint & 0x3F)));
			}
			else if (CodePoint < 0x10000)
			{
				Out.push_back(static_cast<char>(0xE0 | (CodePoint >> 12)));
				Out.push_back(static_cast<char>(0x80 | ((CodePoint >> 6) & 0x3F)));
				Out.push_back(static_cast<char>(0x80 | (CodePoint & 0x3F)));
			}
			else
			{
				Out.push_back(static_cast<char>(0xF0 | (CodePoint >> 18)));
				Out.push_back(static_cast<char>(0x80 | ((CodePoint >> 12) & 0x3F)));
				Out.push_back(static_cast<char>(0x80 | ((CodePoint >> 6) & 0x3F)));
				Out.push_back(static_cast<char>(0x80 | (CodePoint & 0x3F)));
			}
		};
		for (int32 Index = 0; Index < Len; ++Index)
		{
			const uint32 Unit = Source[Index];
			if (Unit >= 0xD800 && Unit <= 0xDBFF && Index + 1 < Len && Source[Index + 1] >= 0xDC00 && Source[Index + 1] <= 0xDFFF)
			{
				Emit(0x10000 + ((Unit - 0xD800) << 10) + (uint32(Source[Index + 1]) - 0xDC00));
				++Index;
			}
			else if (Unit >= 0xD800 && Unit <= 0xDFFF)
			{
				Emit(0xFFFD);
			}
			else
			{
				Emit(Unit);
			}
		}
	}
}

FTCHARToUTF8::FTCHARToUTF8(const TCHAR* Source)
	: FTCHARToUTF8(Source, Source ? FCString::Strlen(Source) : 0)
{
	bNull = Source == nullptr;
}

FTCHARToUTF8::FTCHARToUTF8(const TCHAR* Source, int32 SourceLen)
{
	Buffer.reserve(DEFAULT_STRING_CONVERSION_SIZE);
	bNull = Source == nullptr;
	if (Source)
	{
		UE::Core::Private::ConvertTCHARToUTF8(Source, SourceLen, Buffer);
	}
}

FUTF8ToTCHAR::FUTF8ToTCHAR(const ANSICHAR* Source)
	: FUTF8ToTCHAR(Source, Source ? static_cast<int32>(std::strlen(Source)) : 0)
{
}

FUTF8ToTCHAR::FUTF8ToTCHAR(const ANSICHAR* Source, int32 SourceLen)
{
	Buffer.reserve(DEFAULT_STRING_CONVERSION_SIZE);
	bNull = Source == nullptr;
	if (Source)
	{
		UE::Core::Private::ConvertUTF8ToTCHAR(Source, SourceLen, Buffer);
	}
}
