#pragma once

#include <ToviFoundationKit/Runtime/NSString.h>

namespace tovi {
inline namespace QVLAdditions {

// Replacing in place. The arguments may be the receiver.

/// Replaces every occurrence, unit for unit.
TOVI_EXPORT void replaceString_withString(NSMutableString& receiver, const NSString& target,
                                          const NSString& replacement);
/// Replaces every match, as the options say, and answers how many there were.
TOVI_EXPORT NSUInteger replaceString_withString_options(NSMutableString& receiver, const NSString& target,
                                                        const NSString& replacement, NSStringCompareOptions options);

/// Rewrites the delimiters A and B around text as P and Q, for a pattern "A*B" and a replacement "P*Q": from left to
/// right, for the next A and the B behind it, each stretch A text B becomes P text Q *wherever it stands in the
/// receiver*; then the search goes on behind the place of the one found. It ends where fewer than two units are left. A
/// pattern without "*" is replaced as it stands by the replacement as it stands.
///
/// Raises NSRangeException where no B follows an A or B is empty; what was rewritten before stays. Raises
/// NSInvalidArgumentException when the replacement has no "*" and the pattern's A was found; and when, with a
/// replacement that brings the delimiters along, the receiver grows far beyond what rewriting each A once would make of
/// it: such growth hardly ever ends.
///
/// Linear time, unless the new delimiters hold the old ones, or delimiters overlap, or come into being where text of
/// before and after meet; then each different stretch takes time of its own.
TOVI_EXPORT void replaceRegexString_withRegexString(NSMutableString& receiver, const NSString& pattern,
                                                    const NSString& replacement);

}  // namespace QVLAdditions
}  // namespace tovi

extern "C" {

/// Makes one blank (U+0020) of every run of blanks.
TOVI_EXPORT void removeMultipleSpaceInString(tovi::NSMutableString& string);
/// Makes a "+" of every blank (U+0020).
TOVI_EXPORT void replaceSpaceByPlus(tovi::NSMutableString& string);
}
