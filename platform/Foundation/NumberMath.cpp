#include <ToviFoundationKit/Foundation/NumberMath_p.h>

#include <cmath>
#include <limits>
#include <optional>

#include <ToviFoundationKit/Foundation/FastEnumeration.h>
#include <ToviFoundationKit/Foundation/NSNull.h>
#include <ToviFoundationKit/Runtime/Message.h>
#include <ToviFoundationKit/Runtime/NSException.h>

namespace tovi::detail {

namespace {

Ref<NSNumber> made(NSInteger value) { return NSNumber::numberWithInteger(value); }
Ref<NSNumber> made(double value) { return NSNumber::numberWithDouble(value); }

/// The value of an integer that a signed one can hold.
std::optional<NSInteger> integerIn(const NSNumber& number) noexcept {
    const NSInteger value = number.integerValue();
    const bool isTooLarge = value < 0 && *number.objCType() < 'a';
    return isReal(number) || isTooLarge ? std::nullopt : std::optional(value);
}

/// `exactly` puts the result for integers into its last parameter and answers false when that does not fit.
template <class Exactly, class Really>
Ref<NSNumber> combined(const NSNumber& a, const NSNumber& b, Exactly exactly, Really really) {
    const auto first = integerIn(a), second = integerIn(b);
    NSInteger result = 0;
    if (first && second && exactly(*first, *second, result))
        return made(result);
    return made(really(a.doubleValue(), b.doubleValue()));
}

bool canDivide(NSInteger a, NSInteger b) noexcept {
    return b != 0 && !(b == -1 && a == std::numeric_limits<NSInteger>::min());
}

bool raised(NSInteger base, NSInteger exponent, NSInteger& result) noexcept {
    if (exponent < 0)
        return false;
    for (result = 1; exponent; exponent >>= 1) {
        if (exponent & 1 && __builtin_mul_overflow(result, base, &result))
            return false;
        if (exponent > 1 && __builtin_mul_overflow(base, base, &base))
            return false;
    }
    return true;
}

}  // namespace

Ref<NSNumber> sum(const NSNumber& a, const NSNumber& b) {
    return combined(
        a, b, [](NSInteger x, NSInteger y, NSInteger& r) { return !__builtin_add_overflow(x, y, &r); },
        std::plus<double>());
}

Ref<NSNumber> difference(const NSNumber& a, const NSNumber& b) {
    return combined(
        a, b, [](NSInteger x, NSInteger y, NSInteger& r) { return !__builtin_sub_overflow(x, y, &r); },
        std::minus<double>());
}

Ref<NSNumber> product(const NSNumber& a, const NSNumber& b) {
    return combined(
        a, b, [](NSInteger x, NSInteger y, NSInteger& r) { return !__builtin_mul_overflow(x, y, &r); },
        std::multiplies<double>());
}

Ref<NSNumber> quotient(const NSNumber& a, const NSNumber& b) {
    return combined(
        a, b, [](NSInteger x, NSInteger y, NSInteger& r) { return canDivide(x, y) && (r = x / y, true); },
        [](double x, double y) { return y != 0   ? x / y
                                        : x != 0 ? std::copysign(HUGE_VAL, x)
                                                 : std::nan(""); });
}

Ref<NSNumber> remainder(const NSNumber& a, const NSNumber& b) {
    return combined(
        a, b, [](NSInteger x, NSInteger y, NSInteger& r) { return canDivide(x, y) && (r = x % y, true); },
        [](double x, double y) { return std::fmod(x, y); });
}

Ref<NSNumber> power(const NSNumber& base, const NSNumber& exponent) {
    return combined(base, exponent, raised, [](double x, double y) { return std::pow(x, y); });
}

Ref<NSNumber> magnitude(const NSNumber& number) {
    const auto integer = integerIn(number);
    if (integer && *integer != std::numeric_limits<NSInteger>::min())
        return made(std::abs(*integer));
    return made(std::abs(number.doubleValue()));
}

// --- Of collections --------------------------------------------------------------------------------------------------

bool isNull(const NSObject* object) noexcept { return !object || &object->isa() == &NSNull::classObject(); }

const NSNumber& numberIn(const NSObject& object) {
    if (const auto* number = as<NSNumber>(&object)) [[likely]]
        return *number;
    NSException::raise(NSInvalidArgumentException, u"%@ is no number", object);
}

Ref<NSNumber> sumOf(const NSObject& collection) {
    Ref<NSNumber> total = made(NSInteger{0});
    for (const NSObject& each : FastEnumeration(collection))
        if (!isNull(&each))
            total = sum(total, numberIn(each));
    return total;
}

Ref<NSNumber> averageOf(const NSObject& collection) {
    NSInteger count = 0;
    for (const NSObject& each : FastEnumeration(collection))
        count += !isNull(&each);
    return count ? made(sumOf(collection)->doubleValue() / static_cast<double>(count)) : made(NSInteger{0});
}

id extremeOf(const NSObject& collection, NSInteger sign) {
    MessageSite compare("compare:"_sel);
    id extreme;
    for (NSObject& each : FastEnumeration(collection))
        if (!isNull(&each) && (!extreme || compare.send<NSInteger>(each, extreme) * sign > 0))
            extreme = each;
    return extreme;
}

}  // namespace tovi::detail
