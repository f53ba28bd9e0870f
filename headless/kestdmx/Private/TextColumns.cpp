#include "TextColumns.h"

#include <cstdint>
#include <cstdio>

namespace
{
	struct FCodePointRange
	{
		char32_t First;
		char32_t Last;
	};

	// Characters a terminal draws two columns wide: East Asian wide and full-width blocks and the
	// emoji blocks.
	constexpr FCodePointRange WideRanges[] =
	{
		{0x1100, 0x115F}, {0x231A, 0x231B}, {0x2329, 0x232A}, {0x23E9, 0x23EC}, {0x23F0, 0x23F0},
		{0x23F3, 0x23F3}, {0x25FD, 0x25FE}, {0x2614, 0x2615}, {0x2648, 0x2653}, {0x267F, 0x267F},
		{0x2693, 0x2693}, {0x26A1, 0x26A1}, {0x26AA, 0x26AB}, {0x26BD, 0x26BE}, {0x26C4, 0x26C5},
		{0x26CE, 0x26CE}, {0x26D4, 0x26D4}, {0x26EA, 0x26EA}, {0x26F2, 0x26F3}, {0x26F5, 0x26F5},
		{0x26FA, 0x26FA}, {0x26FD, 0x26FD}, {0x2705, 0x2705}, {0x270A, 0x270B}, {0x2728, 0x2728},
		{0x274C, 0x274C}, {0x274E, 0x274E}, {0x2753, 0x2755}, {0x2757, 0x2757}, {0x2795, 0x2797},
		{0x27B0, 0x27B0}, {0x27BF, 0x27BF}, {0x2B1B, 0x2B1C}, {0x2B50, 0x2B50}, {0x2B55, 0x2B55},
		{0x2E80, 0x303E}, {0x3041, 0x33FF}, {0x3400, 0x4DBF}, {0x4E00, 0x9FFF}, {0xA000, 0xA4CF},
		{0xA960, 0xA97F}, {0xAC00, 0xD7A3}, {0xF900, 0xFAFF}, {0xFE10, 0xFE19}, {0xFE30, 0xFE6F},
		{0xFF00, 0xFF60}, {0xFFE0, 0xFFE6}, {0x16FE0, 0x18CFF}, {0x1B000, 0x1B2FF}, {0x1F004, 0x1F004},
		{0x1F0CF, 0x1F0CF}, {0x1F18E, 0x1F18E}, {0x1F191, 0x1F19A}, {0x1F200, 0x1F251}, {0x1F300, 0x1F64F},
		{0x1F680, 0x1F6FF}, {0x1F7E0, 0x1F7EB}, {0x1F90C, 0x1F9FF}, {0x1FA70, 0x1FAFF}, {0x20000, 0x2FFFD},
		{0x30000, 0x3FFFD},
	};

	// Characters that take no column of their own: combining marks, zero-width characters and
	// variation selectors.
	constexpr FCodePointRange ZeroWidthRanges[] =
	{
		{0x0300, 0x036F}, {0x0483, 0x0489}, {0x0591, 0x05BD}, {0x05BF, 0x05BF}, {0x05C1, 0x05C2},
		{0x05C4, 0x05C5}, {0x05C7, 0x05C7}, {0x0610, 0x061A}, {0x064B, 0x065F}, {0x0670, 0x0670},
		{0x06D6, 0x06DC}, {0x06DF, 0x06E4}, {0x06E7, 0x06E8}, {0x06EA, 0x06ED}, {0x0900, 0x0902},
		{0x093A, 0x093A}, {0x093C, 0x093C}, {0x0941, 0x0948}, {0x094D, 0x094D}, {0x0951, 0x0957},
		{0x0E31, 0x0E31}, {0x0E34, 0x0E3A}, {0x0E47, 0x0E4E}, {0x1AB0, 0x1AFF}, {0x1DC0, 0x1DFF},
		{0x200B, 0x200F}, {0x2060, 0x2064}, {0x20D0, 0x20FF}, {0x302A, 0x302D}, {0x3099, 0x309A},
		{0xFE00, 0xFE0F}, {0xFE20, 0xFE2F}, {0xFEFF, 0xFEFF}, {0xE0100, 0xE01EF},
	};

	template <size_t Count>
	bool IsInRanges(char32_t CodePoint, const FCodePointRange (&Ranges)[Count])
	{
		size_t Low = 0;
		size_t High = Count;
		while (Low < High)
		{
			const size_t Middle = (Low + High) / 2;
			if (CodePoint < Ranges[Middle].First)
			{
				High = Middle;
			}
			else if (CodePoint > Ranges[Middle].Last)
			{
				Low = Middle + 1;
			}
			else
			{
				return true;
			}
		}
		return false;
	}

	// Reads one character at Offset and moves past it. A byte that does not start a well-formed
	// sequence is read alone and reported as malformed.
	char32_t ReadCodePoint(const std::string& Text, size_t& Offset, bool& bOutMalformed)
	{
		const unsigned char Lead = static_cast<unsigned char>(Text[Offset]);
		bOutMalformed = false;
		size_t Length = 1;
		char32_t CodePoint = Lead;
		char32_t Minimum = 0;
		if (Lead >= 0xF0 && Lead <= 0xF4)
		{
			Length = 4;
			CodePoint = Lead & 0x07;
			Minimum = 0x10000;
		}
		else if (Lead >= 0xE0 && Lead <= 0xEF)
		{
			Length = 3;
			CodePoint = Lead & 0x0F;
			Minimum = 0x800;
		}
		else if (Lead >= 0xC2 && Lead <= 0xDF)
		{
			Length = 2;
			CodePoint = Lead & 0x1F;
			Minimum = 0x80;
		}
		else if (Lead >= 0x80)
		{
			bOutMalformed = true;
			++Offset;
			return Lead;
		}
		if (Offset + Length > Text.size())
		{
			bOutMalformed = true;
			++Offset;
			return Lead;
		}
		for (size_t Index = 1; Index < Length; ++Index)
		{
			const unsigned char Next = static_cast<unsigned char>(Text[Offset + Index]);
			if ((Next & 0xC0) != 0x80)
			{
				bOutMalformed = true;
				++Offset;
				return Lead;
			}
			CodePoint = (CodePoint << 6) | (Next & 0x3F);
		}
		if (CodePoint < Minimum || CodePoint > 0x10FFFF || (CodePoint >= 0xD800 && CodePoint <= 0xDFFF))
		{
			bOutMalformed = true;
			++Offset;
			return Lead;
		}
		Offset += Length;
		return CodePoint;
	}

	bool IsEscaped(char32_t CodePoint)
	{
		return CodePoint < 0x20 || (CodePoint >= 0x7F && CodePoint <= 0x9F) || CodePoint == 0x2028 || CodePoint == 0x2029
			|| (CodePoint >= 0x202A && CodePoint <= 0x202E) || (CodePoint >= 0x2066 && CodePoint <= 0x2069)
			|| (CodePoint >= 0xFDD0 && CodePoint <= 0xFDEF) || (CodePoint & 0xFFFE) == 0xFFFE;
	}

	void AppendEscape(std::string& Out, char32_t CodePoint)
	{
		char Text[16];
		switch (CodePoint)
		{
		case '\n':
			Out += "\\n";
			return;
		case '\r':
			Out += "\\r";
			return;
		case '\t':
			Out += "\\t";
			return;
		default:
			break;
		}
		if (CodePoint < 0x80)
		{
			std::snprintf(Text, sizeof(Text), "\\x%02X", static_cast<unsigned>(CodePoint));
		}
		else
		{
			std::snprintf(Text, sizeof(Text), "\\u{%04X}", static_cast<unsigned>(CodePoint));
		}
		Out += Text;
	}

	std::string EscapeText(const std::string& UTF8, bool bQuoted)
	{
		std::string Out;
		Out.reserve(UTF8.size() + (bQuoted ? 2 : 0));
		if (bQuoted)
		{
			Out += '"';
		}
		size_t Offset = 0;
		while (Offset < UTF8.size())
		{
			const size_t Start = Offset;
			bool bMalformed = false;
			const char32_t CodePoint = ReadCodePoint(UTF8, Offset, bMalformed);
			if (bMalformed)
			{
				char Byte[8];
				std::snprintf(Byte, sizeof(Byte), "\\x%02X", static_cast<unsigned>(CodePoint));
				Out += Byte;
			}
			else if (IsEscaped(CodePoint))
			{
				AppendEscape(Out, CodePoint);
			}
			else
			{
				if (bQuoted && (CodePoint == '"' || CodePoint == '\\'))
				{
					Out += '\\';
				}
				Out.append(UTF8, Start, Offset - Start);
			}
		}
		if (bQuoted)
		{
			Out += '"';
		}
		return Out;
	}

	size_t GetCodePointWidth(char32_t CodePoint)
	{
		if (IsInRanges(CodePoint, ZeroWidthRanges))
		{
			return 0;
		}
		return IsInRanges(CodePoint, WideRanges) ? 2 : 1;
	}
}

std::string EscapeForDisplay(const std::string& UTF8)
{
	return EscapeText(UTF8, false);
}

std::string QuoteForDisplay(const std::string& UTF8)
{
	return EscapeText(UTF8, true);
}

size_t GetDisplayWidth(const std::string& UTF8)
{
	size_t Width = 0;
	size_t Offset = 0;
	while (Offset < UTF8.size())
	{
		bool bMalformed = false;
		const char32_t CodePoint = ReadCodePoint(UTF8, Offset, bMalformed);
		Width += bMalformed ? 1 : GetCodePointWidth(CodePoint);
	}
	return Width;
}

void WritePadded(std::ostream& Out, const std::string& Text, size_t Width)
{
	Out << Text;
	const size_t TextWidth = GetDisplayWidth(Text);
	if (TextWidth < Width)
	{
		Out << std::string(Width - TextWidth, ' ');
	}
}

std::string TruncateToWidth(const std::string& UTF8, size_t Width)
{
	if (GetDisplayWidth(UTF8) <= Width)
	{
		return UTF8;
	}
	if (Width == 0)
	{
		return std::string();
	}
	// Room for the ellipsis, which takes one column.
	const size_t Room = Width - 1;
	size_t Used = 0;
	size_t Offset = 0;
	size_t Cut = 0;
	while (Offset < UTF8.size())
	{
		bool bMalformed = false;
		const char32_t CodePoint = ReadCodePoint(UTF8, Offset, bMalformed);
		const size_t CharWidth = bMalformed ? 1 : GetCodePointWidth(CodePoint);
		if (Used + CharWidth > Room)
		{
			break;
		}
		Used += CharWidth;
		Cut = Offset;
	}
	return UTF8.substr(0, Cut) + "\xE2\x80\xA6";
}
