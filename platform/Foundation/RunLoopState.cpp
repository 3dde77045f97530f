#include <ToviFoundationKit/Foundation/RunLoopState_p.h>

#include <algorithm>
#include <exception>
#include <iterator>
#include <limits>

#include <ToviFoundationKit/Foundation/Clock.h>
#include <ToviFoundationKit/Foundation/NSRunLoop.h>

namespace tovi::detail {

bool RunLoopState::enqueue(RunLoopItem&& item) {
    bool first = false;
    {
        if (closed.load(std::memory_order_acquire))
            return false;
        const std::lock_guard guard(mutex);
        if (closed.load(std::memory_order_relaxed))
            return false;
        first = inbox.empty();
        inbox.push_back(std::move(item));
    }
    if (first)
        wakeup.signal();
    return true;
}

void RunLoopState::portHasMessages() {
    if (!portsHaveMessages.exchange(true))
        wakeup.signal();
}

RunLoopMode& RunLoopState::mode(ModeKey key) {
    for (RunLoopMode& each : modes)
        if (each.key == key)
            return each;
    return modes.emplace_back(key);
}

bool RunLoopState::isCommon(ModeKey key) const noexcept { return std::ranges::find(common, key) != common.end(); }

RunLoopState::Served RunLoopState::served(ModeKey key) {
    if (isCommon(key))
        return {{&mode(key), &mode(commonModes)}, 2};
    return {{&mode(key), nullptr}, 1};
}

void RunLoopState::collect() {
    if (portsHaveMessages.exchange(false))
        for (RunLoopMode& each : modes)
            each.portsMayHaveMessages = true;
    {
        const std::lock_guard guard(mutex);
        collected_.swap(inbox);
    }
    for (RunLoopItem& item : collected_) {
        item.sequence = itemsCollected_++;
        mode(item.mode).performs.push_back(std::move(item));
    }
    collected_.clear();
}

bool RunLoopState::hasSources(ModeKey key) {
    const Served modesHere = served(key);
    for (RunLoopMode* const each : modesHere)
        each->dropInvalidPorts();
    return std::ranges::any_of(modesHere, [](RunLoopMode* each) { return each->hasSources(); });
}

std::optional<NSTimeInterval> RunLoopState::nextDeadline(ModeKey key) {
    std::optional<NSTimeInterval> first;
    for (RunLoopMode* const each : served(key))
        if (!each->timers.empty() && (!first || each->timers.begin()->first.date < *first))
            first = each->timers.begin()->first.date;
    return first;
}

void RunLoopState::signalWhatIsLeft(ModeKey key) {
    for (RunLoopMode* const each : served(key))
        if (!each->performs.empty() || each->portsMayHaveMessages)
            return wakeup.signal();
}

// Whatever is performed may run the loop again, in any mode, so nothing is kept from one operation to the next but the
// modes themselves, which stay where they are.
void RunLoopState::serve(ModeKey key, NSRunLoop& loop, Pass& pass) {
    struct Leave {
        RunLoopState& state;
        ModeKey key;
        ~Leave() { state.signalWhatIsLeft(key); }
    } const leave{*this, key};
    wakeup.clear();
    collect();
    const Served modesHere = served(key);
    fireTimers(modesHere, pass);
    // Neither shall starve the other where the budget is small.
    portsFirst_ = !portsFirst_;
    if (portsFirst_)
        servePorts(modesHere, loop, pass);
    performItems(modesHere, pass);
    if (!portsFirst_)
        servePorts(modesHere, loop, pass);
}

namespace {

/// Of the modes that have one, the mode with the earliest first element.
template <class Container, class Key>
RunLoopMode* earliest(const RunLoopState::Served& modesHere, Container RunLoopMode::*container, Key key) {
    RunLoopMode* first = nullptr;
    for (RunLoopMode* const each : modesHere)
        if (!(each->*container).empty() &&
            (!first || key(*(each->*container).begin()) < key(*(first->*container).begin())))
            first = each;
    return first;
}

}  // namespace

void RunLoopState::fireTimers(const Served& modesHere, Pass& pass) {
    const auto date = [](const auto& entry) { return entry.first; };
    RunLoopMode* mode = earliest(modesHere, &RunLoopMode::timers, date);
    if (!mode)
        return;
    const NSTimeInterval now = Clock::current().now();
    // One that sets itself another date in the past comes again in the next pass.
    std::size_t due = 0;
    for (RunLoopMode* const each : modesHere)
        due += static_cast<std::size_t>(std::distance(
            each->timers.begin(), each->timers.upper_bound({now, std::numeric_limits<std::uint64_t>::max()})));
    for (; due > 0 && mode && mode->timers.begin()->first.date <= now; --due) {
        if (isOver(pass))
            return wakeup.signal();
        const Ref<NSTimer> timer = mode->timers.begin()->second;
        ++pass.timers;
        // The next date first: what the timer does may change that.
        timer->comeAgainAfter(now);
        timer->fire();
        mode = earliest(modesHere, &RunLoopMode::timers, date);
    }
}

void RunLoopState::offerTheRest(const Served& modesHere) {
    if (!wakeup.hasDescriptor())
        return;
    std::size_t operations = 0;
    for (RunLoopMode* const each : modesHere) {
        operations += each->performs.size();
        if (each->portsMayHaveMessages || each->portsAreServed)
            for (const Ref<NSPort>& port : each->ports)
                operations += port->numberOfMessages();
    }
    if (operations > 1)
        wakeup.signal();
}

void RunLoopState::performItems(const Served& modesHere, Pass& pass) {
    const auto sequence = [](const RunLoopItem& item) { return item.sequence; };
    const std::uint64_t end = itemsCollected_;
    while (!isOver(pass)) {
        RunLoopMode* const mode = earliest(modesHere, &RunLoopMode::performs, sequence);
        if (!mode || mode->performs.front().sequence >= end)
            return;
        offerTheRest(modesHere);
        RunLoopItem item = std::move(mode->performs.front());
        mode->performs.pop_front();
        ++pass.inputs;
        item.perform();
    }
}

void RunLoopState::servePort(const Served& modesHere, RunLoopMode& mode, NSPort& port, NSRunLoop& loop, Pass& pass) {
    struct Leave {
        RunLoopMode& mode;
        NSPort& port;
        NSPort::Schedule schedule;
        int exceptions = std::uncaught_exceptions();
        ~Leave() {
            const bool leavesMore = port.passEnds(schedule);
            // After an exception the ports that come next were not looked at.
            mode.portsMayHaveMessages |= leavesMore || std::uncaught_exceptions() > exceptions;
        }
    } const leave{mode, port, {&loop, mode.key}};
    for (NSUInteger queued = port.numberOfMessages(); queued > 0 && !isOver(pass); --queued) {
        offerTheRest(modesHere);
        ++pass.inputs;
        if (!port.serveNext(leave.schedule)) {
            --pass.inputs;
            return;
        }
    }
}

namespace {

/// While a port is served, what a run inside of that finds is what is left there.
class PortsAreServed {
public:
    explicit PortsAreServed(RunLoopMode& mode) noexcept : mode_(mode) { ++mode.portsAreServed; }
    ~PortsAreServed() { --mode_.portsAreServed; }
    PortsAreServed(const PortsAreServed&) = delete;
    PortsAreServed& operator=(const PortsAreServed&) = delete;

private:
    RunLoopMode& mode_;
};

}  // namespace

void RunLoopState::servePorts(const Served& modesHere, NSRunLoop& loop, Pass& pass) {
    for (RunLoopMode* const mode : modesHere) {
        if (!mode->portsMayHaveMessages && !mode->portsAreServed)
            continue;
        mode->dropInvalidPorts();
        mode->portsMayHaveMessages = false;
        const PortsAreServed served(*mode);
        for (std::size_t i = 0; i < mode->ports.size(); ++i) {
            const Ref<NSPort> port = mode->ports[i];
            servePort(modesHere, *mode, port, loop, pass);
        }
    }
}

}  // namespace tovi::detail
