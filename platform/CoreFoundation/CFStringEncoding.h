#pragma once

#include <cstdint>

#include <ToviFoundationKit/Foundation/NSStringEncoding.h>
#include <ToviFoundationKit/Runtime/NSString.h>

namespace tovi {

/// A character set identifier: 0x0201 to 0x0210 for ISO 8859-1 to -16, 0x0400 on and 0x0500 on for the code pages of
/// PCs, 0x0600 for ASCII, 0x0A02 for KOI8-R and so on. See NSStringEncoding.h for the encodings that they number.
using CFStringEncoding = std::uint32_t;

inline constexpr CFStringEncoding kCFStringEncodingInvalidId = 0xFFFFFFFF;

/// The character set with that name: one of those registered with IANA, or another in common use. Case does not matter,
/// nor do signs that are no letters or digits: "UTF8" is "utf-8". kCFStringEncodingInvalidId for a name that is not
/// known.
TOVI_EXPORT CFStringEncoding CFStringConvertIANACharSetNameToEncoding(const NSString& name);

/// IANA's preferred name in lower case, "iso-8859-1"; nil for a character set that is not known or has no name.
TOVI_EXPORT RefPtr<NSString> CFStringConvertEncodingToIANACharSetName(CFStringEncoding encoding);

/// Both answer 0 or kCFStringEncodingInvalidId for what is not known.
TOVI_EXPORT NSStringEncoding CFStringConvertEncodingToNSStringEncoding(CFStringEncoding encoding);
TOVI_EXPORT CFStringEncoding CFStringConvertNSStringEncodingToEncoding(NSStringEncoding encoding);

}  // namespace tovi
