#pragma once

#include <cstdint>

#include <ToviFoundationKit/Foundation/NSLock.h>
#include <ToviFoundationKit/Foundation/NSNotification.h>
#include <ToviFoundationKit/Foundation/NSPortMessage.h>

namespace tovi {

class NSThread;

/// What one thread asks of another. It is made with `malloc` by the sender, and `free`d by the receiver; the pointers,
/// but for the lock's, own a reference each. It goes through a port as its address: eight bytes in the machine's order,
/// the only component of the message.
struct InterThreadMessage {
    enum Kind : std::uint32_t { PostNotification = 1, Perform, PerformWithObject, PerformWithTwo, PerformWithThree };

    std::uint32_t kind;
    union {
        NSNotification* notification = nullptr;
        Selector selector;
    };
    NSObject* target;
    NSObject* object1;
    NSObject* object2;
    NSObject* object3;
    NSLock* waitLock;  ///< locked until the receiver has performed; the sender's, who waits for it
};

/// Serves the ports of the threads that are prepared for messages (NSThread-NSNotificationCenter-QVLAdditions.h): the
/// class itself is the delegate of every port, and watches for threads that end. It has no instances.
class TOVI_EXPORT InterThreadManager final : public NSObject {
    TOVI_DECLARE_CLASS(InterThreadManager)

public:
    /// The key under which a waiting sender leaves its lock in the dictionary of the thread that it waits for. It stays
    /// there until another one takes its place or the thread ends, which unlocks it.
    static constexpr std::u16string_view waitLockKey = u"InterThreadMessage-waitUntilDoneLock";

    /// Makes the table of ports; the first use does, and a second time nothing happens.
    static void initialize();
    /// Takes the port of the thread, the notification's object, out of the table, and unlocks the lock in its
    /// dictionary. Nothing happens when the thread has no run loop. Aborts before `initialize`.
    static void threadDied(NSNotification& notification);
    /// Does what the message asks for, on this thread. Aborts when there is not exactly one component, when that is no
    /// data of eight bytes, and when the message is of no known kind. An exception of the operation is not caught; the
    /// lock stays locked.
    static void handlePortMessage(NSPortMessage& message);

private:
    InterThreadManager() = delete;
};

}  // namespace tovi
