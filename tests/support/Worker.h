#pragma once

#include <semaphore>
#include <string>
#include <vector>

#include <ToviFoundationKit/ToviFoundationKit.h>

/// A thread that is prepared for messages and runs its run loop until this goes.
class Worker {
public:
    Worker() {
        thread->start();
        ready_.acquire();
    }
    ~Worker() {
        if (!thread->isFinished())
            runLoop()->stop();
        thread->join();
    }
    tovi::NSThread* get() const { return thread.get(); }
    tovi::Ref<tovi::NSRunLoop> runLoop() const { return thread->runLoop().ref(); }
    /// Runs it there and waits until it has run.
    void perform(std::function<void()> block) const {
        std::binary_semaphore done(0);
        runLoop()->performBlock([&] {
            block();
            done.release();
        });
        done.acquire();
    }

    const tovi::Ref<tovi::NSThread> thread = tovi::NSThread::initWithBlock([this] {
        tovi::prepareForInterThreadMessages();
        ready_.release();
        tovi::NSRunLoop::currentRunLoop()->run();
    });

private:
    std::binary_semaphore ready_{0};
};

/// Holds the worker up until it goes, so that what is sent meanwhile stays queued.
class Held {
public:
    explicit Held(const Worker& worker) : loop_(worker.runLoop()) {
        loop_->performBlock([this] {
            reached_.release();
            goOn_.acquire();
            left_.release();
        });
        reached_.acquire();
    }
    ~Held() { letGo(); }
    void letGo() {
        if (std::exchange(isHeld_, false)) {
            goOn_.release();
            left_.acquire();
        }
    }

private:
    tovi::Ref<tovi::NSRunLoop> loop_;
    bool isHeld_ = true;
    std::binary_semaphore reached_{0}, goOn_{0}, left_{0};
};

/// Writes down what it is told, and where.
class Recorder : public tovi::NSObject {
    TOVI_CLASS(Recorder, tovi::NSObject)

public:
    static tovi::Ref<Recorder> recorder() { return tovi::adopt(*new Recorder); }

    void none() { write("none"); }
    void one(tovi::NSObject* a) { write("one " + text(a)); }
    tovi::Ref<tovi::NSObject> two(tovi::NSObject* a, tovi::NSObject* b) {
        write("two " + text(a) + " " + text(b));
        return *this;
    }
    void three(tovi::NSObject* a, tovi::NSObject* b, tovi::NSObject* c) {
        write("three " + text(a) + " " + text(b) + " " + text(c));
    }
    void raise() { tovi::NSException::raise(u"Recorded", u"raised on purpose"); }
    void notified(const tovi::NSNotification& notification) { write(notification.name()->UTF8String()); }

    std::vector<std::string> lines() const {
        const std::lock_guard guard(mutex_);
        return lines_;
    }
    tovi::RefPtr<tovi::NSThread> thread() const {
        const std::lock_guard guard(mutex_);
        return thread_;
    }

private:
    static std::string text(tovi::NSObject* object) { return object ? object->description()->UTF8String() : "nil"; }
    void write(std::string line) {
        const std::lock_guard guard(mutex_);
        lines_.push_back(std::move(line));
        thread_ = tovi::NSThread::currentThread();
    }

    mutable std::mutex mutex_;
    std::vector<std::string> lines_;
    tovi::RefPtr<tovi::NSThread> thread_;
};

inline const tovi::Additions<Recorder> recorderAdditions{
    tovi::instance<&Recorder::none>("none"),     tovi::instance<&Recorder::one>("one:"),
    tovi::instance<&Recorder::two>("two:with:"), tovi::instance<&Recorder::three>("three:with:and:"),
    tovi::instance<&Recorder::raise>("raise"),   tovi::instance<&Recorder::notified>("notified:"),
};
