#pragma once

#include <ToviFoundationKit/Runtime/Class.h>

namespace tovi {

/// A point, size, rectangle or range as an object; numbers are values too (NSNumber). Immutable.
///
/// Two values are equal when their types are and every field is (0.0 and -0.0 are; NaN is not equal to itself).
/// Asking for another structure than the one inside raises NSInvalidArgumentException.
class TOVI_EXPORT NSValue : public NSObject {
    TOVI_DECLARE_CLASS(NSValue)

public:
    static Ref<NSValue> valueWithPoint(NSPoint point);
    static Ref<NSValue> valueWithSize(NSSize size);
    static Ref<NSValue> valueWithRect(NSRect rect);
    static Ref<NSValue> valueWithRange(NSRange range);

    /// The type encoding: "{CGPoint=dd}", "{CGSize=dd}", "{CGRect={CGPoint=dd}{CGSize=dd}}", "{_NSRange=QQ}", or the
    /// letter of a number.
    virtual const char* objCType() const noexcept = 0;
    /// The content as a message carries it.
    virtual MessageValue messageValue() const = 0;

    NSPoint pointValue() const;
    NSSize sizeValue() const;
    NSRect rectValue() const;
    NSRange rangeValue() const;

    bool isEqualToValue(const NSValue& other) const { return isEqual(&other); }
    Ref<NSString> description() const override;  ///< "NSPoint: {1, 2.5}", "NSRange: {0, 4}" ...
    Ref<NSObject> copy() const override;         ///< the receiver itself

protected:
    NSValue() noexcept = default;
};

inline bool operator==(const NSValue& a, const NSValue& b) { return a.isEqual(&b); }

}  // namespace tovi
