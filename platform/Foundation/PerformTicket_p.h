#pragma once

#include <atomic>

#include <ToviFoundationKit/Runtime/NSObject.h>

namespace tovi::detail {

/// What a thread waits for while another one performs. Both hold it, so neither can take it from under the other.
class PerformTicket final : public NSObject {
public:
    enum Outcome : int { pending, performed, dropped };

    static Ref<PerformTicket> ticket() { return adopt(*new PerformTicket); }

    /// The first outcome counts.
    void finish(Outcome outcome) noexcept {
        int expected = pending;
        if (outcome_.compare_exchange_strong(expected, outcome, std::memory_order_release))
            outcome_.notify_one();
    }
    Outcome wait() const noexcept {
        outcome_.wait(pending, std::memory_order_acquire);
        return static_cast<Outcome>(outcome_.load(std::memory_order_acquire));
    }

private:
    PerformTicket() noexcept = default;

    std::atomic<int> outcome_{pending};
};

}  // namespace tovi::detail
