#pragma once

#include <ToviFoundationKit/Runtime/NSValue.h>

namespace tovi {

class NSNumber;

namespace detail {
/// A number of the integer type that the encoding names, the value narrowed to it.
TOVI_EXPORT Ref<NSNumber> boxInteger(const char* encoding, std::int64_t value);
}  // namespace detail

/// A number as an object. It keeps the type that it was made with: c s i l q (signed; a truth value is c), C S I L Q
/// (unsigned), f d. Immutable.
///
/// Accessors convert as C does, without its undefined cases: integers wrap around; a real number loses its fraction, is
/// clamped to the limits of the type asked for, and NaN gives 0.
class TOVI_EXPORT NSNumber final : public NSValue {
    TOVI_DECLARE_CLASS(NSNumber)

public:
    static Ref<NSNumber> numberWithBool(bool value);
    static Ref<NSNumber> numberWithChar(signed char value);
    static Ref<NSNumber> numberWithShort(short value);
    static Ref<NSNumber> numberWithInt(int value);
    static Ref<NSNumber> numberWithLong(long value);
    static Ref<NSNumber> numberWithLongLong(long long value);
    static Ref<NSNumber> numberWithInteger(NSInteger value);  ///< of type q
    static Ref<NSNumber> numberWithUnsignedChar(unsigned char value);
    static Ref<NSNumber> numberWithUnsignedShort(unsigned short value);
    static Ref<NSNumber> numberWithUnsignedInt(unsigned int value);
    static Ref<NSNumber> numberWithUnsignedLong(unsigned long value);
    static Ref<NSNumber> numberWithUnsignedLongLong(unsigned long long value);
    static Ref<NSNumber> numberWithUnsignedInteger(NSUInteger value);  ///< of type Q
    static Ref<NSNumber> numberWithFloat(float value);
    static Ref<NSNumber> numberWithDouble(double value);

    bool boolValue() const noexcept;  ///< true for everything but 0
    signed char charValue() const noexcept;
    short shortValue() const noexcept;
    int intValue() const noexcept;
    long longValue() const noexcept;
    long long longLongValue() const noexcept;
    NSInteger integerValue() const noexcept;
    unsigned char unsignedCharValue() const noexcept;
    unsigned short unsignedShortValue() const noexcept;
    unsigned int unsignedIntValue() const noexcept;
    unsigned long unsignedLongValue() const noexcept;
    unsigned long long unsignedLongLongValue() const noexcept;
    NSUInteger unsignedIntegerValue() const noexcept;
    float floatValue() const noexcept;
    double doubleValue() const noexcept;

    /// The exact order of the values, whatever their types: 64-bit integers are never rounded to a real number. NaN is
    /// the same as NaN and comes before every other number; 0.0 and -0.0 are the same.
    NSComparisonResult compare(const NSNumber& other) const noexcept;
    bool isEqualToNumber(const NSNumber& other) const noexcept { return compare(other) == NSOrderedSame; }

    /// The shortest decimal that reads back as the same number of its type: "-7", "3.5", "0.1", "1e+20", "inf", "nan".
    /// Real numbers have an exponent below 1e-4 and from 1e17 on; truth values are "1" and "0".
    Ref<NSString> stringValue() const;

    const char* objCType() const noexcept override;
    MessageValue messageValue() const override;
    bool isEqual(const NSObject* other) const override;  ///< by value, whatever the types
    NSUInteger hash() const override;
    Ref<NSString> description() const override;  ///< stringValue

    static void* operator new(std::size_t size);
    static void operator delete(void* memory);

private:
    friend Ref<NSNumber> detail::boxInteger(const char* encoding, std::int64_t value);
    NSNumber(char type, std::int64_t integer) noexcept : type_(type), integer_(integer) {}
    NSNumber(char type, double real) noexcept : type_(type), real_(real) {}

    bool isReal() const noexcept { return type_ == 'f' || type_ == 'd'; }
    bool isUnsigned() const noexcept { return type_ < 'a'; }
    NSUInteger magnitude() const noexcept { return static_cast<NSUInteger>(integer_); }
    template <class T> T as() const noexcept;

    char type_;
    union {
        std::int64_t integer_;  ///< the bits, where the type is unsigned
        double real_;
    };
};

}  // namespace tovi
