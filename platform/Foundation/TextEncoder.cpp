#include <ToviFoundationKit/Foundation/TextEncoder_p.h>

#include <algorithm>
#include <bit>
#include <new>

#include <ToviFoundationKit/Foundation/NearestASCII_p.h>
#include <ToviFoundationKit/Runtime/Unicode_p.h>
#include <ToviFoundationKit/Runtime/UnitSearch_p.h>
#include <ToviFoundationKit/Runtime/UTF8_p.h>
#include <ToviFoundationKit/Runtime/Widening_p.h>

namespace tovi::detail {

namespace {

constexpr bool isLittleEndian = std::endian::native == std::endian::little;

/// The front of the text, no longer than that, without cutting a pair.
std::u16string_view pieceOf(std::u16string_view text, std::size_t length) {
    if (text.size() <= length)
        return text;
    return text.substr(0, isLead(text[length - 1]) ? length - 1 : length);
}

/// Takes the first code point from the text; a surrogate without partner is one.
char32_t takeCodePoint(std::u16string_view& text) {
    char32_t codePoint = text[0];
    if (isLead(codePoint) && text.size() > 1 && isTrail(text[1])) {
        codePoint = combined(text[0], text[1]);
        text.remove_prefix(1);
    }
    text.remove_prefix(1);
    return codePoint;
}

std::size_t lengthBelow(std::u16string_view text, char16_t limit) {
    if (allBelow(text, limit))
        return text.size();
    return static_cast<std::size_t>(std::ranges::find_if(text, [limit](char16_t unit) { return unit >= limit; }) -
                                    text.begin());
}

}  // namespace

bool TextEncoder::isUnicode() const noexcept {
    return row_.form >= EncodingForm::UTF7 && row_.form <= EncodingForm::UTF32LE;
}

std::size_t TextEncoder::writableLength(std::u16string_view text) const {
    switch (row_.form) {
        case EncodingForm::ASCII:
            return lengthBelow(text, 0x80);
        case EncodingForm::Latin1:
            return lengthBelow(text, 0x100);
        case EncodingForm::UTF16:
        case EncodingForm::NonLossyASCII:
            return text.size();
        case EncodingForm::SingleByte: {
            const SingleByteCharset& charset = SingleByteCharset::of(row_);
            const auto end = std::ranges::find_if_not(text, [&](char16_t unit) { return charset.has(unit); });
            return static_cast<std::size_t>(end - text.begin());
        }
        case EncodingForm::HZ:
        case EncodingForm::MultiByte:
        case EncodingForm::MultiByteRotated:
            return writableBySet(text);
        default:
            return findLoneSurrogate(text);
    }
}

std::size_t TextEncoder::writableBySet(std::u16string_view text) const {
    const USet& set = MultiByteCharset::of(row_).repertoire();
    std::size_t writable = 0;
    while (writable < text.size()) {
        const std::u16string_view piece = pieceOf(text.substr(writable), 1 << 28);
        const int32_t length = uset_span(&set, piece.data(), static_cast<int32_t>(piece.size()), USET_SPAN_CONTAINED);
        writable += static_cast<std::size_t>(length);
        if (static_cast<std::size_t>(length) < piece.size())
            break;
    }
    return writable;
}

void TextEncoder::writeByteOrderMark(DataBuilder& to) {
    if (row_.form == EncodingForm::UTF16 || row_.form == EncodingForm::UTF32)
        write(to, u"\uFEFF");
}

void TextEncoder::write(DataBuilder& to, std::u16string_view text) {
    const std::size_t count = text.size();
    switch (row_.form) {
        case EncodingForm::ASCII:
        case EncodingForm::Latin1:
            return narrow(text.data(), count, to.extend(count));
        case EncodingForm::UTF8:
            if (allBelow(text, 0x80))
                return narrow(text.data(), count, to.extend(count));
            convertToUTF8(text, to.extend(lengthInUTF8(text)));
            return;
        case EncodingForm::UTF16:
        case EncodingForm::UTF16BE:
        case EncodingForm::UTF16LE: {
            const bool isSwapped =
                row_.form != EncodingForm::UTF16 && (row_.form == EncodingForm::UTF16BE) == isLittleEndian;
            char* bytes = to.extend(2 * count);
            if (count)
                std::memcpy(bytes, text.data(), 2 * count);
            if (isSwapped)
                swapPairs(bytes, count);
            return;
        }
        case EncodingForm::UTF32:
        case EncodingForm::UTF32BE:
        case EncodingForm::UTF32LE:
            return writeUTF32(to, text);
        case EncodingForm::NonLossyASCII:
            return writeNonLossyASCII(to, text);
        case EncodingForm::SingleByte: {
            const SingleByteCharset& charset = SingleByteCharset::of(row_);
            std::ranges::transform(text, to.extend(count),
                                   [&](char16_t unit) { return static_cast<char>(charset.byteOf(unit)); });
            return;
        }
        case EncodingForm::HZ:
            return writeHZ(to, text);
        case EncodingForm::UTF7:
        case EncodingForm::MultiByte:
        case EncodingForm::MultiByteRotated:
            return writeMultiByte(to, text, false);
    }
}

void TextEncoder::writeLossily(DataBuilder& to, std::u16string_view text) {
    while (true) {
        const std::size_t writable = writableLength(text);
        write(to, text.substr(0, writable));
        text.remove_prefix(writable);
        if (text.empty())
            return;
        const char32_t codePoint = takeCodePoint(text);
        write(to, isUnicode() ? std::u16string_view(u"\uFFFD") : nearestASCII(codePoint));
    }
}

void TextEncoder::finish(DataBuilder& to) {
    if (converter_)
        writeMultiByte(to, {}, true);
    if (isShifted_)
        to.append("~}");
    isShifted_ = false;
}

void TextEncoder::writeUTF32(DataBuilder& to, std::u16string_view text) {
    const bool isSwapped = row_.form != EncodingForm::UTF32 && (row_.form == EncodingForm::UTF32BE) == isLittleEndian;
    while (!text.empty()) {
        auto codePoint = static_cast<std::uint32_t>(takeCodePoint(text));
        if (isSwapped)
            codePoint = __builtin_bswap32(codePoint);
        std::memcpy(to.extend(sizeof codePoint), &codePoint, sizeof codePoint);
    }
}

void TextEncoder::writeNonLossyASCII(DataBuilder& to, std::u16string_view text) {
    const auto writeDigits = [&to](char16_t unit, int count, int bits) {
        char* const digits = to.extend(static_cast<NSUInteger>(count));
        for (int i = 0; i < count; ++i)
            digits[i] = "0123456789abcdef"[unit >> bits * (count - 1 - i) & ((1 << bits) - 1)];
    };
    for (const char16_t unit : text) {
        if (unit == u'\\') {
            to.append("\\\\");
        } else if (unit < 0x80) {
            *to.extend(1) = static_cast<char>(unit);
        } else if (unit < 0x100) {
            to.append("\\");
            writeDigits(unit, 3, 3);
        } else {
            to.append("\\u");
            writeDigits(unit, 4, 4);
        }
    }
}

/// GB 2312 in seven bits (RFC 1843).
void TextEncoder::writeHZ(DataBuilder& to, std::u16string_view text) {
    constexpr std::uint32_t gbk = 0x0631;  // of which the repertoire has what fits in
    while (!text.empty()) {
        const std::u16string_view piece = pieceOf(text, 1 << 12);
        text.remove_prefix(piece.size());
        DataBuilder bytes;
        TextEncoder(*rowOfCharset(gbk)).write(bytes, piece);
        for (const char byte : std::string_view(bytes.bytes(), bytes.length())) {
            const bool isTwoByte = byte & '\x80';
            if (isTwoByte != isShifted_)
                to.append(isTwoByte ? "~{" : "~}");
            isShifted_ = isTwoByte;
            if (byte == '~')
                to.append("~");
            *to.extend(1) = static_cast<char>(byte & 0x7F);
        }
    }
}

void TextEncoder::writeMultiByte(DataBuilder& to, std::u16string_view text, bool last) {
    constexpr std::size_t margin = 32;  // for what leads out of a shift
    if (!converter_)
        converter_ = MultiByteCharset::of(row_).converter();
    const NSUInteger start = to.length();
    do {
        const std::u16string_view piece = pieceOf(text, 1 << 16);
        text.remove_prefix(piece.size());
        const char16_t* source = piece.data();
        const char16_t* const end = source + piece.size();
        for (UErrorCode error = U_BUFFER_OVERFLOW_ERROR; error == U_BUFFER_OVERFLOW_ERROR;) {
            const std::size_t room = 2 * static_cast<std::size_t>(end - source) + margin;
            char *const target = to.extend(room), *next = target;
            error = U_ZERO_ERROR;
            ucnv_fromUnicode(converter_.get(), &next, target + room, &source, end, nullptr, last, &error);
            to.truncate(to.length() - static_cast<NSUInteger>(target + room - next));
            if (U_FAILURE(error) && error != U_BUFFER_OVERFLOW_ERROR)
                throw std::bad_alloc();
        }
    } while (!text.empty());
    if (row_.form == EncodingForm::MultiByteRotated)
        std::transform(to.bytes() + start, to.bytes() + to.length(), to.bytes() + start, [](char byte) {
            return byte == 0x7F ? '\x1A' : byte == 0x1A ? '\x1C' : byte == 0x1C ? '\x7F' : byte;
        });
}

}  // namespace tovi::detail
