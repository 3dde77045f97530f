#include <ToviFoundationKit/Foundation/Charset_p.h>

#include <algorithm>
#include <atomic>
#include <new>
#include <string_view>

#include <unicode/ucnv_err.h>

namespace tovi::detail {

namespace {

/// Stops at what is not valid. Shifts with nothing between, of which joined lines and words are full, pass.
void stopAtInvalid(const void*, UConverterToUnicodeArgs*, const char*, int32_t, UConverterCallbackReason reason,
                   UErrorCode* error) {
    if (reason == UCNV_IRREGULAR)
        *error = U_ZERO_ERROR;
}

Converter opened(const EncodingRow& row) {
    UErrorCode error = U_ZERO_ERROR;
    Converter converter(ucnv_open(row.converter, &error), ucnv_close);
    ucnv_setFallback(converter.get(), false);
    ucnv_setToUCallBack(converter.get(), stopAtInvalid, nullptr, nullptr, nullptr, &error);
    ucnv_setFromUCallBack(converter.get(), UCNV_FROM_U_CALLBACK_STOP, nullptr, nullptr, nullptr, &error);
    if (U_FAILURE(error))
        throw std::bad_alloc();
    return converter;
}

}  // namespace

/// One of each kind for each row, made by whoever comes first and never destroyed.
class CharsetCache {
public:
    template <class Charset> static const Charset& get(const EncodingRow& row) {
        static std::atomic<const Charset*> made[mostEncodings];
        auto& place = made[&row - encodingRows().data()];
        const Charset* charset = place.load(std::memory_order_acquire);
        if (!charset) {
            std::unique_ptr<const Charset> mine(new Charset(row));
            if (place.compare_exchange_strong(charset, mine.get(), std::memory_order_acq_rel))
                charset = mine.release();
        }
        return *charset;
    }
};

const SingleByteCharset& SingleByteCharset::of(const EncodingRow& row) {
    return CharsetCache::get<SingleByteCharset>(row);
}
const MultiByteCharset& MultiByteCharset::of(const EncodingRow& row) {
    return CharsetCache::get<MultiByteCharset>(row);
}

namespace {

/// The upper half of ISO 8859-16, which ICU lacks, from A0 on.
constexpr std::u16string_view latin10 =
    u"\u00A0\u0104\u0105\u0141\u20AC\u201E\u0160\u00A7\u0161\u00A9\u0218\u00AB\u0179\u00AD\u017A\u017B"
    u"\u00B0\u00B1\u010C\u0142\u017D\u201D\u00B6\u00B7\u017E\u010D\u0219\u00BB\u0152\u0153\u0178\u017C"
    u"\u00C0\u00C1\u00C2\u0102\u00C4\u0106\u00C6\u00C7\u00C8\u00C9\u00CA\u00CB\u00CC\u00CD\u00CE\u00CF"
    u"\u0110\u0143\u00D2\u00D3\u00D4\u0150\u00D6\u015A\u0170\u00D9\u00DA\u00DB\u00DC\u0118\u021A\u00DF"
    u"\u00E0\u00E1\u00E2\u0103\u00E4\u0107\u00E6\u00E7\u00E8\u00E9\u00EA\u00EB\u00EC\u00ED\u00EE\u00EF"
    u"\u0111\u0144\u00F2\u00F3\u00F4\u0151\u00F6\u015B\u0171\u00F9\u00FA\u00FB\u00FC\u0119\u021B\u00FF";
static_assert(latin10.size() == 0x60);

char16_t unitBy(UConverter* converter, unsigned char byte) {
    const auto source = static_cast<char>(byte);
    char16_t unit = SingleByteCharset::noUnit;
    UErrorCode error = U_ZERO_ERROR;
    ucnv_toUChars(converter, &unit, 1, &source, 1, &error);
    return U_SUCCESS(error) ? unit : SingleByteCharset::noUnit;
}

}  // namespace

// The pages of code of old PCs take three control characters for one another; the lower half is ASCII all the same.
SingleByteCharset::SingleByteCharset(const EncodingRow& row) : pages_(1) {
    for (unsigned byte = 0; byte < 0x80; ++byte)
        map(static_cast<unsigned char>(byte), static_cast<char16_t>(byte));
    const Converter converter = row.converter ? opened(row) : Converter(nullptr, ucnv_close);
    for (unsigned byte = 0x80; byte < 0x100; ++byte) {
        const auto each = static_cast<unsigned char>(byte);
        map(each, converter ? unitBy(converter.get(), each) : byte < 0xA0 ? char16_t(byte) : latin10[byte - 0xA0]);
    }
}

void SingleByteCharset::map(unsigned char byte, char16_t unit) {
    units_[byte] = unit;
    if (unit == noUnit || byteOf(unit))
        return;
    if (!pageOf_[unit >> 8]) {
        pageOf_[unit >> 8] = static_cast<std::uint8_t>(pages_.size());
        pages_.emplace_back();
    }
    pages_[pageOf_[unit >> 8]][unit & 0xFF] = byte;
}

namespace {

/// Takes out what the converter claims and cannot write.
void keepWritable(USet* set, UConverter* converter) {
    const int32_t count = uset_size(set);
    std::vector<UChar32> unwritable;
    for (int32_t i = 0; i < count; ++i) {
        const UChar32 codePoint = uset_charAt(set, i);
        char16_t units[2];
        int32_t length = 0;
        U16_APPEND_UNSAFE(units, length, codePoint);
        char bytes[32];
        UErrorCode error = U_ZERO_ERROR;
        ucnv_fromUChars(converter, bytes, sizeof bytes, units, length, &error);
        if (U_FAILURE(error))
            unwritable.push_back(codePoint);
    }
    for (const UChar32 codePoint : unwritable)
        uset_remove(set, codePoint);
}

}  // namespace

MultiByteCharset::MultiByteCharset(const EncodingRow& row)
    : original_(opened(row)), repertoire_(uset_openEmpty(), uset_close) {
    UErrorCode error = U_ZERO_ERROR;
    ucnv_getUnicodeSet(original_.get(), repertoire_.get(), UCNV_ROUNDTRIP_SET, &error);
    uset_removeRange(repertoire_.get(), 0xD800, 0xDFFF);
    if (std::string_view(row.name) == "iso-2022-kr")
        keepWritable(repertoire_.get(), original_.get());
    uset_freeze(repertoire_.get());
    if (U_FAILURE(error))
        throw std::bad_alloc();
}

Converter MultiByteCharset::converter() const {
    UErrorCode error = U_ZERO_ERROR;
#if U_ICU_VERSION_MAJOR_NUM >= 71
    Converter copy(ucnv_clone(original_.get(), &error), ucnv_close);
#else
    Converter copy(ucnv_safeClone(original_.get(), nullptr, nullptr, &error), ucnv_close);
#endif
    if (U_FAILURE(error))
        throw std::bad_alloc();
    return copy;
}

}  // namespace tovi::detail
