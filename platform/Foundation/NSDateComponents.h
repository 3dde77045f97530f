#pragma once

#include <array>
#include <limits>

#include <ToviFoundationKit/Runtime/NSString.h>

namespace tovi {

class NSCoder;

/// What a field of NSDateComponents has as long as it is not set.
inline constexpr NSInteger NSUndefinedDateComponent = std::numeric_limits<NSInteger>::max();

/// The fields of a calendar; combine with |.
enum NSCalendarUnit : NSUInteger {
    NSCalendarUnitEra = 2,
    NSCalendarUnitYear = 4,
    NSCalendarUnitMonth = 8,
    NSCalendarUnitDay = 16,
    NSCalendarUnitHour = 32,
    NSCalendarUnitMinute = 64,
    NSCalendarUnitSecond = 128,
    NSCalendarUnitWeek = 256,  ///< the week of the year by its old name
    NSCalendarUnitWeekday = 512,
    NSCalendarUnitWeekdayOrdinal = 1024,
    NSCalendarUnitQuarter = 2048,
    NSCalendarUnitWeekOfMonth = 4096,
    NSCalendarUnitWeekOfYear = 8192,
    NSCalendarUnitYearForWeekOfYear = 16384,
    NSCalendarUnitNanosecond = 32768
};
constexpr NSCalendarUnit operator|(NSCalendarUnit a, NSCalendarUnit b) noexcept {
    return static_cast<NSCalendarUnit>(static_cast<NSUInteger>(a) | static_cast<NSUInteger>(b));
}

/// The parts of a date, or of a span of time, as whole numbers; NSCalendar says what they mean. Any value is accepted.
/// Archived by keyed coders only. Mutable; not for several threads at once.
class TOVI_EXPORT NSDateComponents final : public NSObject {
    TOVI_DECLARE_CLASS(NSDateComponents)

public:
    static Ref<NSDateComponents> init();  ///< every field undefined

    NSInteger era() const noexcept { return fields_[0]; }
    NSInteger year() const noexcept { return fields_[1]; }
    NSInteger month() const noexcept { return fields_[2]; }
    NSInteger day() const noexcept { return fields_[3]; }
    NSInteger hour() const noexcept { return fields_[4]; }
    NSInteger minute() const noexcept { return fields_[5]; }
    NSInteger second() const noexcept { return fields_[6]; }
    NSInteger week() const noexcept { return fields_[7]; }
    NSInteger weekday() const noexcept { return fields_[8]; }
    NSInteger weekdayOrdinal() const noexcept { return fields_[9]; }
    NSInteger quarter() const noexcept { return fields_[10]; }
    NSInteger weekOfMonth() const noexcept { return fields_[11]; }
    NSInteger weekOfYear() const noexcept { return fields_[12]; }
    NSInteger yearForWeekOfYear() const noexcept { return fields_[13]; }
    NSInteger nanosecond() const noexcept { return fields_[14]; }

    void setEra(NSInteger value) noexcept { fields_[0] = value; }
    void setYear(NSInteger value) noexcept { fields_[1] = value; }
    void setMonth(NSInteger value) noexcept { fields_[2] = value; }
    void setDay(NSInteger value) noexcept { fields_[3] = value; }
    void setHour(NSInteger value) noexcept { fields_[4] = value; }
    void setMinute(NSInteger value) noexcept { fields_[5] = value; }
    void setSecond(NSInteger value) noexcept { fields_[6] = value; }
    void setWeek(NSInteger value) noexcept { fields_[7] = value; }
    void setWeekday(NSInteger value) noexcept { fields_[8] = value; }
    void setWeekdayOrdinal(NSInteger value) noexcept { fields_[9] = value; }
    void setQuarter(NSInteger value) noexcept { fields_[10] = value; }
    void setWeekOfMonth(NSInteger value) noexcept { fields_[11] = value; }
    void setWeekOfYear(NSInteger value) noexcept { fields_[12] = value; }
    void setYearForWeekOfYear(NSInteger value) noexcept { fields_[13] = value; }
    void setNanosecond(NSInteger value) noexcept { fields_[14] = value; }

    /// A field by its unit. Raises NSInvalidArgumentException for what is not exactly one unit.
    NSInteger valueForComponent(NSCalendarUnit unit) const;
    void setValue_forComponent(NSInteger value, NSCalendarUnit unit);

    bool isEqual(const NSObject* other) const override;
    NSUInteger hash() const override;
    /// "<NSDateComponents: 0x...> year: 2026, month: 11": the fields that are set.
    Ref<NSString> description() const override;
    Ref<NSObject> copy() const override;  ///< a new object, as mutable as the receiver
    void encodeWithCoder(NSCoder& coder) const;
    void initWithCoder(NSCoder& coder);

private:
    NSDateComponents() noexcept { fields_.fill(NSUndefinedDateComponent); }
    ~NSDateComponents() override = default;

    std::array<NSInteger, 15> fields_;  ///< in the order of the units' bits
};

}  // namespace tovi
