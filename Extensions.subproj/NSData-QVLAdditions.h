#pragma once

#include <ToviFoundationKit/Foundation/NSData.h>

namespace tovi {
inline namespace HexStringRepresentations {

/// Bytes from pairs of hexadecimal digits. Only "0" to "9" and "a" to "f" are right as second digits, "A" to "F" as
/// first digits besides: a byte is the sum, modulo 256, of 16 times the first character, less 112 unless that is a
/// decimal digit, and of the second character, less 48 if that is a decimal digit and less 87 if not. So "0A" gives EA.
/// After an odd number of characters, NUL is the last second one.
///
/// Text that is not ASCII is reported as an assertion failure, which raises NSInternalInconsistencyException unless the
/// thread's assertion handler was replaced by one that returns; then the answer is empty.
TOVI_EXPORT Ref<NSMutableData> dataWithHexString(const NSString& text);

/// Two lower-case hexadecimal digits for each byte.
TOVI_EXPORT Ref<NSMutableString> hexStringRepresentation(const NSData& receiver);

}  // namespace HexStringRepresentations
}  // namespace tovi
