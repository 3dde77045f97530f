#pragma once

#include <cstddef>
#include <cstdint>
#include <span>

#include <ToviFoundationKit/Foundation/NSStringEncoding.h>

namespace tovi::detail {

/// What has to be done to convert.
enum class EncodingForm : std::uint8_t {
    ASCII,
    Latin1,
    UTF7,
    UTF8,
    UTF16,  ///< with a byte-order mark; lone surrogates pass
    UTF16BE,
    UTF16LE,
    UTF32,
    UTF32BE,
    UTF32LE,
    NonLossyASCII,
    SingleByte,       ///< a table of 256 units
    MultiByte,        ///< by a converter of ICU
    HZ,               ///< read by a converter of ICU, whose writing does not go together with "~"
    MultiByteRotated  ///< as MultiByte; it takes U+001A, U+001C and U+007F for one another
};

struct EncodingRow {
    std::uint32_t charset;  ///< the platform's identifier
    NSStringEncoding encoding;
    EncodingForm form;
    const char* converter;  ///< of ICU, for the conversion or just the aliases; null when it has none
    const char* name;       ///< IANA's preferred one, in lower case; null when it has none
};

/// There are fewer.
inline constexpr std::size_t mostEncodings = 128;

/// All that are known, by character set identifier.
std::span<const EncodingRow> encodingRows() noexcept;

/// Null when the identifier or the encoding is not known.
const EncodingRow* rowOfCharset(std::uint32_t charset) noexcept;
const EncodingRow* rowOfEncoding(NSStringEncoding encoding) noexcept;

}  // namespace tovi::detail
