#pragma once

#include <string>
#include <string_view>

namespace digest {

// What the readers of header fields share. Letters are those of ASCII, whatever the locale.

constexpr bool isDigit(char c) noexcept { return c >= '0' && c <= '9'; }
constexpr bool isSpace(char c) noexcept { return c == ' ' || c == '\t' || c == '\r' || c == '\n'; }
constexpr char lowered(char c) noexcept { return c >= 'A' && c <= 'Z' ? static_cast<char>(c + 32) : c; }
constexpr bool isLetter(char c) noexcept { return lowered(c) >= 'a' && lowered(c) <= 'z'; }

bool startsWithIgnoringCase(std::string_view text, std::string_view prefix) noexcept;
bool equalIgnoringCase(std::string_view a, std::string_view b) noexcept;
std::string loweredText(std::string_view text);

/// Without white space at both ends, and with one space for each run of it inside.
std::string collapsedText(std::string_view text);

/// Takes a quoted string off the front of the text and answers it without its quotes and backslashes. One that is not
/// closed ends with the text.
std::string takeQuoted(std::string_view& text);

/// Takes a comment, "(like (this) one)", off the front of the text and answers what is between its outer brackets,
/// backslashes removed. One that is not closed ends with the text.
std::string takeComment(std::string_view& text);

/// Takes white space and comments off the front of the text; answers whether something is left.
bool skipCommentsAndSpace(std::string_view& text);

}  // namespace digest
