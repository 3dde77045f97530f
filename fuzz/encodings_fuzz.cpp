// Any bytes in any encoding. What decodes and can be written again must read as the same text; bytes that come in
// pieces must mean what they mean at once; leniently, everything has a text, and the same one when nothing is wrong.

#include <algorithm>
#include <span>

#include <ToviFoundationKit/Foundation/NSData.h>
#include <ToviFoundationKit/Foundation/TextDecoder_p.h>

#include "Support.h"

using namespace tovi;
using detail::TextDecoder;

namespace {

struct Decoded {
    bool valid;
    Ref<NSString> text;
    NSUInteger invalid;
};

Decoded decodedInPieces(std::string_view bytes, std::size_t length, NSStringEncoding encoding,
                        TextDecoder::OnInvalid onInvalid) {
    TextDecoder decoder(encoding, onInvalid);
    StringBuilder text;
    for (; !bytes.empty(); bytes.remove_prefix(std::min(length, bytes.size())))
        decoder.append(text, bytes.substr(0, length));
    const bool valid = decoder.finish(text);
    return {valid, text.string(), decoder.invalidCount()};
}

void decode(std::span<const std::byte> bytes, NSStringEncoding encoding, std::size_t pieceLength) {
    const std::string_view characters(reinterpret_cast<const char*>(bytes.data()), bytes.size());
    const auto text = NSString::initWithData_encoding(NSData::dataWithBytes(bytes), encoding);
    NSUInteger replaced = 0;
    const auto lenient = NSString::fromBytes(bytes, encoding, &replaced);
    require(static_cast<bool>(text) == (replaced == 0));
    require(!text || *text == *lenient);
    const Decoded pieces = decodedInPieces(characters, pieceLength, encoding, TextDecoder::OnInvalid::Replace);
    require(*pieces.text == *lenient && pieces.invalid == replaced);
    require(decodedInPieces(characters, pieceLength, encoding, TextDecoder::OnInvalid::Fail).valid == (replaced == 0));
}

void encode(const NSString& text, NSStringEncoding encoding) {
    const auto data = text.dataUsingEncoding(encoding);
    require(static_cast<bool>(data) == text.canBeConvertedToEncoding(encoding));
    if (data) {
        const auto again = NSString::initWithData_encoding(*data, encoding);
        require(again && *again == text);
    }
    const auto lossy = text.dataUsingEncoding_allowLossyConversion(encoding, true);
    require(lossy && (!data || *data == *lossy));
    require(static_cast<bool>(NSString::initWithData_encoding(*lossy, encoding)));
}

}  // namespace

extern "C" int LLVMFuzzerTestOneInput(const std::uint8_t* data, std::size_t size) {
    if (size < 2)
        return 0;
    const auto encodings = NSString::availableStringEncodings();
    const NSStringEncoding from = encodings[data[0] % encodings.size()], to = encodings[data[1] % encodings.size()];
    const auto bytes = std::as_bytes(std::span(data, size).subspan(2));
    decode(bytes, from, 1 + data[1] % 7);
    const auto text = NSString::fromBytes(bytes, from);
    encode(text, from);
    encode(text, to);
    require(text->canBeConvertedToEncoding(text->smallestEncoding()));
    return 0;
}
