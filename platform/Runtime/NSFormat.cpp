#include <ToviFoundationKit/Runtime/NSFormat.h>

#include <algorithm>
#include <charconv>
#include <cmath>
#include <limits>
#include <optional>

#include <ToviFoundationKit/Runtime/Cast.h>
#include <ToviFoundationKit/Runtime/FormatValue_p.h>
#include <ToviFoundationKit/Runtime/NSNumber.h>
#include <ToviFoundationKit/Runtime/RealText_p.h>
#include <ToviFoundationKit/Runtime/Unicode_p.h>

namespace tovi {

namespace {

using Type = FormatArgument::Type;

constexpr NSUInteger widest = detail::RealText::mostDigits;
constexpr NSUInteger unlimited = std::numeric_limits<NSUInteger>::max();

struct Conversion {
    bool left = false, zeros = false, plus = false, space = false, alternate = false;
    NSUInteger width = 0;
    std::optional<NSUInteger> precision;
    unsigned size = 0;  ///< bytes that the modifier names; 0: those of the argument
    char type = 0;
    FormatArgument argument = nullptr;

    std::optional<NSUInteger> numberPrecision() const {
        return precision ? std::optional(std::min(*precision, detail::RealText::mostDigits)) : std::nullopt;
    }
};

class Formatter {
public:
    Formatter(StringBuilder& out, std::u16string_view format, FormatArguments arguments)
        : out_(out), rest_(format), arguments_(arguments) {}

    void run() {
        while (!rest_.empty()) {
            const std::size_t count = std::min(rest_.find(u'%'), rest_.size());
            out_.append(rest_.substr(0, count));
            rest_.remove_prefix(count);
            if (!rest_.empty())
                convert();
        }
    }

private:
    // Reading.

    bool take(char16_t unit) {
        const bool found = rest_.starts_with(unit);
        rest_.remove_prefix(found);
        return found;
    }

    /// Digits as a number, far beyond every bound at the most; none without digits.
    std::optional<NSUInteger> takeNumber() {
        std::optional<NSUInteger> number;
        for (; !rest_.empty() && rest_.front() >= u'0' && rest_.front() <= u'9'; rest_.remove_prefix(1))
            number = std::min<NSUInteger>(number.value_or(0) * 10 + (rest_.front() - NSUInteger(u'0')), 1U << 30);
        return number;
    }

    /// "n$", or nothing taken.
    std::optional<NSUInteger> takePosition() {
        const std::u16string_view before = rest_;
        const std::optional<NSUInteger> position = takeNumber();
        if (position && *position && take(u'$'))
            return position;
        rest_ = before;
        return std::nullopt;
    }

    const FormatArgument* argumentAt(std::optional<NSUInteger> position) {
        const NSUInteger index = position ? *position - 1 : next_++;
        return index < arguments_.size() ? &arguments_[index] : nullptr;
    }

    /// A number or what a star stands for; false when the star's argument is missing.
    bool takeCount(std::optional<std::int64_t>& count) {
        if (!take(u'*')) {
            count = takeNumber();
            return true;
        }
        const FormatArgument* const argument = argumentAt(takePosition());
        if (argument)
            count = detail::integerOf(detail::unboxed(*argument));
        return argument;
    }

    void takeFlags(Conversion& c) {
        for (; !rest_.empty(); rest_.remove_prefix(1)) {
            switch (rest_.front()) {
                case u'-':
                    c.left = true;
                    break;
                case u'0':
                    c.zeros = true;
                    break;
                case u'+':
                    c.plus = true;
                    break;
                case u' ':
                    c.space = true;
                    break;
                case u'#':
                    c.alternate = true;
                    break;
                case u'\'':
                    break;
                default:
                    return;
            }
        }
    }

    void takeModifier(Conversion& c) {
        if (take(u'h')) {
            c.size = take(u'h') ? 1 : 2;
        } else if (!rest_.empty() && std::u16string_view(u"lqjztL").find(rest_.front()) != std::u16string_view::npos) {
            if (take(u'l'))
                take(u'l');
            else
                rest_.remove_prefix(1);
            c.size = 8;
        }
    }

    bool takeWidthAndPrecision(Conversion& c) {
        std::optional<std::int64_t> width, precision;
        bool complete = takeCount(width);
        if (take(u'.')) {
            complete = takeCount(precision) && complete;
            precision = precision.value_or(0);
        }
        if (precision && *precision >= 0)
            c.precision = static_cast<NSUInteger>(*precision);
        const std::int64_t given = width.value_or(0);
        c.left = c.left || given < 0;
        c.width = std::min(given < 0 ? 0 - static_cast<NSUInteger>(given) : static_cast<NSUInteger>(given), widest);
        return complete;
    }

    /// Reads a conversion and prints it, or what was read as it stands.
    void convert() {
        const std::u16string_view whole = rest_;
        rest_.remove_prefix(1);
        Conversion c;
        const std::optional<NSUInteger> position = takePosition();
        takeFlags(c);
        bool complete = takeWidthAndPrecision(c);
        takeModifier(c);
        if (take(u'%')) {
            out_.append(u'%');
            return;
        }
        complete = takeType(c) && complete;
        if (const FormatArgument* const argument = complete ? argumentAt(position) : nullptr) {
            c.argument = *argument;
            return print(c);
        }
        out_.append(whole.substr(0, whole.size() - rest_.size()));
    }

    bool takeType(Conversion& c) {
        if (rest_.empty() ||
            std::u16string_view(u"@diDuUxXoOcCsSpaAeEfFgG").find(rest_.front()) == std::u16string_view::npos)
            return false;
        c.type = static_cast<char>(rest_.front());
        rest_.remove_prefix(1);
        return true;
    }

    // Printing.

    void print(Conversion& c) {
        if (c.type == '@' || c.type == 's' || c.type == 'S')
            return printText(c);
        if (c.type == 'p')
            return printPointer(c);
        c.argument = detail::unboxed(c.argument);
        switch (c.type) {
            case 'd':
            case 'i':
                return printSigned(c);
            case 'D':
                c.size = 8;
                return printSigned(c);
            case 'u':
            case 'x':
            case 'X':
            case 'o':
                return printUnsigned(c);
            case 'U':
            case 'O':
                c.size = 8;
                return printUnsigned(c);
            case 'c':
            case 'C':
                return printCharacter(c);
            default:
                return printReal(c);
        }
    }

    /// Pads what was appended from `start` on.
    void justify(const Conversion& c, NSUInteger start) {
        const NSUInteger length = out_.length() - start;
        if (length < c.width)
            out_.insert(c.left ? out_.length() : start, c.width - length, u' ');
    }

    std::string_view sign(const Conversion& c, bool negative) const {
        return negative ? "-" : c.plus ? "+" : c.space ? " " : "";
    }

    /// A number in three parts: sign or base, zeros, digits.
    void printNumber(const Conversion& c, std::string_view prefix, std::string_view digits, NSUInteger leastDigits,
                     bool mayPadWithZeros) {
        if (c.zeros && !c.left && mayPadWithZeros && c.width > prefix.size())
            leastDigits = std::max(leastDigits, c.width - prefix.size());
        const NSUInteger start = out_.length();
        out_.appendASCII(prefix);
        if (leastDigits > digits.size())
            out_.append(leastDigits - digits.size(), u'0');
        out_.appendASCII(digits);
        justify(c, start);
    }

    void printInteger(const Conversion& c, std::string_view prefix, std::uint64_t value, int base) {
        char digits[24];
        char* end = std::to_chars(digits, digits + sizeof digits, value, base).ptr;
        if (value == 0 && c.precision == NSUInteger(0))
            end = digits;
        if (c.type == 'X')
            std::transform(digits, end, digits, [](char d) { return d >= 'a' ? static_cast<char>(d - 'a' + 'A') : d; });
        const auto count = static_cast<NSUInteger>(end - digits);
        NSUInteger least = c.numberPrecision().value_or(0);
        if (base == 8 && c.alternate && (count == 0 || *digits != '0'))
            least = std::max(least, count + 1);
        printNumber(c, prefix, {digits, end}, least, !c.precision);
    }

    void printSigned(const Conversion& c) {
        const detail::SignedNumber number = detail::signedOf(c.argument, c.size);
        printInteger(c, sign(c, number.negative), number.magnitude, 10);
    }

    void printUnsigned(const Conversion& c) {
        const std::uint64_t value = detail::bitsOf(c.argument, c.size);
        const bool hexadecimal = c.type == 'x' || c.type == 'X';
        const char* const prefix = c.alternate && hexadecimal && value ? c.type == 'x' ? "0x" : "0X" : "";
        printInteger(c, prefix, value, hexadecimal ? 16 : c.type == 'o' || c.type == 'O' ? 8 : 10);
    }

    void printPointer(const Conversion& c) {
        const void* const pointer = detail::pointerOf(c.argument);
        printInteger(c, "0x", pointer ? reinterpret_cast<std::uintptr_t>(pointer) : detail::bitsOf(c.argument, c.size),
                     16);
    }

    void printCharacter(const Conversion& c) {
        const NSUInteger start = out_.length();
        RefPtr<NSString> keeper;
        if (const auto text = detail::textOf(c.argument, keeper)) {
            const bool pair = text->size() > 1 && detail::isLead((*text)[0]) && detail::isTrail((*text)[1]);
            out_.append(text->substr(0, pair ? 2 : 1));
        } else {
            const std::uint64_t code = detail::bitsOf(c.argument, c.size);
            out_.appendCodePoint(static_cast<char32_t>(std::min<std::uint64_t>(code, 0x110000)));
        }
        justify(c, start);
    }

    void printText(const Conversion& c) {
        const NSUInteger start = out_.length();
        appendText(c.argument);
        if (const NSUInteger most = c.precision.value_or(unlimited); out_.length() - start > most) {
            const bool splits =
                most && detail::isLead(out_.view()[start + most - 1]) && detail::isTrail(out_.view()[start + most]);
            out_.truncate(start + most - splits);
        }
        justify(c, start);
    }

    void appendText(const FormatArgument& argument) {
        Conversion plain;
        plain.argument = argument;
        switch (argument.type()) {
            case Type::Text8:
                out_.appendUTF8(argument.text8());
                break;
            case Type::Text16:
                out_.append(argument.text16());
                break;
            case Type::Character:
                printCharacter(plain);
                break;
            case Type::Pointer:
                printPointer(plain);
                break;
            case Type::Real:
                out_.append(NSNumber::numberWithDouble(argument.real())->stringValue());
                break;
            case Type::Object:
                appendDescription(argument.object());
                break;
            default:
                printSigned(plain);
        }
    }

    void appendDescription(const NSObject* object) {
        if (!object)
            out_.append(u"(null)");
        else if (const auto* const string = as<NSString>(object))
            out_.append(*string);
        else
            out_.append(object->description());
    }

    void printReal(const Conversion& c) {
        const double value = detail::realOf(c.argument);
        const bool upper = c.type < 'a';
        const bool finite = std::isfinite(value);
        const char type = static_cast<char>(upper ? c.type - 'A' + 'a' : c.type);
        const bool negative = std::signbit(value) && !std::isnan(value);
        detail::RealText text(std::fabs(value), type, c.numberPrecision(), c.alternate);
        if (upper)
            text.toUpper();
        char prefix[4];
        char* end = std::ranges::copy(sign(c, negative), prefix).out;
        if (type == 'a' && finite)
            end = std::ranges::copy(upper ? std::string_view("0X") : std::string_view("0x"), end).out;
        printNumber(c, {prefix, end}, text.view(), 0, finite);
    }

    StringBuilder& out_;
    std::u16string_view rest_;
    FormatArguments arguments_;
    NSUInteger next_ = 0;
};

}  // namespace

void appendFormat_arguments(StringBuilder& out, std::u16string_view format, FormatArguments arguments) {
    Formatter(out, format, arguments).run();
}

}  // namespace tovi
