#pragma once

// Needs GLib 2.36 (pkg-config glib-2.0). For hosts; nothing in the library includes it.

#include <glib.h>

#include <cmath>
#include <cstdlib>
#include <exception>
#include <functional>

#include <ToviFoundationKit/Foundation/NSDate.h>
#include <ToviFoundationKit/Foundation/NSRunLoop.h>
#include <ToviFoundationKit/Runtime/NSLog.h>

namespace tovi {

/// Lets a GLib main loop serve the current thread's run loop for as long as this lives:
///
///     const GLibRunLoop served;               // the default main context's
///     g_main_loop_run(loop);
///
/// What other threads send to this one, its timers and its ports are then served between GLib's own events, in the
/// default mode. Make it on the thread that iterates the context, and let it go there. While nothing is ready the main
/// loop sleeps. An exception of what is performed cannot pass through GLib; `onException` gets it, or else it is
/// logged.
class GLibRunLoop {
public:
    /// In one round of the main loop, so that other events get their turn.
    static constexpr NSUInteger operationsARound = 64;

    explicit GLibRunLoop(GMainContext* context = nullptr, int priority = G_PRIORITY_DEFAULT)
        : source_(g_source_new(&functions(), sizeof(Source))) {
        Source& source = *reinterpret_cast<Source*>(source_);
        source.owner = this;
        g_source_set_name(source_, "ToviFoundationKit");
        g_source_set_priority(source_, priority);
        g_source_set_can_recurse(source_, TRUE);
        source.tag = g_source_add_unix_fd(source_, runLoop_->fileDescriptor(), G_IO_IN);
        g_source_attach(source_, context);
    }
    ~GLibRunLoop() {
        g_source_destroy(source_);
        g_source_unref(source_);
    }
    GLibRunLoop(const GLibRunLoop&) = delete;
    GLibRunLoop& operator=(const GLibRunLoop&) = delete;

    std::function<void(const std::exception& raised)> onException;

private:
    struct Source {
        GSource source;
        GLibRunLoop* owner;
        gpointer tag;
    };

    static GSourceFuncs& functions() {
        static GSourceFuncs functions{&prepare, &check, &dispatch, nullptr, nullptr, nullptr};
        return functions;
    }

    /// Milliseconds, rounded up; -1 for no end.
    int timeout() const {
        const RefPtr<NSDate> deadline = runLoop_->nextDeadline();
        if (!deadline)
            return -1;
        const double milliseconds = std::ceil(deadline->timeIntervalSinceNow() * 1000);
        return milliseconds < 1 ? 0 : milliseconds > 1e9 ? 1'000'000'000 : static_cast<int>(milliseconds);
    }

    static gboolean prepare(GSource* source, int* milliseconds) {
        *milliseconds = reinterpret_cast<Source*>(source)->owner->timeout();
        return *milliseconds == 0;
    }
    static gboolean check(GSource* source) {
        const Source& own = *reinterpret_cast<Source*>(source);
        return g_source_query_unix_fd(source, own.tag) != 0 || own.owner->timeout() == 0;
    }
    static gboolean dispatch(GSource* source, GSourceFunc, gpointer) {
        reinterpret_cast<Source*>(source)->owner->serve();
        return G_SOURCE_CONTINUE;
    }
    void serve() {
        try {
            runLoop_->runReady(operationsARound);
        } catch (const std::exception& raised) {
            if (onException)
                onException(raised);
            else
                NSLog(u"GLibRunLoop: %s", raised.what());
        }
    }

    const Ref<NSRunLoop> runLoop_ = NSRunLoop::currentRunLoop();
    GSource* source_;
};

}  // namespace tovi
