#include <gtest/gtest.h>

#include <ToviFoundationKit/ToviFoundationKit.h>

#include <support/Expect.h>
#include <support/Worker.h>

#include <cstring>
#include <filesystem>
#include <thread>

using namespace tovi;

namespace {

using Lines = std::vector<std::string>;

const auto a = u"a"_ns, b = u"b"_ns, c = u"c"_ns;
const auto changed = u"changed"_ns;

/// One of the performing operations, as it is called and as it is sent.
struct Form {
    const char* selector;
    const char* line;
    std::function<void(NSObject&, NSThread*, bool)> call;
    std::function<void(NSObject&, NSThread&, bool)> sendTo;
};

const Form forms[] = {
    {"performSelector:inThread:waitUntilDone:", "none",
     [](NSObject& target, NSThread* thread, bool wait) {
         performSelector_inThread_waitUntilDone(target, "none"_sel, thread, wait);
     },
     [](NSObject& target, NSThread& thread, bool wait) {
         send<void>(target, "performSelector:inThread:waitUntilDone:"_sel, "none"_sel, thread, wait);
     }},
    {"performSelector:inThread:beforeDate:waitUntilDone:", "none",
     [](NSObject& target, NSThread* thread, bool wait) {
         performSelector_inThread_beforeDate_waitUntilDone(target, "none"_sel, thread, nullptr, wait);
     },
     [](NSObject& target, NSThread& thread, bool wait) {
         send<void>(target, "performSelector:inThread:beforeDate:waitUntilDone:"_sel, "none"_sel, thread, nullptr,
                    wait);
     }},
    {"performSelector:withObject:inThread:waitUntilDone:", "one a",
     [](NSObject& target, NSThread* thread, bool wait) {
         performSelector_withObject_inThread_waitUntilDone(target, "one:"_sel, a.get(), thread, wait);
     },
     [](NSObject& target, NSThread& thread, bool wait) {
         send<void>(target, "performSelector:withObject:inThread:waitUntilDone:"_sel, "one:"_sel, a, thread, wait);
     }},
    {"performSelector:withObject:inThread:beforeDate:waitUntilDone:", "one a",
     [](NSObject& target, NSThread* thread, bool wait) {
         performSelector_withObject_inThread_beforeDate_waitUntilDone(target, "one:"_sel, a.get(), thread,
                                                                      NSDate::distantPast().get(), wait);
     },
     [](NSObject& target, NSThread& thread, bool wait) {
         send<void>(target, "performSelector:withObject:inThread:beforeDate:waitUntilDone:"_sel, "one:"_sel, a, thread,
                    NSDate::distantPast(), wait);
     }},
    {"performSelector:withObject:withObject:inThread:waitUntilDone:", "two a nil",
     [](NSObject& target, NSThread* thread, bool wait) {
         performSelector_withObject_withObject_inThread_waitUntilDone(target, "two:with:"_sel, a.get(), nullptr, thread,
                                                                      wait);
     },
     [](NSObject& target, NSThread& thread, bool wait) {
         send<void>(target, "performSelector:withObject:withObject:inThread:waitUntilDone:"_sel, "two:with:"_sel, a,
                    nullptr, thread, wait);
     }},
    {"performSelector:withObject:withObject:inThread:beforeDate:waitUntilDone:", "two a b",
     [](NSObject& target, NSThread* thread, bool wait) {
         performSelector_withObject_withObject_inThread_beforeDate_waitUntilDone(target, "two:with:"_sel, a.get(),
                                                                                 b.get(), thread, nullptr, wait);
     },
     [](NSObject& target, NSThread& thread, bool wait) {
         send<void>(target, "performSelector:withObject:withObject:inThread:beforeDate:waitUntilDone:"_sel,
                    "two:with:"_sel, a, b, thread, nullptr, wait);
     }},
    {"performSelector:withObject:withObject:withObject:inThread:waitUntilDone:", "three a b c",
     [](NSObject& target, NSThread* thread, bool wait) {
         performSelector_withObject_withObject_withObject_inThread_waitUntilDone(target, "three:with:and:"_sel, a.get(),
                                                                                 b.get(), c.get(), thread, wait);
     },
     [](NSObject& target, NSThread& thread, bool wait) {
         send<void>(target, "performSelector:withObject:withObject:withObject:inThread:waitUntilDone:"_sel,
                    "three:with:and:"_sel, a, b, c, thread, wait);
     }},
    {"performSelector:withObject:withObject:withObject:inThread:beforeDate:waitUntilDone:", "three a b c",
     [](NSObject& target, NSThread* thread, bool wait) {
         performSelector_withObject_withObject_withObject_inThread_beforeDate_waitUntilDone(
             target, "three:with:and:"_sel, a.get(), b.get(), c.get(), thread, nullptr, wait);
     },
     [](NSObject& target, NSThread& thread, bool wait) {
         send<void>(target, "performSelector:withObject:withObject:withObject:inThread:beforeDate:waitUntilDone:"_sel,
                    "three:with:and:"_sel, a, b, c, thread, nullptr, wait);
     }},
};

/// The line of the table's way to an unprepared thread.
std::string notPrepared(const NSThread& thread) {
    return "Thread " + thread.description()->UTF8String() +
           " is not prepared to receive inter-thread messages.  You must invoke +prepareForInterThreadMessages first.";
}

void performBefore(NSObject& target, const Worker& worker, const NSDate* date, bool wait) {
    performSelector_inThread_beforeDate_waitUntilDone(target, "none"_sel, worker.get(), date, wait);
}

/// A message by hand, of the components that it has when it goes through a port.
Ref<NSPortMessage> portMessage(InterThreadMessage* message, int components = 1) {
    const auto sent = NSPortMessage::initWithSendPort_receivePort_address(nullptr, nullptr, message);
    const auto list = NSMutableArray::array();
    for (int i = 0; i < components; ++i)
        list->addObjectsFromArray(*sent->components());
    return NSPortMessage::initWithSendPort_receivePort_components(nullptr, nullptr, list.get());
}

std::size_t descriptors() {
    return static_cast<std::size_t>(std::distance(std::filesystem::directory_iterator("/proc/self/fd"), {}));
}

}  // namespace

TEST(InterThreadPerform, EveryFormPerformsOnTheOtherThread) {
    const Worker worker;
    for (const Form& form : forms) {
        SCOPED_TRACE(form.selector);
        const auto recorder = Recorder::recorder();
        form.call(recorder, worker.get(), false);
        form.call(recorder, worker.get(), true);
        form.sendTo(recorder, worker.thread, true);
        EXPECT_EQ(recorder->lines(), Lines(3, form.line));
        EXPECT_EQ(recorder->thread().get(), worker.get());
        EXPECT_EQ(recorder->retainCount(), 1U);
    }
}

TEST(InterThreadPerform, EveryFormPerformsAtOnceOnTheThreadItself) {
    NSThread* const here = NSThread::currentThread().get();
    for (const Form& form : forms)
        for (const bool wait : {false, true}) {
            SCOPED_TRACE(form.selector);
            const auto recorder = Recorder::recorder();
            form.call(recorder, here, wait);
            EXPECT_EQ(recorder->lines(), Lines{form.line});
        }
    const auto recorder = Recorder::recorder();
    performSelector_withObject_withObject_withObject(recorder, "three:with:and:"_sel, a.get(), nullptr, c.get());
    send<void>(recorder, "performSelector:withObject:withObject:withObject:"_sel, "three:with:and:"_sel, a, b, c);
    EXPECT_EQ(recorder->lines(), (Lines{"three a nil c", "three a b c"}));
    performSelector_withObject_inThread_beforeDate_waitUntilDone(RefPtr<Recorder>(recorder), "one:"_sel, nullptr, here,
                                                                 nullptr, true);
    performSelector_withObject_inThread_beforeDate_waitUntilDone(id(), "one:"_sel, nullptr, here, nullptr, true);
    EXPECT_EQ(recorder->lines().size(), 3U) << "nil performs nothing";
    EXPECT_RAISES(
        performSelector_withObject_withObject_withObject(recorder, "two:with:"_sel, a.get(), b.get(), c.get()),
        NSInvalidArgumentException, "index 4 beyond bounds");
    EXPECT_RAISES(performSelector_withObject_withObject_withObject(recorder, "unknown"_sel, a.get(), b.get(), c.get()),
                  NSInvalidArgumentException, "unrecognized selector");
}

TEST(InterThreadPerform, HoldsTargetAndObjectsForTheJourney) {
    const Worker worker;
    auto recorder = Recorder::recorder();
    const auto object = Recorder::recorder();
    Held held(worker);
    performSelector_withObject_inThread_beforeDate_waitUntilDone(recorder, "one:"_sel, object.get(), worker.get(),
                                                                 nullptr, false);
    performSelector_withObject_withObject_inThread_waitUntilDone(recorder, "two:with:"_sel, object.get(), object.get(),
                                                                 worker.get(), false);
    EXPECT_EQ(recorder->retainCount(), 3U);
    EXPECT_EQ(object->retainCount(), 4U);
    held.letGo();
    performBefore(recorder, worker, nullptr, true);
    worker.perform([] {});
    EXPECT_EQ(recorder->retainCount(), 1U);
    EXPECT_EQ(object->retainCount(), 1U);
}

TEST(InterThreadPerform, NeedsAPreparedThreadForADateOnly) {
    prepareForInterThreadMessages();
    disableInterThreadMessages();
    const auto recorder = Recorder::recorder();
    std::binary_semaphore ready(0), sent(0);
    const auto thread = NSThread::initWithBlock([&] {
        const auto port = NSPort::port();
        NSRunLoop::currentRunLoop()->addPort_forMode(port, NSDefaultRunLoopMode);
        ready.release();
        NSRunLoop::currentRunLoop()->run();
        for (int times = 0; times < 2; ++times)
            prepareForInterThreadMessages();
        disableInterThreadMessages();
        ready.release();
        sent.acquire();
    });
    thread->start();
    for (const bool wasPrepared : {false, true}) {
        ready.acquire();
        SCOPED_TRACE(wasPrepared);
        EXPECT_RAISES(
            performSelector_inThread_beforeDate_waitUntilDone(recorder, "none"_sel, thread.get(), nullptr, true),
            NSInvalidArgumentException, notPrepared(thread));
        EXPECT_EQ(recorder->retainCount(), 1U);
        if (!wasPrepared) {
            performSelector_inThread_waitUntilDone(recorder, "none"_sel, thread.get(), true);
            thread->runLoop()->stop();
        }
    }
    sent.release();
    thread->join();
    EXPECT_EQ(recorder->lines(), Lines{"none"});
    EXPECT_RAISES(performSelector_inThread_beforeDate_waitUntilDone(recorder, "none"_sel, thread.get(), nullptr, false),
                  NSInvalidArgumentException, notPrepared(thread));
}

TEST(InterThreadPerform, FailsWhenThereIsNoRoomBeforeTheDate) {
    const Worker worker;
    const auto recorder = Recorder::recorder();
    Held held(worker);
    for (NSUInteger i = 0; i < NSPort::usualCapacity; ++i)
        performBefore(recorder, worker, nullptr, false);
    EXPECT_RAISES(performBefore(recorder, worker, NSDate::dateWithTimeIntervalSinceReferenceDate(0).get(), true),
                  NSPortTimeoutException,
                  "Can't send message to thread " + worker.thread->description()->UTF8String() +
                      ": timeout before date 2001-01-01 00:00:00 +0000");
    EXPECT_EQ(recorder->retainCount(), 1 + NSPort::usualCapacity) << "what was not sent is let go of";
    std::thread patient([&] { performBefore(recorder, worker, nullptr, true); });
    held.letGo();
    patient.join();
    EXPECT_EQ(recorder->lines().size(), NSPort::usualCapacity + 1);
}

TEST(InterThreadPerform, IsServedInTheDefaultModeOnly) {
    const auto recorder = Recorder::recorder();
    std::binary_semaphore ready(0), sent(0);
    const auto thread = NSThread::initWithBlock([&] {
        prepareForInterThreadMessages();
        ready.release();
        sent.acquire();
        const auto loop = NSRunLoop::currentRunLoop();
        const auto past = NSDate::distantPast();
        EXPECT_FALSE(loop->runMode_beforeDate(u"other"_ns, past));
        EXPECT_TRUE(recorder->lines().empty());
        EXPECT_TRUE(loop->runMode_beforeDate(NSDefaultRunLoopMode, past));
        EXPECT_EQ(recorder->lines().size(), 1U);
    });
    thread->start();
    ready.acquire();
    performSelector_inThread_beforeDate_waitUntilDone(recorder, "none"_sel, thread.get(), nullptr, false);
    sent.release();
    thread->join();
}

TEST(InterThreadPerform, LeavesItsLockInTheDictionaryOfTheThread) {
    const Worker worker;
    const auto recorder = Recorder::recorder();
    performBefore(recorder, worker, nullptr, true);
    const auto lockThere = [&] {
        id found;
        worker.perform([&] {
            found =
                NSThread::currentThread()->threadDictionary()->objectForKey(u"InterThreadMessage-waitUntilDoneLock"_ns);
        });
        return found;
    };
    const id first = lockThere();
    ASSERT_TRUE(as<NSLock>(first.get()));
    EXPECT_FALSE(to<NSLock>(first)->tryLock());
    performBefore(recorder, worker, nullptr, false);
    EXPECT_EQ(lockThere().get(), first.get());
    performBefore(recorder, worker, nullptr, true);
    EXPECT_NE(lockThere().get(), first.get());
}

TEST(InterThreadPerform, TheEndOfTheThreadSetsFreeWhoWaits) {
    const auto recorder = Recorder::recorder();
    std::binary_semaphore ready(0);
    const auto thread = NSThread::initWithBlock([&] {
        prepareForInterThreadMessages();
        ready.release();
        while (!NSThread::currentThread()->threadDictionary()->count())
            std::this_thread::yield();
    });
    thread->start();
    ready.acquire();
    try {
        performSelector_inThread_beforeDate_waitUntilDone(recorder, "none"_sel, thread.get(), nullptr, true);
    } catch (const NSException& raised) {
        // The thread was quicker than the message.
        EXPECT_EQ(*raised.name(), NSPortTimeoutException);
    }
    thread->join();
    EXPECT_TRUE(recorder->lines().empty());
    EXPECT_EQ(recorder->retainCount(), 1U);
}

TEST(InterThreadPerform, AnExceptionLeavesWhoWaitsBlockedUntilTheThreadEnds) {
    const auto recorder = Recorder::recorder();
    std::binary_semaphore ready(0), goOn(0);
    std::atomic<bool> isBack = false;
    const auto thread = NSThread::initWithBlock([&] {
        prepareForInterThreadMessages();
        ready.release();
        EXPECT_RAISES(NSRunLoop::currentRunLoop()->run(), u"Recorded", "on purpose");
        ready.release();
        goOn.acquire();
        EXPECT_FALSE(isBack);
    });
    thread->start();
    ready.acquire();
    std::thread sender([&] {
        performSelector_inThread_beforeDate_waitUntilDone(recorder, "raise"_sel, thread.get(), nullptr, true);
        isBack = true;
    });
    ready.acquire();
    goOn.release();
    thread->join();
    sender.join();
    EXPECT_EQ(recorder->retainCount(), 1U);
}

TEST(InterThreadPerform, DisablingSetsFreeThoseWhoWait) {
    const Worker worker;
    const auto recorder = Recorder::recorder();
    Held held(worker);
    std::vector<std::thread> senders;
    for (int i = 0; i < 3; ++i)
        senders.emplace_back([&] {
            try {
                performBefore(recorder, worker, nullptr, true);
            } catch (const NSException& raised) {
                EXPECT_TRUE(*raised.name() == NSPortTimeoutException || *raised.name() == NSInvalidArgumentException);
            }
        });
    while (recorder->retainCount() < 4)
        std::this_thread::yield();
    worker.runLoop()->performBlock([] { disableInterThreadMessages(); });
    held.letGo();
    for (std::thread& each : senders)
        each.join();
    EXPECT_EQ(recorder->retainCount(), 1U);
}

TEST(InterThreadNotification, IsPostedThereByTheDefaultCentre) {
    const Worker worker;
    const auto center = NSNotificationCenter::defaultCenter();
    const auto other = NSNotificationCenter::init();
    const auto object = Recorder::recorder();
    const auto info = NSDictionary::of({{u"key", 1}});
    const auto notification = NSNotification::notificationWithName_object(changed, object.get());
    const auto date = NSDate::distantPast();
    std::vector<Ref<NSNotification>> posted;
    std::vector<Ref<NSThread>> threads;
    const auto token = center->addObserverForName_object_usingBlock(changed.get(), object.get(), [&](auto& each) {
        posted.push_back(each);
        threads.push_back(NSThread::currentThread());
    });
    NSThread* const to = worker.get();
    postNotification_inThread(other, notification.get(), to);
    postNotification_inThread_beforeDate(other, notification.get(), to, date.get());
    postNotificationName_object_inThread(other, changed, object.get(), to);
    postNotificationName_object_inThread_beforeDate(other, changed, object.get(), to, date.get());
    postNotificationName_object_userInfo_inThread(other, changed, object.get(), info.get(), to);
    postNotificationName_object_userInfo_inThread_beforeDate(other, changed, object.get(), info.get(), to, nullptr);
    send<void>(other, "postNotificationName:object:userInfo:inThread:beforeDate:"_sel, changed, object, info,
               *worker.thread, nullptr);
    performBefore(object, worker, nullptr, true);
    center->removeObserver(token);
    ASSERT_EQ(posted.size(), 7U);
    for (std::size_t i = 0; i < posted.size(); ++i) {
        EXPECT_EQ(posted[i].get() == notification.get(), i < 2) << i;
        EXPECT_EQ(posted[i]->userInfo().get(), i < 4 ? nullptr : info.get()) << i;
        EXPECT_EQ(threads[i].get(), worker.get()) << i;
    }
}

TEST(InterThreadNotification, IsPostedAtOnceByItsCentreOnTheThreadItself) {
    const auto center = NSNotificationCenter::init();
    const auto recorder = Recorder::recorder();
    center->addObserver_selector_name_object(recorder, "notified:"_sel, changed.get(), nullptr);
    postNotificationName_object_inThread(center, changed, nullptr, NSThread::currentThread().get());
    EXPECT_EQ(recorder->lines(), Lines{"changed"});
}

TEST(InterThreadNotification, ToNoThreadIsPostedLaterOnThisOne) {
    const auto center = NSNotificationCenter::defaultCenter();
    const auto recorder = Recorder::recorder();
    std::thread([&] {
        prepareForInterThreadMessages();
        center->addObserver_selector_name_object(recorder, "notified:"_sel, changed.get(), nullptr);
        for (NSUInteger i = 0; i <= NSPort::usualCapacity; ++i)
            postNotificationName_object_inThread(center, changed, nullptr, nullptr);
        EXPECT_TRUE(recorder->lines().empty());
        EXPECT_TRUE(NSRunLoop::currentRunLoop()->runMode_beforeDate(NSDefaultRunLoopMode, NSDate::distantFuture()));
        EXPECT_EQ(recorder->lines().size(), NSPort::usualCapacity + 1) << "a thread does not wait for itself";
        center->removeObserver(recorder);
    }).join();
}

TEST(InterThreadManager, TenThousandThreadsLeaveNothingBehind) {
    prepareForInterThreadMessages();
    const auto recorder = Recorder::recorder();
    const std::size_t before = descriptors();
    std::vector<RefPtr<NSThread>> sample;
    for (int i = 0; i < 10'000; i += 10) {
        std::vector<std::thread> threads;
        for (int each = 0; each < 10; ++each)
            threads.emplace_back([&] {
                prepareForInterThreadMessages();
                const auto here = NSThread::currentThread();
                postNotification_inThread(NSNotificationCenter::defaultCenter(),
                                          NSNotification::notificationWithName_object(changed, here.get()).get(),
                                          nullptr);
            });
        for (std::thread& each : threads)
            each.join();
    }
    EXPECT_EQ(descriptors(), before);
    std::thread([&] {
        prepareForInterThreadMessages();
        sample.push_back(NSThread::currentThread());
        EXPECT_EQ(sample[0]->runLoop()->retainCount(), 2U);
    }).join();
    EXPECT_EQ(sample[0]->retainCount(), 1U);
    EXPECT_EQ(sample[0]->runLoop()->retainCount(), 2U) << "of the thread, and the one that is asked";
    disableInterThreadMessages();
}

TEST(InterThreadManager, AThreadThatEndsCannotPrepareAgain) {
    prepareForInterThreadMessages();
    disableInterThreadMessages();
    const auto center = NSNotificationCenter::defaultCenter();
    const auto token = center->addObserverForName_object_usingBlock(
        NSThreadWillExitNotification, nullptr, [](NSNotification&) { prepareForInterThreadMessages(); });
    const auto thread = NSThread::initWithBlock([] { prepareForInterThreadMessages(); });
    thread->start();
    thread->join();
    center->removeObserver(token);
    EXPECT_RAISES(performSelector_inThread_beforeDate_waitUntilDone(thread, "name"_sel, thread.get(), nullptr, false),
                  NSInvalidArgumentException, notPrepared(thread));
    InterThreadManager::threadDied(NSNotification::notificationWithName_object(NSThreadWillExitNotification, nullptr));
}

TEST(InterThreadManagerDeathTest, StopsAtWhatNoSenderSends) {
    GTEST_FLAG_SET(death_test_style, "threadsafe");
    InterThreadMessage message{};
    const auto recorder = Recorder::recorder();
    Worker worker;
    const std::string unit = "file Extensions\\.subproj/NSThread-NSNotificationCenter-QVLAdditions, line [0-9]+\\.";
    const struct {
        const char* function;
        const char* text;
        std::function<void()> fail;
    } rows[] = {
        {"\\+\\[InterThreadManager handlePortMessage:\\]", "1 == \\[components count\\]",
         [&] { InterThreadManager::handlePortMessage(portMessage(&message, 2)); }},
        {"\\+\\[InterThreadManager handlePortMessage:\\]", "1 == \\[components count\\]",
         [&] { send<void>(InterThreadManager::classObject(), "handlePortMessage:"_sel, *portMessage(&message, 0)); }},
        {"\\+\\[InterThreadManager handlePortMessage:\\]", "0",
         [&] { InterThreadManager::handlePortMessage(portMessage(&message)); }},
        {"\\+\\[InterThreadManager handlePortMessage:\\]", "0",
         [&] {
             message.kind = 6;
             message.target = recorder.get();
             InterThreadManager::handlePortMessage(portMessage(&message));
         }},
        {"performSelector", "NULL != selector",
         [&] {
             performSelector_inThread_beforeDate_waitUntilDone(recorder, Selector(), worker.get(), nullptr, false);
         }},
        {"performSelector", "NULL != thread",
         [&] { performSelector_inThread_beforeDate_waitUntilDone(recorder, "none"_sel, nullptr, nullptr, false); }},
        {"postNotification", "nil != notification",
         [&] { postNotification_inThread(NSNotificationCenter::defaultCenter(), nullptr, worker.get()); }},
    };
    for (const auto& row : rows)
        EXPECT_DEATH(row.fail(),
                     std::string("Assertion failed: \\(") + row.text + "\\), function " + row.function + ", " + unit);
}
