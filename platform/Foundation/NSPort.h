#pragma once

#include <condition_variable>
#include <deque>
#include <mutex>
#include <vector>

#include <ToviFoundationKit/Foundation/NSPortMessage.h>

namespace tovi {

class NSRunLoop;
namespace detail {
struct RunLoopState;
}

/// A queue of messages from any thread to the one whose run loop serves it. It holds so many messages and no more; then
/// senders wait. Only the thread that serves it is never kept waiting, since it would wait for itself: its own messages
/// are taken beyond the limit. A message in the queue holds its port, so who lets go of a port that nothing serves any
/// more takes out what is left in it.
class TOVI_EXPORT NSPort final : public NSObject {
    TOVI_DECLARE_CLASS(NSPort)

public:
    static constexpr NSUInteger usualCapacity = 1024;

    static Ref<NSPort> port();
    static Ref<NSPort> portWithCapacity(NSUInteger messages);  ///< at least one

    /// Gets `handlePortMessage:` with each NSPortMessage, in the order in which they came, on the serving thread. The
    /// port holds it until it is invalid. Without one, messages vanish as they are served.
    id delegate() const;
    void setDelegate(NSObject* delegate);

    /// Lets the run loop serve the port in that mode, or no more, as -[NSRunLoop addPort:forMode:] does.
    void scheduleInRunLoop_forMode(NSRunLoop& runLoop, const NSString& mode);
    void removeFromRunLoop_forMode(NSRunLoop& runLoop, const NSString& mode);

    bool isValid() const;
    /// On any thread, and for good: takes no more messages, and who waits to send one is told that it failed. Messages
    /// that are still queued are not served; `takeMessage` has them.
    void invalidate();
    NSUInteger numberOfMessages() const;
    /// Takes the next message out of the queue, in place of a run loop; nil when there is none.
    RefPtr<NSPortMessage> takeMessage();

private:
    friend class NSPortMessage;
    friend class NSRunLoop;
    friend struct detail::RunLoopState;
    struct Schedule {
        NSRunLoop* runLoop;
        unsigned mode;
        friend bool operator==(const Schedule&, const Schedule&) = default;
    };

    explicit NSPort(NSUInteger capacity) : capacity_(capacity ? capacity : 1) {}

    bool enqueue(NSPortMessage& message, const NSDate& date);
    bool waitForRoom(std::unique_lock<std::mutex>& guard, const NSDate& date);
    bool isServedHere() const;
    /// Hands the next message to the delegate; false when there is none, or the schedule is over.
    bool serveNext(const Schedule& schedule);
    RefPtr<NSPortMessage> takeLocked();
    /// Whether there is something left to serve for the schedule.
    bool passEnds(const Schedule& schedule);
    bool isScheduled(const Schedule& schedule) const;
    bool addSchedule(const Schedule& schedule);
    void removeSchedule(const Schedule& schedule);

    const NSUInteger capacity_;
    mutable std::mutex mutex_;
    std::condition_variable room_;
    std::deque<Ref<NSPortMessage>> messages_;
    NSUInteger waiting_ = 0;
    bool valid_ = true;
    id delegate_;
    std::vector<Schedule> schedules_;  ///< the run loops hold the port, not the other way round
};

}  // namespace tovi
