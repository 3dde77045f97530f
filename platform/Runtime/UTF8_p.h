#pragma once

#include <cstddef>
#include <string_view>

namespace tovi::detail {

/// Writes the text of the bytes, at most one unit a byte, and answers the end of what was written. Each maximal
/// ill-formed subsequence becomes U+FFFD; `illFormed` says how many there were.
char16_t* convertUTF8(std::string_view bytes, char16_t* to, std::size_t* illFormed = nullptr) noexcept;

/// How many bytes at the end begin a sequence whose rest is missing, and may still come.
std::size_t unfinishedUTF8(std::string_view bytes) noexcept;

/// How many bytes the text has, which is without lone surrogates.
std::size_t lengthInUTF8(std::u16string_view units) noexcept;

/// Writes the bytes of the text, at most three a unit, and answers the end of what was written. Lone surrogates become
/// U+FFFD.
char* convertToUTF8(std::u16string_view units, char* to) noexcept;

}  // namespace tovi::detail
