#pragma once

#include <ToviFoundationKit/Foundation/NSDate.h>
#include <ToviFoundationKit/Foundation/NSNotificationCenter.h>
#include <ToviFoundationKit/Foundation/NSThread.h>

namespace tovi {
inline namespace InterThreadMessaging {

// Messages between threads. A thread that wants to get some prepares itself once and runs its run loop in the default
// mode, or lets a host's loop serve it; any thread may send. What one thread sends another the same way, of the two
// that there are, is performed in its order.

/// Raised when a message could not be sent: its thread's port had no room before the date, or was closed meanwhile.
inline constexpr std::u16string_view NSPortTimeoutException = u"NSPortTimeoutException";

/// Lets the current thread get messages, by a port in its run loop, in the default mode only. A second call does
/// nothing. Class-level on NSThread.
TOVI_EXPORT void prepareForInterThreadMessages();
/// Ends that. What is still queued is let go of unperformed; senders that wait for it return. Ends by itself when the
/// thread does. Class-level on NSThread.
TOVI_EXPORT void disableInterThreadMessages();

// Performing. When the thread is the current one, all of these send the message at once, whatever the other arguments;
// results are dropped. Otherwise they hand it over and return, or, with waitUntilDone, return when it was performed.
// The target and the objects, which may be nil, are held until then, and let go of on the other thread.
//
// There are two ways. Those with a before-date put a message into the thread's port, which holds 1024: the thread must
// be prepared, else they raise NSInvalidArgumentException, "Thread %@ is not prepared to receive inter-thread messages.
//  You must invoke +prepareForInterThreadMessages first."; and there must be room before the date, else they raise
// NSPortTimeoutException, "Can't send message to thread %@: timeout before date %@". With no date (nil) they wait for
// room without limit. A date in the past does no harm while there is room. Before any thread of the process has ever
// been prepared, sending this way aborts.
//
// Those without a before-date leave it to performSelector:onThread:withObject:waitUntilDone: (NSThread.h), for which no
// thread need be prepared; forms with more than one object as an NSInvocation. On a platform whose
// NSFoundationVersionNumber, rounded down, is not above 567, they go the first way with no date.
//
// An exception of the performed operation leaves what runs the run loop there. On the first way the sender that waits
// for it stays blocked until that thread ends. When a thread ends, only the one that was the last to send and wait, or
// to try to, the first way, is set free; its operation may not have been performed. Two threads that wait for each
// other wait for good.
//
// A nil selector or thread aborts on the first way, when it is not the current thread, and raises
// NSInvalidArgumentException on the second.

/// Sends the message at once, on this thread, by an invocation; the answer is dropped. Raises
/// NSInvalidArgumentException when the operation does not take three arguments.
TOVI_EXPORT void performSelector_withObject_withObject_withObject(NSObject& receiver, Selector selector,
                                                                  NSObject* object1, NSObject* object2,
                                                                  NSObject* object3);

TOVI_EXPORT void performSelector_inThread_waitUntilDone(NSObject& receiver, Selector selector, NSThread* thread,
                                                        bool wait);
TOVI_EXPORT void performSelector_inThread_beforeDate_waitUntilDone(NSObject& receiver, Selector selector,
                                                                   NSThread* thread, const NSDate* beforeDate,
                                                                   bool wait);
TOVI_EXPORT void performSelector_withObject_inThread_waitUntilDone(NSObject& receiver, Selector selector,
                                                                   NSObject* object, NSThread* thread, bool wait);
TOVI_EXPORT void performSelector_withObject_inThread_beforeDate_waitUntilDone(NSObject& receiver, Selector selector,
                                                                              NSObject* object, NSThread* thread,
                                                                              const NSDate* beforeDate, bool wait);
TOVI_EXPORT void performSelector_withObject_withObject_inThread_waitUntilDone(NSObject& receiver, Selector selector,
                                                                              NSObject* object1, NSObject* object2,
                                                                              NSThread* thread, bool wait);
TOVI_EXPORT void performSelector_withObject_withObject_inThread_beforeDate_waitUntilDone(
    NSObject& receiver, Selector selector, NSObject* object1, NSObject* object2, NSThread* thread,
    const NSDate* beforeDate, bool wait);
TOVI_EXPORT void performSelector_withObject_withObject_withObject_inThread_waitUntilDone(
    NSObject& receiver, Selector selector, NSObject* object1, NSObject* object2, NSObject* object3, NSThread* thread,
    bool wait);
TOVI_EXPORT void performSelector_withObject_withObject_withObject_inThread_beforeDate_waitUntilDone(
    NSObject& receiver, Selector selector, NSObject* object1, NSObject* object2, NSObject* object3, NSThread* thread,
    const NSDate* beforeDate, bool wait);

// The forms with a before-date also take a receiver that may be nil; then nothing happens.
template <class T, class... A>
void performSelector_inThread_beforeDate_waitUntilDone(const RefPtr<T>& receiver, const A&... arguments) {
    if (receiver)
        performSelector_inThread_beforeDate_waitUntilDone(*receiver, arguments...);
}
template <class T, class... A>
void performSelector_withObject_inThread_beforeDate_waitUntilDone(const RefPtr<T>& receiver, const A&... arguments) {
    if (receiver)
        performSelector_withObject_inThread_beforeDate_waitUntilDone(*receiver, arguments...);
}
template <class T, class... A>
void performSelector_withObject_withObject_inThread_beforeDate_waitUntilDone(const RefPtr<T>& receiver,
                                                                             const A&... arguments) {
    if (receiver)
        performSelector_withObject_withObject_inThread_beforeDate_waitUntilDone(*receiver, arguments...);
}
template <class T, class... A>
void performSelector_withObject_withObject_withObject_inThread_beforeDate_waitUntilDone(const RefPtr<T>& receiver,
                                                                                        const A&... arguments) {
    if (receiver)
        performSelector_withObject_withObject_withObject_inThread_beforeDate_waitUntilDone(*receiver, arguments...);
}

// Posting. On the current thread, the receiving centre posts at once. Otherwise the notification goes to the thread's
// port as described above, and is posted there by the *default* centre, whichever centre was asked; nobody waits. A nil
// thread stands for the current one's port: the notification is posted from its run loop, later. A nil notification
// aborts.

TOVI_EXPORT void postNotification_inThread(NSNotificationCenter& receiver, NSNotification* notification,
                                           NSThread* thread);
TOVI_EXPORT void postNotification_inThread_beforeDate(NSNotificationCenter& receiver, NSNotification* notification,
                                                      NSThread* thread, const NSDate* beforeDate);
TOVI_EXPORT void postNotificationName_object_inThread(NSNotificationCenter& receiver, const NSString& name,
                                                      NSObject* object, NSThread* thread);
TOVI_EXPORT void postNotificationName_object_inThread_beforeDate(NSNotificationCenter& receiver, const NSString& name,
                                                                 NSObject* object, NSThread* thread,
                                                                 const NSDate* beforeDate);
TOVI_EXPORT void postNotificationName_object_userInfo_inThread(NSNotificationCenter& receiver, const NSString& name,
                                                               NSObject* object, const NSDictionary* userInfo,
                                                               NSThread* thread);
TOVI_EXPORT void postNotificationName_object_userInfo_inThread_beforeDate(NSNotificationCenter& receiver,
                                                                          const NSString& name, NSObject* object,
                                                                          const NSDictionary* userInfo,
                                                                          NSThread* thread, const NSDate* beforeDate);

}  // namespace InterThreadMessaging
}  // namespace tovi
