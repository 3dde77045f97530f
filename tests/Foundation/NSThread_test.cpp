#include <gtest/gtest.h>

#include <ToviFoundationKit/ToviFoundationKit.h>

#include <support/Expect.h>
#include <support/Log.h>
#include <support/Worker.h>

#include <pthread.h>

#include <thread>

using namespace tovi;

namespace {

/// What an observer of one thread's end sees there.
struct Ending {
    explicit Ending(const NSThread* thread)
        : token(NSNotificationCenter::defaultCenter()->addObserverForName_object_usingBlock(
              NSThreadWillExitNotification, thread, [this](NSNotification& notification) {
                  ++count;
                  object = notification.object();
                  here = NSThread::currentThread();
                  kept = here->threadDictionary()->objectForKey(u"kept"_ns);
                  loop = here->runLoop();
              })) {}
    ~Ending() { NSNotificationCenter::defaultCenter()->removeObserver(token); }

    int count = 0;
    id object, kept;
    RefPtr<NSThread> here;
    RefPtr<NSRunLoop> loop;
    Ref<NSObject> token;
};

}  // namespace

TEST(NSThread, IsMadeBySelectorOrBlockAndStartedOnce) {
    const auto recorder = Recorder::recorder();
    const auto thread = NSThread::initWithTarget_selector_object(recorder, "one:"_sel, u"argument"_ns.get());
    EXPECT_FALSE(thread->isExecuting() || thread->isFinished());
    EXPECT_RAISES(thread->join(), NSInvalidArgumentException, "will not end");
    thread->start();
    thread->join();
    EXPECT_TRUE(thread->isFinished());
    EXPECT_EQ(recorder->lines(), std::vector<std::string>{"one argument"});
    EXPECT_EQ(recorder->thread().get(), thread.get());
    EXPECT_EQ(recorder->retainCount(), 1U) << "a thread lets go of its target when it has sent the message";
    EXPECT_RAISES(thread->start(), NSInvalidArgumentException, "was started before");
    EXPECT_RAISES(NSThread::currentThread()->start(), NSInvalidArgumentException, "was started before");

    std::binary_semaphore done(0);
    NSThread::detachNewThreadWithBlock([&] {
        EXPECT_FALSE(NSThread::isMainThread());
        EXPECT_TRUE(NSThread::currentThread()->isExecuting());
        done.release();
    });
    done.acquire();
}

TEST(NSThread, EachThreadHasOneObjectAndItsOwnDictionary) {
    const auto here = NSThread::currentThread();
    EXPECT_EQ(here.get(), NSThread::currentThread().get());
    here->threadDictionary()->setObject_forKey(*u"main"_ns, *u"name"_ns);
    RefPtr<NSThread> there;
    std::thread([&] {
        there = NSThread::currentThread();
        EXPECT_EQ(there->threadDictionary()->count(), 0U);
    }).join();
    EXPECT_NE(there.get(), here.get());
    here->threadDictionary()->removeAllObjects();
}

TEST(NSThread, HasOneMainThreadWhicheverThreadAsks) {
    EXPECT_EQ(NSThread::mainThread().get(), NSThread::currentThread().get());
    std::thread([] {
        EXPECT_NE(NSThread::mainThread().get(), NSThread::currentThread().get());
        EXPECT_NE(NSThread::mainThread()->description()->UTF8String().find("{number = 1, name = "), std::string::npos);
    }).join();
}

TEST(NSThread, ShowsTheStartOfItsNameInWholeCharacters) {
    char shown[16] = "";
    const auto thread = NSThread::initWithBlock([&] { pthread_getname_np(pthread_self(), shown, sizeof shown); });
    thread->setName(u"mailbox reader \u00E4\u00F6"_ns.get());
    EXPECT_NE(thread->description()->UTF8String().find("name = mailbox reader \u00E4\u00F6}"), std::string::npos);
    thread->start();
    thread->join();
    EXPECT_STREQ(shown, "mailbox reader ");
}

TEST(NSThread, AnnouncesItsEndWhileDictionaryAndRunLoopAreStillThere) {
    for (const bool isForeign : {false, true}) {
        SCOPED_TRACE(isForeign);
        std::unique_ptr<Ending> ending;
        RefPtr<NSThread> thread;
        const auto live = [&] {
            thread = NSThread::currentThread();
            ending = std::make_unique<Ending>(thread.get());
            thread->threadDictionary()->setObject_forKey(*u"value"_ns, *u"kept"_ns);
            NSRunLoop::currentRunLoop();
        };
        if (isForeign) {
            std::thread(live).join();
        } else {
            const auto own = NSThread::initWithBlock(live);
            own->start();
            own->join();
        }
        EXPECT_EQ(ending->count, 1);
        EXPECT_EQ(ending->object.get(), thread.get());
        EXPECT_EQ(ending->here.get(), thread.get());
        EXPECT_EQ(ending->kept, id(u"value"_ns));
        EXPECT_NE(ending->loop, nullptr);
        EXPECT_TRUE(thread->isFinished());
        EXPECT_EQ(thread->threadDictionary()->count(), 0U);
    }
}

TEST(NSThread, AnObserverThatRaisesDoesNotKeepAThreadFromEnding) {
    const auto center = NSNotificationCenter::defaultCenter();
    const auto token = center->addObserverForName_object_usingBlock(
        NSThreadWillExitNotification, nullptr, [](NSNotification&) { NSException::raise(u"Odd", u"on purpose"); });
    const Log log;
    const auto thread = NSThread::initWithBlock([] {});
    thread->start();
    thread->join();
    center->removeObserver(token);
    EXPECT_EQ(log.lines, std::vector<std::string>{
                             "An observer of NSThreadWillExitNotification raised an exception:Odd: on purpose"});
}

TEST(NSThread, TakesIntoItsDictionaryWhatOtherThreadsLeft) {
    const Worker worker;
    for (const auto& value : {u"first"_ns, u"second"_ns})
        worker.thread->leaveObject_forKey(value, u"key"_ns);
    worker.perform([] {
        const auto dictionary = NSThread::currentThread()->threadDictionary();
        EXPECT_EQ(dictionary->count(), 1U);
        EXPECT_EQ(dictionary->objectForKey(u"key"_ns), id(u"second"_ns));
    });
}

TEST(NSThread, FindsTheLatestThatWasLeft) {
    std::atomic<long> left = 0, seen = 0;
    long older = 0;
    constexpr long rounds = 1000;
    const auto thread = NSThread::initWithBlock([&] {
        while (seen < 2 * rounds) {
            const long expected = left;
            const id found = NSThread::currentThread()->threadDictionary()->objectForKey(u"key"_ns);
            older += expected > 0 && to<NSNumber>(found)->longLongValue() < expected;
            seen = expected;
        }
    });
    thread->start();
    for (long i = 2; i <= 2 * rounds; i += 2) {
        thread->leaveObject_forKey(NSNumber::numberWithLongLong(i - 1), u"key"_ns);
        thread->leaveObject_forKey(NSNumber::numberWithLongLong(i), u"key"_ns);
        left = i;
        while (seen < i)
            std::this_thread::yield();
    }
    thread->join();
    EXPECT_EQ(older, 0);
}

TEST(NSThreadPerform, SendsToTheOtherThreadInOrder) {
    const Worker worker;
    const auto recorder = Recorder::recorder();
    const auto send = [&](Selector selector, NSObject* object, bool wait) {
        performSelector_onThread_withObject_waitUntilDone(recorder, selector, worker.get(), object, wait);
    };
    send("none"_sel, u"surplus"_ns.get(), false);
    send("one:"_sel, u"a"_ns.get(), false);
    send("one:"_sel, nullptr, true);
    EXPECT_EQ(recorder->lines(), (std::vector<std::string>{"none", "one a", "one nil"}));
    EXPECT_EQ(recorder->thread().get(), worker.get());
    EXPECT_EQ(recorder->retainCount(), 1U) << "what was waited for is let go of";
    tovi::send<void>(recorder, "performSelector:onThread:withObject:waitUntilDone:"_sel, "none"_sel, *worker.thread,
                     nullptr, true);
    EXPECT_EQ(recorder->lines().size(), 4U);
    EXPECT_RAISES(performSelector_onThread_withObject_waitUntilDone(recorder, Selector(), worker.get(), nullptr, true),
                  NSInvalidArgumentException, "selector cannot be nil");
    EXPECT_RAISES(performSelector_onThread_withObject_waitUntilDone(recorder, "none"_sel, nullptr, nullptr, true),
                  NSInvalidArgumentException, "thread cannot be nil");
}

TEST(NSThreadPerform, OnTheThreadItselfPerformsAtOnceOnlyWhenItWaits) {
    const auto recorder = Recorder::recorder();
    const auto here = NSThread::currentThread();
    performSelector_onThread_withObject_waitUntilDone(recorder, "none"_sel, here.get(), nullptr, true);
    EXPECT_EQ(recorder->lines().size(), 1U);
    performSelector_onThread_withObject_waitUntilDone(recorder, "none"_sel, here.get(), nullptr, false);
    EXPECT_EQ(recorder->lines().size(), 1U);
    EXPECT_EQ(NSRunLoop::currentRunLoop()->runReady(10), 1U);
    EXPECT_EQ(recorder->lines().size(), 2U);
}

TEST(NSThreadPerform, RaisesWhenTheThreadEndsBefore) {
    const auto recorder = Recorder::recorder();
    const char* const text =
        "*** -[Recorder performSelector:onThread:withObject:waitUntilDone:]: target thread exited while waiting for "
        "the perform";
    std::binary_semaphore started(0), sent(0);
    const auto thread = NSThread::initWithBlock([&] {
        started.release();
        sent.acquire();
    });
    thread->start();
    started.acquire();
    std::thread sender([&] {
        EXPECT_RAISES(
            performSelector_onThread_withObject_waitUntilDone(recorder, "none"_sel, thread.get(), nullptr, true),
            NSDestinationInvalidException, text);
    });
    while (!thread->runLoop())
        std::this_thread::yield();
    sent.release();
    sender.join();
    thread->join();
    EXPECT_RAISES(performSelector_onThread_withObject_waitUntilDone(recorder, "none"_sel, thread.get(), nullptr, true),
                  NSDestinationInvalidException, text);
    performSelector_onThread_withObject_waitUntilDone(recorder, "none"_sel, thread.get(), nullptr, false);
    EXPECT_TRUE(recorder->lines().empty());
    EXPECT_EQ(recorder->retainCount(), 1U);
}

TEST(NSThreadPerform, AnExceptionLeavesTheRunLoopAndFreesWhoWaits) {
    std::binary_semaphore ready(0);
    std::string caught;
    bool wentOn = false;
    const auto recorder = Recorder::recorder();
    const auto thread = NSThread::initWithBlock([&] {
        prepareForInterThreadMessages();
        ready.release();
        const auto loop = NSRunLoop::currentRunLoop();
        EXPECT_RAISES(loop->run(), u"Recorded", "on purpose");
        loop->performBlock([&] { wentOn = true; });
        loop->run();
    });
    thread->start();
    ready.acquire();
    performSelector_onThread_withObject_waitUntilDone(recorder, "raise"_sel, thread.get(), nullptr, true);
    performSelector_onThread_withObject_waitUntilDone(recorder, "none"_sel, thread.get(), nullptr, true);
    thread->runLoop()->stop();
    thread->join();
    EXPECT_TRUE(wentOn);
    EXPECT_EQ(recorder->lines().size(), 1U);
}
