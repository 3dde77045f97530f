#include <ToviFoundationKit/Runtime/NSNumber.h>

#include <bit>
#include <charconv>
#include <cstdlib>
#include <new>
#include <string_view>
#include <utility>

#include <ToviFoundationKit/Runtime/Additions.h>
#include <ToviFoundationKit/Runtime/Box.h>
#include <ToviFoundationKit/Runtime/NSString.h>
#include <ToviFoundationKit/Runtime/NumberConversion_p.h>

namespace tovi {

TOVI_DEFINE_CLASS(NSNumber, NSValue)

// The type letter lies in the root class's tail padding; a number is one 32-byte block of the allocator.
static_assert(sizeof(NSNumber) == 24);

void* NSNumber::operator new(std::size_t size) {
    if (void* const memory = std::malloc(size)) [[likely]]
        return memory;
    throw std::bad_alloc();
}
void NSNumber::operator delete(void* memory) { std::free(memory); }

Ref<NSNumber> NSNumber::numberWithBool(bool value) { return adopt(*new NSNumber('c', std::int64_t{value})); }
Ref<NSNumber> NSNumber::numberWithChar(signed char value) { return adopt(*new NSNumber('c', std::int64_t{value})); }
Ref<NSNumber> NSNumber::numberWithShort(short value) { return adopt(*new NSNumber('s', std::int64_t{value})); }
Ref<NSNumber> NSNumber::numberWithInt(int value) { return adopt(*new NSNumber('i', std::int64_t{value})); }
Ref<NSNumber> NSNumber::numberWithLong(long value) { return adopt(*new NSNumber('l', std::int64_t{value})); }
Ref<NSNumber> NSNumber::numberWithLongLong(long long value) { return adopt(*new NSNumber('q', std::int64_t{value})); }
Ref<NSNumber> NSNumber::numberWithInteger(NSInteger value) { return adopt(*new NSNumber('q', value)); }
Ref<NSNumber> NSNumber::numberWithUnsignedChar(unsigned char value) {
    return adopt(*new NSNumber('C', std::int64_t{value}));
}
Ref<NSNumber> NSNumber::numberWithUnsignedShort(unsigned short value) {
    return adopt(*new NSNumber('S', std::int64_t{value}));
}
Ref<NSNumber> NSNumber::numberWithUnsignedInt(unsigned int value) {
    return adopt(*new NSNumber('I', std::int64_t{value}));
}
Ref<NSNumber> NSNumber::numberWithUnsignedLong(unsigned long value) {
    return adopt(*new NSNumber('L', static_cast<std::int64_t>(value)));
}
Ref<NSNumber> NSNumber::numberWithUnsignedLongLong(unsigned long long value) {
    return adopt(*new NSNumber('Q', static_cast<std::int64_t>(value)));
}
Ref<NSNumber> NSNumber::numberWithUnsignedInteger(NSUInteger value) {
    return adopt(*new NSNumber('Q', static_cast<std::int64_t>(value)));
}
Ref<NSNumber> NSNumber::numberWithFloat(float value) { return adopt(*new NSNumber('f', double{value})); }
Ref<NSNumber> NSNumber::numberWithDouble(double value) { return adopt(*new NSNumber('d', value)); }

template <class T> T NSNumber::as() const noexcept { return isReal() ? truncated<T>(real_) : static_cast<T>(integer_); }

bool NSNumber::boolValue() const noexcept { return isReal() ? real_ != 0 : integer_ != 0; }
signed char NSNumber::charValue() const noexcept { return as<signed char>(); }
short NSNumber::shortValue() const noexcept { return as<short>(); }
int NSNumber::intValue() const noexcept { return as<int>(); }
long NSNumber::longValue() const noexcept { return as<long>(); }
long long NSNumber::longLongValue() const noexcept { return as<long long>(); }
NSInteger NSNumber::integerValue() const noexcept { return as<NSInteger>(); }
unsigned char NSNumber::unsignedCharValue() const noexcept { return as<unsigned char>(); }
unsigned short NSNumber::unsignedShortValue() const noexcept { return as<unsigned short>(); }
unsigned int NSNumber::unsignedIntValue() const noexcept { return as<unsigned int>(); }
unsigned long NSNumber::unsignedLongValue() const noexcept { return as<unsigned long>(); }
unsigned long long NSNumber::unsignedLongLongValue() const noexcept { return as<unsigned long long>(); }
NSUInteger NSNumber::unsignedIntegerValue() const noexcept { return as<NSUInteger>(); }
float NSNumber::floatValue() const noexcept { return static_cast<float>(doubleValue()); }

double NSNumber::doubleValue() const noexcept {
    if (isReal())
        return real_;
    return isUnsigned() ? static_cast<double>(magnitude()) : static_cast<double>(integer_);
}

namespace {

constexpr NSComparisonResult order(auto a, auto b) noexcept {
    return a < b ? NSOrderedAscending : b < a ? NSOrderedDescending : NSOrderedSame;
}

NSComparisonResult orderOfReals(double a, double b) noexcept {
    if (std::isnan(a) || std::isnan(b))
        return order(!std::isnan(a), !std::isnan(b));
    return order(a, b);
}

template <class T> NSComparisonResult orderOfMixed(T integer, double real) noexcept {
    if (std::isnan(real))
        return NSOrderedDescending;
    // Clamping gives a limit only to numbers at or beyond it, and those beyond are told apart by their fraction or
    // size.
    const T whole = truncated<T>(real);
    return integer == whole ? order(static_cast<long double>(whole), static_cast<long double>(real))
                            : order(integer, whole);
}
static_assert(std::numeric_limits<long double>::digits >= 64, "holds every 64-bit integer and every double");

constexpr NSComparisonResult reversed(NSComparisonResult result) noexcept {
    return static_cast<NSComparisonResult>(-result);
}

}  // namespace

NSComparisonResult NSNumber::compare(const NSNumber& other) const noexcept {
    if (isReal() && other.isReal())
        return orderOfReals(real_, other.real_);
    if (isReal())
        return reversed(other.compare(*this));
    if (other.isReal())
        return isUnsigned() ? orderOfMixed(magnitude(), other.real_) : orderOfMixed(integer_, other.real_);
    if (isUnsigned() == other.isUnsigned())
        return isUnsigned() ? order(magnitude(), other.magnitude()) : order(integer_, other.integer_);
    if ((isUnsigned() ? other.integer_ : integer_) < 0)
        return isUnsigned() ? NSOrderedDescending : NSOrderedAscending;
    return order(magnitude(), other.magnitude());
}

bool NSNumber::isEqual(const NSObject* other) const {
    if (!other || &other->isa() != &classObject())
        return false;
    const auto& number = static_cast<const NSNumber&>(*other);
    return type_ == number.type_ && !isReal() ? integer_ == number.integer_ : isEqualToNumber(number);
}

namespace {

NSUInteger scattered(NSUInteger bits) noexcept {
    const NSUInteger mixed = bits * 0x9E3779B97F4A7C15U;
    return mixed ^ mixed >> 32;
}

}  // namespace

NSUInteger NSNumber::hash() const {
    if (!isReal())
        return scattered(magnitude());
    // A real number that equals an integer hashes like it.
    const auto whole = real_ < 0 ? static_cast<NSUInteger>(truncated<NSInteger>(real_)) : truncated<NSUInteger>(real_);
    if (real_ == (real_ < 0 ? static_cast<double>(static_cast<NSInteger>(whole)) : static_cast<double>(whole)))
        return scattered(whole);
    return std::isnan(real_) ? 0 : scattered(std::bit_cast<NSUInteger>(real_));
}

namespace {

// The digits come from to_chars; where the exponent is shown is settled here, as its own rule makes 100000 "1e+05".
template <class Real> std::string_view decimal(Real value, std::span<char, 64> buffer) noexcept {
    if (std::isnan(value))
        return "nan";
    char* const begin = buffer.data();
    char* const end = begin + buffer.size();
    const char* const last = std::to_chars(begin, end, value, std::chars_format::scientific).ptr;
    const std::string_view scientific(begin, static_cast<std::size_t>(last - begin));
    const std::size_t e = scientific.find('e');
    int exponent = 0;
    if (e != scientific.npos)
        std::from_chars(begin + e + (scientific[e + 1] == '+' ? 2 : 1), last, exponent);
    if (exponent < -4 || exponent >= 17)
        return scientific;
    return {begin, static_cast<std::size_t>(std::to_chars(begin, end, value, std::chars_format::fixed).ptr - begin)};
}

std::string_view decimal(std::integral auto value, std::span<char, 64> buffer) noexcept {
    const auto result = std::to_chars(buffer.data(), buffer.data() + buffer.size(), value);
    return {buffer.data(), static_cast<std::size_t>(result.ptr - buffer.data())};
}

}  // namespace

Ref<NSString> NSNumber::stringValue() const {
    char buffer[64];
    if (type_ == 'd')
        return NSString::fromUTF8(decimal(real_, buffer));
    if (type_ == 'f')
        return NSString::fromUTF8(decimal(static_cast<float>(real_), buffer));
    return NSString::fromUTF8(isUnsigned() ? decimal(magnitude(), buffer) : decimal(integer_, buffer));
}

Ref<NSString> NSNumber::description() const { return stringValue(); }

const char* NSNumber::objCType() const noexcept {
    static constexpr std::string_view types("c\0s\0i\0l\0q\0C\0S\0I\0L\0Q\0f\0d", 24);
    return types.data() + types.find(type_);
}

MessageValue NSNumber::messageValue() const {
    MessageValue value = isReal() ? MessageValue::of(real_) : MessageValue::of(integer_);
    value.setEncoding(objCType());
    return value;
}

namespace detail {
Ref<NSNumber> boxInteger(const char* encoding, std::int64_t value) {
    return adopt(*new NSNumber(*encoding, narrowed(value, *encoding)));
}
}  // namespace detail

namespace {

const Additions<NSNumber> additions{
    classLevel<&NSNumber::numberWithBool>("numberWithBool:"),
    classLevel<&NSNumber::numberWithChar>("numberWithChar:"),
    classLevel<&NSNumber::numberWithShort>("numberWithShort:"),
    classLevel<&NSNumber::numberWithInt>("numberWithInt:"),
    classLevel<&NSNumber::numberWithLong>("numberWithLong:"),
    classLevel<&NSNumber::numberWithLongLong>("numberWithLongLong:"),
    classLevel<&NSNumber::numberWithInteger>("numberWithInteger:"),
    classLevel<&NSNumber::numberWithUnsignedChar>("numberWithUnsignedChar:"),
    classLevel<&NSNumber::numberWithUnsignedShort>("numberWithUnsignedShort:"),
    classLevel<&NSNumber::numberWithUnsignedInt>("numberWithUnsignedInt:"),
    classLevel<&NSNumber::numberWithUnsignedLong>("numberWithUnsignedLong:"),
    classLevel<&NSNumber::numberWithUnsignedLongLong>("numberWithUnsignedLongLong:"),
    classLevel<&NSNumber::numberWithUnsignedInteger>("numberWithUnsignedInteger:"),
    classLevel<&NSNumber::numberWithFloat>("numberWithFloat:"),
    classLevel<&NSNumber::numberWithDouble>("numberWithDouble:"),
    instance<&NSNumber::boolValue>("boolValue"),
    instance<&NSNumber::charValue>("charValue"),
    instance<&NSNumber::shortValue>("shortValue"),
    instance<&NSNumber::intValue>("intValue"),
    instance<&NSNumber::longValue>("longValue"),
    instance<&NSNumber::longLongValue>("longLongValue"),
    instance<&NSNumber::integerValue>("integerValue"),
    instance<&NSNumber::unsignedCharValue>("unsignedCharValue"),
    instance<&NSNumber::unsignedShortValue>("unsignedShortValue"),
    instance<&NSNumber::unsignedIntValue>("unsignedIntValue"),
    instance<&NSNumber::unsignedLongValue>("unsignedLongValue"),
    instance<&NSNumber::unsignedLongLongValue>("unsignedLongLongValue"),
    instance<&NSNumber::unsignedIntegerValue>("unsignedIntegerValue"),
    instance<&NSNumber::floatValue>("floatValue"),
    instance<&NSNumber::doubleValue>("doubleValue"),
    instance<&NSNumber::compare>("compare:"),
    instance<&NSNumber::isEqualToNumber>("isEqualToNumber:"),
    instance<&NSNumber::stringValue>("stringValue"),
};

}  // namespace

}  // namespace tovi
