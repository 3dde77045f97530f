#pragma once

#include <ToviFoundationKit/Foundation/NSStringEncoding.h>
#include <ToviFoundationKit/Runtime/NSString.h>

namespace tovi {
inline namespace MIMEEncoding {

/// The encoding of a MIME character set, by any of its names in any case; 0 for one that is not known, and for nil.
TOVI_EXPORT NSStringEncoding stringEncodingForMIMEEncoding(const NSString* name);

/// IANA's name of the encoding, in lower case: "iso-8859-1"; nil for one that is not known or has no name.
TOVI_EXPORT RefPtr<NSString> MIMEEncodingForStringEncoding(NSStringEncoding encoding);

/// IANA's name of the encoding in which the text is best sent: the first of US-ASCII and ISO-8859-1, -2 and so on to
/// -11, -13, -14 and -15 that takes it without loss, otherwise that of `smallestEncoding`.
TOVI_EXPORT Ref<NSString> recommendedMIMEEncoding(const NSString& receiver);

}  // namespace MIMEEncoding
}  // namespace tovi
