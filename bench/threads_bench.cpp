// Messages between threads and notifications, beside the event loops of Qt, GLib and Asio. The limit is a queue of
// functions under a bare mutex and a condition variable. Every receiver counts what it gets.

#define QT_NO_KEYWORDS

#include <sched.h>

#include <algorithm>
#include <atomic>
#include <chrono>
#include <condition_variable>
#include <deque>
#include <functional>
#include <memory>
#include <mutex>
#include <semaphore>
#include <string>
#include <thread>

#include <ToviFoundationKit/Extensions/NSThread-NSNotificationCenter-QVLAdditions.h>
#include <ToviFoundationKit/Foundation/NSRunLoop.h>
#include <ToviFoundationKit/Runtime/Additions.h>

#include "Bench.h"

#ifdef TOVI_BENCH_HAVE_QT
#include <QCoreApplication>
#include <QObject>
#include <QThread>
#endif
#ifdef TOVI_BENCH_HAVE_GLIB
#include <glib-object.h>
#endif
#ifdef TOVI_BENCH_HAVE_ASIO
#include <boost/asio/executor_work_guard.hpp>
#include <boost/asio/io_context.hpp>
#include <boost/asio/post.hpp>
#endif

using namespace tovi;
using namespace bench;

namespace {

// Nothing here is for a process with one thread.
const bool startsThreads = [] {
    std::thread([] {}).join();
    return bench::startsThreads = true;
}();

using Clock = std::chrono::steady_clock;

class Counter : public NSObject {
    TOVI_CLASS(Counter, NSObject)

public:
    static Ref<Counter> counter() { return adopt(*new Counter); }
    void count(NSObject*) { ++counted; }
    long counted = 0;

private:
    Counter() = default;
};
const Additions<Counter> additions{instance<&Counter::count>("count:")};

// Each receiver has `send`, which makes it count one, on any thread; `sendAndWait`; and `counted`, once it is quiet.

template <bool hasDate> class Kit {
public:
    Kit() {
        thread_->start();
        ready_.acquire();
    }
    ~Kit() {
        thread_->runLoop()->stop();
        thread_->join();
    }
    void send() { perform(false); }
    void sendAndWait() { perform(true); }
    long counted() const { return counter_->counted; }

private:
    void perform(bool wait) {
        if constexpr (hasDate)
            performSelector_withObject_inThread_beforeDate_waitUntilDone(counter_, "count:"_sel, object_.get(),
                                                                         thread_.get(), nullptr, wait);
        else
            performSelector_withObject_inThread_waitUntilDone(counter_, "count:"_sel, object_.get(), thread_.get(),
                                                              wait);
    }

    const Ref<Counter> counter_ = Counter::counter();
    const Ref<NSObject> object_ = Counter::counter();
    std::binary_semaphore ready_{0};
    const Ref<NSThread> thread_ = NSThread::initWithBlock([this] {
        prepareForInterThreadMessages();
        ready_.release();
        NSRunLoop::currentRunLoop()->run();
    });
};

/// What waits without the help of the queue that it was sent through.
class Answer {
public:
    void give() {
        const std::lock_guard guard(mutex_);
        isGiven_ = true;
        given_.notify_one();
    }
    void await() {
        std::unique_lock guard(mutex_);
        given_.wait(guard, [this] { return isGiven_; });
    }

private:
    std::mutex mutex_;
    std::condition_variable given_;
    bool isGiven_ = false;
};

/// A receiver that is given functions. `Queue` has `post`.
template <class Queue> class Functions {
public:
    void send() {
        queue_.post([this, object = object_] { counted_ += object != nullptr; });
    }
    void sendAndWait() {
        Answer answer;
        queue_.post([this, &answer, object = object_] {
            counted_ += object != nullptr;
            answer.give();
        });
        answer.await();
    }
    long counted() const { return counted_; }

private:
    long counted_ = 0;
    const std::shared_ptr<int> object_ = std::make_shared<int>(1);
    Queue queue_;
};

class BareQueue {
public:
    ~BareQueue() {
        post(nullptr);
        thread_.join();
    }
    void post(std::function<void()> function) {
        {
            const std::lock_guard guard(mutex_);
            functions_.push_back(std::move(function));
        }
        filled_.notify_one();
    }

private:
    void run() {
        for (;;) {
            std::unique_lock guard(mutex_);
            filled_.wait(guard, [this] { return !functions_.empty(); });
            const std::function<void()> function = std::move(functions_.front());
            functions_.pop_front();
            guard.unlock();
            if (!function)
                return;
            function();
        }
    }

    std::mutex mutex_;
    std::condition_variable filled_;
    std::deque<std::function<void()>> functions_;
    std::thread thread_{[this] { run(); }};
};

#ifdef TOVI_BENCH_HAVE_ASIO
class Asio {
public:
    ~Asio() {
        guard_.reset();
        thread_.join();
    }
    template <class F> void post(F function) { boost::asio::post(context_, std::move(function)); }

private:
    boost::asio::io_context context_{1};
    boost::asio::executor_work_guard<boost::asio::io_context::executor_type> guard_{context_.get_executor()};
    std::thread thread_{[this] { context_.run(); }};
};
#endif

#ifdef TOVI_BENCH_HAVE_GLIB
class GLib {
public:
    ~GLib() {
        post([this] { g_main_loop_quit(loop_); });
        thread_.join();
        g_main_loop_unref(loop_);
        g_main_context_unref(context_);
    }
    template <class F> void post(F function) {
        g_main_context_invoke_full(
            context_, G_PRIORITY_DEFAULT,
            [](gpointer data) -> gboolean {
                (*static_cast<F*>(data))();
                return G_SOURCE_REMOVE;
            },
            new F(std::move(function)), [](gpointer data) { delete static_cast<F*>(data); });
    }

private:
    GMainContext* const context_ = g_main_context_new();
    GMainLoop* const loop_ = g_main_loop_new(context_, FALSE);
    std::thread thread_{[this] {
        g_main_context_push_thread_default(context_);
        g_main_loop_run(loop_);
        g_main_context_pop_thread_default(context_);
    }};
};
#endif

#ifdef TOVI_BENCH_HAVE_QT
class QtReceiver {
public:
    QtReceiver() {
        // Without one Qt drops the events of threads.
        static int count = 1;
        static char name[] = "bench", *arguments[] = {name, nullptr};
        static const QCoreApplication application(count, arguments);
        object_.moveToThread(&thread_);
        thread_.start();
    }
    ~QtReceiver() {
        thread_.quit();
        thread_.wait();
    }
    void send() {
        QMetaObject::invokeMethod(
            &object_, [this, held = held_] { counted_ += held != nullptr; }, Qt::QueuedConnection);
    }
    void sendAndWait() {
        QMetaObject::invokeMethod(
            &object_, [this, held = held_] { counted_ += held != nullptr; }, Qt::BlockingQueuedConnection);
    }
    long counted() const { return counted_; }

private:
    QThread thread_;
    QObject object_;
    long counted_ = 0;
    const std::shared_ptr<int> held_ = std::make_shared<int>(1);
};
#endif

constexpr long messages = 1'000'000;

/// From the first message until the last one is counted.
template <class Receiver, int senders> void oneWay(State& state) {
    Receiver receiver;
    receiver.sendAndWait();
    for (auto _ : state) {
        const long before = receiver.counted();
        const auto start = Clock::now();
        std::vector<std::thread> threads;
        for (int i = 0; i < senders; ++i)
            threads.emplace_back([&] {
                for (long n = messages / senders; n > 0; --n)
                    receiver.send();
            });
        for (std::thread& each : threads)
            each.join();
        receiver.sendAndWait();
        state.SetIterationTime(std::chrono::duration<double>(Clock::now() - start).count());
        check(receiver.counted() == before + messages + 1, "messages");
    }
    countItems(state, messages);
}

/// All threads that come to be while this lives share one processor.
class OneProcessor {
public:
    OneProcessor() {
        sched_getaffinity(0, sizeof before_, &before_);
        cpu_set_t first;
        CPU_ZERO(&first);
        for (int i = 0; i < CPU_SETSIZE && !CPU_COUNT(&first); ++i)
            if (CPU_ISSET(i, &before_))
                CPU_SET(i, &first);
        sched_setaffinity(0, sizeof first, &first);
    }
    ~OneProcessor() { sched_setaffinity(0, sizeof before_, &before_); }

private:
    cpu_set_t before_;
};

/// The median of many, or the time that 99 of 100 do not exceed.
template <class Receiver, int percentile> void roundTrip(State& state) {
    const OneProcessor pinned;
    Receiver receiver;
    receiver.sendAndWait();
    std::vector<double> times(5000);
    for (auto _ : state) {
        const long before = receiver.counted();
        for (double& each : times) {
            const auto start = Clock::now();
            receiver.sendAndWait();
            each = std::chrono::duration<double>(Clock::now() - start).count();
        }
        const auto asked = times.begin() + static_cast<long>(times.size()) * percentile / 100;
        std::nth_element(times.begin(), asked, times.end());
        state.SetIterationTime(*asked);
        check(receiver.counted() == before + static_cast<long>(times.size()), "round trips");
    }
    countItems(state, 1);
}

template <class Receiver> void add(const std::string& who) {
    // So many times, since what is timed of a round is much less than the round takes.
    const auto each = [&](const char* what, void (*function)(State&), long rounds) {
        benchmark::RegisterBenchmark((what + ("/" + who)).c_str(), function)->UseManualTime()->Iterations(rounds);
    };
    each("one-way, one sender", oneWay<Receiver, 1>, 1);
    each("one-way, 8 senders", oneWay<Receiver, 8>, 1);
    each("round trip, median", roundTrip<Receiver, 50>, 4);
    each("round trip, 99th percentile", roundTrip<Receiver, 99>, 4);
}

const int registered = [] {
    add<Kit<false>>("kit");
    add<Kit<true>>("kit, before date");
    add<Functions<BareQueue>>("bare queue");
#ifdef TOVI_BENCH_HAVE_ASIO
    add<Functions<Asio>>("Asio");
#endif
#ifdef TOVI_BENCH_HAVE_GLIB
    add<Functions<GLib>>("g_main_context_invoke");
#endif
#ifdef TOVI_BENCH_HAVE_QT
    add<QtReceiver>("Qt queued");
#endif
    return 0;
}();

constexpr long observers = 1000;
const auto changed = u"changed"_ns;

void kitPost(State& state) {
    const auto center = NSNotificationCenter::init();
    std::vector<Ref<Counter>> counters;
    for (long i = 0; i < observers; ++i) {
        counters.push_back(Counter::counter());
        center->addObserver_selector_name_object(counters.back(), "count:"_sel, changed.get(), nullptr);
    }
    const auto notification = NSNotification::notificationWithName_object(changed, nullptr);
    repeat(state, observers, [&] {
        center->postNotification(notification);
        return counters.back()->counted;
    });
    check(counters.front()->counted == static_cast<long>(state.iterations()) + 1, "notifications");
}
BENCHMARK(kitPost)->Name("notification to 1000 observers/kit");

void kitAddRemove(State& state) {
    const auto center = NSNotificationCenter::init();
    const auto counter = Counter::counter(), other = Counter::counter();
    center->addObserver_selector_name_object(other, "count:"_sel, changed.get(), nullptr);
    for (auto _ : state) {
        center->addObserver_selector_name_object(counter, "count:"_sel, changed.get(), nullptr);
        center->removeObserver(counter);
    }
    center->postNotificationName_object(changed, nullptr);
    check(other->counted == 1 && counter->counted == 0, "removed");
}
BENCHMARK(kitAddRemove)->Name("observer added and removed/kit");

void kitPostAmongOthers(State& state, long others) {
    const auto center = NSNotificationCenter::init();
    const auto counter = Counter::counter();
    for (long i = 0; i < others; ++i)
        center->addObserver_selector_name_object(counter, "count:"_sel,
                                                 NSString::stringWithFormat(u"name %ld", i).get(), nullptr);
    for (int i = 0; i < 10; ++i)
        center->addObserver_selector_name_object(counter, "count:"_sel, changed.get(), nullptr);
    const auto notification = NSNotification::notificationWithName_object(changed, nullptr);
    repeat(state, 1, [&] {
        center->postNotification(notification);
        return counter->counted;
    });
    check(counter->counted == 10 * (static_cast<long>(state.iterations()) + 1), "notifications");
}
BENCHMARK_CAPTURE(kitPostAmongOthers, many, 100'000)->Name("notification among 100k other names/kit");
BENCHMARK_CAPTURE(kitPostAmongOthers, none, 0)->Name("notification among 100k other names/kit, no other names");

}  // namespace

#ifdef TOVI_BENCH_HAVE_QT

class QtCounter : public QObject {
    Q_OBJECT

public:
    Q_SIGNAL void changed(QObject* object);
    Q_SLOT void count(QObject*) { ++counted; }
    long counted = 0;
};

#include "threads_bench.moc"

namespace {

void qtEmit(State& state) {
    QtCounter sender;
    std::vector<std::unique_ptr<QtCounter>> counters;
    for (long i = 0; i < observers; ++i) {
        counters.push_back(std::make_unique<QtCounter>());
        QObject::connect(&sender, &QtCounter::changed, counters.back().get(), &QtCounter::count);
    }
    repeat(state, observers, [&] {
        Q_EMIT sender.changed(&sender);
        return counters.back()->counted;
    });
    check(counters.front()->counted == static_cast<long>(state.iterations()) + 1, "signals");
}
BENCHMARK(qtEmit)->Name("notification to 1000 observers/Qt signal");

void qtConnectDisconnect(State& state) {
    QtCounter sender, counter, other;
    QObject::connect(&sender, &QtCounter::changed, &other, &QtCounter::count);
    for (auto _ : state)
        QObject::disconnect(QObject::connect(&sender, &QtCounter::changed, &counter, &QtCounter::count));
    Q_EMIT sender.changed(&sender);
    check(other.counted == 1 && counter.counted == 0, "disconnected");
}
BENCHMARK(qtConnectDisconnect)->Name("observer added and removed/Qt connect, disconnect");

}  // namespace

#endif

#ifdef TOVI_BENCH_HAVE_GLIB

namespace {

void gEmit(State& state) {
    static const guint signal = g_signal_new("tovi-changed", G_TYPE_OBJECT, G_SIGNAL_RUN_LAST, 0, nullptr, nullptr,
                                             nullptr, G_TYPE_NONE, 1, G_TYPE_POINTER);
    auto* const sender = static_cast<GObject*>(g_object_new(G_TYPE_OBJECT, nullptr));
    std::vector<long> counters(observers);
    const auto count = +[](GObject*, gpointer, gpointer counter) { ++*static_cast<long*>(counter); };
    for (long& each : counters)
        g_signal_connect(sender, "tovi-changed", G_CALLBACK(count), &each);
    repeat(state, observers, [&] {
        g_signal_emit(sender, signal, 0, sender);
        return counters.back();
    });
    check(counters.front() == static_cast<long>(state.iterations()) + 1, "signals");
    g_object_unref(sender);
}
BENCHMARK(gEmit)->Name("notification to 1000 observers/g_signal_emit");

}  // namespace

#endif
