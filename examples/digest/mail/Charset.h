#pragma once

#include <ToviFoundationKit/ToviFoundationKit.h>

namespace digest {

/// Text made of bytes.
struct CharsetDecoded {
    tovi::Ref<tovi::NSString> text;
    std::string problem;  ///< why it may not be as it was written; empty where it is
};

/// Reads bytes in the charset of that name; an RFC 2231 language ("utf-8*en") is left out. Bytes that are not valid in
/// it become U+FFFD. Where the name is empty or unknown, or is "us-ascii" for more than ASCII, the bytes are UTF-8 if
/// they can be, else ISO-8859-1.
CharsetDecoded charsetDecoded(std::string_view bytes, std::string_view charset);

/// UTF-8 if the bytes can be that, else ISO-8859-1.
tovi::Ref<tovi::NSString> guessedText(std::string_view bytes);

}  // namespace digest
