#pragma once

#include <atomic>
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

    using Queue = std::deque<Ref<NSPortMessage>>;

    explicit NSPort(NSUInteger capacity) : capacity_(capacity ? capacity : 1) {}

    bool enqueue(NSPortMessage& message, const NSDate& date);
    bool waitForRoom(std::unique_lock<std::mutex>& guard, const NSDate& date);
    void wakeWaiting();
    bool isServedHere() const;
    /// Hands the next message to the delegate; false when there is none, or the schedule is over.
    bool serveNext(const Schedule& schedule);
    RefPtr<NSPortMessage> takeLocked();
    /// Whether there is something left to serve for the schedule.
    bool passEnds(const Schedule& schedule);
    bool isScheduled(const Schedule& schedule) const;
    bool addSchedule(const Schedule& schedule);
    void removeSchedule(const Schedule& schedule);

    // What hardly changes, what each side changes and what both do are apart, for the processors' caches.
    alignas(64) const NSUInteger capacity_;
    // To be changed with both locks, and read with either.
    bool valid_ = true;
    std::vector<Schedule> schedules_;  ///< the run loops hold the port, not the other way round

    // Senders fill one queue while the other, with the older messages, is emptied; only when that one is empty do both
    // sides meet. Who takes both locks takes this one first.
    alignas(64) mutable std::mutex outgoingMutex_;
    Queue outgoing_;
    id delegate_;

    alignas(64) mutable std::mutex mutex_;
    Queue incoming_;
    std::condition_variable room_;

    // The one who takes lowers the first, then looks at the second; the one who waits raises the second, then looks at
    // the first.
    alignas(64) std::atomic<NSUInteger> count_{0};
    std::atomic<NSUInteger> waiting_{0};
};

}  // namespace tovi
