#include <ToviFoundationKit/ToviFoundationKit.h>

#include <gtest/gtest.h>

#include <support/Expect.h>
#include <support/PatternSteps.h>
#include <support/Text.h>

using namespace tovi;

namespace {

/// Nothing when that was refused.
std::optional<Rewritten> tryRewriting(std::u16string_view receiver, std::u16string_view pattern,
                                      std::u16string_view replacement) {
    const auto string = NSMutableString::stringWithString(text(receiver));
    bool raised = false;
    try {
        replaceRegexString_withRegexString(string, text(pattern), text(replacement));
    } catch (const NSException& exception) {
        if (exception.name() == NSInvalidArgumentException)
            return std::nullopt;
        raised = true;
    }
    return Rewritten{std::u16string(string->view()), raised};
}

Rewritten rewritten(std::u16string_view receiver, std::u16string_view pattern, std::u16string_view replacement) {
    return tryRewriting(receiver, pattern, replacement).value();
}

/// All texts of these units up to a length.
std::vector<std::u16string> allTexts(std::u16string_view units, std::size_t longest) {
    std::vector<std::u16string> texts(1);
    for (std::size_t i = 0; texts[i].size() < longest; ++i)
        for (const char16_t unit : units)
            texts.push_back(texts[i] + unit);
    return texts;
}

}  // namespace

TEST(MutableStringAdditions, replaceAndCount) {
    const auto string = NSMutableString::stringWithString(u"aXbxcX"_ns);
    EXPECT_EQ(replaceString_withString_options(string, u"x"_ns, u"--"_ns, NSCaseInsensitiveSearch), 3U);
    EXPECT_EQ(string, u"a--b--c--");
    EXPECT_EQ(replaceString_withString_options(string, u"--"_ns, u""_ns, NSBackwardsSearch), 3U);
    replaceString_withString(string, u""_ns, u"!"_ns);
    replaceString_withString(string, string, string);
    EXPECT_EQ(string, u"abc");
    const auto accents = NSMutableString::stringWithString(u"e\u0301 é"_ns);
    replaceString_withString(accents, u"é"_ns, u"e"_ns);
    EXPECT_EQ(accents, u"e\u0301 e");
}

TEST(MutableStringAdditions, leaveWhatSharedTheUnitsAlone) {
    const auto original = u"a  b"_ns;
    const auto string = NSMutableString::stringWithString(original);
    removeMultipleSpaceInString(string);
    const auto kept = string->copy();
    replaceSpaceByPlus(string);
    EXPECT_EQ(original, u"a  b");
    EXPECT_EQ(kept->description(), u"a b");
    EXPECT_EQ(string, u"a+b");
}

TEST(MutableStringAdditions, collapseBlanks) {
    for (const auto& [before, after] : {std::pair(u"a     b", u"a b"),
                                        {u"  a \u00A0  b  ", u" a \u00A0 b "},
                                        {u"   ", u" "},
                                        {u" a\t\t", u" a\t\t"},
                                        {u"", u""}}) {
        const auto string = NSMutableString::stringWithString(text(before));
        removeMultipleSpaceInString(string);
        EXPECT_EQ(string, after);
    }
}

TEST(MutableStringAdditions, rewriteDelimiters) {
    EXPECT_EQ(rewritten(u"<b>x</b>", u"<b>*</b>", u"[*]").text, u"[x]");
    EXPECT_EQ(rewritten(u"abcb", u"b", u"c*").text, u"ac*cc*");
    EXPECT_EQ(rewritten(u"[1] [2] [1]", u"[*]*x", u"<*>*y").text, u"<1> <2> <1>");
    EXPECT_EQ(rewritten(u"[1] [2", u"[*]", u"<*>"), (Rewritten{u"<1> [2", true}));
    EXPECT_EQ(rewritten(u"[1][", u"[*]", u"<*>"), (Rewritten{u"<1>["}));
    EXPECT_EQ(rewritten(u"a[1]", u"[*", u"<*>"), (Rewritten{u"a[1]", true}));
    EXPECT_EQ(rewritten(u"abaabbaba", u"ab*a", u"x*"), (Rewritten{u"xabbx", true})) << "the last aba goes first";
    EXPECT_EQ(rewritten(u"", u"[*]", u"x").text, u"");
    EXPECT_EQ(rewritten(u"a", u"[*]", u"x").text, u"a");
}

TEST(MutableStringAdditions, rewriteAsStepByStep) {
    const std::pair<std::u16string, std::u16string> rules[] = {
        {u"[*]", u"(*)"},   {u"[*]", u"*"},    {u"[*]", u"]*["},  {u"[*]", u"[*"},  {u"[*]", u"a*a"},
        {u"a*a", u"*"},     {u"aa*a", u"[*]"}, {u"a[*]a", u"*"},  {u"[*]a", u"*a"}, {u"[[*]]", u"*"},
        {u"[a*]", u"a*"},   {u"[[*[[", u"(*"}, {u"a[*a[", u"*a"}, {u"[*[", u"a*"},  {u"[]*[]", u"*["},
        {u"a*[", u"*]a[["}, {u"[a[*]", u"*"},  {u"aa*]a]", u"[*"}};
    for (const std::u16string& receiver : allTexts(u"[]a", 8))
        for (const auto& [pattern, replacement] : rules)
            ASSERT_EQ(tryRewriting(receiver, pattern, replacement), rewrittenStepByStep(receiver, pattern, replacement))
                << text(receiver) << " by " << text(pattern) << " to " << text(replacement);
}

TEST(MutableStringAdditions, flattenAsStepByStep) {
    for (const std::u16string& html : allTexts(u"<> a", 8))
        ASSERT_EQ(flattenHTML_trimWhiteSpace(text(html), false)->view(), flattenedStepByStep(html)) << text(html);
}

TEST(MutableStringAdditions, refuseReplacementsThatGrowWithoutEnd) {
    std::u16string receiver;
    for (int i = 0; i < 10; ++i)
        receiver += u"[a]";
    const auto string = NSMutableString::stringWithString(text(receiver));
    EXPECT_RAISES(replaceRegexString_withRegexString(string, u"[*]"_ns, u"[[*]]"_ns), NSInvalidArgumentException,
                  "[*]");
    EXPECT_LT(string->length(), 100'000U);
    EXPECT_THROW(replaceRegexString_withRegexString(string, u"[*]"_ns, u"x"_ns), NSException);
}

TEST(MutableStringAdditions, takeLinearTimeOnHostileTexts) {
    constexpr std::size_t million = 1'000'000;
    EXPECT_TRUE(rewritten(std::u16string(million, u'['), u"[*]", u"<*>").raised);
    EXPECT_EQ(rewritten(std::u16string(million, u'[') + u']', u"[*]", u"*").text.size(), million - 1);
    std::u16string distinct;
    for (std::size_t i = 0; i < 100'000; ++i)
        distinct += u"<b>" + std::u16string{char16_t(0x4E00 + i % 317), char16_t(0x4E00 + i / 317)} + u"<</b>";
    EXPECT_EQ(rewritten(distinct, u"<b>*</b>", u"*").text.size(), 300'000U);
    EXPECT_EQ(flattenHTML_trimWhiteSpace(text(distinct), true)->length(), 400'000U - 2);
    EXPECT_EQ(flattenHTML_trimWhiteSpace(text(std::u16string(million, u'<') + u'>'), false), u" ");
    const std::u16string half(million / 2, u'a');
    EXPECT_EQ(rewritten(half + half + u"bxc", half + u"b*c", u"*").text, half + u'x');
    std::u16string quoted, tags;
    for (char16_t i = 0; i < 20'000; ++i) {
        quoted += std::u16string{u'"', char16_t(0x4E00 + i), u'"', u' '};
        tags += std::u16string{u'<', char16_t(0x4E00 + i), u'>'};
    }
    EXPECT_EQ(rewritten(quoted, u"\"*\"", u"**").text.size(), 40'000U);
    EXPECT_EQ(flattenHTML_trimWhiteSpace(text(tags + std::u16string(20'000, u'<') + u'>'), false)->length(), 20'001U);
}
