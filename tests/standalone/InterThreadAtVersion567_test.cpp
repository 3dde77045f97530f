#include <gtest/gtest.h>

#include <ToviFoundationKit/ToviFoundationKit.h>

#include <support/Expect.h>
#include <support/Worker.h>

using namespace tovi;

// A platform that rounds down to the last one without a perform of its own: everything goes through the ports.
extern "C" const double NSFoundationVersionNumber = 567.9;

// These run in the order in which they stand, but each by itself when ctest runs them.

TEST(InterThreadAtVersion567DeathTest, SendingAbortsBeforeAnyThreadWasPrepared) {
    GTEST_FLAG_SET(death_test_style, "threadsafe");
    const auto recorder = Recorder::recorder();
    const auto notification = NSNotification::notificationWithName_object(u"n"_ns, NSThread::currentThread().get());
    const auto send = [&] { performSelector_inThread_waitUntilDone(recorder, "none"_sel, nullptr, false); };
    EXPECT_DEATH(send(), "Assertion failed: \\(NULL != thread\\), function performSelector, ");
    EXPECT_DEATH(postNotification_inThread(NSNotificationCenter::defaultCenter(), notification.get(), nullptr),
                 "Assertion failed: \\(NULL != pThreadMessagePorts\\), function messagePortForThread, "
                 "file Extensions\\.subproj/NSThread-NSNotificationCenter-QVLAdditions, line ");
    InterThreadManager::threadDied(notification);  // no run loop, so it stops there
    NSRunLoop::currentRunLoop();
    EXPECT_DEATH(InterThreadManager::threadDied(notification),
                 "Assertion failed: \\(NULL != pThreadMessagePorts\\), function removeMessagePortForThread, ");
}

TEST(InterThreadAtVersion567, FormsWithoutADateNeedAPreparedThread) {
    const Worker worker;
    const auto recorder = Recorder::recorder();
    const auto one = [&](NSThread* thread) {
        performSelector_inThread_waitUntilDone(recorder, "none"_sel, thread, true);
    };
    const auto idle = NSThread::initWithBlock([] {});
    EXPECT_RAISES(one(idle.get()), NSInvalidArgumentException,
                  "is not prepared to receive inter-thread messages.  You");
    one(worker.get());
    performSelector_withObject_inThread_waitUntilDone(recorder, "one:"_sel, nullptr, worker.get(), true);
    performSelector_withObject_withObject_inThread_waitUntilDone(recorder, "two:with:"_sel, nullptr, nullptr,
                                                                 worker.get(), true);
    performSelector_withObject_withObject_withObject_inThread_waitUntilDone(recorder, "three:with:and:"_sel, nullptr,
                                                                            nullptr, nullptr, worker.get(), true);
    EXPECT_EQ(recorder->lines(), (std::vector<std::string>{"none", "one nil", "two nil nil", "three nil nil nil"}));
    worker.perform([] {
        EXPECT_TRUE(
            NSThread::currentThread()->threadDictionary()->objectForKey(u"InterThreadMessage-waitUntilDoneLock"_ns));
    });
}
