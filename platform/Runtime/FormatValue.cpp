#include <ToviFoundationKit/Runtime/FormatValue_p.h>

#include <ToviFoundationKit/Runtime/Cast.h>
#include <ToviFoundationKit/Runtime/NSNumber.h>
#include <ToviFoundationKit/Runtime/NumberConversion_p.h>
#include <ToviFoundationKit/Runtime/NumberText_p.h>

namespace tovi::detail {

namespace {
using Type = FormatArgument::Type;
}

FormatArgument unboxed(const FormatArgument& argument) {
    const auto* const number = argument.type() == Type::Object ? as<NSNumber>(argument.object()) : nullptr;
    if (!number)
        return argument;
    const char type = *number->objCType();
    if (type == 'f' || type == 'd')
        return number->doubleValue();
    return withIntegerType(type, [number]<class T>(std::type_identity<T>) {
        return FormatArgument(static_cast<T>(number->longLongValue()));
    });
}

const void* pointerOf(const FormatArgument& argument) noexcept {
    switch (argument.type()) {
        case Type::Object:
            return argument.object();
        case Type::Text8:
            return argument.text8().data();
        case Type::Text16:
            return argument.text16().data();
        case Type::Pointer:
            return argument.pointer();
        default:
            return nullptr;
    }
}

std::optional<std::u16string_view> textOf(const FormatArgument& argument, RefPtr<NSString>& keeper) {
    switch (argument.type()) {
        case Type::Object: {
            const auto* const string = as<NSString>(argument.object());
            return string ? std::optional(string->view()) : std::nullopt;
        }
        case Type::Text8:
            keeper = NSString::fromUTF8(argument.text8());
            return keeper->view();
        case Type::Text16:
            return argument.text16();
        default:
            return std::nullopt;
    }
}

SignedNumber signedOf(const FormatArgument& argument, unsigned size) {
    if (size == 0 && argument.type() == Type::Unsigned)
        return {false, bitsOf(argument, 0)};
    const unsigned cut = size ? 64 - 8 * size : 0;
    const std::int64_t value = static_cast<std::int64_t>(static_cast<std::uint64_t>(integerOf(argument)) << cut) >> cut;
    const auto bits = static_cast<std::uint64_t>(value);
    return {value < 0, value < 0 ? 0 - bits : bits};
}

std::uint64_t bitsOf(const FormatArgument& argument, unsigned size) {
    const bool large = argument.type() == Type::Real && argument.real() >= 0x1p63;
    const auto bits =
        large ? truncated<std::uint64_t>(argument.real()) : static_cast<std::uint64_t>(integerOf(argument));
    const bool sized = argument.type() == Type::Signed || argument.type() == Type::Unsigned;
    const std::size_t bytes = size ? size : sized ? argument.size() : 8;
    return bits & (~std::uint64_t(0) >> (64 - 8 * bytes));
}

std::int64_t integerOf(const FormatArgument& argument) {
    RefPtr<NSString> keeper;
    switch (argument.type()) {
        case Type::Signed:
        case Type::Unsigned:
        case Type::Character:
            return argument.integer();
        case Type::Real:
            return truncated<std::int64_t>(argument.real());
        default:
            if (const auto text = textOf(argument, keeper))
                return leadingInteger(*text);
            return reinterpret_cast<std::intptr_t>(pointerOf(argument));
    }
}

double realOf(const FormatArgument& argument) {
    RefPtr<NSString> keeper;
    switch (argument.type()) {
        case Type::Real:
            return argument.real();
        case Type::Unsigned:
            return static_cast<double>(static_cast<std::uint64_t>(argument.integer()));
        default:
            if (const auto text = textOf(argument, keeper))
                return leadingReal(*text);
            return static_cast<double>(integerOf(argument));
    }
}

}  // namespace tovi::detail
