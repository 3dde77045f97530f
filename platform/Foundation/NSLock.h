#pragma once

#include <atomic>

#include <ToviFoundationKit/Runtime/Class.h>

namespace tovi {

/// A lock that one thread takes and any thread, not only that one, may give back. Not recursive: taking it twice waits
/// for somebody else to unlock. It meets the standard library's Lockable requirements, for `std::lock_guard` and its
/// kin.
class TOVI_EXPORT NSLock final : public NSObject {
    TOVI_DECLARE_CLASS(NSLock)

public:
    static Ref<NSLock> init();

    void lock() noexcept;
    [[nodiscard]] bool tryLock() noexcept;  ///< takes the lock unless it is taken
    [[nodiscard]] bool try_lock() noexcept { return tryLock(); }
    /// Wakes one of those who wait. Does nothing when the lock is not taken.
    void unlock() noexcept;

private:
    NSLock() noexcept = default;

    enum State : int { free, taken, awaited };
    std::atomic<int> state_{free};
};

}  // namespace tovi
