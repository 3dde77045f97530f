#pragma once

#include <ToviFoundationKit/Foundation/NSMutableDictionary.h>

namespace tovi {

/// A thread of the process. Every thread, however it was started, has its object from the first time it asks for it.
class TOVI_EXPORT NSThread final : public NSObject {
    TOVI_DECLARE_CLASS(NSThread)

public:
    static Ref<NSThread> currentThread();
    /// Whether the calling thread is the process's main thread, as the operating system sees it.
    static bool isMainThread() noexcept;

    /// A dictionary for whatever belongs to this thread; only this thread may use it. It is emptied when the thread
    /// ends.
    Ref<NSMutableDictionary> threadDictionary();

private:
    NSThread() noexcept = default;

    struct Current;

    RefPtr<NSMutableDictionary> dictionary_;
};

}  // namespace tovi
