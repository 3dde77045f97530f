// Bytes to hexadecimal digits and back; and any text as digits, against the same thing done one byte after the other.

#include <cstring>
#include <string>

#include <ToviFoundationKit/Extensions/NSData-QVLAdditions.h>
#include <ToviFoundationKit/Extensions/NSString-HexStringRepresentations.h>

#include "Support.h"

using namespace tovi;

namespace {

void roundTrips(std::span<const std::uint8_t> input) {
    const auto data = NSData::dataWithBytes(std::as_bytes(input));
    const auto digits = hexStringRepresentation(data);
    require(digits->length() == 2 * input.size());
    for (std::size_t i = 0; i < input.size(); ++i) {
        require(digits->characterAtIndex(2 * i) == u"0123456789abcdef"[input[i] >> 4]);
        require(digits->characterAtIndex(2 * i + 1) == u"0123456789abcdef"[input[i] & 15]);
    }
    require(*dataWithHexString(digits) == *data);
    std::u16string units(input.size() / 2, u' ');
    std::memcpy(units.data(), input.data(), 2 * units.size());
    const auto text = NSString::stringWithCharacters(units);
    require(*stringWithHexString(hexStringRepresentation(text)) == *text);
}

void readsAnyASCII(std::span<const std::uint8_t> input) {
    std::u16string text;
    for (const std::uint8_t byte : input)
        text += static_cast<char16_t>(byte & 0x7F);
    std::string expected;
    for (std::size_t i = 0; i < text.size(); i += 2) {
        const unsigned c = text[i], d = i + 1 < text.size() ? text[i + 1] : 0;
        const unsigned high = c >= '0' && c <= '9' ? c * 16 : c * 16 - 112,
                       low = d >= '0' && d <= '9' ? d - 48 : d - 87;
        expected += static_cast<char>(high + low);
    }
    const auto data = dataWithHexString(NSString::stringWithCharacters(text));
    require(data->length() == expected.size() &&
            (expected.empty() || std::memcmp(data->bytes().data(), expected.data(), expected.size()) == 0));
}

}  // namespace

extern "C" int LLVMFuzzerTestOneInput(const std::uint8_t* data, std::size_t size) {
    roundTrips({data, size});
    readsAnyASCII({data, size});
    return 0;
}
