#pragma once

#include <ToviFoundationKit/Foundation/NSMutableArray.h>

namespace tovi {
inline namespace QVLAdditions {

// Searching. A text that is nil is found nowhere, and so is the empty one.

/// Whether the receiver has the text, canonically equivalent text included.
TOVI_EXPORT bool hasString(const NSString& receiver, const NSString* searched);
inline bool hasString(const NSString& receiver, const NSString& searched) { return hasString(receiver, &searched); }
/// The same by full case folding, without locale.
TOVI_EXPORT bool caseInsensitiveHasString(const NSString& receiver, const NSString* searched);
inline bool caseInsensitiveHasString(const NSString& receiver, const NSString& searched) {
    return caseInsensitiveHasString(receiver, &searched);
}
/// The first match by full case folding, or {NSNotFound, 0}.
TOVI_EXPORT NSRange rangeOfNoCaseString(const NSString& receiver, const NSString* searched);
inline NSRange rangeOfNoCaseString(const NSString& receiver, const NSString& searched) {
    return rangeOfNoCaseString(receiver, &searched);
}

// Comparing by full case folding, without locale. A prefix or suffix stands against as many units of the receiver as it
// has itself, so "ss" is no suffix of "\u00DF"; the empty one always is one, nil never.

TOVI_EXPORT bool hasCaseInsensitivePrefix(const NSString& receiver, const NSString* prefix);
inline bool hasCaseInsensitivePrefix(const NSString& receiver, const NSString& prefix) {
    return hasCaseInsensitivePrefix(receiver, &prefix);
}
TOVI_EXPORT bool hasCaseInsensitiveSuffix(const NSString& receiver, const NSString* suffix);
inline bool hasCaseInsensitiveSuffix(const NSString& receiver, const NSString& suffix) {
    return hasCaseInsensitiveSuffix(receiver, &suffix);
}
TOVI_EXPORT bool caseInsensitiveIsEqualToString(const NSString& receiver, const NSString* other);
inline bool caseInsensitiveIsEqualToString(const NSString& receiver, const NSString& other) {
    return caseInsensitiveIsEqualToString(receiver, &other);
}

// Delimiter patterns. Despite the names there are no regular expressions here: a pattern is two delimiters joined by
// "*", such as "<b>*</b>", both found unit for unit. What follows a second "*" is ignored. Linear time.

/// The text between the first opening delimiter and the next closing one. Nil when there is none, one of the delimiters
/// is empty, or the pattern has no "*".
TOVI_EXPORT RefPtr<NSString> findRegexFirstString(const NSString& receiver, const NSString& pattern);

/// The text between each opening delimiter and the next closing one, from left to right. The search ends where fewer
/// than two units are left behind a match.
///
/// Nil when the receiver is empty or has no opening delimiter, or that is empty; the empty list when the pattern has no
/// "*" (but the receiver is not empty). Raises NSRangeException where no closing delimiter follows an opening one, or
/// that is empty: use patterns only for texts in which each delimiter is closed.
TOVI_EXPORT RefPtr<NSMutableArray> findRegexString(const NSString& receiver, const NSString& pattern);
/// The same in a part of the receiver; raises NSRangeException for a range outside.
TOVI_EXPORT RefPtr<NSMutableArray> findRegexString_inRange(const NSString& receiver, const NSString& pattern,
                                                           NSRange range);

// Mail and web text.

/// The text with each tag, from a "<" to the next ">", replaced by one blank; with `trim` without the white space at
/// both ends. A tag is removed wherever its text stands. A "<" without ">" behind it stays, as do character references.
/// In a text without any "<" it is "(null)>" that becomes a blank. Linear time, unless tags begin within others that
/// also stand alone.
TOVI_EXPORT Ref<NSString> flattenHTML_trimWhiteSpace(const NSString& html, bool trim);

/// The address in a mailbox such as "Name <address>": what is between the first "<" and the next ">", or the end. An
/// immutable copy of the receiver when there is no "<".
TOVI_EXPORT Ref<NSString> stringByDeletingPersonalInEmailAddress(const NSString& receiver);

}  // namespace QVLAdditions
}  // namespace tovi
