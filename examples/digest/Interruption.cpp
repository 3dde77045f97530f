#include <Interruption.h>

#include <pthread.h>

#include <cstdlib>
#include <initializer_list>

namespace digest {

namespace {

constexpr int endOfWaiting = SIGUSR1;

sigset_t signalSet(std::initializer_list<int> signals) {
    sigset_t set;
    sigemptyset(&set);
    for (const int signal : signals)
        sigaddset(&set, signal);
    return set;
}

}  // namespace

Interruption::Interruption(std::function<void()> told)
    : signals_(signalSet({SIGINT, SIGTERM, SIGHUP, endOfWaiting})), former_() {
    pthread_sigmask(SIG_BLOCK, &signals_, &former_);
    thread_ = std::thread([this, told = std::move(told)] { wait(told); });
}

Interruption::~Interruption() {
    pthread_kill(thread_.native_handle(), endOfWaiting);
    thread_.join();
    pthread_sigmask(SIG_SETMASK, &former_, nullptr);
}

void Interruption::wait(const std::function<void()>& told) {
    for (int signal = 0; sigwait(&signals_, &signal) == 0 && signal != endOfWaiting;) {
        if (signal_.exchange(signal) != 0)
            endBy(signal);
        told();
    }
}

void Interruption::endBy(int signal) noexcept {
    std::signal(signal, SIG_DFL);
    const sigset_t set = signalSet({signal});
    pthread_sigmask(SIG_UNBLOCK, &set, nullptr);
    std::raise(signal);
    std::_Exit(128 + signal);
}

}  // namespace digest
