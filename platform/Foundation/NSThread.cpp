#include <ToviFoundationKit/Foundation/NSThread.h>

#include <pthread.h>
#include <unistd.h>

#include <utility>

#include <ToviFoundationKit/Runtime/Additions.h>

namespace tovi {

TOVI_DEFINE_CLASS(NSThread, NSObject)

struct NSThread::Current {
    // A plain pointer, which can be asked for even while the thread's other variables are being destroyed.
    static thread_local constinit NSThread* thread;

    ~Current() {
        // What the dictionary held may ask for it once more as it goes.
        while (thread->dictionary_ && thread->dictionary_->count())
            thread->dictionary_->removeAllObjects();
        std::exchange(thread, nullptr)->release();
    }

    static NSThread& begin() {
        thread = adopt(*new NSThread).leak();
        static thread_local const Current current;
        (void)&current;
        return *thread;
    }
};

thread_local constinit NSThread* NSThread::Current::thread = nullptr;

Ref<NSThread> NSThread::currentThread() { return Current::thread ? *Current::thread : Current::begin(); }

namespace {

// Both numbers are asked of the kernel, so the answer is kept, at a fixed place in each thread's memory. The thread
// that forks is the main one of the new process.
enum class IsMain : unsigned char { Unknown, No, Yes };
[[gnu::tls_model("initial-exec")]] thread_local constinit IsMain isMain = IsMain::Unknown;

IsMain askForMain() noexcept {
    [[maybe_unused]] static const int watched = pthread_atfork(nullptr, nullptr, [] { isMain = IsMain::Yes; });
    return gettid() == getpid() ? IsMain::Yes : IsMain::No;
}

}  // namespace

bool NSThread::isMainThread() noexcept {
    if (isMain == IsMain::Unknown) [[unlikely]]
        isMain = askForMain();
    return isMain == IsMain::Yes;
}

Ref<NSMutableDictionary> NSThread::threadDictionary() {
    if (!dictionary_)
        dictionary_ = NSMutableDictionary::dictionary();
    return dictionary_.ref();
}

namespace {

const Additions<NSThread> additions{
    classLevel<&NSThread::currentThread>("currentThread"),
    classLevel<&NSThread::isMainThread>("isMainThread"),
    instance<&NSThread::threadDictionary>("threadDictionary"),
};

}  // namespace

}  // namespace tovi
