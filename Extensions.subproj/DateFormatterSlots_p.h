#pragma once

#include <ToviFoundationKit/Foundation/NSDateFormatter.h>

namespace tovi::detail {

/// Where the shared formatters are kept, for the main thread.
enum class DateFormatterSlot {
    yyyy_MM_dd,
    yyyyMMddHHmm,
    HHmm,
    yyyyMMdd,
    yyyyMM,
    yyyy,
    email,
    dd,
    dddd,
    fullMonthFullYear,
    shortMonthFullYear,
    fullMonth,
    noTimeAndShort,
    noTimeAndMedium,
    noTimeAndLong,
    noTimeAndVeryLong,
    shortTimeAndShort,
    shortTimeAndMedium,
    shortTimeAndLong,
    shortTimeAndNo,
    shortTimeTZAndNo,
    longTimeAndNo,
    longTimeAndShort,
    longTimeAndMedium,
    longTimeAndLong,
    noTimeAndRelativeShort,
    noTimeAndRelativeMedium,
    noTimeAndRelativeLong,
    shortTimeAndRelativeShort,
    shortTimeAndRelativeMedium,
    longTimeAndRelativeShort,
    longTimeAndRelativeMedium,
    longTimeAndRelativeLong,
    count
};

/// What is in the slot, or null. The slots live as long as the process.
NSDateFormatter*& formatterIn(DateFormatterSlot slot) noexcept;

/// What is in the slot; if it is empty, a new formatter that `make` answers.
template <class Make> NSDateFormatter& formatterIn(DateFormatterSlot slot, Make make) {
    NSDateFormatter*& formatter = formatterIn(slot);
    if (!formatter)
        formatter = make().leak();
    return *formatter;
}

}  // namespace tovi::detail
