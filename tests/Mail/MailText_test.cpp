#include <gtest/gtest.h>

#include <ToviFoundationKit/Mail/MailText.h>
#include <ToviFoundationKit/ToviFoundationKit.h>

#include <support/Text.h>

using namespace tovi;

namespace {

std::string enriched(std::string_view text) {
    return htmlStringFromMimeEnrichedString(NSString::fromUTF8(text))->UTF8String();
}
std::string richText(std::string_view text) {
    return htmlStringFromMimeRichTextString(NSString::fromUTF8(text))->UTF8String();
}

struct Row {
    const char* name;
    std::string text;
    std::string html;
};

}  // namespace

TEST(MailText, MakesHTMLOfBothFormats) {
    for (const Row& row : {
             Row{"faces", "<bold>b<italic>i</italic></bold> <underline>u</underline> <fixed>f</fixed>",
                 "<b>b<i>i</i></b> <u>u</u> <tt>f</tt>"},
             Row{"names in capital letters", "<Bold>x</BOLD>", "<b>x</b>"},
             Row{"sizes", "<bigger>b</bigger><smaller>s</smaller>", "<font size=+1>b</font><font size=-1>s</font>"},
             Row{"colours", "<color><param>red</param>r</color><color><param>0000,FFFF,8080</param>g</color>",
                 "<font color=\"red\">r</font><font color=\"#00FF80\">g</font>"},
             Row{"a font", "<fontfamily><param>Times New Roman</param>x</fontfamily>",
                 "<font face=\"Times New Roman\">x</font>"},
             Row{"a language", "<lang><param>pt-BR</param>x</lang>", "<span lang=\"pt-BR\">x</span>"},
             Row{"places", "<center>c</center><flushright>r</flushright><paragraph>p</paragraph>q",
                 "<p align=center>c</p><p align=right>r</p><p align=left>p</p>q"},
             Row{"indented", "<indent>i</indent><paraindent><param>left,right</param>p</paraindent>",
                 "<p style=\"margin-left:4em\">i</p><p style=\"margin-left:4em; margin-right:4em\">p</p>"},
             Row{"quoted and signed", "<excerpt>q</excerpt><signature>s</signature><np>",
                 "<blockquote>q</blockquote><address>s</address><hr>"},
             Row{"special characters", "a & b > c \"d\" &amp; >", "a &amp; b &gt; c \"d\" &amp;amp; &gt;"},
             Row{"blanks", "a  b   c ", "a&nbsp; b&nbsp;&nbsp; c "},
             Row{"any script", "桜 \U0001F338 é عمر", "桜 \U0001F338 é عمر"},
             Row{"a word like a mark", "a!!!BR!!!<bold>!!!BR!!!</bold>", "a!!!BR!!!<b>!!!BR!!!</b>"},
             Row{"comments", "a<comment>b<bold><Comment>c</comment>d</comment>e", "ae"},
             Row{"unknown commands", "<x-mine><param>p</param>a</x-mine><no-op>b<samepage>c", "abc"},
             Row{"nothing", "", ""},
         }) {
        EXPECT_EQ(enriched(row.text), row.html) << row.name;
        EXPECT_EQ(richText(row.text), row.html) << row.name;
    }
}

TEST(MailText, KnowsTheFormatsApart) {
    EXPECT_EQ(enriched("a\nb\n\nc\r\n\r\n\r\nd"), "a b<br>c<br><br>d");
    EXPECT_EQ(richText("a\nb<nl>\nc<NP>"), "a b<br> c<hr>");
    EXPECT_EQ(enriched("<nofill>a\nb\n\nc</nofill>\nd"), "a<br>b<br><br>c d");
    EXPECT_EQ(enriched("<<bold><<<nl>b<lt>"), "&lt;bold&gt;&lt;b");
    EXPECT_EQ(richText("<lt>bold><lt><<bold>b"), "&lt;bold&gt;&lt;&lt;<b>b</b>");
    EXPECT_EQ(enriched("<verbatim>a <bold> << \n</VERBATIM><bold>b"), "<tt>a &lt;bold&gt; &lt;&lt; <br></tt><b>b</b>");
}

TEST(MailText, LosesNoTextToCommandsThatAreNone) {
    for (const Row& row : {
             Row{"not closed", "<bold>a<italic>b", "<b>a<i>b</i></b>"},
             Row{"crossed", "<bold>a<italic>b</bold>c</italic>d", "<b>a<i>b</i></b>cd"},
             Row{"never opened", "a</bold>b</color>c</np>d", "abcd"},
             Row{"a bracket at the end", "1 <", "1 &lt;"},
             Row{"not ended", "a <bold b", "a &lt;bold b"},
             Row{"no command", "1 < 2, <a b>, <>, </>, <ada@example.org>",
                 "1 &lt; 2, &lt;a b&gt;, &lt;&gt;, &lt;/&gt;, &lt;ada@example.org&gt;"},
             Row{"too long", "<" + std::string(61, 'x') + ">", "&lt;" + std::string(61, 'x') + "&gt;"},
             Row{"no parameter", "<color>a</color><color><param></param>b</color>c", "abc"},
             Row{"an open parameter", "<color><param>a<bold>b</param>c", "a<b>bc</b>"},
             Row{"a parameter where there is none", "a<param>b</param>c</param>d", "acd"},
             Row{"an open comment", "a<comment>b<comment>c</comment>d", "abcd"},
             Row{"an attack", "<color><param>\"><script>&'</param>x</color><lang><param>\"onload='a'</param>y</lang>",
                 "\"&gt;&amp;'x<span lang=\"onloada\">y</span>"},
         }) {
        EXPECT_EQ(enriched(row.text), row.html) << row.name;
    }
}

TEST(MailText, ReplacesWhatHTMLCannotHave) {
    const auto text = NSString::stringWithCharacters(std::u16string_view(u"a\0b\xD800<\xDC00", 6));
    EXPECT_EQ(htmlStringFromMimeEnrichedString(text)->view(), u"a\uFFFDb\uFFFD&lt;\uFFFD");
}

TEST(MailText, TakesHugeAndHostileText) {
    for (const Row& row : {
             Row{"brackets", "<<", "&lt;"},
             Row{"ampersands", "&", "&amp;"},
             Row{"one line end after the other", "x\n", "x "},
             Row{"commands", "<bold>x</bold>", "<b>x</b>"},
             Row{"parameters", "<color><param>red</param>x</color>", "<font color=\"red\">x</font>"},
             Row{"characters of two units", "\U0001F338", "\U0001F338"},
         }) {
        constexpr int count = 300'000;
        EXPECT_EQ(enriched(repeated(row.text, count)), repeated(row.html, count)) << row.name;
    }
    constexpr int count = 1'000'000;
    EXPECT_EQ(enriched(repeated("\n", count)), repeated("<br>", count - 1));
    EXPECT_EQ(enriched(repeated("<bold>", count)), repeated("<b>", count) + repeated("</b>", count));
    EXPECT_EQ(richText(repeated("<", count)), repeated("&lt;", count));
    for (const std::string_view open : {"<comment>", "<param>", "<color><param>", "</bold><bold>", "<", "</", "<b"})
        enriched(repeated(open, count));
}

TEST(MailText, IsFoundByName) {
    const auto text = u"<bold>a</bold>\nb\n\n<<c>"_ns;
    EXPECT_EQ(qvlHtmlStringFromMimeEnrichedString(text)->view(), u"<b>a</b><BR>b<BR><BR>&lt;c&gt;");
    EXPECT_EQ(qvlHtmlStringFromMimeRichTextString(u"a<nl>\nb!!!BR!!!"_ns)->view(), u"a<br><BR>b<BR>");
    const id sent =
        NSString::classObject().performSelector_withObject("qvlHtmlStringFromMimeEnrichedString:"_sel, text.get());
    EXPECT_TRUE(as<NSMutableString>(sent));
}
