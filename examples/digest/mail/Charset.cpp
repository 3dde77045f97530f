#include <mail/Charset.h>

#include <algorithm>

#include <mail/HeaderText.h>

using namespace tovi;

namespace digest {

namespace {

bool isASCII(std::string_view bytes) {
    return std::ranges::all_of(bytes, [](char c) { return (c & 0x80) == 0; });
}

CharsetDecoded guessed(std::string_view bytes, std::string reason) {
    if (isASCII(bytes))
        return {NSString::fromUTF8(bytes), {}};
    const bool isUTF8 = static_cast<bool>(NSString::stringWithUTF8String(bytes));
    return {guessedText(bytes), reason + (isUTF8 ? "; read as UTF-8" : "; read as ISO-8859-1")};
}

}  // namespace

Ref<NSString> guessedText(std::string_view bytes) {
    if (const auto text = NSString::stringWithUTF8String(bytes))
        return text.ref();
    return NSString::fromBytes(std::as_bytes(std::span(bytes)), NSISOLatin1StringEncoding);
}

CharsetDecoded charsetDecoded(std::string_view bytes, std::string_view charset) {
    charset = charset.substr(0, charset.find('*'));
    if (charset.empty())
        return guessed(bytes, "not ASCII, and no charset is named");
    const NSStringEncoding encoding = stringEncodingForMIMEEncoding(NSString::fromUTF8(charset).get());
    const std::string name(charset.substr(0, 40));
    if (encoding == NSASCIIStringEncoding)
        return guessed(bytes, "more than ASCII in " + name);
    if (encoding == 0)
        return guessed(bytes, "unknown charset \"" + name + '"');
    NSUInteger replaced = 0;
    const auto text = NSString::fromBytes(std::as_bytes(std::span(bytes)), encoding, &replaced);
    return {text, replaced == 0 ? ""
                                : "not valid " + name + " in " + std::to_string(replaced) +
                                      (replaced == 1 ? " place" : " places")};
}

}  // namespace digest
