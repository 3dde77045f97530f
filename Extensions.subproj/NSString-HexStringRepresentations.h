#pragma once

#include <ToviFoundationKit/Runtime/NSString.h>

namespace tovi {
inline namespace HexStringRepresentations {

/// The string whose bytes in UTF-16 (NSUnicodeStringEncoding) these digits are, as dataWithHexString reads them; nil
/// for an odd number of bytes. A byte-order mark decides the order of the bytes and is dropped.
TOVI_EXPORT RefPtr<NSString> stringWithHexString(const NSString& text);

/// Two lower-case hexadecimal digits for each byte of the text in NSUnicodeStringEncoding, the byte-order mark
/// included: "fffe6100" for "a" where the lower byte comes first.
TOVI_EXPORT Ref<NSMutableString> hexStringRepresentation(const NSString& receiver);

}  // namespace HexStringRepresentations
}  // namespace tovi
