#include <gtest/gtest.h>

#include <ToviFoundationKit/Foundation/StringsFile.h>
#include <ToviFoundationKit/ToviFoundationKit.h>

#include <support/TemporaryDirectory.h>

using namespace tovi;
using namespace std::string_literals;

namespace {

RefPtr<NSDictionary> parse(const std::string& file, RefPtr<NSError>* error = nullptr) {
    return stringsFromBytes(std::as_bytes(std::span(file)), error);
}

std::string utf16(std::u16string_view text, bool bigEndian) {
    std::string bytes;
    for (const char16_t unit : text) {
        const char high = static_cast<char>(unit >> 8), low = static_cast<char>(unit & 0xFF);
        bytes.append({bigEndian ? high : low, bigEndian ? low : high});
    }
    return bytes;
}

}  // namespace

TEST(StringsFile, ReadsTextsWordsCommentsAndEscapes) {
    RefPtr<NSError> error;
    const auto strings = parse(R"(
        /* The button's */ // label
        "ok" = "Fine"; plain-key_1.x = bare/word:$;"tight"="";
        "escapes" /*=*/ = // ;
            "\n\t\r\"\\\'\U00e4\u20AC\Ud83d\ude00"
        ; "lines" = "one
two"; "ok" = "twice"; "" = "no key"; "über" = "größer";//)",
                               &error);
    ASSERT_TRUE(strings) << *error->localizedDescription();
    EXPECT_EQ(strings, NSDictionary::of({{u"ok", u"twice"},
                                         {u"plain-key_1.x", u"bare/word:$"},
                                         {u"tight", u""},
                                         {u"escapes", u"\n\t\r\"\\'\u00E4\u20AC\U0001F600"},
                                         {u"lines", u"one\ntwo"},
                                         {u"", u"no key"},
                                         {u"\u00FCber", u"gr\u00F6\u00DFer"}}));
    for (const char* file : {"", " \n\t", "// nothing", "/**/"})
        EXPECT_EQ(parse(file)->count(), 0U) << file;
}

TEST(StringsFile, ReadsEveryEncodingThatItKnows) {
    const auto expected = NSDictionary::of({{u"k", u"\u20AC \U0001F600"}});
    const std::u16string_view text = u"k = \"\u20AC \U0001F600\";";
    EXPECT_EQ(*parse("k = \"\xE2\x82\xAC \xF0\x9F\x98\x80\";"), expected);
    EXPECT_EQ(*parse("\xEF\xBB\xBFk = \"\xE2\x82\xAC \xF0\x9F\x98\x80\";"), expected);
    EXPECT_EQ(*parse("\xFF\xFE" + utf16(text, false)), expected);
    EXPECT_EQ(*parse("\xFE\xFF" + utf16(text, true)), expected);
}

TEST(StringsFile, NamesThePlaceOfAFault) {
    const std::pair<std::string, std::string> rows[] = {
        {"a", "line 1, column 2: '=' expected"},
        {"a = b", "line 1, column 6: ';' expected"},
        {"a = b;\r\n\r\n  = c;", "line 3, column 3: a text expected"},
        {"a = b;\rc d", "line 2, column 3: '=' expected"},
        {"a =\n  \"x\n", "line 2, column 3: the text has no closing quote"},
        {"\"a\\", "line 1, column 3: unknown escape sequence"},
        {"a = \"\\q\";", "line 1, column 6: unknown escape sequence"},
        {"a = \"\\U12G4\";", "line 1, column 6: four hexadecimal digits expected after \\U"},
        {"a = \"\\u123", "line 1, column 6: four hexadecimal digits expected after \\U"},
        {"x = y; /*/", "line 1, column 8: the comment has no end"},
        {"\xEF\xBF\xBD\xC3\xA4 \xF0\x9F\x98\x80\n\xE2\x82\xAC\xC3",
         "line 2, column 2: not UTF-8, and not marked as UTF-16"},
        {"\xFF\xFE" + utf16(u"a=b;\n", false) + "x", "line 2, column 1: half a UTF-16 unit at the end"},
        {"a\0b"s, "line 1, column 2: '=' expected"},
    };
    for (const auto& [file, message] : rows) {
        RefPtr<NSError> error;
        EXPECT_FALSE(parse(file, &error)) << file;
        EXPECT_EQ(error->localizedDescription()->UTF8String(), message);
        EXPECT_EQ(*error->domain(), StringsFileErrorDomain);
        EXPECT_FALSE(parse(file));
    }
}

TEST(StringsFile, NamesTheFileOfAFault) {
    const TemporaryDirectory directory;
    directory.write("a.strings", "a = b;");
    directory.write("b.strings", "a ? b;");
    EXPECT_EQ(*stringsFromFile(directory.text("a.strings")), NSDictionary::of({{u"a", u"b"}}));
    RefPtr<NSError> error;
    EXPECT_FALSE(stringsFromFile(directory.text("b.strings"), &error));
    EXPECT_EQ(error->localizedDescription()->UTF8String(),
              (directory.path() / "b.strings").native() + ": line 1, column 3: '=' expected");
    EXPECT_FALSE(stringsFromFile(directory.text("c.strings"), &error));
    EXPECT_EQ(*error->domain(), NSPOSIXErrorDomain);
    EXPECT_EQ(error->code(), ENOENT);
}

TEST(StringsFile, AMillionOpenCommentsOrEntriesTakeOnePass) {
    std::string entries, comments = "a = b; ";
    for (int i = 0; i < 1'000'000; ++i) {
        entries += "\"same\" = \"\\n\";\n";
        comments += "/*";
    }
    EXPECT_EQ(parse(entries)->count(), 1U);
    EXPECT_FALSE(parse(comments));
}
