#include <gtest/gtest.h>

#include <terminal/TextWidth.h>

using namespace digest;

TEST(TextWidth, countsTheColumnsOfATerminal) {
    EXPECT_EQ(columnsOf(u"plain"), 5);
    EXPECT_EQ(columnsOf(u"山田"), 4);
    EXPECT_EQ(columnsOf(u"e\u0301"), 1);
    EXPECT_EQ(columnsOf(u"\U0001F600"), 2);
    EXPECT_EQ(columnsOf(u"Ἀλέξανδρος"), 10);
}

TEST(TextWidth, makesTextSafeToPrint) {
    EXPECT_EQ(printable(u" a\t\n  b\u3000"), u"a b");
    EXPECT_EQ(printable(u"\u001B[2Jx\u009By"), u"\uFFFD[2Jx\uFFFDy");
    EXPECT_EQ(printable(u"\u202Eevil\u2066"), u"evil");
    EXPECT_EQ(printable(std::u16string{u'a', 0xD800, u'b', 0xDC00}), u"a\uFFFDb\uFFFD");
    EXPECT_EQ(printable(u"\U0001F600"), u"\U0001F600");
}

TEST(TextWidth, fitsTextIntoColumns) {
    EXPECT_EQ(fitted(u"abc", 5), u"abc  ");
    EXPECT_EQ(fitted(u"abc", 5, Align::right), u"  abc");
    EXPECT_EQ(fitted(u"abcdef", 4), u"abc…");
    EXPECT_EQ(fitted(u"山田花子", 6), u"山田… ");
    EXPECT_EQ(fitted(u"山田花子", 8), u"山田花子");
    EXPECT_EQ(fitted(u"abc", 1), u"…");
    EXPECT_EQ(fitted(u"abc", 0), u"");
    EXPECT_EQ(elided(u"e\u0301e\u0301", 2), u"e\u0301e\u0301");
}

TEST(TextWidth, wrapsAtWords) {
    EXPECT_EQ(wrapped(u"one two three", 7), (std::vector<std::u16string>{u"one two", u"three"}));
    EXPECT_EQ(wrapped(u"山田花子 x", 6), (std::vector<std::u16string>{u"山田…", u"x"}));
    EXPECT_TRUE(wrapped(u"", 5).empty());
}
