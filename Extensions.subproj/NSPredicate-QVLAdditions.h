#pragma once

#include <ToviFoundationKit/Foundation/NSPredicate.h>

namespace tovi {
inline namespace QVLAdditions {

/// The predicate of a format with days counted from today: `$0_start` is today at 0:00:00, `$-1_start` yesterday at
/// 0:00:00, `$7_end` seven days from today at 23:59:59, in the calendar `gregorian`. Each such token is replaced with a
/// date constant before the format is read with its arguments:
///
///     predicateWithFormatByReplacingRelativeDatePatternsWithRealDates(u"date >= $-7_start AND sender == %@", name)
///
/// What is between "$" and "_start" is read as `intValue` does, so `$today_start` is today, too. The "$" of a token is
/// the first one in what is left of the format: a variable in front of a token becomes part of it. All the tokens that
/// are written the same are replaced at once.
///
/// The texts "_start" and "_end" are for tokens only. One that cannot be made a token's, as in a key "date_start",
/// raises NSInvalidArgumentException. Linear time, as long as no variable stands in front of a token.
template <class... A>
Ref<NSPredicate> predicateWithFormatByReplacingRelativeDatePatternsWithRealDates(std::u16string_view format,
                                                                                 const A&... arguments);
TOVI_EXPORT Ref<NSPredicate> predicateWithFormatByReplacingRelativeDatePatternsWithRealDates_arguments(
    std::u16string_view format, FormatArguments arguments);

/// The predicate's format with its date constants printed as "yyy-MM-dd HH:mm:ss Z(z)" has it, in the default time zone
/// and the current locale. Casts of other kinds are not for this: as in `findRegexString`, a "CAST(" that no
/// `, "NSDate")` follows raises NSRangeException.
TOVI_EXPORT Ref<NSMutableString> qvlDescription(const NSPredicate& receiver);

template <class... A>
Ref<NSPredicate> predicateWithFormatByReplacingRelativeDatePatternsWithRealDates(std::u16string_view format,
                                                                                 const A&... arguments) {
    const FormatArgumentList<sizeof...(A)> list{FormatArgument(arguments)...};
    return predicateWithFormatByReplacingRelativeDatePatternsWithRealDates_arguments(format, list);
}

}  // namespace QVLAdditions
}  // namespace tovi
