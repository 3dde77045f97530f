// Formats with arguments of every type. What C's printf defines must come out as it prints it; everything else must
// neither read past the arguments nor grow beyond its bound.

#include <algorithm>
#include <cstdio>
#include <cstring>
#include <functional>
#include <string>
#include <vector>

#include <ToviFoundationKit/Runtime/NSFormat.h>
#include <ToviFoundationKit/Runtime/NSNumber.h>

#include "Support.h"

using namespace tovi;

namespace {

constexpr NSUInteger longestArgument = 32, longestConversion = 4095 + 400;

void formatAnything(Input input) {
    const Ref<NSString> text = NSString::stringWithCharacters(u"t\u00E9xt\U0001F600");
    const Ref<NSNumber> number = NSNumber::numberWithInteger(input.value<NSInteger>());
    const std::function<FormatArgument()> kinds[] = {
        [&] { return input.value<std::int64_t>(); },
        [&] { return input.value<std::uint64_t>(); },
        [&] { return input.value<signed char>(); },
        [&] { return input.value<std::uint16_t>(); },
        [&] { return input.value<double>(); },
        [&] { return FormatArgument(text); },
        [&] { return FormatArgument(number); },
        [&] { return "12.5e\xFF\xC3"; },
        [&] { return u"-99\xD83D"; },
        [&] { return input.value<char16_t>(); },
        [&] { return static_cast<char32_t>(input.value<std::uint32_t>()); },
        [&] { return nullptr; },
        [&] { return static_cast<const void*>(input.data); },
    };
    std::vector<FormatArgument> arguments;
    for (int count = input.byte() % 8; count; --count)
        arguments.push_back(kinds[input.byte() % std::size(kinds)]());
    constexpr std::u16string_view alphabet = u"%%%%%$*.0123456789-+ #'hlqjztLdiDuUxXoOcCsSpaAeEfFgG@n\xD83D";
    std::u16string format;
    while (input.size)
        format += alphabet[input.byte() % alphabet.size()];
    const Ref<NSString> result = NSString::stringWithFormat_arguments(format, arguments);
    const auto conversions = static_cast<NSUInteger>(std::count(format.begin(), format.end(), u'%'));
    require(result->length() <= format.size() + conversions * (longestConversion + longestArgument), "too long");
    if (arguments.empty()) {
        std::u16string_view left = format;
        for (const char16_t unit : result->view()) {
            const std::size_t place = left.find(unit);
            require(place != left.npos, "a format without arguments is not printed as it stands");
            left.remove_prefix(place + 1);
        }
    }
}

void formatAsC(Input input) {
    std::string format = "%";
    for (std::uint8_t flags = input.byte(), i = 0; i < 5; ++i)
        if (flags >> i & 1)
            format += "-+ #0"[i];
    if (const int width = input.byte() % 64)
        format += std::to_string(width);
    if (const int precision = input.byte() % 64; precision < 40)
        format += '.' + std::to_string(precision);
    const char type = "diuxXoeEfFgG"[input.byte() % 12];
    char expected[1024];
    Ref<NSString> result = NSString::string();
    const auto run = [&](auto value, const char* modifier) {
        format += modifier;
        format += type;
        std::snprintf(expected, sizeof expected, format.c_str(), value);
        result = NSString::stringWithFormat(NSString::fromUTF8(format)->view(), value);
    };
    if (std::strchr("eEfFgG", type)) {
        // The sign of NaN is not printed.
        const double value = input.value<double>();
        run(value == value ? value : 0.0, "");
    } else if (input.byte() & 1) {
        run(input.value<long long>(), "ll");
    } else {
        run(input.value<int>(), "");
    }
    require(result->UTF8String() == expected, (format + ": " + result->UTF8String() + ", in C: " + expected).c_str());
}

}  // namespace

extern "C" int LLVMFuzzerTestOneInput(const std::uint8_t* data, std::size_t size) {
    Input input{data, std::min<std::size_t>(size, 400)};
    if (input.byte() & 1)
        formatAsC(input);
    else
        formatAnything(input);
    return 0;
}
