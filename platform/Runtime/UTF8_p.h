#pragma once

#include <string_view>

namespace tovi::detail {

/// Writes the text of the bytes, at most one unit a byte, and answers the end of what was written. Each maximal
/// ill-formed subsequence becomes U+FFFD; `illFormed` is set when there was one.
char16_t* convertUTF8(std::string_view bytes, char16_t* to, bool* illFormed = nullptr) noexcept;

/// Writes the bytes of the text, at most three a unit, and answers the end of what was written. Lone surrogates become
/// U+FFFD.
char* convertToUTF8(std::u16string_view units, char* to) noexcept;

}  // namespace tovi::detail
