#pragma once

#include <cstdlib>
#include <memory>

#include <ToviFoundationKit/Extensions/InterThreadManager.h>
#include <ToviFoundationKit/Foundation/NSThread.h>
#include <ToviFoundationKit/Runtime/Assertion.h>

namespace tovi::detail {

/// Where the assertions on messages between threads are reported to come from.
inline constexpr const char* interThreadUnit = "Extensions.subproj/NSThread-NSNotificationCenter-QVLAdditions";

inline void interThreadAssert(bool holds, const char* function, int line, const char* expression) {
    if (!holds) [[unlikely]]
        assertionFailed(function, interThreadUnit, line, expression);
}

/// Lets go of what a message holds, in the order target, first, second and third object, and of itself.
struct InterThreadMessageDeleter {
    void operator()(InterThreadMessage* message) const noexcept;
};
using OwnedInterThreadMessage = std::unique_ptr<InterThreadMessage, InterThreadMessageDeleter>;

/// An empty message of that kind.
OwnedInterThreadMessage interThreadMessage(InterThreadMessage::Kind kind);

/// Gives the current thread its port, unless it has one.
void createMessagePortForThread();
/// Takes the thread's port away. Senders that wait for what is still queued are set free, or left to the thread's end.
enum class Waiting { SetFree, Left };
void removeMessagePortForThread(NSThread& thread, NSRunLoop& runLoop, Waiting waiting);

/// Sends the message to the thread's port (nil: the current thread's) before the date (nil: whenever there is room),
/// and waits when it has a lock. The caller keeps the lock.
void postMessage(OwnedInterThreadMessage message, NSThread* thread, const NSDate* beforeDate);

}  // namespace tovi::detail
