#include <gtest/gtest.h>

#include <ToviFoundationKit/ToviFoundationKit.h>

#include <support/Expect.h>
#include <support/Log.h>
#include <support/RecordingHandler.h>

#include <thread>

using namespace tovi;

TEST(NSException, CarriesNameReasonAndUserInfo) {
    const auto info = NSDictionary::of({{u"key", 1}});
    const auto reason = NSMutableString::stringWithString(*u"because"_ns);
    const NSException exception(u"Odd"_ns, reason, info);
    reason->setString(u"changed"_ns);
    const NSException copy = exception;
    EXPECT_EQ(*copy.name(), u"Odd");
    EXPECT_EQ(*copy.reason(), u"because");
    EXPECT_EQ(copy.userInfo().get(), info.get());
    EXPECT_STREQ(copy.what(), "Odd: because");
    EXPECT_STREQ(NSException(u"Odd"_ns, nullptr).what(), "Odd");
    EXPECT_FALSE(NSException(u"Odd"_ns, nullptr).reason());
}

TEST(NSException, IsRaisedWithAFormattedReasonAndCaughtAsAStandardOne) {
    EXPECT_RAISES(NSException::raise(u"Odd", u"%@ of %d", u"one"_ns, 3), u"Odd", "one of 3");
    try {
        NSException::raise(NSRangeException, u"100%% %@");
    } catch (const std::exception& exception) {
        EXPECT_STREQ(exception.what(), "NSRangeException: 100% %@");
    }
}

TEST(NSAssertionHandler, LogsAndRaisesUnlessItIsReplaced) {
    Log log;
    const auto fail = [](const NSObject& object) {
        NSAssertionHandler::currentHandler()->failInMethod("frob:"_sel, &object, "Unit/File", 73, u"%@,%@ worst %d",
                                                           u"one"_ns);
    };
    EXPECT_RAISES(fail(u"x"_ns), NSInternalInconsistencyException, "one,%@ worst %d");
    EXPECT_RAISES(fail(NSString::classObject()), NSInternalInconsistencyException, "one,%@ worst %d");
    EXPECT_RAISES(NSAssertionHandler::currentHandler()->handleFailureInFunction_file_lineNumber_description(
                      u"week", "Unit/File", 5, u"no", {}),
                  NSInternalInconsistencyException, "no");
    EXPECT_EQ(log.lines, (std::vector<std::string>{"*** Assertion failure in -[NSString frob:], Unit/File:73",
                                                   "*** Assertion failure in +[NSString frob:], Unit/File:73",
                                                   "*** Assertion failure in week, Unit/File:5"}));
    const auto recorder = RecordingHandler::make();
    {
        const ScopedAssertionHandler scope(recorder);
        fail(u"x"_ns);
        EXPECT_EQ(*recorder->report, u"frob: x Unit/File:73 one,%@ worst %d");
        std::thread([&] { EXPECT_RAISES(fail(u"x"_ns), NSInternalInconsistencyException, "worst"); }).join();
        EXPECT_EQ(NSAssertionHandler::setCurrentHandler(nullptr).get(), recorder.get());
        EXPECT_FALSE(NSAssertionHandler::setCurrentHandler(recorder.get()));
    }
    EXPECT_RAISES(fail(u"x"_ns), NSInternalInconsistencyException, "worst");
}

TEST(NSError, TellsDomainCodeAndText) {
    const auto plain = NSError::errorWithDomain_code_userInfo(u"D"_ns, 3, nullptr);
    EXPECT_EQ(*plain->localizedDescription(), u"The operation could not be completed (D error 3).");
    EXPECT_EQ(plain->userInfo()->count(), 0U);
    const auto told = NSError::errorWithDomain_code_description(u"D"_ns, 3, u"Out of tea"_ns);
    EXPECT_EQ(*told->description(), u"Error Domain=D Code=3 \"Out of tea\"");
    EXPECT_EQ(*told, *NSError::errorWithDomain_code_description(u"D"_ns, 3, u"Out of tea"_ns));
    EXPECT_NE(*told, *plain);
    const auto missing = NSError::errorWithErrno_subject(2, u"/no/file"_ns);
    EXPECT_EQ(*missing->domain(), NSPOSIXErrorDomain);
    EXPECT_EQ(*missing->localizedDescription(), u"/no/file: No such file or directory");
}
