// Character and C-string helpers. Case folding is ASCII only, as in the engine's generic
// case-insensitive comparisons.
#pragma once

#include "CoreTypes.h"

namespace ESearchCase
{
	enum Type
	{
		CaseSensitive,
		IgnoreCase,
	};
}

namespace ESearchDir
{
	enum Type
	{
		FromStart,
		FromEnd,
	};
}

struct FChar
{
	static constexpr TCHAR ToLower(TCHAR C) { return (C >= u'A' && C <= u'Z') ? TCHAR(C + 32) : C; }
	static constexpr TCHAR ToUpper(TCHAR C) { return (C >= u'a' && C <= u'z') ? TCHAR(C - 32) : C; }
	static constexpr bool IsDigit(TCHAR C) { return C >= u'0' && C <= u'9'; }
	static constexpr bool IsWhitespace(TCHAR C) { return C == u' ' || C == u'\t' || C == u'\r' || C == u'\n' || C == u'\v' || C == u'\f'; }
};

struct FCString
{
	static int32 Strlen(const TCHAR* String);
	static int32 Strcmp(const TCHAR* A, const TCHAR* B);
	static int32 Stricmp(const TCHAR* A, const TCHAR* B);
	static int32 Atoi(const TCHAR* String);
};
