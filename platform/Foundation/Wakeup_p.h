#pragma once

#include <atomic>
#include <cstdint>

#include <ToviFoundationKit/Runtime/NSTypes.h>

namespace tovi::detail {

/// How a thread sleeps until another one has something for it. The sleeper clears, looks at what there is, and waits;
/// the others put something there and signal. A signal is kept until it is cleared, and costs a system call only when
/// the thread sleeps, or when a host's loop sleeps in its stead, on the descriptor.
class Wakeup {
public:
    Wakeup() noexcept = default;
    ~Wakeup();
    Wakeup(const Wakeup&) = delete;
    Wakeup& operator=(const Wakeup&) = delete;

    void signal() noexcept;  ///< on any thread
    void clear() noexcept;
    /// Returns when signalled, when the time is over, and sometimes for no reason. Infinity: no end.
    void wait(NSTimeInterval seconds) noexcept;
    /// Readable while signalled. Made when first asked for; raises NSGenericException when there is none to be had.
    int descriptor();
    bool hasDescriptor() const noexcept { return descriptor_.load(std::memory_order_relaxed) >= 0; }
    /// In a forked child: takes a descriptor of its own, under the same number.
    void renewDescriptor() noexcept;

private:
    enum State : std::uint32_t { idle, asleep, signalled };

    void writeDescriptor() const noexcept;

    std::atomic<std::uint32_t> state_{idle};
    std::atomic<int> descriptor_{-1};
};

}  // namespace tovi::detail
