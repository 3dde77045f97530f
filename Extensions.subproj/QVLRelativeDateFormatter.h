#pragma once

#include <ToviFoundationKit/Foundation/NSDateFormatter.h>

namespace tovi {

/// Prints "Today", "Tomorrow" or "Yesterday", in the user's language, for dates on those days, with the time behind it
/// where a time style is set; other dates as a shared formatter of NSDateFormatter-Extensions.h prints them.
///
/// The days are those of the calendar `gregorian`, and count only within one month: on the 1st the last day of the
/// month before is not "Yesterday", and on the last day the next one is not "Tomorrow". For other days neither the
/// formatter's own time zone nor its locale plays a part. The date style that is inherited stays unset.
class TOVI_EXPORT QVLRelativeDateFormatter final : public NSDateFormatter {
    TOVI_DECLARE_CLASS(QVLRelativeDateFormatter)

public:
    static Ref<QVLRelativeDateFormatter> init();

    /// The date style of days that have no word: 1 short, 2 medium, 3 long. With any other, 0 at first too, and with a
    /// time style other than none, short and long, such days give the empty text.
    void setRelativeDateStyle(NSUInteger style) noexcept { relativeDateStyle_ = style; }

    /// nil where the shared formatter is: for a medium date with a long time, see longTimeAndMediumDateFormatter.
    RefPtr<NSString> stringFromDate(const NSDate& date) const override;

    Ref<NSObject> copy() const override;  ///< a new relative formatter, as mutable as the receiver

    // Shared formatters, made when first asked for and kept, for the main thread: a time style and a relative date
    // style.

    static Ref<QVLRelativeDateFormatter> noTimeAndRelativeShortDateFormatter();
    static Ref<QVLRelativeDateFormatter> noTimeAndRelativeMediumDateFormatter();
    static Ref<QVLRelativeDateFormatter> noTimeAndRelativeLongDateFormatter();
    static Ref<QVLRelativeDateFormatter> shortTimeAndRelativeShortDateFormatter();
    static Ref<QVLRelativeDateFormatter> shortTimeAndRelativeMediumDateFormatter();
    /// Always nil: what it makes, at every call, is a new formatter with a short date, which
    /// shortTimeAndRelativeShortDateFormatter answers from then on. The one before is not destroyed.
    static RefPtr<QVLRelativeDateFormatter> shortTimeAndRelativeLongDateFormatter();
    static Ref<QVLRelativeDateFormatter> longTimeAndRelativeShortDateFormatter();
    static Ref<QVLRelativeDateFormatter> longTimeAndRelativeMediumDateFormatter();
    static Ref<QVLRelativeDateFormatter> longTimeAndRelativeLongDateFormatter();

private:
    QVLRelativeDateFormatter() = default;

    NSUInteger relativeDateStyle_ = 0;
};

}  // namespace tovi
