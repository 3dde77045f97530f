#include <ToviFoundationKit/Extensions/NSString-QuotedPrintable.h>

#include <array>
#include <cstdint>
#include <cstring>

#include <ToviFoundationKit/Foundation/NSData.h>
#include <ToviFoundationKit/Foundation/TextDecoder_p.h>
#include <ToviFoundationKit/Runtime/Additions.h>
#include <ToviFoundationKit/Runtime/UnitSearch_p.h>
#include <ToviFoundationKit/Runtime/UnitVector_p.h>
#include <ToviFoundationKit/Runtime/Widening_p.h>

namespace tovi {
inline namespace QVLAdditions {

namespace {

constexpr std::size_t blockLength = 16;

/// Sixteen characters, made bytes.
struct Block {
    explicit Block(const char16_t* units) noexcept
        : seen(detail::loaded<detail::EightUnits>(units) | detail::loaded<detail::EightUnits>(units + 8)) {
        const detail::SixteenBytes characters = detail::narrowed(units);
        bytes = characters ^ (detail::bytesWhere(characters == '_') & ('_' ^ ' '));
        // Four bits for each byte.
        const detail::EightUnits nibbles = detail::unitsWhere(characters == '=') >> 4;
        escapes = reinterpret_cast<std::uint64_t>(__builtin_convertvector(nibbles, detail::EightBytes));
    }
    /// How many bytes lie before the first "=", where there is one.
    std::size_t plainLength() const noexcept { return detail::partsBefore(escapes, 4); }

    detail::EightUnits seen;  ///< all bits of the characters
    detail::SixteenBytes bytes;
    std::uint64_t escapes;
};

/// -1 for what is no hexadecimal digit.
constexpr std::array<std::int8_t, 128> digitValues = [] {
    std::array<std::int8_t, 128> values{};
    values.fill(-1);
    for (int i = 0; i < 10; ++i)
        values[std::size_t('0' + i)] = static_cast<std::int8_t>(i);
    for (int i = 0; i < 6; ++i)
        values[std::size_t('a' + i)] = values[std::size_t('A' + i)] = static_cast<std::int8_t>(10 + i);
    return values;
}();

/// Reads text and writes the bytes that it stands for. The loop below has one of its own, which the compiler can keep
/// in registers; so what is not ASCII is only noted, to be asked for at the end.
struct Cursor {
    std::size_t left() const noexcept { return static_cast<std::size_t>(end - from); }

    void step() noexcept {
        if (*from == u'=')
            unescape();
        else if (left() >= blockLength)
            takeBlock();
        else
            take();
    }

    void takeBlock() noexcept {
        const Block block(from);
        std::memcpy(to, &block.bytes, sizeof block.bytes);
        seenInBlocks |= block.seen;
        // Asking early lets the processor guess where the next block is.
        if (block.escapes == 0) {
            from += blockLength;
            to += blockLength;
            return;
        }
        from += block.plainLength();
        to += block.plainLength();
        unescape();
    }

    void take() noexcept {
        seen |= *from;
        *to++ = *from == u'_' ? ' ' : static_cast<char>(*from);
        ++from;
    }

    void unescape() noexcept {
        if (left() > 1 && from[1] == u'\n') {
            from += 2;
            return;
        }
        if (left() <= 2)
            return take();
        seen |= static_cast<unsigned>(from[1] | from[2]);
        const int high = digitValues[from[1] & 0x7F], low = digitValues[from[2] & 0x7F];
        value = high < 0 ? value : static_cast<std::uint8_t>(high * 16);
        value = low < 0 ? value : static_cast<std::uint8_t>(value + low);
        *to++ = static_cast<char>(value);
        from += 3;
    }

    bool hasSeenASCIIOnly() const noexcept { return (seen | detail::allBits(seenInBlocks)) < 0x80; }

    const char16_t* from;
    const char16_t* end;
    char* to = nullptr;
    std::uint8_t value = 0;
    unsigned seen = 0;  ///< all bits of the characters
    detail::EightUnits seenInBlocks{};
};

/// Gives the bytes of a text, some at a time.
class Unescaper {
public:
    explicit Unescaper(std::u16string_view text) noexcept : cursor_{text.data(), text.data() + text.size()} {}

    /// The next bytes, none at the end.
    std::string_view next() noexcept {
        Cursor cursor = cursor_;
        cursor.to = bytes_;
        while (cursor.to < bytes_ + most && cursor.left())
            cursor.step();
        cursor_ = cursor;
        return {bytes_, static_cast<std::size_t>(cursor.to - bytes_)};
    }
    /// Whether all text, what is left included, is ASCII.
    bool isASCII() const noexcept {
        return cursor_.hasSeenASCIIOnly() && detail::allBelow({cursor_.from, cursor_.left()}, 0x80);
    }

private:
    static constexpr std::size_t most = 4096;

    Cursor cursor_;
    char bytes_[most + 2 * blockLength];
};

}  // namespace

RefPtr<NSString> decodeQuotedPrintableString(const NSString& text) {
    return decodeQuotedPrintableString_encoding(text, NSUTF8StringEncoding);
}

RefPtr<NSString> decodeQuotedPrintableString_encoding(const NSString& text, NSStringEncoding encoding) {
    Unescaper unescaper(text);
    detail::TextDecoder decoder(encoding);
    StringBuilder decoded;
    decoded.reserve(text.length());
    bool valid = true;
    for (std::string_view bytes; valid && !(bytes = unescaper.next()).empty();)
        valid = decoder.append(decoded, bytes);
    if (!unescaper.isASCII())
        return NSString::initWithData_encoding(NSData::data(), encoding);
    return valid && decoder.finish(decoded) ? RefPtr<NSString>(decoded.string()) : nullptr;
}

namespace {

const Additions<NSString> additions{
    classLevel<&decodeQuotedPrintableString>("decodeQuotedPrintableString:"),
    classLevel<&decodeQuotedPrintableString_encoding>("decodeQuotedPrintableString:encoding:"),
};

}  // namespace

}  // namespace QVLAdditions
}  // namespace tovi
