// Names in report columns: what must be escaped so a line stays one line and reads in order, and how
// many terminal columns a name takes.
#include <gtest/gtest.h>

#include <sstream>

#include "TextColumns.h"

TEST(FTextColumnsTest, EscapesWhatBreaksOrReordersALineAndKeepsTheRest)
{
	EXPECT_EQ(EscapeForDisplay("Effects Rotate\nCoarse\r\n"), "Effects Rotate\\nCoarse\\r\\n");
	EXPECT_EQ(EscapeForDisplay("a\tb\x1B[2Jc\x7F"), "a\\tb\\x1B[2Jc\\x7F");
	// C1 controls, line and paragraph separators, bidirectional overrides and isolates.
	EXPECT_EQ(EscapeForDisplay("\xC2\x85|\xE2\x80\xA8|\xE2\x80\xA9|\xE2\x80\xAE|\xE2\x81\xA6"), "\\u{0085}|\\u{2028}|\\u{2029}|\\u{202E}|\\u{2066}");
	EXPECT_EQ(EscapeForDisplay("\xEF\xBF\xBF"), "\\u{FFFF}");
	// Malformed UTF-8 shows its bytes instead of swallowing what follows.
	EXPECT_EQ(EscapeForDisplay("a\xE2\x80z\xFF"), "a\\xE2\\x80z\\xFF");

	const std::string Kept = "Gobo 360\xC2\xB0 positioning \xE5\xA4\x9C Caf\xC3\xA9\xCC\x81 \"x\" \\";
	EXPECT_EQ(EscapeForDisplay(Kept), Kept);
	EXPECT_EQ(QuoteForDisplay("say \"hi\"\\\n"), "\"say \\\"hi\\\"\\\\\\n\"");
}

TEST(FTextColumnsTest, CountsTerminalColumnsNotBytes)
{
	EXPECT_EQ(GetDisplayWidth(""), 0u);
	EXPECT_EQ(GetDisplayWidth("PanTiltSpeed"), 12u);
	EXPECT_EQ(GetDisplayWidth("Gobo 360\xC2\xB0 positioning"), 21u);
	// Wide CJK characters and emoji take two columns, combining accents none.
	EXPECT_EQ(GetDisplayWidth("\xE3\x80\x8C\xE5\xA4\x9C\xE3\x80\x8D"), 6u);
	EXPECT_EQ(GetDisplayWidth("\xF0\x9F\x92\xA1"), 2u);
	EXPECT_EQ(GetDisplayWidth("Cafe\xCC\x81"), 4u);
	EXPECT_EQ(GetDisplayWidth("\xE2\x80\x8B"), 0u);

	std::ostringstream Out;
	WritePadded(Out, "360\xC2\xB0", 6);
	WritePadded(Out, "\xE5\xA4\x9C", 3);
	WritePadded(Out, "longer than its column", 4);
	EXPECT_EQ(Out.str(), "360\xC2\xB0  \xE5\xA4\x9C longer than its column");
}

TEST(FTextColumnsTest, TruncatesWholeCharactersWithinTheWidth)
{
	EXPECT_EQ(TruncateToWidth("House 1", 7), "House 1");
	EXPECT_EQ(TruncateToWidth("House 12", 7), "House \xE2\x80\xA6");
	EXPECT_EQ(TruncateToWidth("House", 1), "\xE2\x80\xA6");
	EXPECT_EQ(TruncateToWidth("House", 0), "");
	// A wide character that would cross the limit is left out whole, never cut in its bytes.
	EXPECT_EQ(TruncateToWidth("A\xE5\xA4\x9C\xE5\xA4\x9C", 3), "A\xE2\x80\xA6");
	EXPECT_EQ(TruncateToWidth("\xC3\xA9\xC3\xA9\xC3\xA9\xC3\xA9", 3), "\xC3\xA9\xC3\xA9\xE2\x80\xA6");
	for (size_t Width = 0; Width < 12; ++Width)
	{
		EXPECT_LE(GetDisplayWidth(TruncateToWidth("\xE5\xA4\x9C" "Caf\xC3\xA9\xE5\xA4\x9C\xCC\x81xyz", Width)), Width);
	}
}
