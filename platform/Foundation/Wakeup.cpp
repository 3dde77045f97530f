#include <ToviFoundationKit/Foundation/Wakeup_p.h>

#include <fcntl.h>
#include <linux/futex.h>
#include <sched.h>
#include <sys/eventfd.h>
#include <sys/syscall.h>
#include <unistd.h>

#include <algorithm>
#include <cerrno>
#include <cmath>
#include <cstring>
#include <ctime>

#include <ToviFoundationKit/Runtime/NSException.h>

namespace tovi::detail {

namespace {

long futex(std::atomic<std::uint32_t>& word, int operation, std::uint32_t value, const timespec* timeout) noexcept {
    static_assert(sizeof(word) == sizeof(std::uint32_t));
    return syscall(SYS_futex, &word, operation | FUTEX_PRIVATE_FLAG, value, timeout, nullptr, 0);
}

// A thread that answers at once lets the other one run in the meantime, which saves both of them going to sleep.
constexpr int turnsBeforeSleep = 3;

}  // namespace

Wakeup::~Wakeup() {
    if (const int descriptor = descriptor_.load(); descriptor >= 0)
        close(descriptor);
}

void Wakeup::writeDescriptor() const noexcept {
    const std::uint64_t one = 1;
    if (const int descriptor = descriptor_.load(); descriptor >= 0)
        while (write(descriptor, &one, sizeof one) < 0 && errno == EINTR) {
        }
}

void Wakeup::signal() noexcept {
    const std::uint32_t before = state_.exchange(signalled);
    if (before == asleep)
        futex(state_, FUTEX_WAKE, 1, nullptr);
    if (before != signalled)
        writeDescriptor();
}

// The descriptor first: a signal in between finds the state as it was and writes nothing, but what it was for is seen
// by who clears. And always: a signal that was cleared in the middle writes afterwards.
void Wakeup::clear() noexcept {
    std::uint64_t count;
    if (const int descriptor = descriptor_.load(); descriptor >= 0)
        while (read(descriptor, &count, sizeof count) < 0 && errno == EINTR) {
        }
    if (state_.load(std::memory_order_relaxed) != idle)
        state_.exchange(idle);
}

void Wakeup::wait(NSTimeInterval seconds) noexcept {
    for (int turn = 0; turn < turnsBeforeSleep; ++turn) {
        if (state_.load() == signalled || seconds <= 0)
            return;
        sched_yield();
    }
    std::uint32_t expected = idle;
    if (!state_.compare_exchange_strong(expected, asleep))
        return;
    if (seconds < 1e9) {
        const double whole = std::floor(seconds);
        const timespec timeout{static_cast<time_t>(whole), static_cast<long>((seconds - whole) * 1e9)};
        futex(state_, FUTEX_WAIT, asleep, &timeout);
    } else {
        futex(state_, FUTEX_WAIT, asleep, nullptr);
    }
    expected = asleep;
    state_.compare_exchange_strong(expected, idle);
}

int Wakeup::descriptor() {
    if (const int descriptor = descriptor_.load(); descriptor >= 0)
        return descriptor;
    const int made = eventfd(0, EFD_NONBLOCK | EFD_CLOEXEC);
    if (made < 0)
        NSException::raise(NSGenericException, u"*** -[NSRunLoop fileDescriptor]: %s", std::strerror(errno));
    descriptor_.store(made);
    if (state_.load() == signalled)
        writeDescriptor();
    return made;
}

void Wakeup::renewDescriptor() noexcept {
    const int descriptor = descriptor_.load();
    const int made = descriptor < 0 ? -1 : eventfd(0, EFD_NONBLOCK | EFD_CLOEXEC);
    if (made < 0)
        return;
    dup3(made, descriptor, O_CLOEXEC);
    close(made);
    if (state_.load() == signalled)
        writeDescriptor();
}

}  // namespace tovi::detail
