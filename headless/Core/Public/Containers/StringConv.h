// UTF-8 <-> TCHAR conversion. A malformed UTF-8 sequence becomes one U+FFFD; code points above
// U+FFFF become surrogate pairs. A lone surrogate in a TCHAR string becomes U+FFFD in UTF-8.
// Converted text lives in the converter object (128 code units inline, the heap beyond).
#pragma once

#include <string>
#include "CoreTypes.h"

#define DEFAULT_STRING_CONVERSION_SIZE 128u

namespace UE::Core::Private
{
	// Appends the UTF-16 form of Len UTF-8 bytes (which may contain NULs) to Out.
	void ConvertUTF8ToTCHAR(const ANSICHAR* Source, int32 Len, std::u16string& Out);
	void ConvertTCHARToUTF8(const TCHAR* Source, int32 Len, std::string& Out);
}

class FTCHARToUTF8
{
public:
	explicit FTCHARToUTF8(const TCHAR* Source);
	FTCHARToUTF8(const TCHAR* Source, int32 SourceLen);
	FTCHARToUTF8(const FTCHARToUTF8&) = delete;
	FTCHARToUTF8& operator=(const FTCHARToUTF8&) = delete;

	const ANSICHAR* Get() const { return bNull ? nullptr : Buffer.c_str(); }
	int32 Length() const { return static_cast<int32>(Buffer.size()); }

private:
	std::string Buffer;
	bool bNull = false;
};

class FUTF8ToTCHAR
{
public:
	explicit FUTF8ToTCHAR(const ANSICHAR* Source);
	FUTF8ToTCHAR(const ANSICHAR* Source, int32 SourceLen);
	FUTF8ToTCHAR(const FUTF8ToTCHAR&) = delete;
	FUTF8ToTCHAR& operator=(const FUTF8ToTCHAR&) = delete;

	const TCHAR* Get() const { return bNull ? nullptr : Buffer.c_str(); }
	int32 Length() const { return static_cast<int32>(Buffer.size()); }

private:
	std::u16string Buffer;
	bool bNull = false;
};

#define TCHAR_TO_UTF8(str) (ANSICHAR*)FTCHARToUTF8((const TCHAR*)str).Get()
#define UTF8_TO_TCHAR(str) (TCHAR*)FUTF8ToTCHAR((const ANSICHAR*)str).Get()
