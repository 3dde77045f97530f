#include <gtest/gtest.h>

#include <ToviFoundationKit/ToviFoundationKit.h>

#include <support/Expect.h>

// A program that is not linked with ToviFoundationKitMail. Each test has the process to itself.

using namespace tovi;

TEST(MailModule, WithoutItTheConverterIsUnknown) {
    for (const auto convert : {&qvlHtmlStringFromMimeEnrichedString, &qvlHtmlStringFromMimeRichTextString})
        EXPECT_RAISES(convert(u"text"_ns), NSInvalidArgumentException, "+[NSString htmlStringFromMime");
}

TEST(MailModule, IsFoundByItsIdentifierAndLoaded) {
    const auto mail = NSBundle::bundleWithIdentifier(u"tovi.FoundationKit.Mail"_ns);
    if (!mail)
        GTEST_SKIP() << "not built";
    RefPtr<NSError> error;
    ASSERT_TRUE(mail->load(&error)) << error;
    EXPECT_EQ(qvlHtmlStringFromMimeEnrichedString(u"<bold>a\nb"_ns)->view(), u"<b>a<BR>b</b>");
}
