#include <ToviFoundationKit/Foundation/NSLock.h>

#include <ToviFoundationKit/Runtime/Additions.h>

namespace tovi {

TOVI_DEFINE_CLASS(NSLock, NSObject)

Ref<NSLock> NSLock::init() { return adopt(*new NSLock); }

bool NSLock::tryLock() noexcept {
    int expected = free;
    return state_.compare_exchange_strong(expected, taken, std::memory_order_acquire);
}

// Who had to wait leaves the lock marked as awaited, since others may be waiting still; at worst one wake-up is wasted.
void NSLock::lock() noexcept {
    if (tryLock())
        return;
    while (state_.exchange(awaited, std::memory_order_acquire) != free)
        state_.wait(awaited, std::memory_order_relaxed);
}

void NSLock::unlock() noexcept {
    if (state_.exchange(free, std::memory_order_release) == awaited)
        state_.notify_one();
}

namespace {

const Additions<NSLock> additions{
    instance<&NSLock::lock>("lock"),
    instance<&NSLock::tryLock>("tryLock"),
    instance<&NSLock::unlock>("unlock"),
};

}  // namespace

}  // namespace tovi
