#pragma once

#include <string_view>

namespace tovi::detail {

/// What stands for the character where only ASCII can be written: letters without their marks, plain quotation marks
/// and dashes, the letters of ligatures; nothing for a combining mark; a question mark for anything else.
/// The answer is good until the thread asks again.
std::u16string_view nearestASCII(char32_t codePoint);

}  // namespace tovi::detail
