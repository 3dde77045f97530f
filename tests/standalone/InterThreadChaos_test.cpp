#include <gtest/gtest.h>

#include <ToviFoundationKit/ToviFoundationKit.h>

#include <chrono>
#include <cstdlib>
#include <filesystem>
#include <random>
#include <thread>

using namespace tovi;
using namespace std::chrono_literals;

// Threads come, prepare, send, wait, disable and go at random. TOVI_CHAOS_SECONDS says for how long, TOVI_CHAOS_SEED
// how it begins. Nothing may crash, hang or be left behind.

namespace {

using Random = std::minstd_rand;

unsigned long setting(const char* name, unsigned long usual) {
    const char* const text = std::getenv(name);
    return text ? std::strtoul(text, nullptr, 10) : usual;
}

class Target : public NSObject {
    TOVI_CLASS(Target, NSObject)

public:
    static Ref<Target> target() { return adopt(*new Target); }
    void none() { ++performed; }
    void one(NSObject* object) { performed += object != nullptr; }
    void two(NSObject* first, NSObject* second) { performed += first == second; }
    void three(NSObject* first, NSObject*, NSObject* third) { performed += first == third; }
    void raise() { NSException::raise(u"Chaos", u"on purpose"); }
    void disable() { disableInterThreadMessages(); }
    void prepare() { prepareForInterThreadMessages(); }
    void stop() { NSRunLoop::currentRunLoop()->stop(); }

    std::atomic<long> performed = 0;

private:
    Target() = default;
};
const Additions<Target> additions{
    instance<&Target::none>("none"),       instance<&Target::one>("one:"),
    instance<&Target::two>("two:with:"),   instance<&Target::three>("three:with:and:"),
    instance<&Target::raise>("raise"),     instance<&Target::disable>("disable"),
    instance<&Target::prepare>("prepare"), instance<&Target::stop>("stop"),
};

/// A thread that serves messages, whatever is raised, until it is told to end.
struct Inhabitant {
    Ref<NSThread> thread;
    std::shared_ptr<std::atomic<bool>> ends = std::make_shared<std::atomic<bool>>(false);
    /// Only the last sender that waits is set free by the thread's end, so there is but one at a time.
    std::shared_ptr<std::mutex> oneWaits = std::make_shared<std::mutex>();

    static Inhabitant born(bool isPrepared) {
        auto ends = std::make_shared<std::atomic<bool>>(false);
        Inhabitant result{NSThread::initWithBlock([ends, isPrepared] { live(*ends, isPrepared); }), ends};
        result.thread->start();
        return result;
    }
    static void live(const std::atomic<bool>& ends, bool isPrepared) {
        const auto port = NSPort::port();
        NSRunLoop::currentRunLoop()->addPort_forMode(port, NSDefaultRunLoopMode);
        if (isPrepared)
            prepareForInterThreadMessages();
        NSTimer::scheduledTimerWithTimeInterval_repeats_block(0.001, true, [](NSTimer&) {});
        while (!ends)
            try {
                NSRunLoop::currentRunLoop()->run();
            } catch (const NSException& raised) {
                EXPECT_EQ(*raised.name(), u"Chaos");
            }
    }
    void end() const {
        *ends = true;
        if (const auto loop = thread->runLoop())
            loop->stop();
    }
};

class Town {
public:
    explicit Town(std::size_t size) {
        for (std::size_t i = 0; i < size; ++i)
            inhabitants_.push_back(Inhabitant::born(true));
    }
    Inhabitant any(Random& random) const {
        const std::lock_guard guard(mutex_);
        return inhabitants_[random() % inhabitants_.size()];
    }
    void replaceAny(Random& random) {
        Inhabitant next = Inhabitant::born(random() % 4 != 0);
        {
            const std::lock_guard guard(mutex_);
            std::swap(next, inhabitants_[random() % inhabitants_.size()]);
        }
        next.end();
        leaving_.push_back(std::move(next));
        if (leaving_.size() > 8)
            joinLeaving();
    }
    void close() {
        for (const Inhabitant& each : inhabitants_) {
            each.end();
            leaving_.push_back(each);
        }
        inhabitants_.clear();
        joinLeaving();
    }

private:
    // One that was told to stop before it ran asks again.
    void joinLeaving() {
        for (const Inhabitant& each : leaving_) {
            while (!each.thread->isFinished()) {
                each.end();
                std::this_thread::yield();
            }
            each.thread->join();
        }
        leaving_.clear();
    }

    mutable std::mutex mutex_;
    std::vector<Inhabitant> inhabitants_;
    std::vector<Inhabitant> leaving_;
};

void act(Random& random, const Town& town, Target& target, NSNotificationCenter& center) {
    const Inhabitant inhabitant = town.any(random);
    NSThread* const thread = inhabitant.thread.get();
    static const auto name = u"chaos"_ns;
    const auto soon = random() % 2 ? NSDate::distantPast() : NSDate::dateWithTimeIntervalSinceNow(0.01);
    const bool wait = random() % 4 == 0;
    switch (random() % 16) {
        case 0:
            return performSelector_inThread_waitUntilDone(target, "none"_sel, thread, wait);
        case 1:
            return performSelector_withObject_inThread_waitUntilDone(target, "one:"_sel, &target, thread, wait);
        case 2:
            return performSelector_withObject_withObject_withObject_inThread_waitUntilDone(
                target, "three:with:and:"_sel, thread, nullptr, thread, thread, wait);
        case 3:
            return postNotificationName_object_inThread(center, name, &target, thread);
        case 4:
            return performSelector_inThread_waitUntilDone(target, "raise"_sel, thread, wait);
        case 5:
            return performSelector_inThread_waitUntilDone(target, random() % 2 ? "disable"_sel : "prepare"_sel, thread,
                                                          wait);
        case 6:
            return inhabitant.thread->runLoop() ? inhabitant.thread->runLoop()->performBlock([] {}) : void();
        case 7: {
            const auto token = center.addObserverForName_object_usingBlock(name.get(), &target, [](NSNotification&) {});
            center.postNotificationName_object(name, &target);
            return center.removeObserver(token);
        }
        case 8:
        case 9:
        case 10: {
            const std::lock_guard guard(*inhabitant.oneWaits);
            const Selector selector = random() % 64 ? "none"_sel : "raise"_sel;
            return performSelector_inThread_beforeDate_waitUntilDone(target, selector, thread, soon.get(), true);
        }
        case 11:
            for (int i = 0; i < 300; ++i)
                postNotificationName_object_inThread_beforeDate(center, name, &target, thread, soon.get());
            return;
        default:
            return performSelector_withObject_withObject_inThread_beforeDate_waitUntilDone(
                target, "two:with:"_sel, thread, thread, thread, soon.get(), false);
    }
}

std::size_t descriptors() {
    return static_cast<std::size_t>(std::distance(std::filesystem::directory_iterator("/proc/self/fd"), {}));
}

}  // namespace

TEST(InterThreadChaos, NothingCrashesHangsOrIsLeftBehind) {
    const auto duration = std::chrono::seconds(setting("TOVI_CHAOS_SECONDS", 3));
    const unsigned seed = static_cast<unsigned>(setting("TOVI_CHAOS_SEED", 20260601));
    SCOPED_TRACE("seed " + std::to_string(seed));
    prepareForInterThreadMessages();
    const std::size_t descriptorsBefore = descriptors();
    const auto target = Target::target();
    const auto center = NSNotificationCenter::defaultCenter();
    center->addObserver_selector_name_object(target, "none"_sel, u"chaos"_ns.get(), target.get());
    Town town(6);
    std::atomic<bool> isOver = false;
    std::atomic<int> acting = 4;
    std::vector<std::thread> actors;
    for (unsigned i = 1; i <= 4; ++i)
        actors.emplace_back([&, i] {
            for (Random random(seed + i); !isOver;)
                try {
                    act(random, town, target, center);
                } catch (const NSException& raised) {
                    const auto name = raised.name();
                    EXPECT_TRUE(*name == NSInvalidArgumentException || *name == NSPortTimeoutException ||
                                *name == NSDestinationInvalidException)
                        << raised.what();
                }
            --acting;
        });
    Random random(seed);
    for (const auto end = std::chrono::steady_clock::now() + duration; acting > 0;) {
        isOver = std::chrono::steady_clock::now() > end;
        town.replaceAny(random);
        std::this_thread::sleep_for(std::chrono::microseconds(random() % 2000));
    }
    for (std::thread& each : actors)
        each.join();
    town.close();
    center->removeObserver(target);
    EXPECT_GT(target->performed, 1000);
    EXPECT_EQ(target->retainCount(), 1U);
    EXPECT_EQ(descriptors(), descriptorsBefore);
}
