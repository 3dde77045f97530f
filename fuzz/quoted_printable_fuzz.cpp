// Quoted-printable text of any kind, against the same thing done one byte after the other.

#include <cstdint>
#include <cstdlib>
#include <optional>
#include <string>

#include <ToviFoundationKit/Extensions/NSString-QuotedPrintable.h>
#include <ToviFoundationKit/Foundation/NSData.h>

using namespace tovi;

namespace {

std::optional<int> digitValue(unsigned char byte) {
    if (byte >= '0' && byte <= '9')
        return byte - '0';
    if (byte >= 'A' && byte <= 'F')
        return byte - 'A' + 10;
    if (byte >= 'a' && byte <= 'f')
        return byte - 'a' + 10;
    return std::nullopt;
}

std::string unescaped(const std::u16string& text) {
    std::string bytes, result;
    for (const char16_t unit : text) {
        if (unit > 0x7F)
            return {};
        bytes += static_cast<char>(unit);
    }
    int value = 0;
    for (std::size_t i = 0; i < bytes.size();) {
        if (bytes[i] == '=' && i + 1 < bytes.size() && bytes[i + 1] == '\n') {
            i += 2;
        } else if (bytes[i] == '=' && i + 2 < bytes.size()) {
            if (const auto high = digitValue(static_cast<unsigned char>(bytes[i + 1])))
                value = *high * 16;
            if (const auto low = digitValue(static_cast<unsigned char>(bytes[i + 2])))
                value = (value + *low) % 256;
            result += static_cast<char>(value);
            i += 3;
        } else {
            result += bytes[i] == '_' ? ' ' : bytes[i];
            ++i;
        }
    }
    return result;
}

}  // namespace

// The first byte says how often the text is repeated, which byte becomes a character beyond ASCII, and the encoding.
extern "C" int LLVMFuzzerTestOneInput(const std::uint8_t* data, std::size_t size) {
    if (size < 1 || size > 4096)
        return 0;
    std::u16string text;
    for (int left = (data[0] & 3) == 3 ? 1 + 8192 / static_cast<int>(size) : 1; left; --left)
        for (std::size_t i = 1; i < size; ++i)
            text += data[i] < 0x80 ? char16_t(data[i]) : data[0] & 4 ? char16_t(data[i] & 0x7F) : char16_t(data[i] * 3);
    const NSStringEncoding encoding = data[0] & 8 ? NSISOLatin1StringEncoding : NSUTF8StringEncoding;
    const auto decoded = decodeQuotedPrintableString_encoding(NSString::stringWithCharacters(text), encoding);
    const std::string bytes = unescaped(text);
    const auto expected =
        NSString::initWithData_encoding(NSData::dataWithBytes(std::as_bytes(std::span(bytes))), encoding);
    if (static_cast<bool>(decoded) != static_cast<bool>(expected) || (decoded && !(*decoded == *expected)))
        std::abort();
    return 0;
}
