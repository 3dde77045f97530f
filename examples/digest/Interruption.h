#pragma once

#include <atomic>
#include <csignal>
#include <functional>
#include <thread>

namespace digest {

/// While it lives, the first Ctrl-C, or other polite request to end, calls a function on a thread of its own instead of
/// ending the process; the second one ends it as usual. Make it before other threads, so that they leave the signals to
/// it.
class Interruption {
public:
    explicit Interruption(std::function<void()> told);
    ~Interruption();
    Interruption(const Interruption&) = delete;
    Interruption& operator=(const Interruption&) = delete;

    /// Which signal came, 0 for none.
    int signal() const noexcept { return signal_; }

    /// Ends the process as the signal does by itself, so that whoever started it sees why.
    [[noreturn]] static void endBy(int signal) noexcept;

private:
    void wait(const std::function<void()>& told);

    sigset_t signals_;
    sigset_t former_;
    std::atomic<int> signal_{0};
    std::thread thread_;
};

}  // namespace digest
