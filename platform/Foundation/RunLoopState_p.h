#pragma once

#include <atomic>
#include <mutex>
#include <optional>

#include <ToviFoundationKit/Foundation/RunLoopMode_p.h>
#include <ToviFoundationKit/Foundation/Wakeup_p.h>

namespace tovi::detail {

/// What a run loop consists of: an inbox that all threads fill, and, for its own thread only, the modes and what is
/// scheduled in them. There is no system call in here; the wake-up has them.
struct RunLoopState {
    /// The modes whose content is served while the loop runs in one: the mode itself and, perhaps, the common one.
    struct Served {
        RunLoopMode* modes[2];
        std::size_t count;
        RunLoopMode* const* begin() const noexcept { return modes; }
        RunLoopMode* const* end() const noexcept { return modes + count; }
    };

    // For all threads:
    bool enqueue(RunLoopItem&& item);
    void portHasMessages();

    // For the loop's own thread:
    RunLoopMode& mode(ModeKey key);
    Served served(ModeKey key);
    bool isCommon(ModeKey key) const noexcept;
    /// Distributes what came in among the modes.
    void collect();
    bool hasSources(ModeKey key);
    std::optional<NSTimeInterval> nextDeadline(ModeKey key);

    /// What one pass did. Operations are limited in number by `budget`, which they use up.
    struct Pass {
        NSUInteger budget;
        bool stops;  ///< when the loop is told to stop
        NSUInteger timers = 0;
        NSUInteger inputs = 0;
        bool isUsedUp() const noexcept { return timers + inputs >= budget; }
    };
    void serve(ModeKey key, NSRunLoop& loop, Pass& pass);
    /// Keeps the wake-up signalled when something is ready in the mode.
    void signalWhatIsLeft(ModeKey key);

    Wakeup wakeup;
    std::atomic<bool> stopping{false};
    std::vector<ModeKey> running;  ///< innermost last
    std::deque<RunLoopMode> modes;
    std::vector<ModeKey> common{defaultMode};

    // Guards what follows.
    std::mutex mutex;
    std::vector<RunLoopItem> inbox;
    std::atomic<bool> portsHaveMessages{false};
    std::atomic<bool> closed{false};

private:
    bool isOver(const Pass& pass) const noexcept { return pass.isUsedUp() || (pass.stops && stopping); }
    void fireTimers(const Served& modesHere, Pass& pass);
    void performItems(const Served& modesHere, Pass& pass);
    void servePorts(const Served& modesHere, NSRunLoop& loop, Pass& pass);
    void servePort(const Served& modesHere, RunLoopMode& mode, NSPort& port, NSRunLoop& loop, Pass& pass);
    /// Before something is performed: tells a host's loop, which that may run, of what there is besides.
    void offerTheRest(const Served& modesHere);

    std::vector<RunLoopItem> collected_;  ///< empty; its memory changes places with the inbox's
    std::uint64_t itemsCollected_ = 0;
    bool portsFirst_ = false;
};

}  // namespace tovi::detail
