#pragma once

// Needs Qt 5.15 or 6 (QtCore; no moc). For hosts; nothing in the library includes it.

#include <cmath>
#include <exception>
#include <functional>
#include <QObject>
#include <QSocketNotifier>
#include <QTimer>

#include <ToviFoundationKit/Foundation/NSDate.h>
#include <ToviFoundationKit/Foundation/NSRunLoop.h>
#include <ToviFoundationKit/Runtime/NSLog.h>

namespace tovi {

/// Lets Qt's event loop serve the current thread's run loop for as long as this lives:
///
///     QCoreApplication application(argc, argv);
///     const QtRunLoop served;
///     return application.exec();
///
/// What other threads send to this one, its timers and its ports are then served between Qt's own events, in the
/// default mode. Make it on the thread whose event loop is to serve, once that thread can have timers, and let it go
/// there. While nothing is ready the event loop sleeps. An exception of what is performed cannot pass through Qt;
/// `onException` gets it, or else it is logged.
class QtRunLoop {
public:
    /// In one round of the event loop, so that other events get their turn.
    static constexpr NSUInteger operationsARound = 64;

    QtRunLoop() : notifier_(runLoop_->fileDescriptor(), QSocketNotifier::Read) {
        timer_.setSingleShot(true);
        timer_.setTimerType(Qt::PreciseTimer);
        QObject::connect(&notifier_, &QSocketNotifier::activated, &timer_, [this] { serve(); });
        QObject::connect(&timer_, &QTimer::timeout, &timer_, [this] { serve(); });
        setTimer();
    }
    QtRunLoop(const QtRunLoop&) = delete;
    QtRunLoop& operator=(const QtRunLoop&) = delete;

    std::function<void(const std::exception& raised)> onException;

private:
    void serve() {
        try {
            runLoop_->runReady(operationsARound);
        } catch (const std::exception& raised) {
            if (onException)
                onException(raised);
            else
                NSLog(u"QtRunLoop: %s", raised.what());
        }
        setTimer();
    }

    // The descriptor tells of another deadline, too, so this is up to date whenever Qt sleeps.
    void setTimer() {
        const RefPtr<NSDate> deadline = runLoop_->nextDeadline();
        if (!deadline)
            return timer_.stop();
        const double milliseconds = std::ceil(deadline->timeIntervalSinceNow() * 1000);
        timer_.start(milliseconds < 1 ? 0 : milliseconds > 1e9 ? 1'000'000'000 : static_cast<int>(milliseconds));
    }

    const Ref<NSRunLoop> runLoop_ = NSRunLoop::currentRunLoop();
    QSocketNotifier notifier_;
    QTimer timer_;
};

}  // namespace tovi
