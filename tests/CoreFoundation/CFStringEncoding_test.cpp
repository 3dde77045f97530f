#include <gtest/gtest.h>

#include <ToviFoundationKit/ToviFoundationKit.h>

using namespace tovi;
using namespace std::string_view_literals;

namespace {

CFStringEncoding named(std::u16string_view name) { return CFStringConvertIANACharSetNameToEncoding(box(name)); }

}  // namespace

TEST(CFStringEncoding, NamesAreFoundByAnyOfTheirSpellings) {
    const std::pair<std::u16string_view, CFStringEncoding> rows[] = {
        {u"ASCII", 0x0600},
        {u"ANSI_X3.4-1968", 0x0600},
        {u"ISO-8859-1", 0x0201},
        {u"iso8859-1", 0x0201},
        {u"ISO_8859-1:1987", 0x0201},
        {u"latin1", 0x0201},
        {u"iso-8859-8-i", 0x0208},
        {u"Latin10", 0x0210},
        {u"UTF8", 0x08000100},
        {u"utf-16", 0x0100},
        {u"UTF-16LE", 0x14000100},
        {u"windows-1252", 0x0500},
        {u"CP1252", 0x0500},
        {u"cp437", 0x0400},
        {u"KOI8-R", 0x0A02},
        {u"Shift_JIS", 0x0A01},
        {u"x-sjis", 0x0A01},
        {u"windows-31j", 0x0420},
        {u"euc-jp", 0x0920},
        {u"ISO-2022-JP", 0x0820},
        {u"gb2312", 0x0930},
        {u"GBK", 0x0631},
        {u"gb18030", 0x0632},
        {u"Big5", 0x0A03},
        {u"ks_c_5601-1987", 0x0422},
        {u"tis-620", 0x041D},
        {u"no-such-charset", kCFStringEncodingInvalidId},
        {u"", kCFStringEncodingInvalidId},
        {u"--", kCFStringEncodingInvalidId},
        {u"ISO-8859-12", kCFStringEncodingInvalidId},
        {u"utf-8\u00E9", kCFStringEncodingInvalidId},
    };
    for (const auto& [name, encoding] : rows)
        EXPECT_EQ(named(name), encoding) << box(name)->UTF8String();
    EXPECT_EQ(named(std::u16string(1 << 20, u'x')), kCFStringEncodingInvalidId);
}

TEST(CFStringEncoding, EveryNameLeadsBackToItsEncoding) {
    for (const NSStringEncoding encoding : NSString::availableStringEncodings()) {
        const CFStringEncoding charset = CFStringConvertNSStringEncodingToEncoding(encoding);
        EXPECT_EQ(CFStringConvertEncodingToNSStringEncoding(charset), encoding);
        const auto name = CFStringConvertEncodingToIANACharSetName(charset);
        EXPECT_EQ(static_cast<bool>(name), encoding != NSNonLossyASCIIStringEncoding);
        if (!name)
            continue;
        EXPECT_EQ(CFStringConvertIANACharSetNameToEncoding(*name), charset) << name->UTF8String();
        EXPECT_EQ(CFStringConvertIANACharSetNameToEncoding(name->uppercaseString()), charset);
        EXPECT_EQ(*name->lowercaseString(), *name);
    }
    EXPECT_EQ(CFStringConvertNSStringEncodingToEncoding(NSStringEncoding{2}), kCFStringEncodingInvalidId);
    EXPECT_EQ(CFStringConvertEncodingToNSStringEncoding(kCFStringEncodingInvalidId), NSStringEncoding{});
    EXPECT_FALSE(CFStringConvertEncodingToIANACharSetName(kCFStringEncodingInvalidId));
}

TEST(CFUUID, IsRandomAndSaysSo) {
    const auto uuid = CFUUIDCreate();
    const auto string = CFUUIDCreateString(uuid);
    ASSERT_EQ(string->length(), 36U);
    for (NSUInteger i = 0; i < 36; ++i) {
        const bool isDash = i == 8 || i == 13 || i == 18 || i == 23;
        EXPECT_NE((isDash ? u"-"sv : u"0123456789ABCDEF"sv).find(string->characterAtIndex(i)), u""sv.npos) << i;
    }
    EXPECT_EQ(string->characterAtIndex(14), u'4') << "the version: random";
    EXPECT_NE(u"89AB"sv.find(string->characterAtIndex(19)), u""sv.npos) << "the variant";
    EXPECT_TRUE(uuid->isEqual(uuid->copy().get()));
    EXPECT_FALSE(uuid->isEqual(CFUUIDCreate().get()));
}
