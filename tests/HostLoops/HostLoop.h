#pragma once

#include <gtest/gtest.h>

#include <ToviFoundationKit/ToviFoundationKit.h>

#include <support/Worker.h>

#include <thread>

/// What a host's loop has to do for a run loop, whichever loop it is. `Host` makes the adapter; its `run` runs the
/// host's loop until `quit` is called on this thread, and `exceptions` answers how many there were.
template <class Host> void expectToBeServed() {
    using namespace tovi;
    Host host;
    prepareForInterThreadMessages();
    NSThread* const here = NSThread::currentThread().get();
    const auto recorder = Recorder::recorder();
    const auto center = NSNotificationCenter::defaultCenter();
    const auto name = u"done"_ns;
    constexpr int messages = 500;
    std::atomic<int> waitedFor = 0;
    int notified = 0;
    const auto token = center->addObserverForName_object_usingBlock(name.get(), nullptr, [&](NSNotification&) {
        EXPECT_TRUE(NSThread::isMainThread());
        if (++notified == 2)
            NSTimer::scheduledTimerWithTimeInterval_repeats_block(0.02, false, [&](NSTimer&) { host.quit(); });
    });
    NSTimer::scheduledTimerWithTimeInterval_target_selector_userInfo_repeats(0.001, recorder, "none"_sel, nullptr,
                                                                             false);
    std::vector<std::thread> workers;
    for (int t = 0; t < 2; ++t)
        workers.emplace_back([&] {
            for (int i = 0; i < messages; ++i) {
                performSelector_withObject_inThread_waitUntilDone(recorder, "one:"_sel, nullptr, here, false);
                performSelector_inThread_beforeDate_waitUntilDone(recorder, "none"_sel, here, nullptr, false);
            }
            performSelector_inThread_beforeDate_waitUntilDone(recorder, "none"_sel, here, nullptr, true);
            ++waitedFor;
            performSelector_inThread_waitUntilDone(recorder, "raise"_sel, here, true);
            postNotificationName_object_inThread(center, name, nullptr, here);
        });
    host.run();
    for (std::thread& each : workers)
        each.join();
    center->removeObserver(token);
    disableInterThreadMessages();
    EXPECT_EQ(notified, 2);
    EXPECT_EQ(waitedFor, 2);
    EXPECT_EQ(host.exceptions(), 2);
    EXPECT_EQ(recorder->lines().size(), 2 * (2 * messages + 1) + 1U);
    EXPECT_EQ(recorder->thread().get(), here);
}
