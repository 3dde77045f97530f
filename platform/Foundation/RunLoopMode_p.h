#pragma once

#include <cstdint>
#include <deque>
#include <functional>
#include <map>
#include <vector>

#include <ToviFoundationKit/Foundation/NSPort.h>
#include <ToviFoundationKit/Foundation/NSTimer.h>
#include <ToviFoundationKit/Foundation/PerformTicket_p.h>

namespace tovi::detail {

/// The name of a mode as a number, the same one in the whole process.
using ModeKey = std::uint32_t;
inline constexpr ModeKey defaultMode = 0, commonModes = 1;
ModeKey keyOfMode(const NSString& name);
Ref<NSString> nameOfMode(ModeKey key);

/// Something to be performed once. What is destroyed without having been performed tells who waits for it.
struct RunLoopItem {
    RunLoopItem() noexcept = default;
    RunLoopItem(RunLoopItem&&) noexcept = default;
    RunLoopItem& operator=(RunLoopItem&&) = delete;
    ~RunLoopItem() {
        if (ticket)
            ticket->finish(PerformTicket::dropped);
    }

    /// Performs it, lets go of what it held, then tells who waits, also when the operation raises.
    void perform();

    id target;
    Selector selector;  ///< null: the target is a block
    id argument;
    RefPtr<PerformTicket> ticket;
    ModeKey mode = commonModes;
    std::uint64_t sequence = 0;
};

/// A function as an object.
class BlockObject final : public NSObject {
public:
    explicit BlockObject(std::function<void()> function) : function_(std::move(function)) {}
    void invoke() { function_(); }

private:
    std::function<void()> function_;
};

/// What is scheduled in one mode of one run loop. Only the loop's own thread comes here.
struct RunLoopMode {
    /// When a timer fires; those of the same date in the order in which they were made.
    struct Due {
        NSTimeInterval date;
        std::uint64_t timer;
        friend auto operator<=>(const Due&, const Due&) = default;
    };

    explicit RunLoopMode(ModeKey modeKey) : key(modeKey) {}

    void dropInvalidPorts();
    bool hasSources() const noexcept { return !performs.empty() || !ports.empty() || !timers.empty(); }

    ModeKey key;
    bool portsMayHaveMessages = false;
    unsigned portsAreServed = 0;  ///< so many times at the moment, one inside of another
    std::deque<RunLoopItem> performs;
    std::vector<Ref<NSPort>> ports;
    std::map<Due, Ref<NSTimer>> timers;
};

}  // namespace tovi::detail
