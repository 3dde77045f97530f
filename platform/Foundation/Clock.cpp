#include <ToviFoundationKit/Foundation/Clock.h>

#include <chrono>

#include <ToviFoundationKit/Foundation/NSDate.h>

namespace tovi {

namespace {

class SystemClock final : public Clock {
public:
    NSTimeInterval now() const noexcept override {
        const auto since1970 = std::chrono::system_clock::now().time_since_epoch();
        return std::chrono::duration<double>(since1970).count() - NSTimeIntervalSince1970;
    }
};

// Never destroyed: the time is asked for until the very end of the process.
const Clock& systemClock() {
    static const SystemClock& clock = *new SystemClock;
    return clock;
}

constinit std::atomic<const Clock*> replacement{nullptr};

}  // namespace

Clock::~Clock() = default;

const Clock& Clock::current() noexcept {
    const Clock* const clock = replacement.load(std::memory_order_acquire);
    return clock ? *clock : systemClock();
}

const Clock* Clock::setCurrent(const Clock* clock) noexcept {
    return replacement.exchange(clock, std::memory_order_acq_rel);
}

}  // namespace tovi
