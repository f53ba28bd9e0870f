// Names as people see them in a terminal or on a page: control characters shown as escapes, widths
// counted in the columns a terminal gives each character rather than in UTF-8 bytes.
#pragma once

#include <cstddef>
#include <ostream>
#include <string>

// The text with every character that would break or reorder a line shown as an escape: \n, \r and
// \t, other C0 and C1 controls and DEL as \xHH or \u{HHHH}, the line and paragraph separators, the
// bidirectional overrides and isolates and the noncharacters as \u{HHHH}, and each byte of malformed
// UTF-8 as \xHH. Everything else is kept as it is.
std::string EscapeForDisplay(const std::string& UTF8);

// EscapeForDisplay in double quotes, with " and \ escaped too.
std::string QuoteForDisplay(const std::string& UTF8);

// The number of terminal columns the text takes: East Asian wide and full-width characters (and
// emoji) take two, combining marks and zero-width characters none, every other character one.
// Meant for text that went through EscapeForDisplay.
size_t GetDisplayWidth(const std::string& UTF8);

// The text followed by blanks up to Width display columns; at least it is written whole.
void WritePadded(std::ostream& Out, const std::string& Text, size_t Width);

// The text cut to at most Width display columns, ending in "…" when it was cut.
std::string TruncateToWidth(const std::string& UTF8, size_t Width);
