#pragma once

#include <chrono>
#include <cstdint>
#include <string>

namespace digest {

/// A line on the terminal that tells how far a job is; it is wiped at its end. It is silent unless both
/// standard output and standard error are terminals.
class ProgressBar {
public:
    explicit ProgressBar(std::u16string label);
    ~ProgressBar();
    ProgressBar(const ProgressBar&) = delete;
    ProgressBar& operator=(const ProgressBar&) = delete;

    void wipe();
    /// `total` is 0 where it is not known. May be called often: it draws ten times a second at most.
    void show(std::uint64_t done, std::uint64_t total);

private:
    using Clock = std::chrono::steady_clock;

    void draw(std::uint64_t done, std::uint64_t total) const;

    const std::u16string label_;
    int columns_ = 0;  // 0: silent
    bool isDrawn_ = false;
    Clock::time_point nextTime_;
};

}  // namespace digest
