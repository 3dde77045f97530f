#include <ToviFoundationKit/ToviFoundationKit.h>

#include <gtest/gtest.h>

using namespace tovi;

namespace {

struct Case {
    std::u16string_view text, decoded;
};

void expectDecoded(std::initializer_list<Case> cases) {
    for (const auto& [text, decoded] : cases)
        EXPECT_EQ(stringByDecodingXMLEntities(box(text)), decoded) << box(text);
}

}  // namespace

TEST(XMLEntities, decodesNamesExactly) {
    expectDecoded({
        {u"", u""},
        {u"&lt;b&gt;&amp;&quot;&apos;", u"<b>&\"'"},
        {u"&amp;lt;", u"&lt;"},
        {u"&nbsp;&euro;&thetasym;&there4;&Dagger;&lang;&diams;", u"\u00A0\u20AC\u03D1\u2234\u2021\u2329\u2666"},
        {u"&eacute;&Eacute;&ETH;&eth;&sup1;&frac34;", u"éÉÐð¹¾"},
        {u"AT&T & fish &foo; &LT; &lt &;&&amp;&", u"AT&T & fish &foo; &LT; &lt &;&&&"},
        {{u"&\0amp;&amp\0;", 12}, {u"&\0amp;&amp\0;", 12}},
        {u"&thetasymx;&&thetasy;\xD83D&lt;\xDE00", u"&thetasymx;&&thetasy;\xD83D<\xDE00"},
        {u"&lt; &\u016Ct; &lt\u0301;", u"< &\u016Ct; &lt\u0301;"},
    });
}

TEST(XMLEntities, makesOneUnitOfANumber) {
    expectDecoded({
        {u"&#65;&#x41;&#65&#x41 &#x4f;&#X41;", u"AAAA O&#X41;"},
        {u"&#x0x41;&#x0X41;&#x0xg;&#0041;", {u"AA\0xg;)", 7}},
        {u"&#128512;&#x1F600;", u"\uF600\uF600"},
        {u"&#-191;&#+65;&#- 65;&#x-41;", u"\uFF41A&#- 65;&#x-41;"},
        {u"&#2147483648;&#-2147483649;&#99999999999999999999;", {u"\uFFFF\0\uFFFF", 3}},
        {u"&#x100000041;&#x10000000000000000041;", u"\uFFFF\uFFFF"},
        {u"&#65A&#66;B", u"AAB"
                         u"B"},
    });
    EXPECT_EQ(stringByDecodingXMLEntities(u"&#0;"_ns)->length(), 1U);
}

TEST(XMLEntities, keepsWhatIsNoNumberUpToAStop) {
    expectDecoded({
        {u"&#;&#x;&#xzz;&#", u"&#;&#x;&#xzz;&#"},
        {u"&#a&lt;&lt;", u"&#a&lt;<"},
        {u"&#a&lt b&lt;", u"&#a&lt b<"},
        {u"&#a&lt\t&lt;&#b&lt\n&lt;&#c&lt\r&lt;", u"&#a&lt\t<&#b&lt\n<&#c&lt\r<"},
        {u"&#a\u00A0&lt;", u"&#a\u00A0&lt;"},
    });
}

TEST(XMLEntities, encodesTheFive) {
    EXPECT_EQ(stringByEncodingXMLEntities(u"a<b & 'c'"_ns), u"a&lt;b &amp; &apos;c&apos;");
    EXPECT_EQ(stringByEncodingXMLEntities(u"&amp;\"\u2028é\xD83D>"_ns), u"&amp;amp;&quot;\u2028é\xD83D&gt;");
    EXPECT_EQ(stringByEncodingXMLEntities(u""_ns), u"");
    // Pieces at the seams of the bulk search.
    for (std::size_t distance = 1; distance < 70; ++distance) {
        const std::u16string run(distance, u'ÿ');
        const std::u16string text = run + u'<' + run + u"&\"" + run;
        const auto encoded = stringByEncodingXMLEntities(box(text));
        EXPECT_EQ(encoded, run + u"&lt;" + run + u"&amp;&quot;" + run);
        EXPECT_EQ(stringByDecodingXMLEntities(encoded), text);
    }
}

TEST(XMLEntities, answersAnImmutableCopy) {
    const auto text = NSMutableString::stringWithString(u"plain"_ns);
    const auto decoded = stringByDecodingXMLEntities(text), encoded = stringByEncodingXMLEntities(text);
    text->appendString(u"er"_ns);
    EXPECT_EQ(decoded, u"plain");
    EXPECT_EQ(encoded, u"plain");
    EXPECT_TRUE(decoded->isMemberOfClass(NSString::classObject()));
    EXPECT_EQ(send<id>(u"&lt;"_ns, "stringByDecodingXMLEntities"_sel)->description(), u"<");
}
