#include <gtest/gtest.h>

#include <ToviFoundationKit/ToviFoundationKit.h>

#include <support/Expect.h>
#include <support/Worker.h>

#include <poll.h>
#include <sys/wait.h>
#include <unistd.h>

#include <cmath>
#include <thread>

using namespace tovi;

namespace {

Ref<NSDate> past() { return NSDate::distantPast(); }

bool isReadable(int descriptor) {
    pollfd entry{descriptor, POLLIN, 0};
    return poll(&entry, 1, 0) == 1;
}

/// Runs the body on a thread of its own, whose run loop is new.
void onFreshThread(const std::function<void(NSRunLoop&)>& body) {
    std::thread([&] { body(NSRunLoop::currentRunLoop()); }).join();
}

Ref<NSPortMessage> message(NSPort& port, std::u16string_view text) {
    return NSPortMessage::initWithSendPort_receivePort_components(&port, nullptr, NSArray::of(text).get());
}

/// A delegate that writes down what it is sent.
class Mailbox : public NSObject {
    TOVI_CLASS(Mailbox, NSObject)

public:
    void handlePortMessage(NSPortMessage& received) {
        text += received.components()->objectAtIndex(0)->description()->UTF8String();
        if (then)
            then();
    }
    std::string text;
    std::function<void()> then;

private:
    Mailbox() = default;

public:
    static Ref<Mailbox> mailbox() { return adopt(*new Mailbox); }
};
const Additions<Mailbox> mailboxAdditions{instance<&Mailbox::handlePortMessage>("handlePortMessage:")};

}  // namespace

TEST(NSRunLoop, IsOneForEachThreadAndRunsThereOnly) {
    const Worker worker;
    const auto other = worker.runLoop();
    EXPECT_NE(other.get(), NSRunLoop::currentRunLoop().get());
    EXPECT_EQ(NSRunLoop::mainRunLoop().get(), NSRunLoop::currentRunLoop().get());
    const char* const text = "the run loop belongs to another thread";
    EXPECT_RAISES(other->run(), NSInternalInconsistencyException, text);
    EXPECT_RAISES(other->fileDescriptor(), NSInternalInconsistencyException, text);
    EXPECT_RAISES(other->addPort_forMode(NSPort::port(), NSDefaultRunLoopMode), NSInternalInconsistencyException, text);
    EXPECT_RAISES(
        other->addTimer_forMode(NSTimer::timerWithTimeInterval_repeats_block(1, false, nullptr), NSDefaultRunLoopMode),
        NSInternalInconsistencyException, text);
}

TEST(NSRunLoop, DoesNotRunWithNothingScheduled) {
    onFreshThread([](NSRunLoop& loop) {
        EXPECT_FALSE(loop.runMode_beforeDate(NSDefaultRunLoopMode, NSDate::distantFuture()));
        loop.run();
        const auto port = NSPort::port();
        loop.addPort_forMode(port, NSDefaultRunLoopMode);
        EXPECT_TRUE(loop.runMode_beforeDate(NSDefaultRunLoopMode, past()));
        EXPECT_FALSE(loop.runMode_beforeDate(u"other"_ns, past()));
        port->invalidate();
        EXPECT_FALSE(loop.runMode_beforeDate(NSDefaultRunLoopMode, past()));
    });
}

TEST(NSRunLoop, PerformsInOrderAndOnlyWhatTheModeHas) {
    onFreshThread([](NSRunLoop& loop) {
        std::string done;
        const auto add = [&](char name, const NSString& mode) {
            loop.performBlock_forMode(
                [&, name] {
                    done += name;
                    EXPECT_NE(loop.currentMode(), nullptr);
                },
                mode);
        };
        const auto own = u"own"_ns;
        const std::pair<char, NSString*> added[] = {
            {'a', NSRunLoopCommonModes}, {'b', own.get()}, {'c', NSDefaultRunLoopMode}, {'d', NSRunLoopCommonModes}};
        for (const auto& [name, mode] : added)
            add(name, *mode);
        EXPECT_TRUE(loop.runMode_beforeDate(own, past()));
        EXPECT_EQ(done, "b");
        EXPECT_TRUE(loop.runMode_beforeDate(NSDefaultRunLoopMode, past()));
        EXPECT_EQ(done, "bacd");
        loop.addCommonMode(own);
        add('e', NSRunLoopCommonModes);
        EXPECT_TRUE(loop.runMode_beforeDate(own, past()));
        EXPECT_EQ(done, "bacde");
        EXPECT_EQ(loop.currentMode(), nullptr);
    });
}

TEST(NSRunLoop, WhatIsAddedMeanwhileWaitsForTheNextPass) {
    onFreshThread([](NSRunLoop& loop) {
        int count = 0;
        std::function<void()> again = [&] {
            ++count;
            loop.performBlock(again);
        };
        loop.performBlock(again);
        EXPECT_EQ(loop.runReady(100), 1U);
        EXPECT_TRUE(loop.runMode_beforeDate(NSDefaultRunLoopMode, past()));
        EXPECT_EQ(count, 2);
        loop.performBlock([&] { loop.stop(); });
        loop.run();
    });
}

TEST(NSRunLoop, ANestedRunGoesOnWithTheRest) {
    onFreshThread([](NSRunLoop& loop) {
        std::string done;
        loop.performBlock([&] {
            done += '(';
            EXPECT_TRUE(loop.runMode_beforeDate(NSDefaultRunLoopMode, past()));
            done += ')';
        });
        loop.performBlock([&] { done += 'a'; });
        EXPECT_TRUE(loop.runMode_beforeDate(NSDefaultRunLoopMode, past()));
        EXPECT_EQ(done, "(a)");
    });
}

TEST(NSRunLoop, ANestedRunGoesOnWithThePorts) {
    onFreshThread([](NSRunLoop& loop) {
        const auto mailbox = Mailbox::mailbox();
        const Ref<NSPort> ports[] = {NSPort::port(), NSPort::port()};
        for (const auto& each : ports) {
            each->setDelegate(mailbox.get());
            loop.addPort_forMode(each, NSDefaultRunLoopMode);
            EXPECT_TRUE(message(each, u"a")->sendBeforeDate(past()) && message(each, u"b")->sendBeforeDate(past()));
        }
        mailbox->then = [&] {
            if (mailbox->text == "a") {
                EXPECT_TRUE(loop.runMode_beforeDate(NSDefaultRunLoopMode, past()));
                EXPECT_EQ(mailbox->text, "abab");
            }
        };
        EXPECT_EQ(loop.runReady(10), 1U);
    });
}

TEST(NSRunLoop, TheDescriptorTellsANestedHostOfTheRest) {
    for (const bool byPort : {false, true})
        onFreshThread([&](NSRunLoop& loop) {
            SCOPED_TRACE(byPort);
            const int descriptor = loop.fileDescriptor();
            const auto mailbox = Mailbox::mailbox();
            const auto port = NSPort::port();
            port->setDelegate(mailbox.get());
            loop.addPort_forMode(port, NSDefaultRunLoopMode);
            std::vector<bool> seen;
            mailbox->then = [&] { seen.push_back(isReadable(descriptor)); };
            loop.runReady(10);
            for (int i = 0; i < 2; ++i)
                if (byPort)
                    EXPECT_TRUE(message(port, u"a")->sendBeforeDate(past()));
                else
                    loop.performBlock(mailbox->then);
            EXPECT_EQ(loop.runReady(10), 2U);
            EXPECT_EQ(seen[0], true);
            EXPECT_EQ(loop.runReady(10), 0U);
            EXPECT_TRUE(message(port, u"a")->sendBeforeDate(past()));
            EXPECT_EQ(loop.runReady(10), 1U);
            EXPECT_EQ(seen[2], false) << "there was but one";
        });
}

TEST(NSRunLoop, APortThatIsRemovedAsItIsServedDoesNotHideTheNextOne) {
    onFreshThread([](NSRunLoop& loop) {
        const auto mailbox = Mailbox::mailbox();
        const Ref<NSPort> ports[] = {NSPort::port(), NSPort::port(), NSPort::port()};
        for (const auto& each : ports) {
            each->setDelegate(mailbox.get());
            loop.addPort_forMode(each, NSDefaultRunLoopMode);
            EXPECT_TRUE(message(each, u"a")->sendBeforeDate(past()));
        }
        mailbox->then = [&] { loop.removePort_forMode(ports[0], NSDefaultRunLoopMode); };
        for (int pass = 0; pass < 2; ++pass)
            loop.runMode_beforeDate(NSDefaultRunLoopMode, past());
        EXPECT_EQ(mailbox->text, "aaa");
    });
}

TEST(NSRunLoop, WhatANestedRunInAnotherModeFoundIsNotForgotten) {
    onFreshThread([](NSRunLoop& loop) {
        const int descriptor = loop.fileDescriptor();
        bool performed = false;
        loop.performBlock([&] { performed = true; });
        loop.performBlock_forMode([] {}, u"other"_ns);
        EXPECT_TRUE(loop.runMode_beforeDate(u"other"_ns, past()));
        EXPECT_TRUE(isReadable(descriptor));
        EXPECT_EQ(loop.runReady(10), 1U);
        EXPECT_TRUE(performed);
        EXPECT_FALSE(isReadable(descriptor));
    });
}

TEST(NSRunLoop, StopsTheInnermostRunOrTheNextOne) {
    onFreshThread([](NSRunLoop& loop) {
        const auto port = NSPort::port();
        loop.addPort_forMode(port, NSDefaultRunLoopMode);
        loop.stop();
        loop.run();
        std::string done;
        loop.performBlock([&] {
            loop.performBlock([&] { loop.stop(); });
            loop.run();
            done += "inner ";
            loop.performBlock([&] { loop.stop(); });
        });
        loop.run();
        EXPECT_EQ(done, "inner ");
        std::thread other([&] { loop.stop(); });
        loop.runUntilDate(NSDate::distantFuture());
        other.join();
    });
}

TEST(NSRunLoop, ClosesWithItsThreadAndLetsGoOfWhatIsQueued) {
    const auto recorder = Recorder::recorder();
    RefPtr<NSRunLoop> loop;
    const auto port = NSPort::port();
    onFreshThread([&](NSRunLoop& fresh) {
        loop = fresh;
        fresh.performBlock([recorder] { recorder->none(); });
        fresh.addPort_forMode(port, NSDefaultRunLoopMode);
        NSTimer::scheduledTimerWithTimeInterval_repeats_block(1e6, true, [recorder](NSTimer&) { recorder->none(); });
        EXPECT_EQ(recorder->retainCount(), 3U);
    });
    EXPECT_EQ(recorder->retainCount(), 1U);
    EXPECT_EQ(port->retainCount(), 1U);
    loop->performBlock([recorder] { recorder->none(); });
    EXPECT_EQ(recorder->retainCount(), 1U);
    EXPECT_TRUE(message(port, u"a")->sendBeforeDate(past()));
    EXPECT_NE(port->takeMessage(), nullptr);
}

TEST(NSTimer, FiresByTheClockAndSkipsWhatItMissed) {
    onFreshThread([](NSRunLoop& loop) {
        FixedClock clock(1000);
        const ScopedClock standing(clock);
        std::string fired;
        NSTimer::scheduledTimerWithTimeInterval_repeats_block(10, true, [&](NSTimer&) { fired += 'r'; });
        const auto once =
            NSTimer::scheduledTimerWithTimeInterval_repeats_block(5, false, [&](NSTimer&) { fired += 'o'; });
        const auto deadline = [&] { return loop.nextDeadline()->timeIntervalSinceReferenceDate(); };
        EXPECT_EQ(deadline(), 1005);
        EXPECT_EQ(loop.runReady(10), 0U);
        clock.set(1035);
        EXPECT_EQ(loop.runReady(10), 2U);
        EXPECT_EQ(fired, "or");
        EXPECT_FALSE(once->isValid());
        EXPECT_EQ(deadline(), 1040);
        once->fire();
        EXPECT_EQ(fired, "or");
    });
}

TEST(NSTimer, ThatComesAgainAtOnceLetsOthersHaveTheirTurn) {
    onFreshThread([](NSRunLoop& loop) {
        int fired = 0, performed = 0;
        const auto timer = NSTimer::scheduledTimerWithTimeInterval_repeats_block(1, true, [&](NSTimer& own) {
            own.setFireDate(past());
            if (++fired == 1000)
                own.invalidate();
        });
        timer->setFireDate(NSDate::dateWithTimeIntervalSinceReferenceDate(std::nan("")));
        loop.performBlock([&] { performed = fired; });
        EXPECT_EQ(loop.runReady(3), 2U);
        EXPECT_EQ(performed, 1);
        loop.run();
        EXPECT_EQ(fired, 1000);
    });
}

TEST(NSTimer, IsAsItWasWhenAnotherThreadTouchedIt) {
    onFreshThread([](NSRunLoop& loop) {
        int fired = 0;
        const auto timer =
            NSTimer::scheduledTimerWithTimeInterval_repeats_block(0.001, true, [&](NSTimer&) { ++fired; });
        std::thread([&] {
            EXPECT_RAISES(timer->setFireDate(past()), NSInternalInconsistencyException, "belongs to another thread");
            EXPECT_RAISES(timer->invalidate(), NSInternalInconsistencyException, "belongs to another thread");
        }).join();
        while (fired < 2)
            loop.runMode_beforeDate(NSDefaultRunLoopMode, NSDate::dateWithTimeIntervalSinceNow(0.002));
    });
}

TEST(NSTimer, SendsItselfToItsTargetWhichItHoldsUntilItIsInvalid) {
    onFreshThread([](NSRunLoop& loop) {
        FixedClock clock(0);
        const ScopedClock standing(clock);
        const auto recorder = Recorder::recorder();
        const auto timer = NSTimer::scheduledTimerWithTimeInterval_target_selector_userInfo_repeats(
            1, recorder, "none"_sel, u"info"_ns.get(), true);
        EXPECT_EQ(timer->userInfo(), id(u"info"_ns));
        EXPECT_EQ(recorder->retainCount(), 2U);
        timer->setFireDate(NSDate::dateWithTimeIntervalSinceReferenceDate(7));
        EXPECT_EQ(loop.nextDeadline()->timeIntervalSinceReferenceDate(), 7);
        timer->fire();
        EXPECT_EQ(recorder->lines().size(), 1U);
        clock.set(7);
        EXPECT_EQ(loop.runReady(10), 1U);
        timer->invalidate();
        EXPECT_EQ(recorder->retainCount(), 1U);
        EXPECT_EQ(loop.nextDeadline(), nullptr);
        EXPECT_EQ(recorder->lines().size(), 2U);
    });
}

TEST(NSTimer, EndsASleepWhenItIsDue) {
    onFreshThread([](NSRunLoop& loop) {
        NSTimer::scheduledTimerWithTimeInterval_repeats_block(0.01, false, [&](NSTimer&) { loop.stop(); });
        loop.run();
        int fired = 0;
        NSTimer::scheduledTimerWithTimeInterval_repeats_block(0.001, true, [&](NSTimer& timer) {
            if (++fired == 3)
                timer.invalidate();
        });
        EXPECT_TRUE(loop.runMode_beforeDate(NSDefaultRunLoopMode, NSDate::distantFuture()))
            << "returns when its last timer is gone";
        EXPECT_EQ(fired, 3);
    });
}

TEST(NSPort, HandsMessagesToItsDelegateInTheModesThatServeIt) {
    onFreshThread([](NSRunLoop& loop) {
        const auto mailbox = Mailbox::mailbox();
        const auto port = NSPort::port();
        port->setDelegate(mailbox.get());
        port->scheduleInRunLoop_forMode(loop, NSDefaultRunLoopMode);
        port->scheduleInRunLoop_forMode(loop, NSDefaultRunLoopMode);
        for (const char16_t* text : {u"a", u"b", u"c"})
            EXPECT_TRUE(message(port, text)->sendBeforeDate(past()));
        EXPECT_FALSE(loop.runMode_beforeDate(u"other"_ns, past()));
        mailbox->then = [&] {
            if (mailbox->text == "ab")
                port->removeFromRunLoop_forMode(loop, NSDefaultRunLoopMode);
        };
        EXPECT_TRUE(loop.runMode_beforeDate(NSDefaultRunLoopMode, past()));
        EXPECT_EQ(mailbox->text, "ab") << "a port that is removed meanwhile is served no more";
        port->scheduleInRunLoop_forMode(loop, NSDefaultRunLoopMode);
        EXPECT_TRUE(loop.runMode_beforeDate(NSDefaultRunLoopMode, past()));
        EXPECT_EQ(mailbox->text, "abc");
    });
}

TEST(NSPort, TakesAsManyMessagesAsItHolds) {
    const auto port = NSPort::portWithCapacity(2);
    EXPECT_TRUE(message(port, u"a")->sendBeforeDate(past()));
    EXPECT_TRUE(message(port, u"b")->sendBeforeDate(past()));
    EXPECT_FALSE(message(port, u"c")->sendBeforeDate(past()));
    EXPECT_FALSE(message(port, u"c")->sendBeforeDate(NSDate::dateWithTimeIntervalSinceNow(0.005)));
    std::thread sender([&] { EXPECT_TRUE(message(port, u"c")->sendBeforeDate(NSDate::distantFuture())); });
    for (const char* text : {"a", "b", "c"}) {
        RefPtr<NSPortMessage> taken;
        while (!(taken = port->takeMessage()))
            std::this_thread::yield();
        EXPECT_EQ(taken->components()->objectAtIndex(0)->description()->UTF8String(), text);
    }
    sender.join();
    EXPECT_FALSE(NSPortMessage::initWithSendPort_receivePort_components(nullptr, nullptr, nullptr)
                     ->sendBeforeDate(NSDate::distantFuture()));
}

TEST(NSPort, ClosingItFailsThoseWhoWaitForRoom) {
    const auto port = NSPort::portWithCapacity(1);
    EXPECT_TRUE(message(port, u"a")->sendBeforeDate(past()));
    std::thread sender([&] { EXPECT_FALSE(message(port, u"b")->sendBeforeDate(NSDate::distantFuture())); });
    port->invalidate();
    sender.join();
    EXPECT_FALSE(port->isValid());
    EXPECT_EQ(port->numberOfMessages(), 1U);
    EXPECT_NE(port->takeMessage(), nullptr);
}

TEST(NSPort, DoesNotKeepTheThreadWaitingThatServesIt) {
    onFreshThread([](NSRunLoop& loop) {
        const auto port = NSPort::portWithCapacity(1);
        loop.addPort_forMode(port, NSDefaultRunLoopMode);
        for (int i = 0; i < 3; ++i)
            EXPECT_TRUE(message(port, u"a")->sendBeforeDate(NSDate::distantFuture()));
        EXPECT_EQ(loop.runReady(10), 3U);
    });
}

TEST(NSPort, MayBeServedBySomeoneWhoWaitsForTheOneThatWaitsForRoom) {
    struct AskedClock final : Clock {
        NSTimeInterval now() const noexcept override { return asked = true, 0; }
        mutable std::atomic<bool> asked = false;
    } clock;
    onFreshThread([&](NSRunLoop& loop) {
        const auto mailbox = Mailbox::mailbox();
        const auto port = NSPort::portWithCapacity(4);
        port->setDelegate(mailbox.get());
        loop.addPort_forMode(port, NSDefaultRunLoopMode);
        for (int i = 0; i < 4; ++i)
            EXPECT_TRUE(message(port, u"a")->sendBeforeDate(past()));
        const ScopedClock scope(clock);
        std::thread sender([&] { EXPECT_TRUE(message(port, u"b")->sendBeforeDate(NSDate::distantFuture())); });
        while (!clock.asked)
            std::this_thread::yield();
        mailbox->then = [&] {
            if (sender.joinable())
                sender.join();
        };
        EXPECT_EQ(loop.runReady(1), 1U);
        EXPECT_EQ(port->numberOfMessages(), 4U) << "there was room for it as soon as one was taken";
        mailbox->then = nullptr;
        EXPECT_EQ(loop.runReady(4), 4U);
    });
}

TEST(NSRunLoopDescriptor, IsReadableWhileThereIsSomethingToDo) {
    onFreshThread([](NSRunLoop& loop) {
        loop.performBlock([] {});
        const int descriptor = loop.fileDescriptor();
        EXPECT_EQ(loop.fileDescriptor(), descriptor);
        EXPECT_TRUE(isReadable(descriptor));
        EXPECT_EQ(loop.runReady(10), 1U);
        EXPECT_FALSE(isReadable(descriptor));
        const auto mailbox = Mailbox::mailbox();
        const auto port = NSPort::port();
        port->setDelegate(mailbox.get());
        loop.addPort_forMode(port, NSDefaultRunLoopMode);
        loop.runReady(10);
        for (int i = 0; i < 3; ++i) {
            std::thread([&] { loop.performBlock([] {}); }).join();
            EXPECT_TRUE(message(port, u"m")->sendBeforeDate(past()));
        }
        for (const NSUInteger served : {2U, 2U, 2U, 0U}) {
            EXPECT_TRUE(isReadable(descriptor)) << "more is left";
            EXPECT_EQ(loop.runReady(2), served);
        }
        EXPECT_EQ(mailbox->text, "mmm");
        EXPECT_FALSE(isReadable(descriptor));
        NSTimer::scheduledTimerWithTimeInterval_repeats_block(1e6, false, [](NSTimer&) {});
        EXPECT_TRUE(isReadable(descriptor)) << "there is another deadline";
        EXPECT_EQ(loop.runReady(2), 0U);
        EXPECT_FALSE(isReadable(descriptor));
    });
}

TEST(NSRunLoopDescriptor, StaysReadableWhenAnOperationRaises) {
    onFreshThread([](NSRunLoop& loop) {
        const int descriptor = loop.fileDescriptor();
        int performed = 0;
        loop.performBlock([] { NSException::raise(u"Odd", u"on purpose"); });
        loop.performBlock([&] { ++performed; });
        EXPECT_RAISES(loop.runReady(10), u"Odd", "on purpose");
        EXPECT_TRUE(isReadable(descriptor));
        EXPECT_EQ(loop.runReady(10), 1U);
        EXPECT_EQ(performed, 1);
    });
}

TEST(NSRunLoop, AForkedChildHasAWakeUpOfItsOwn) {
    const auto loop = NSRunLoop::currentRunLoop();
    const int descriptor = loop->fileDescriptor();
    loop->runReady(100);
    Worker worker;
    const pid_t child = fork();
    if (child == 0) {
        bool performed = false;
        loop->performBlock([&] { performed = true; });
        const bool wakes = isReadable(descriptor);
        loop->runReady(100);
        bool otherIsGone = worker.thread->isFinished();
        try {
            performSelector_inThread_beforeDate_waitUntilDone(Recorder::recorder(), "none"_sel, worker.get(), nullptr,
                                                              true);
            otherIsGone = false;
        } catch (const NSException& raised) {
            otherIsGone = otherIsGone && *raised.name() == NSInvalidArgumentException;
        }
        _exit(performed && wakes && otherIsGone ? 0 : 1);
    }
    int status = -1;
    EXPECT_EQ(waitpid(child, &status, 0), child);
    EXPECT_EQ(status, 0);
    EXPECT_FALSE(isReadable(descriptor)) << "the child's wake-up is not the parent's";
}
