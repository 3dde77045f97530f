#pragma once

#include <ToviFoundationKit/Foundation/NSDateFormatter.h>

namespace tovi {
inline namespace Extensions {

// Shared formatters, made when first asked for and kept: each operation answers the same object every time. They are
// for the main thread; whoever changes one changes it for everybody. A formatter has the locale and the default time
// zone that were current when it was made.

// By pattern (UTS #35).

TOVI_EXPORT Ref<NSDateFormatter> yyyy_MM_ddDateFormatter();         ///< "yyyy-MM-dd"
TOVI_EXPORT Ref<NSDateFormatter> yyyyMMddHHmmDateFormatter();       ///< "yyyyMMddHHmm"
TOVI_EXPORT Ref<NSDateFormatter> HHmmDateFormatter();               ///< "HH:mm"
TOVI_EXPORT Ref<NSDateFormatter> yyyyMMddDateFormatter();           ///< "yyyyMMdd"
TOVI_EXPORT Ref<NSDateFormatter> yyyyMMDateFormatter();             ///< "yyyyMM"
TOVI_EXPORT Ref<NSDateFormatter> yyyyDateFormatter();               ///< "yyyy"
TOVI_EXPORT Ref<NSDateFormatter> emailDateFormatter();              ///< "EEE, d MMM yyyy HH:mm:ss Z", always in English
TOVI_EXPORT Ref<NSDateFormatter> dayNumberDateFormatter();          ///< "dd"
TOVI_EXPORT Ref<NSDateFormatter> fullDayDateFormatter();            ///< "EEEE"
TOVI_EXPORT Ref<NSDateFormatter> fullMonthFullYearDateFormatter();  ///< "MMMM yyyy"
TOVI_EXPORT Ref<NSDateFormatter> shortMonthFullYearDateFormatter();  ///< "MMM yyyy"
TOVI_EXPORT Ref<NSDateFormatter> fullMonthDateFormatter();           ///< "MMMM"
TOVI_EXPORT Ref<NSDateFormatter> fullYearDateFormatter();            ///< `yyyyDateFormatter` itself

// By the styles of the locale, for the time and for the date; "very long" is the full style.

TOVI_EXPORT Ref<NSDateFormatter> noTimeAndShortDateFormatter();
TOVI_EXPORT Ref<NSDateFormatter> noTimeAndMediumDateFormatter();
TOVI_EXPORT Ref<NSDateFormatter> noTimeAndLongDateFormatter();
TOVI_EXPORT Ref<NSDateFormatter> noTimeAndVeryLongDateFormatter();
TOVI_EXPORT Ref<NSDateFormatter> shortTimeAndShortDateFormatter();
TOVI_EXPORT Ref<NSDateFormatter> shortTimeAndMediumDateFormatter();
TOVI_EXPORT Ref<NSDateFormatter> shortTimeAndLongDateFormatter();
TOVI_EXPORT Ref<NSDateFormatter> shortTimeAndNoDateFormatter();
TOVI_EXPORT Ref<NSDateFormatter> shortTimeTZAndNoDateFormatter();  ///< the short time with the zone: "14:05(CET)"
TOVI_EXPORT Ref<NSDateFormatter> longTimeAndNoDateFormatter();
TOVI_EXPORT Ref<NSDateFormatter> longTimeAndShortDateFormatter();
/// The formatter of `longTimeAndShortDateFormatter`, if that was asked for before, else nil: there is none with the
/// medium date.
TOVI_EXPORT RefPtr<NSDateFormatter> longTimeAndMediumDateFormatter();
TOVI_EXPORT Ref<NSDateFormatter> longTimeAndLongDateFormatter();

/// Gives the shared formatters that have been made the default time zone; call it when that has changed. Not all of
/// them follow: those with a medium date, shortTimeTZAndNoDateFormatter, dayNumberDateFormatter, fullDayDateFormatter
/// and fullMonthDateFormatter keep theirs. Of QVLRelativeDateFormatter's, the ones with a medium date do, too.
TOVI_EXPORT void resetDateFormatterDefaultTimeZone();

}  // namespace Extensions
}  // namespace tovi
