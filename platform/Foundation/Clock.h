#pragma once

#include <atomic>

#include <ToviFoundationKit/Runtime/Export.h>
#include <ToviFoundationKit/Runtime/NSTypes.h>

namespace tovi {

/// The one place that is asked for the time. The system's real-time clock answers, until a host puts another in its
/// place.
class TOVI_EXPORT Clock {
public:
    virtual ~Clock();
    /// Seconds since 1 January 2001, 00:00 GMT. Called from any thread.
    virtual NSTimeInterval now() const noexcept = 0;

    static const Clock& current() noexcept;
    /// The clock must live as long as it is used; null stands for the system's. Answers the one used before.
    static const Clock* setCurrent(const Clock* clock) noexcept;
};

/// A clock that stands until it is set.
class TOVI_EXPORT FixedClock final : public Clock {
public:
    explicit FixedClock(NSTimeInterval time) noexcept : time_(time) {}
    NSTimeInterval now() const noexcept override { return time_; }
    void set(NSTimeInterval time) noexcept { time_ = time; }

private:
    std::atomic<NSTimeInterval> time_;
};

/// Puts another clock in place for as long as it lives.
class TOVI_EXPORT ScopedClock {
public:
    explicit ScopedClock(const Clock& clock) noexcept : previous_(Clock::setCurrent(&clock)) {}
    ~ScopedClock() { Clock::setCurrent(previous_); }
    ScopedClock(const ScopedClock&) = delete;
    ScopedClock& operator=(const ScopedClock&) = delete;

private:
    const Clock* previous_;
};

}  // namespace tovi
