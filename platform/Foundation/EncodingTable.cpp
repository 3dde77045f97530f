#include <ToviFoundationKit/Foundation/EncodingTable_p.h>

#include <algorithm>
#include <array>

#include <ToviFoundationKit/Runtime/NSString.h>

namespace tovi {

namespace detail {

namespace {

using enum EncodingForm;

constexpr NSUInteger charsetBit = 0x80000000;

constexpr EncodingRow row(std::uint32_t charset, EncodingForm form, const char* converter, const char* name) {
    return {charset, static_cast<NSStringEncoding>(charsetBit | charset), form, converter, name};
}
constexpr EncodingRow row(std::uint32_t charset, NSStringEncoding encoding, EncodingForm form, const char* converter,
                          const char* name) {
    return {charset, encoding, form, converter, name};
}

// Where several converters bear a name, the one is taken by which JIS X 0201's yen and overline are ASCII's backslash
// and tilde.
constexpr EncodingRow rows[] = {
    row(0x0100, NSUnicodeStringEncoding, UTF16, "UTF-16", "utf-16"),
    row(0x0201, NSISOLatin1StringEncoding, Latin1, "ISO-8859-1", "iso-8859-1"),
    row(0x0202, NSISOLatin2StringEncoding, SingleByte, "ibm-912_P100-1995", "iso-8859-2"),
    row(0x0203, SingleByte, "ibm-913_P100-2000", "iso-8859-3"),
    row(0x0204, SingleByte, "ibm-914_P100-1995", "iso-8859-4"),
    row(0x0205, SingleByte, "ibm-915_P100-1995", "iso-8859-5"),
    row(0x0206, SingleByte, "ibm-1089_P100-1995", "iso-8859-6"),
    row(0x0207, SingleByte, "ibm-9005_X110-2007", "iso-8859-7"),
    row(0x0208, SingleByte, "ibm-5012_P100-1999", "iso-8859-8"),
    row(0x0209, SingleByte, "ibm-920_P100-1995", "iso-8859-9"),
    row(0x020A, SingleByte, "iso-8859_10-1998", "iso-8859-10"),
    row(0x020B, SingleByte, "iso-8859_11-2001", "iso-8859-11"),
    row(0x020D, SingleByte, "ibm-921_P100-1995", "iso-8859-13"),
    row(0x020E, SingleByte, "iso-8859_14-1998", "iso-8859-14"),
    row(0x020F, SingleByte, "ibm-923_P100-1998", "iso-8859-15"),
    row(0x0210, SingleByte, nullptr, "iso-8859-16"),
    row(0x0400, SingleByte, "ibm-437_P100-1995", "ibm437"),
    row(0x0405, SingleByte, "ibm-737_P100-1997", "cp737"),
    row(0x0406, SingleByte, "ibm-775_P100-1996", "ibm775"),
    row(0x0410, SingleByte, "ibm-850_P100-1995", "ibm850"),
    row(0x0411, SingleByte, "ibm-851_P100-1995", "ibm851"),
    row(0x0412, SingleByte, "ibm-852_P100-1995", "ibm852"),
    row(0x0413, SingleByte, "ibm-855_P100-1995", "ibm855"),
    row(0x0414, SingleByte, "ibm-857_P100-1995", "ibm857"),
    row(0x0415, SingleByte, "ibm-860_P100-1995", "ibm860"),
    row(0x0416, SingleByte, "ibm-861_P100-1995", "ibm861"),
    row(0x0417, SingleByte, "ibm-862_P100-1995", "ibm862"),
    row(0x0418, SingleByte, "ibm-863_P100-1995", "ibm863"),
    row(0x0419, SingleByte, "ibm-864_X110-1999", "ibm864"),
    row(0x041A, SingleByte, "ibm-865_P100-1995", "ibm865"),
    row(0x041B, SingleByte, "ibm-866_P100-1995", "ibm866"),
    row(0x041C, SingleByte, "ibm-869_P100-1995", "ibm869"),
    row(0x041D, SingleByte, "windows-874-2000", "windows-874"),
    row(0x0420, MultiByteRotated, "ibm-943_P15A-2003", "windows-31j"),
    row(0x0421, MultiByte, "windows-936-2000", "cp936"),
    row(0x0422, MultiByte, "windows-949-2000", "ks_c_5601-1987"),
    row(0x0423, MultiByte, "windows-950-2000", "cp950"),
    row(0x0500, NSWindowsCP1252StringEncoding, SingleByte, "ibm-5348_P100-1997", "windows-1252"),
    row(0x0501, NSWindowsCP1250StringEncoding, SingleByte, "ibm-5346_P100-1998", "windows-1250"),
    row(0x0502, NSWindowsCP1251StringEncoding, SingleByte, "ibm-5347_P100-1998", "windows-1251"),
    row(0x0503, NSWindowsCP1253StringEncoding, SingleByte, "ibm-5349_P100-1998", "windows-1253"),
    row(0x0504, NSWindowsCP1254StringEncoding, SingleByte, "ibm-5350_P100-1998", "windows-1254"),
    row(0x0505, SingleByte, "ibm-9447_P100-2002", "windows-1255"),
    row(0x0506, SingleByte, "ibm-9448_X100-2005", "windows-1256"),
    row(0x0507, SingleByte, "ibm-9449_P100-2002", "windows-1257"),
    row(0x0508, SingleByte, "ibm-5354_P100-1998", "windows-1258"),
    row(0x0600, NSASCIIStringEncoding, ASCII, "US-ASCII", "us-ascii"),
    row(0x0631, MultiByte, "windows-936-2000", "gbk"),
    row(0x0632, MultiByte, "gb18030", "gb18030"),
    row(0x0820, NSISO2022JPStringEncoding, MultiByte, "ISO_2022,locale=ja,version=0", "iso-2022-jp"),
    row(0x0821, MultiByte, "ISO_2022,locale=ja,version=2", "iso-2022-jp-2"),
    row(0x0822, MultiByte, "ISO_2022,locale=ja,version=1", "iso-2022-jp-1"),
    row(0x0830, MultiByte, "ISO_2022,locale=zh,version=0", "iso-2022-cn"),
    row(0x0831, MultiByte, "ISO_2022,locale=zh,version=1", "iso-2022-cn-ext"),
    row(0x0840, MultiByte, "ISO_2022,locale=ko,version=0", "iso-2022-kr"),
    row(0x0920, NSJapaneseEUCStringEncoding, MultiByte, "euc-jp-2007", "euc-jp"),
    row(0x0930, MultiByte, "ibm-1383_P110-1999", "gb2312"),
    row(0x0931, MultiByte, "euc-tw-2014", "euc-tw"),
    row(0x0940, MultiByte, "ibm-970_P110_P110-2006_U2", "euc-kr"),
    row(0x0A01, NSShiftJISStringEncoding, MultiByteRotated, "ibm-943_P15A-2003", "shift_jis"),
    row(0x0A02, SingleByte, "ibm-878_P100-1996", "koi8-r"),
    row(0x0A03, MultiByte, "windows-950-2000", "big5"),
    row(0x0A05, HZ, "HZ", "hz-gb-2312"),
    row(0x0A06, MultiByte, "ibm-1375_P100-2008", "big5-hkscs"),
    row(0x0A08, SingleByte, "ibm-1168_P100-2002", "koi8-u"),
    row(0x0BFF, NSNonLossyASCIIStringEncoding, NonLossyASCII, nullptr, nullptr),
    row(0x04000100, UTF7, "UTF-7", "utf-7"),
    row(0x08000100, NSUTF8StringEncoding, UTF8, "UTF-8", "utf-8"),
    row(0x0C000100, UTF32, "UTF-32", "utf-32"),
    row(0x10000100, UTF16BE, "UTF-16BE", "utf-16be"),
    row(0x14000100, UTF16LE, "UTF-16LE", "utf-16le"),
    row(0x18000100, UTF32BE, "UTF-32BE", "utf-32be"),
    row(0x1C000100, UTF32LE, "UTF-32LE", "utf-32le"),
};
static_assert(std::ranges::is_sorted(rows, {}, &EncodingRow::charset));
static_assert(std::size(rows) < mostEncodings);

constexpr auto available = [] {
    std::array<NSStringEncoding, std::size(rows)> result{};
    std::ranges::transform(rows, result.begin(), &EncodingRow::encoding);
    return result;
}();

}  // namespace

std::span<const EncodingRow> encodingRows() noexcept { return rows; }

const EncodingRow* rowOfCharset(std::uint32_t charset) noexcept {
    const auto* const found = std::ranges::lower_bound(rows, charset, {}, &EncodingRow::charset);
    return found != std::end(rows) && found->charset == charset ? found : nullptr;
}

const EncodingRow* rowOfEncoding(NSStringEncoding encoding) noexcept {
    if (encoding >= 2 * charsetBit)
        return nullptr;
    if (encoding & charsetBit)
        return rowOfCharset(static_cast<std::uint32_t>(encoding & ~charsetBit));
    const auto* const found = std::ranges::find(rows, encoding, &EncodingRow::encoding);
    return found != std::end(rows) ? found : nullptr;
}

}  // namespace detail

std::span<const NSStringEncoding> NSString::availableStringEncodings() noexcept { return detail::available; }

}  // namespace tovi
