#include <ToviFoundationKit/Extensions/NSString-HexStringRepresentations.h>

#include <ToviFoundationKit/Extensions/HexDigits_p.h>
#include <ToviFoundationKit/Extensions/NSData-QVLAdditions.h>
#include <ToviFoundationKit/Foundation/TextDecoder_p.h>
#include <ToviFoundationKit/Runtime/Additions.h>
#include <ToviFoundationKit/Runtime/StringBuilder.h>

namespace tovi {
inline namespace HexStringRepresentations {

RefPtr<NSString> stringWithHexString(const NSString& text) {
    detail::TextDecoder decoder(NSUnicodeStringEncoding);
    StringBuilder result;
    const auto decode = [&](NSData::Bytes bytes) {
        decoder.append(result, {reinterpret_cast<const char*>(bytes.data()), bytes.size()});
    };
    if (!detail::readHexText(text, decode))  // which is reported there
        return NSString::initWithData_encoding(dataWithHexString(text), NSUnicodeStringEncoding);
    return decoder.finish(result) ? RefPtr<NSString>(result.string()) : nullptr;
}

Ref<NSMutableString> hexStringRepresentation(const NSString& receiver) {
    const std::u16string_view mark = u"\uFEFF", units = receiver.view();
    StringBuilder text;
    char16_t* const digits = text.extend(4 * (1 + units.size()));
    detail::writeHexDigits(std::as_bytes(std::span(mark)), digits);
    detail::writeHexDigits(std::as_bytes(std::span(units)), digits + 4);
    return NSMutableString::stringWithString(text.string());
}

namespace {

const Additions<NSString> additions{
    classLevel<&stringWithHexString>("stringWithHexString:"),
    instance<static_cast<Ref<NSMutableString> (*)(const NSString&)>(&hexStringRepresentation)>(
        "hexStringRepresentation"),
};

}  // namespace

}  // namespace HexStringRepresentations
}  // namespace tovi
