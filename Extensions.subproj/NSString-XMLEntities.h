#pragma once

#include <ToviFoundationKit/Runtime/NSString.h>

namespace tovi {
inline namespace XMLEntities {

// Character references of HTML 4.01 and XML. Neither operation ever fails, and they are not inverses of each other: one
// knows 253 names, the other writes five. Both take linear time; a text in which nothing changes is answered as its
// immutable copy.

/// The text with its character references replaced, in one pass: "&amp;lt;" gives "&lt;".
///
/// Names are the 252 of HTML 4.01 and "apos". They are case-sensitive and need their ";".
///
/// "&#" begins a number: after an "x" hexadecimal digits, in either case and with 0x in front if they like, otherwise
/// decimal ones with an optional sign. A ";" behind them is taken too and may be missing. Decimal numbers are clamped
/// to 32 bits with sign and hexadecimal ones to 32 bits without; of either the low 16 bits make one code unit. So a
/// number above 65535 does not give the character that it means: "&#128512;" is U+F600. Where no number follows, all up
/// to the next space, tab, line end or ";" is kept as it stands, references in it too.
///
/// Everything else stays: unknown names, "&" alone.
TOVI_EXPORT Ref<NSString> stringByDecodingXMLEntities(const NSString& receiver);

/// The text with "&", "'", "\"", "<" and ">" written as "&amp;", "&apos;", "&quot;", "&lt;" and "&gt;". Nothing else is
/// escaped, and references are not recognised: "&amp;" becomes "&amp;amp;".
TOVI_EXPORT Ref<NSString> stringByEncodingXMLEntities(const NSString& receiver);

}  // namespace XMLEntities
}  // namespace tovi
