#include <ToviFoundationKit/Foundation/NSData.h>
#include <ToviFoundationKit/Foundation/TextDecoder_p.h>
#include <ToviFoundationKit/Foundation/TextEncoder_p.h>
#include <ToviFoundationKit/Runtime/Additions.h>
#include <ToviFoundationKit/Runtime/UnitSearch_p.h>
#include <ToviFoundationKit/Runtime/UTF8_p.h>

namespace tovi {

namespace {

std::string_view characters(std::span<const std::byte> bytes) {
    return {reinterpret_cast<const char*>(bytes.data()), bytes.size()};
}

}  // namespace

RefPtr<NSString> NSString::initWithData_encoding(const NSData& data, NSStringEncoding encoding) {
    detail::TextDecoder decoder(encoding);
    StringBuilder text;
    if (!decoder.append(text, characters(data.bytes())) || !decoder.finish(text))
        return nullptr;
    return text.string();
}

Ref<NSString> NSString::fromBytes(std::span<const std::byte> bytes, NSStringEncoding encoding, NSUInteger* replaced) {
    detail::TextDecoder decoder(encoding, detail::TextDecoder::OnInvalid::Replace);
    StringBuilder text;
    decoder.append(text, characters(bytes));
    decoder.finish(text);
    if (replaced)
        *replaced = decoder.invalidCount();
    return text.string();
}

namespace {

/// False when the text cannot be written without loss.
bool writeExactly(detail::DataBuilder& to, detail::TextEncoder& encoder, std::u16string_view text) {
    if (encoder.writableLength(text) != text.size())
        return false;
    encoder.write(to, text);
    encoder.finish(to);
    return true;
}

}  // namespace

RefPtr<NSData> NSString::dataUsingEncoding(NSStringEncoding encoding) const {
    return dataUsingEncoding_allowLossyConversion(encoding, false);
}

RefPtr<NSData> NSString::dataUsingEncoding_allowLossyConversion(NSStringEncoding encoding, bool lossy) const {
    const detail::EncodingRow* const row = detail::rowOfEncoding(encoding);
    if (!row)
        return nullptr;
    detail::TextEncoder encoder(*row);
    detail::DataBuilder bytes;
    encoder.writeByteOrderMark(bytes);
    if (!writeExactly(bytes, encoder, view())) {
        if (!lossy)
            return nullptr;
        encoder.writeLossily(bytes, view());
        encoder.finish(bytes);
    }
    return bytes.data();
}

bool NSString::canBeConvertedToEncoding(NSStringEncoding encoding) const {
    const detail::EncodingRow* const row = detail::rowOfEncoding(encoding);
    return row && detail::TextEncoder(*row).writableLength(view()) == length();
}

NSUInteger NSString::lengthOfBytesUsingEncoding(NSStringEncoding encoding) const {
    const detail::EncodingRow* const row = detail::rowOfEncoding(encoding);
    if (!row)
        return 0;
    detail::TextEncoder encoder(*row);
    detail::DataBuilder bytes;
    return writeExactly(bytes, encoder, view()) ? bytes.length() : 0;
}

NSStringEncoding NSString::smallestEncoding() const {
    if (detail::allBelow(view(), 0x80))
        return NSASCIIStringEncoding;
    if (detail::allBelow(view(), 0x100))
        return NSISOLatin1StringEncoding;
    if (detail::findLoneSurrogate(view()) != length())
        return NSUnicodeStringEncoding;
    return detail::lengthInUTF8(view()) <= 2 + 2 * length() ? NSUTF8StringEncoding : NSUnicodeStringEncoding;
}

NSStringEncoding NSString::fastestEncoding() const { return NSUnicodeStringEncoding; }

namespace {

const Additions<NSString> additions{
    classLevel<&NSString::initWithData_encoding>("initWithData:encoding:"),
    instance<&NSString::dataUsingEncoding>("dataUsingEncoding:"),
    instance<&NSString::dataUsingEncoding_allowLossyConversion>("dataUsingEncoding:allowLossyConversion:"),
    instance<&NSString::canBeConvertedToEncoding>("canBeConvertedToEncoding:"),
    instance<&NSString::lengthOfBytesUsingEncoding>("lengthOfBytesUsingEncoding:"),
    instance<&NSString::smallestEncoding>("smallestEncoding"),
    instance<&NSString::fastestEncoding>("fastestEncoding"),
};

}  // namespace

}  // namespace tovi
