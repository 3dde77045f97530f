#include <gtest/gtest.h>

#include <mail/Charset.h>
#include <mail/EncodedWord.h>
#include <mail/Flowed.h>
#include <mail/HtmlText.h>
#include <mail/MessageText.h>
#include <mail/TransferEncoding.h>

#include <support/Text.h>

using namespace digest;
using namespace tovi;

namespace {

struct Row {
    std::string text;
    std::u16string_view expected;
    std::string problem = {};
};

/// A message of a header and a body, which an empty line separates.
RawMessage message(const std::string& text) {
    RawMessage result;
    std::size_t place = 0;
    while (place < text.size() && text[place] != '\n') {
        const std::size_t colon = text.find(':', place), end = text.find('\n', place);
        result.addField(text.substr(place, colon - place), text.substr(colon + 1, end - colon - 1));
        place = end + 1;
    }
    result.body = text.substr(std::min(place + 1, text.size()));
    return result;
}

std::string joined(const std::vector<std::string>& texts) {
    std::string result;
    for (const std::string& text : texts)
        result += (result.empty() ? "" : "|") + text;
    return result;
}

void expectTexts(const std::vector<Row>& rows) {
    for (const Row& row : rows) {
        const MessageText read = textOf(message(row.text));
        EXPECT_EQ(read.text->view(), row.expected) << row.text;
        EXPECT_EQ(joined(read.problems), row.problem) << row.text;
    }
}

}  // namespace

TEST(TransferEncoding, decodesWhatArrives) {
    struct Encoded {
        const char* encoding;
        const char* text;
        const char* bytes;
        bool isDamaged;
    };
    for (const Encoded& row : {
             Encoded{"BASE64", "aGVs\nbG8=\n\n", "hello", false},
             Encoded{"base64", "aGVsbG8", "hello", false},
             Encoded{"base64", "aGVs!bG8=", "hello", true},
             Encoded{"base64", "aGVsbA==bG8=", "helllo", false},
             Encoded{"base64", "aGVsbG9oZWxsbw==\n-- \nlist, footer\n", "hellohello\n-- \nlist, footer\n", true},
             Encoded{"base64", "This is no base64, is it?", "This is no base64, is it?", true},
             Encoded{"base64", "aGVsb", "hel", true},
             Encoded{"base64", "", "", false},
             Encoded{"quoted-printable", "a=C3=a9 =\nb_c =20 \nd=\n", "a\xC3\xA9 b_c  \nd", false},
             Encoded{"quoted-printable", "=ZZ = =4", "=ZZ = =4", true},
             Encoded{"7bit", "a=41", "a=41", false},
         }) {
        const TransferDecoded decoded = transferDecoded(row.text, row.encoding);
        EXPECT_EQ(decoded.bytes, row.bytes) << row.text;
        EXPECT_EQ(decoded.isDamaged, row.isDamaged) << row.text;
    }
}

TEST(Charset, readsUnknownOnesAsWellAsItCan) {
    EXPECT_EQ(charsetDecoded("\xA4", "ISO-8859-15*de").text->view(), u"€");
    EXPECT_EQ(charsetDecoded("a\xFF", "utf-8").text->view(), u"a\uFFFD");
    EXPECT_EQ(charsetDecoded("a\xFF", "utf-8").problem, "not valid utf-8 in 1 place");
    EXPECT_EQ(charsetDecoded("\xC3\xA9", "").problem, "not ASCII, and no charset is named; read as UTF-8");
    EXPECT_EQ(charsetDecoded("\xE9", "us-ascii").text->view(), u"é");
    EXPECT_EQ(charsetDecoded("\xE9", "x-mine").problem, "unknown charset \"x-mine\"; read as ISO-8859-1");
    EXPECT_EQ(charsetDecoded("plain", "x-mine").problem, "");
}

TEST(EncodedWord, decodesHeaders) {
    for (const Row& row : std::vector<Row>{
             {"plain = text =? here", u"plain = text =? here"},
             {"=?iso-8859-1?Q?J=FCrgen_W=2E?= <j@x>", u"Jürgen W. <j@x>"},
             {"Re: =?UTF-8*de?b?w6k=?=  =?utf-8*de?B?w6k?= !", u"Re: éé !"},
             {"=?utf-8?Q?=C3?=\t\n =?utf-8?Q?=A9_?= =?utf-8?Q?x?=", u"é x"},
             {"=?utf-8?B?w6nD?= =?utf-8?B?qQ==?=", u"éé"},
             {"=?utf-8?Q?a?= =?utf-8?B?Yg==?= =?koi8-r?Q?=C1?= c", u"abа c"},
             {"\"=?utf-8?Q?=C3=A9?=, x\"=?utf-8?Q?y?=z", u"\"é, x\"yz"},
             {"=?iso-2022-jp?B?GyRCQG5KVRsoQg==?= =?iso-2022-jp?B?GyRCJGkbKEI=?=", u"川辺ら"},
             {"=?us-ascii?Q?What?_Now?=", u"What? Now"},
             {"caf\xC3\xA9", u"café"},
             {"caf\xE9", u"café"},
             {"=?utf-8?Q?=ZZ?=", u"=ZZ", "damaged: =?utf-8?Q?=ZZ?="},
             {"=?utf-8?B?#!?= x", u"=?utf-8?B?#!?= x", "damaged: =?utf-8?B?#!?="},
             {"a =?utf-8?Q?b?= =?utf-8?B?#!?= =?utf-8?Q?c?=", u"a b =?utf-8?B?#!?= c", "damaged: =?utf-8?B?#!?="},
             {"=?x-no?Q?nic_=E9?=", u"nic é", "unknown charset \"x-no\"; read as ISO-8859-1"},
             {"=?utf-8?Q?a=E9b?=", u"a\uFFFDb", "not valid utf-8 in 1 place"},
             {"=?utf-8?X?a?= =?\?Q?a?= =?a b?Q?a?= =?utf-8?Q?a", u"=?utf-8?X?a?= =?\?Q?a?= =?a b?Q?a?= =?utf-8?Q?a"},
         }) {
        const HeaderText header = decodedHeader(row.text);
        EXPECT_EQ(header.text->view(), row.expected) << row.text;
        EXPECT_EQ(header.problem, row.problem) << row.text;
    }
    for (const std::string_view hostile : {"=?", "=?a?q?", "=?a?q?\?=", "=?a?b?!?= ", "?="})
        decodedHeader(repeated(hostile, 100'000));
}

TEST(Flowed, joinsLinesOfAParagraph) {
    EXPECT_EQ(unflowed(u"one \ntwo\n > three\n-- \nAda \n"_ns, false)->view(), u"one two\n> three\n-- \nAda \n");
    EXPECT_EQ(unflowed(u"> a \n> b\n>> c \n> d\n"_ns, false)->view(), u"> a b\n>> c \n> d\n");
    EXPECT_EQ(unflowed(u"to \ngether"_ns, true)->view(), u"together\n");
}

TEST(HtmlText, keepsWhatAPageSays) {
    for (const Row& row : {
             Row{"<html><head><title>t</title></head><body>Hi <b>there</b>,<br>you</body>", u"Hi  there ,\n you"},
             Row{"<p>a</p><p>b\nc", u"a\n\n \n\n b c"},
             Row{"a<style>p { x }</style>b<script>if (a < b) '</p>'</SCRIPT >c<!-- <d> -->e<!doctype x>f", u"a b cef"},
             Row{"1 < 2 & 3 > 2 <3 &lt;b&gt; &amp;amp; &eacute;&#x1F33F;&#233;",
                 u"1 < 2 & 3 > 2 <3 <b> &amp; é\U0001F33Fé"},
             Row{"<a title=\"x > y\">l</a> <a href='it'>k</a> <a href=\"open>m</a>", u"l   k   m"},
             Row{"a<!-- open <b>b</b> <script>c", u"a<!-- open  b   c"},
             Row{"<pre>a\n  b</pre>", u"a\n  b"},
             Row{"plain", u"plain"},
             Row{"a <b", u"a <b"},
         }) {
        const auto text = plainTextOfHTML(NSString::fromUTF8(row.text));
        EXPECT_EQ(text->view(), row.expected) << row.text << '\n' << *text;
    }
    for (const std::string_view hostile :
         {"<", "<a ", "<a \"", "<a b=\"", "<!--", "<script>", "<script></x>", "<style>", "&#", "<!", "<a b='>"})
        plainTextOfHTML(NSString::fromUTF8(repeated(hostile, 100'000)));
}

TEST(MessageText, decodesASimpleBody) {
    expectTexts({
        {"A: b\n\nplain\n", u"plain\n"},
        {"Content-Type: text/plain; charset=iso-8859-7\nContent-Transfer-Encoding: base64\n\nyuHr5+zd8eE=\n",
         u"Καλημέρα"},
        {"Content-Type: text/plain; charset=utf-8; format=flowed\nContent-Transfer-Encoding: Quoted-Printable\n\n"
         "caf=C3=A9 =20\nau lait\n",
         u"café  au lait\n"},
        {"Content-Type: text/html\n\n<p>a &amp; b</p>", u"a & b"},
        {"Content-Type: nonsense\n\nplain", u"plain"},
        {"Content-Type: text/x-diff\n\n+a", u"+a"},
        {"Content-Type: image/png\nContent-Transfer-Encoding: base64\n\n!!!", u""},
        {"Content-Type: text/plain; charset=utf-8\nContent-Transfer-Encoding: base64\n\n!aGVsbG/pIQ==", u"hello\uFFFD!",
         "damaged base64|not valid utf-8 in 1 place"},
    });
}

TEST(MessageText, choosesAmongParts) {
    const std::string mixed = "Content-Type: multipart/mixed; boundary=b\n\npreamble\n";
    const std::string either = "Content-Type: multipart/alternative; boundary=b\n\n";
    const std::string html = "--b\nContent-Type: text/html\n\n<i>h</i>\n";
    expectTexts({
        {mixed + "--b\n\none\n--b \nContent-Type: image/png\n\nx\n--bb\n--b\n\ntwo\n\n--b--\nepilogue",
         u"one\n\ntwo\n"},
        {mixed + "--b\nContent-Disposition: attachment\n\none\n--b\nno header\n--b--", u"no header"},
        {either + html + "--b\nContent-Type: text/plain\n\np\n--b--", u"p"},
        {either + "--b\nContent-Type: text/calendar\n\nc\n" + html + "--b\nContent-Type: image/png\n\n--b--", u"h"},
        {either + "--b\n\np\n--b\nContent-Type: multipart/related; boundary=bb\n\n--bb\nContent-Type: text/html\n\nh\n"
                  "--bb--\n--b--",
         u"p"},
        {mixed +
             "--b\nContent-Type: message/rfc822\n\nSubject: s\nContent-Type: text/html;\n charset=utf-8\n\n<b>m</b>\n"
             "--b--",
         u"m"},
        {mixed + "--b\nContent-Type: message/rfc822\nContent-Transfer-Encoding: base64\n\nQTogYgoKbQ==\n--b--", u"m"},
        {"Content-Type: multipart/digest; boundary=b\n\n--b\n\nSubject: s\n\none\n--b\n\nSubject: t\n\ntwo\n--b--",
         u"one\n\ntwo"},
    });
}

TEST(MessageText, losesNothingInBrokenMultiparts) {
    const std::string outer = "Content-Type: multipart/mixed; boundary=b\n\n";
    expectTexts({
        {outer + "--b\n\none\n--b\n\ntwo", u"one\n\ntwo", "multipart/mixed is not closed"},
        {outer + "--c\n\none", u"--c\n\none", "multipart/mixed without a part"},
        {"Content-Type: multipart/mixed\n\none", u"one", "multipart/mixed without a part"},
        {outer + "--b\nContent-Type: multipart/alternative; boundary=c\n\n--c\n\ninner\n--b\n\nouter\n--b--",
         u"inner\n\nouter", "multipart/alternative is not closed"},
        {outer + "--b--", u""},
    });
}

TEST(MessageText, boundsWhatHostileMessagesCost) {
    std::string deep = "Content-Type: multipart/mixed; boundary=b0\n\n";
    for (int i = 0; i < 1000; ++i)
        deep +=
            "--b" + std::to_string(i) + "\nContent-Type: multipart/mixed; boundary=b" + std::to_string(i + 1) + "\n\n";
    EXPECT_EQ(joined(textOf(message(deep)).problems), "multipart/mixed is not closed|parts within parts, too deep");
    const std::string parts = "Content-Type: multipart/mixed; boundary=b\n\n" + repeated("--b\n", 300'000) + "\nlast";
    EXPECT_EQ(textOf(message(parts)).text->view(), u"last");
    const std::string messages =
        "Content-Type: message/rfc822\n\n" + repeated("Content-Type: message/rfc822\n\n", 1000);
    EXPECT_EQ(MimeTree(message(messages)).parts().size(), 33u);
}

TEST(MessageText, beginsWithTheFirstParagraph) {
    EXPECT_EQ(openingOf(u"\n \nOn Monday Ada wrote:\n> hello\n\nHi  Ada,\r\nwell.\n\nBye\n"_ns)->view(),
              u"Hi  Ada, well.");
    EXPECT_EQ(openingOf(u"Dear all,\n\nit is\nspring.\n\nBye"_ns)->view(), u"Dear all, it is spring.");
    EXPECT_EQ(openingOf(u""_ns)->length(), 0u);
    const std::u16string wide = std::u16string(239, u'x') + u"\U0001F338";
    EXPECT_EQ(openingOf(*box(wide))->view(), wide.substr(0, 239));
}
