#include <ToviFoundationKit/Runtime/NSLog.h>

#include <atomic>
#include <regex>
#include <thread>
#include <vector>

#include <gtest/gtest.h>

#include <ToviFoundationKit/Runtime/Assertion.h>

using namespace tovi;

namespace {

TEST(NSLog, WritesALineWithTimeProgramProcessAndThread) {
    testing::internal::CaptureStderr();
    NSLog(u"%@ = %d", u"\u00E9"_ns, 5);
    const std::string line = testing::internal::GetCapturedStderr();
    const std::regex expected(R"(\d{4}-\d\d-\d\d \d\d:\d\d:\d\d\.\d{3} \S+\[(\d+):\1\] )"
                              "\u00E9 = 5\n");
    EXPECT_TRUE(std::regex_match(line, expected)) << line;
}

TEST(NSLog, GoesToTheSinkThatWasSetLast) {
    std::vector<std::string> first, second;
    const LogSink standard = setLogSink([&](const NSString& message) { first.push_back(message.UTF8String()); });
    EXPECT_FALSE(standard);
    NSLog(u"one");
    const LogSink previous = setLogSink([&](const NSString& message) {
        second.push_back(message.UTF8String());
        if (second.size() == 1)
            NSLog(u"%@ again", message);
    });
    NSLog(u"two");
    previous(u"three"_ns);
    setLogSink(standard);
    EXPECT_EQ(first, (std::vector<std::string>{"one", "three"}));
    EXPECT_EQ(second, (std::vector<std::string>{"two", "two again"}));
}

TEST(NSLog, MayChangeSinksWhileOtherThreadsLog) {
    std::atomic<int> count = 0;
    const LogSink counting = [&count](const NSString&) { ++count; };
    setLogSink(counting);
    std::vector<std::thread> threads;
    for (int i = 0; i < 4; ++i)
        threads.emplace_back([] {
            for (int k = 0; k < 100; ++k)
                NSLog(u"%d", k);
        });
    for (int i = 0; i < 100; ++i)
        setLogSink(counting);
    for (std::thread& thread : threads)
        thread.join();
    setLogSink({});
    EXPECT_EQ(count, 400);
}

TEST(AssertionDeathTest, PrintsThePlaceAndAborts) {
    EXPECT_EXIT(assertionFailed("send", "Extensions.subproj/NSThread-InterThreadMessaging", 42, "port != nil"),
                testing::KilledBySignal(SIGABRT),
                "Assertion failed: \\(port != nil\\), function send, file "
                "Extensions.subproj/NSThread-InterThreadMessaging, line 42\\.");
}

}  // namespace
