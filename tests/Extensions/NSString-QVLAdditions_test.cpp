#include <ToviFoundationKit/ToviFoundationKit.h>

#include <gtest/gtest.h>

#include <support/Expect.h>
#include <support/Text.h>

using namespace tovi;

namespace {

/// What was found, joined by "|"; "nil" for nil.
std::string found(std::u16string_view receiver, std::u16string_view pattern) {
    const auto list = findRegexString(text(receiver), text(pattern));
    return list ? list->componentsJoinedByString(u"|"_ns)->UTF8String() : "nil";
}

std::string firstFound(std::u16string_view receiver, std::u16string_view pattern) {
    const auto first = findRegexFirstString(text(receiver), text(pattern));
    return first ? first->UTF8String() : "nil";
}

}  // namespace

TEST(StringAdditions, searchAndCompareWithoutRegardToCase) {
    EXPECT_TRUE(hasString(u"cafe\u0301s"_ns, u"café"_ns));
    EXPECT_FALSE(hasString(u"cafe\u0301"_ns, u"cafe"_ns));
    EXPECT_FALSE(hasString(u"CAFÉ"_ns, u"café"_ns));
    EXPECT_TRUE(caseInsensitiveHasString(u"un CAFÉ"_ns, u"cafe\u0301"_ns));
    EXPECT_EQ(rangeOfNoCaseString(u"Weiße STRASSE"_ns, u"straße"_ns), (NSRange{6, 7}));
    EXPECT_FALSE(rangeOfNoCaseString(u"abc"_ns, u""_ns).wasFound());
    EXPECT_TRUE(hasCaseInsensitivePrefix(u"Hello"_ns, u"hE"_ns));
    EXPECT_FALSE(hasCaseInsensitivePrefix(u"Hello"_ns, u"Hello!"_ns));
    EXPECT_TRUE(hasCaseInsensitiveSuffix(u"ΌΣΟΣ"_ns, u"σος"_ns));
    EXPECT_FALSE(hasCaseInsensitiveSuffix(u"ß"_ns, u"ss"_ns));
    EXPECT_FALSE(hasCaseInsensitiveSuffix(u"xß"_ns, u"ss"_ns));
    EXPECT_TRUE(hasCaseInsensitivePrefix(u""_ns, u""_ns));
    EXPECT_TRUE(caseInsensitiveIsEqualToString(u"ISTANBUL"_ns, u"istanbul"_ns));
    EXPECT_FALSE(caseInsensitiveIsEqualToString(u"İ"_ns, u"i"_ns));
}

TEST(StringAdditions, findNilNowhere) {
    const NSString* const nil = nullptr;
    EXPECT_FALSE(hasString(u"a"_ns, nil) || caseInsensitiveHasString(u"a"_ns, nil) ||
                 hasCaseInsensitivePrefix(u""_ns, nil) || hasCaseInsensitiveSuffix(u"a"_ns, nil) ||
                 caseInsensitiveIsEqualToString(u""_ns, nil) || rangeOfNoCaseString(u"a"_ns, nil).wasFound());
    EXPECT_FALSE(send<bool>(u"a"_ns, "hasString:"_sel, id()));
}

TEST(StringAdditions, findWhatIsBetweenDelimiters) {
    EXPECT_EQ(found(u"a[1]b[2]", u"[*]"), "1|2");
    EXPECT_EQ(found(u"[1][][3]x", u"[*]"), "1||3");
    EXPECT_EQ(found(u"<b>x<b>y</b></b>", u"<b>*</b>"), "x<b>y");
    EXPECT_EQ(found(u"--a--b", u"--*--*ignored"), "a");
    EXPECT_EQ(found(u"[1][", u"[*]"), "1");
    EXPECT_EQ(found(u"", u"[*]"), "nil");
    EXPECT_EQ(found(u"abc", u"[*]"), "nil");
    EXPECT_EQ(found(u"abc", u"*]"), "nil");
    EXPECT_EQ(found(u"abc", u"b"), "");
    EXPECT_EQ(firstFound(u"a[1]b[2]", u"[*]"), "1");
    EXPECT_EQ(firstFound(u"a]b[2", u"[*]"), "nil");
    EXPECT_EQ(firstFound(u"a[1]", u"[*"), "nil");
    EXPECT_EQ(firstFound(u"a[1]", u"[1]"), "nil");
    EXPECT_EQ(findRegexString_inRange(u"[1][2][3]"_ns, u"[*]"_ns, {1, 5}).ref(), NSArray::of(u"2"));
}

TEST(StringAdditions, raiseWhereAnOpeningDelimiterIsNotClosed) {
    for (const auto& [receiver, pattern] : {std::pair(u"[1][x", u"[*]"), {u"[[[", u"[*]"}, {u"a[1]", u"[*"}})
        EXPECT_RAISES(findRegexString(text(receiver), text(pattern)), NSRangeException, "");
    EXPECT_THROW(findRegexString_inRange(u"[1]"_ns, u"[*]"_ns, {2, 2}), NSException);
}

TEST(StringAdditions, flattenTags) {
    const auto flat = [](std::u16string_view html) { return flattenHTML_trimWhiteSpace(text(html), false); };
    EXPECT_EQ(flattenHTML_trimWhiteSpace(u"<p>Hi <b>there</b></p>"_ns, true), u"Hi  there");
    EXPECT_EQ(flat(u"<p>Hi <b>there</b></p>"), u" Hi  there  ");
    EXPECT_EQ(flat(u"a < b"), u"a < b");
    EXPECT_EQ(flat(u"a > b <> c <i>&lt;"), u"a > b   c  &lt;");
    EXPECT_EQ(flat(u"<a <b>c>"), u" c>");
    EXPECT_EQ(flat(u"x(null)>y"), u"x y");
    EXPECT_EQ(flat(u"x(null)>y<"), u"x(null)>y<");
    EXPECT_EQ(flat(u" \n "), u" \n ");
    // Tags that hold others which came before: what is left of them stays, and is found again if it stands alone.
    EXPECT_EQ(flat(u"<b><a <b>c>"), u" <a  c>");
    EXPECT_EQ(flat(u"<b><a <b>c><a  c>"), u"   ");
    EXPECT_EQ(flat(u"<x><a<x>b> <a b"), u"   <a b");
    EXPECT_EQ(flat(u"< ><< >>< >"), u"   ");
    EXPECT_EQ(flat(u"<><  ><<><  >><<"), u"   <<");
}

TEST(StringAdditions, takeTheAddressOutOfAMailbox) {
    for (const auto& [mailbox, address] : {std::pair(u"Name <box>", u"box"),
                                           {u"box", u"box"},
                                           {u"Name <box", u"box"},
                                           {u"Name <>", u""},
                                           {u"a> <b <c>>", u"b <c"},
                                           {u"", u""}})
        EXPECT_EQ(stringByDeletingPersonalInEmailAddress(text(mailbox)), address);
}
