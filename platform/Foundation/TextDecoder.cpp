#include <ToviFoundationKit/Foundation/TextDecoder_p.h>

#include <algorithm>
#include <bit>
#include <charconv>

#include <ToviFoundationKit/Foundation/Charset_p.h>
#include <ToviFoundationKit/Runtime/Unicode_p.h>
#include <ToviFoundationKit/Runtime/UnitSearch_p.h>
#include <ToviFoundationKit/Runtime/UTF8_p.h>
#include <ToviFoundationKit/Runtime/Widening_p.h>

namespace tovi::detail {

namespace {

constexpr auto npos = std::string_view::npos;
constexpr bool isLittleEndian = std::endian::native == std::endian::little;
/// ICU counts bytes in 32 bits.
constexpr std::size_t longestPiece = 1 << 28;

const EncodingRow* rowFor(NSStringEncoding encoding, TextDecoder::OnInvalid onInvalid) {
    const EncodingRow* const row = rowOfEncoding(encoding);
    return row || onInvalid == TextDecoder::OnInvalid::Fail ? row : rowOfEncoding(NSASCIIStringEncoding);
}

std::optional<bool> orderOf(EncodingForm form) {
    if (form == EncodingForm::UTF16 || form == EncodingForm::UTF32)
        return std::nullopt;
    return (form == EncodingForm::UTF16BE || form == EncodingForm::UTF32BE) == isLittleEndian;
}

/// The units from the index on, to be changed.
std::span<char16_t> unitsFrom(StringBuilder& text, NSUInteger start) {
    const NSUInteger count = text.length() - start;
    text.truncate(start);
    return {text.extend(count), count};
}

}  // namespace

TextDecoder::TextDecoder(NSStringEncoding encoding, OnInvalid onInvalid)
    : row_(rowFor(encoding, onInvalid)), onInvalid_(onInvalid) {
    if (!row_)
        ++invalid_;
    else
        isSwapped_ = orderOf(row_->form);
}

TextDecoder::~TextDecoder() {
    if (converter_)
        ucnv_close(converter_);
}

bool TextDecoder::append(StringBuilder& to, std::string_view bytes) {
    if (!row_)
        return false;
    // What was cut is completed byte by byte.
    while (unfinishedLength_ && !bytes.empty()) {
        unfinished_[unfinishedLength_] = bytes.front();
        bytes.remove_prefix(1);
        take(to, {unfinished_, unfinishedLength_ + 1});
    }
    if (!bytes.empty())
        take(to, bytes);
    return isValid();
}

bool TextDecoder::finish(StringBuilder& to) {
    if (row_)
        read(to, {unfinished_, unfinishedLength_}, true);
    unfinishedLength_ = 0;
    return isValid();
}

void TextDecoder::take(StringBuilder& to, std::string_view bytes) {
    bytes.remove_prefix(read(to, bytes, false));
    std::ranges::copy(bytes, unfinished_);
    unfinishedLength_ = bytes.size();
}

/// Answers how many bytes were read; those that are left wait for more. At last, none may be left.
std::size_t TextDecoder::read(StringBuilder& to, std::string_view bytes, bool last) {
    const NSUInteger start = to.length();
    switch (row_->form) {
        case EncodingForm::ASCII:
            readASCII(to, bytes);
            break;
        case EncodingForm::Latin1:
            widen(bytes.data(), bytes.size(), to.extend(bytes.size()));
            break;
        case EncodingForm::UTF8:
            return readUTF8(to, bytes, last);
        case EncodingForm::UTF16:
        case EncodingForm::UTF16BE:
        case EncodingForm::UTF16LE:
            return readUTF16(to, bytes, last);
        case EncodingForm::UTF32:
        case EncodingForm::UTF32BE:
        case EncodingForm::UTF32LE:
            return readUTF32(to, bytes, last);
        case EncodingForm::NonLossyASCII:
            return readNonLossyASCII(to, bytes, last);
        case EncodingForm::SingleByte:
            readSingleByte(to, bytes);
            break;
        case EncodingForm::UTF7:
            readMultiByte(to, bytes, last);
            replaceLoneSurrogates(to, start, last);
            break;
        case EncodingForm::MultiByte:
        case EncodingForm::HZ:
            readMultiByte(to, bytes, last);
            break;
        case EncodingForm::MultiByteRotated:
            readMultiByte(to, bytes, last);
            for (char16_t& unit : unitsFrom(to, start))
                unit = unit == 0x1A ? u'\x7F' : unit == 0x1C ? u'\x1A' : unit == 0x7F ? u'\x1C' : unit;
            break;
    }
    return bytes.size();
}

void TextDecoder::appendInvalid(StringBuilder& to) {
    ++invalid_;
    to.append(static_cast<char16_t>(replacementCharacter));
}

void TextDecoder::readASCII(StringBuilder& to, std::string_view bytes) {
    const std::span units(to.extend(bytes.size()), bytes.size());
    widen(bytes.data(), bytes.size(), units.data());
    if (allBelow({units.data(), units.size()}, 0x80))
        return;
    const auto isInvalid = [](char16_t unit) { return unit >= 0x80; };
    invalid_ += static_cast<NSUInteger>(std::ranges::count_if(units, isInvalid));
    std::ranges::replace_if(units, isInvalid, static_cast<char16_t>(replacementCharacter));
}

std::size_t TextDecoder::readUTF8(StringBuilder& to, std::string_view bytes, bool last) {
    if (!last)
        bytes.remove_suffix(unfinishedUTF8(bytes));
    const NSUInteger start = to.length();
    char16_t* const units = to.extend(bytes.size());
    std::size_t illFormed = 0;
    to.truncate(start + static_cast<NSUInteger>(convertUTF8(bytes, units, &illFormed) - units));
    invalid_ += illFormed;
    return bytes.size();
}

std::size_t TextDecoder::readUTF16(StringBuilder& to, std::string_view bytes, bool last) {
    const NSUInteger start = to.length(), count = bytes.size() / 2;
    char16_t* units = to.extend(count);
    std::memcpy(units, bytes.data(), 2 * count);
    if (count && !isSwapped_) {
        isSwapped_ = units[0] == 0xFFFE;
        if (*isSwapped_ || units[0] == 0xFEFF) {
            std::memmove(units, units + 1, 2 * (count - 1));
            to.truncate(start + count - 1);
        }
    }
    if (isSwapped_.value_or(false))
        swapPairs(unitsFrom(to, start).data(), to.length() - start);
    if (row_->form != EncodingForm::UTF16)
        replaceLoneSurrogates(to, start, last);
    if (last && bytes.size() % 2)
        appendInvalid(to);
    return last ? bytes.size() : 2 * count;
}

std::size_t TextDecoder::readUTF32(StringBuilder& to, std::string_view bytes, bool last) {
    std::string_view rest = bytes;
    for (; rest.size() >= 4; rest.remove_prefix(4)) {
        auto codePoint = loaded<std::uint32_t>(rest.data());
        if (!isSwapped_) {
            isSwapped_ = codePoint == 0xFFFE0000;
            if (*isSwapped_ || codePoint == 0xFEFF)
                continue;
        }
        if (*isSwapped_)
            codePoint = __builtin_bswap32(codePoint);
        if (codePoint > 0x10FFFF || isSurrogate(codePoint))
            appendInvalid(to);
        else
            to.appendCodePoint(codePoint);
    }
    if (!last)
        return bytes.size() - rest.size();
    if (!rest.empty())
        appendInvalid(to);
    return bytes.size();
}

/// A surrogate without partner is not valid; one at the end may still get one.
void TextDecoder::replaceLoneSurrogates(StringBuilder& to, NSUInteger start, bool last) {
    const std::span<char16_t> units = unitsFrom(to, endsInLead_ ? start - 1 : start);
    endsInLead_ = false;
    for (std::size_t i = 0;; ++i) {
        i += findLoneSurrogate({units.data() + i, units.size() - i});
        if (i == units.size())
            return;
        endsInLead_ = !last && i + 1 == units.size() && isLead(units[i]);
        if (endsInLead_)
            return;
        units[i] = static_cast<char16_t>(replacementCharacter);
        ++invalid_;
    }
}

namespace {

struct Escape {
    char16_t unit;
    std::size_t length;  ///< 0 when it is none, npos when it may become one
};

Escape escapeIn(std::string_view text) {
    if (text.size() == 1)
        return {0, npos};
    if (text[1] == '\\')
        return {u'\\', 2};
    const bool hexadecimal = text[1] == 'u';
    const std::size_t start = hexadecimal ? 2 : 1, count = hexadecimal ? 4 : 3;
    const std::string_view digits = text.substr(start, count);
    unsigned value = 0;
    const char* const end = digits.data() + digits.size();
    if (std::from_chars(digits.data(), end, value, hexadecimal ? 16 : 8).ptr != end || (!hexadecimal && value > 0xFF))
        return {0, 0};
    return {static_cast<char16_t>(value), digits.size() == count ? start + count : npos};
}

}  // namespace

std::size_t TextDecoder::readNonLossyASCII(StringBuilder& to, std::string_view bytes, bool last) {
    for (std::string_view rest = bytes; !rest.empty();) {
        const std::size_t plain = std::min(rest.find('\\'), rest.size());
        readASCII(to, rest.substr(0, plain));
        rest.remove_prefix(plain);
        if (rest.empty())
            break;
        const Escape escape = escapeIn(rest);
        if (escape.length == npos && !last)
            return bytes.size() - rest.size();
        const bool isEscape = escape.length && escape.length != npos;
        if (isEscape)
            to.append(escape.unit);
        else
            appendInvalid(to);
        rest.remove_prefix(isEscape ? escape.length : 1);
    }
    return bytes.size();
}

void TextDecoder::readSingleByte(StringBuilder& to, std::string_view bytes) {
    const SingleByteCharset& charset = SingleByteCharset::of(*row_);
    char16_t* units = to.extend(bytes.size());
    NSUInteger invalid = 0;
    for (const char byte : bytes) {
        const char16_t unit = charset.unitOf(static_cast<unsigned char>(byte));
        invalid += unit == SingleByteCharset::noUnit;
        *units++ = unit;
    }
    invalid_ += invalid;
}

void TextDecoder::readMultiByte(StringBuilder& to, std::string_view bytes, bool last) {
    constexpr std::size_t margin = 32;  // what the converter holds back from earlier bytes
    if (!converter_)
        converter_ = MultiByteCharset::of(*row_).converter().release();
    do {
        const std::string_view piece = bytes.substr(0, longestPiece);
        bytes.remove_prefix(piece.size());
        const char* source = piece.data();
        const char* const end = source + piece.size();
        for (UErrorCode error = U_BUFFER_OVERFLOW_ERROR; U_FAILURE(error);) {
            const std::size_t room = static_cast<std::size_t>(end - source) + margin;
            char16_t *const target = to.extend(room), *next = target;
            error = U_ZERO_ERROR;
            ucnv_toUnicode(converter_, &next, target + room, &source, end, nullptr, last && bytes.empty(), &error);
            to.truncate(to.length() - static_cast<NSUInteger>(target + room - next));
            if (U_FAILURE(error) && error != U_BUFFER_OVERFLOW_ERROR)
                appendInvalid(to);
        }
    } while (!bytes.empty());
}

}  // namespace tovi::detail
