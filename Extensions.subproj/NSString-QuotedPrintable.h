#pragma once

#include <ToviFoundationKit/Foundation/NSStringEncoding.h>
#include <ToviFoundationKit/Runtime/NSString.h>

namespace tovi {
inline namespace QVLAdditions {

/// Decodes the "Q" encoding of mail header fields (RFC 2047): "=" and two hexadecimal digits stand for a byte, "_" for
/// a blank, "=" before a line feed for nothing; every other character stands for itself. The bytes are then read in the
/// encoding, UTF-8 if none is given; nil when they are not valid in it or it is not known. Text that is not ASCII gives
/// the empty string.
///
/// Malformed escapes are never reported. A first digit that is none leaves the byte of the escape before (0 at first)
/// as the value to which the second digit is added; a second digit that is none adds nothing. "=" with less than two
/// characters behind it stands for itself. "=" before a carriage return is an escape.
TOVI_EXPORT RefPtr<NSString> decodeQuotedPrintableString(const NSString& text);
TOVI_EXPORT RefPtr<NSString> decodeQuotedPrintableString_encoding(const NSString& text, NSStringEncoding encoding);

}  // namespace QVLAdditions
}  // namespace tovi
