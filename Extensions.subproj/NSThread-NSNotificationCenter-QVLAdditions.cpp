#include <ToviFoundationKit/Extensions/NSThread-NSNotificationCenter-QVLAdditions.h>

#include <cmath>

#include <ToviFoundationKit/Extensions/InterThreadMessage_p.h>
#include <ToviFoundationKit/Foundation/NSFoundationVersion.h>
#include <ToviFoundationKit/Foundation/NSRunLoop.h>
#include <ToviFoundationKit/Runtime/Additions.h>
#include <ToviFoundationKit/Runtime/Message.h>
#include <ToviFoundationKit/Runtime/NSInvocation.h>

namespace tovi {
inline namespace InterThreadMessaging {

void prepareForInterThreadMessages() {
    InterThreadManager::initialize();
    detail::createMessagePortForThread();
}

void disableInterThreadMessages() {
    InterThreadManager::initialize();
    detail::removeMessagePortForThread(NSThread::currentThread(), NSRunLoop::currentRunLoop(),
                                       detail::Waiting::SetFree);
}

namespace {

using detail::interThreadAssert;

bool isCurrent(const NSThread* thread) { return thread == NSThread::currentThread().get(); }

bool platformPerforms() { return std::floor(NSFoundationVersionNumber) > NSFoundationVersionNumber10_4; }

/// An object argument, as it is given and as a message owns it.
NSObject* retained(NSObject* object) { return id(object).leak(); }

void performSelector(InterThreadMessage::Kind kind, Selector selector, NSObject& target,
                     const std::array<NSObject*, 3>& objects, NSThread* thread, const NSDate* beforeDate, bool wait) {
    interThreadAssert(static_cast<bool>(selector), "performSelector", __LINE__, "NULL != selector");
    interThreadAssert(thread != nullptr, "performSelector", __LINE__, "NULL != thread");
    auto message = detail::interThreadMessage(kind);
    message->selector = selector;
    message->target = retained(&target);
    message->object1 = retained(objects[0]);
    message->object2 = retained(objects[1]);
    message->object3 = retained(objects[2]);
    const RefPtr<NSLock> waitLock = wait ? RefPtr<NSLock>(NSLock::init()) : nullptr;
    message->waitLock = waitLock.get();
    detail::postMessage(std::move(message), thread, beforeDate);
}

template <std::same_as<NSObject*>... A>
Ref<NSInvocation> invocation(NSObject& receiver, Selector selector, A... objects) {
    const auto made = NSInvocation::invocationWithMethodSignature(
        NSMethodSignature::forMethod(detail::methodFor(receiver, selector)));
    made->setSelector(selector);
    made->setTarget(&receiver);
    NSUInteger index = 2;
    (made->setArgument_atIndex(objects, index++), ...);
    return made;
}

void perform(NSInvocation& invocation, NSThread* thread, bool wait) {
    performSelector_onThread_withObject_waitUntilDone(invocation, "invoke"_sel, thread, nullptr, wait);
}

}  // namespace

void performSelector_withObject_withObject_withObject(NSObject& receiver, Selector selector, NSObject* object1,
                                                      NSObject* object2, NSObject* object3) {
    invocation(receiver, selector, object1, object2, object3)->invoke();
}

void performSelector_inThread_waitUntilDone(NSObject& receiver, Selector selector, NSThread* thread, bool wait) {
    if (!isCurrent(thread) && platformPerforms())
        performSelector_onThread_withObject_waitUntilDone(receiver, selector, thread, nullptr, wait);
    else
        performSelector_inThread_beforeDate_waitUntilDone(receiver, selector, thread, nullptr, wait);
}

void performSelector_inThread_beforeDate_waitUntilDone(NSObject& receiver, Selector selector, NSThread* thread,
                                                       const NSDate* beforeDate, bool wait) {
    if (isCurrent(thread))
        receiver.performSelector(selector);
    else
        performSelector(InterThreadMessage::Perform, selector, receiver, {}, thread, beforeDate, wait);
}

void performSelector_withObject_inThread_waitUntilDone(NSObject& receiver, Selector selector, NSObject* object,
                                                       NSThread* thread, bool wait) {
    if (!isCurrent(thread) && platformPerforms())
        performSelector_onThread_withObject_waitUntilDone(receiver, selector, thread, object, wait);
    else
        performSelector_withObject_inThread_beforeDate_waitUntilDone(receiver, selector, object, thread, nullptr, wait);
}

void performSelector_withObject_inThread_beforeDate_waitUntilDone(NSObject& receiver, Selector selector,
                                                                  NSObject* object, NSThread* thread,
                                                                  const NSDate* beforeDate, bool wait) {
    if (isCurrent(thread))
        receiver.performSelector_withObject(selector, object);
    else
        performSelector(InterThreadMessage::PerformWithObject, selector, receiver, {object}, thread, beforeDate, wait);
}

void performSelector_withObject_withObject_inThread_waitUntilDone(NSObject& receiver, Selector selector,
                                                                  NSObject* object1, NSObject* object2,
                                                                  NSThread* thread, bool wait) {
    if (!isCurrent(thread) && platformPerforms())
        perform(invocation(receiver, selector, object1, object2), thread, wait);
    else
        performSelector_withObject_withObject_inThread_beforeDate_waitUntilDone(receiver, selector, object1, object2,
                                                                                thread, nullptr, wait);
}

void performSelector_withObject_withObject_inThread_beforeDate_waitUntilDone(NSObject& receiver, Selector selector,
                                                                             NSObject* object1, NSObject* object2,
                                                                             NSThread* thread, const NSDate* beforeDate,
                                                                             bool wait) {
    if (isCurrent(thread))
        receiver.performSelector_withObject_withObject(selector, object1, object2);
    else
        performSelector(InterThreadMessage::PerformWithTwo, selector, receiver, {object1, object2}, thread, beforeDate,
                        wait);
}

void performSelector_withObject_withObject_withObject_inThread_waitUntilDone(NSObject& receiver, Selector selector,
                                                                             NSObject* object1, NSObject* object2,
                                                                             NSObject* object3, NSThread* thread,
                                                                             bool wait) {
    if (!isCurrent(thread) && platformPerforms())
        perform(invocation(receiver, selector, object1, object2, object3), thread, wait);
    else
        performSelector_withObject_withObject_withObject_inThread_beforeDate_waitUntilDone(
            receiver, selector, object1, object2, object3, thread, nullptr, wait);
}

void performSelector_withObject_withObject_withObject_inThread_beforeDate_waitUntilDone(
    NSObject& receiver, Selector selector, NSObject* object1, NSObject* object2, NSObject* object3, NSThread* thread,
    const NSDate* beforeDate, bool wait) {
    if (isCurrent(thread))
        performSelector_withObject_withObject_withObject(receiver, selector, object1, object2, object3);
    else
        performSelector(InterThreadMessage::PerformWithThree, selector, receiver, {object1, object2, object3}, thread,
                        beforeDate, wait);
}

namespace {

void postNotification(NSNotificationCenter& center, NSNotification* notification, NSThread* thread,
                      const NSDate* beforeDate) {
    interThreadAssert(notification != nullptr, "postNotification", __LINE__, "nil != notification");
    if (isCurrent(thread))
        return center.postNotification(*notification);
    auto message = detail::interThreadMessage(InterThreadMessage::PostNotification);
    message->notification = RefPtr<NSNotification>(notification).leak();
    detail::postMessage(std::move(message), thread, beforeDate);
}

}  // namespace

void postNotification_inThread(NSNotificationCenter& receiver, NSNotification* notification, NSThread* thread) {
    postNotification(receiver, notification, thread, nullptr);
}

void postNotification_inThread_beforeDate(NSNotificationCenter& receiver, NSNotification* notification,
                                          NSThread* thread, const NSDate* beforeDate) {
    postNotification(receiver, notification, thread, beforeDate);
}

void postNotificationName_object_inThread(NSNotificationCenter& receiver, const NSString& name, NSObject* object,
                                          NSThread* thread) {
    postNotificationName_object_userInfo_inThread_beforeDate(receiver, name, object, nullptr, thread, nullptr);
}

void postNotificationName_object_inThread_beforeDate(NSNotificationCenter& receiver, const NSString& name,
                                                     NSObject* object, NSThread* thread, const NSDate* beforeDate) {
    postNotificationName_object_userInfo_inThread_beforeDate(receiver, name, object, nullptr, thread, beforeDate);
}

void postNotificationName_object_userInfo_inThread(NSNotificationCenter& receiver, const NSString& name,
                                                   NSObject* object, const NSDictionary* userInfo, NSThread* thread) {
    postNotificationName_object_userInfo_inThread_beforeDate(receiver, name, object, userInfo, thread, nullptr);
}

void postNotificationName_object_userInfo_inThread_beforeDate(NSNotificationCenter& receiver, const NSString& name,
                                                              NSObject* object, const NSDictionary* userInfo,
                                                              NSThread* thread, const NSDate* beforeDate) {
    postNotification(receiver, NSNotification::notificationWithName_object_userInfo(name, object, userInfo).get(),
                     thread, beforeDate);
}

namespace {

const Additions<NSThread> threadAdditions{
    classLevel<&prepareForInterThreadMessages>("prepareForInterThreadMessages"),
    classLevel<&disableInterThreadMessages>("disableInterThreadMessages"),
};

/// Names the operation itself among those of its name.
template <class... A> using Operation = void (*)(NSObject&, Selector, A...);
using Object = NSObject*;

const Additions<NSObject> objectAdditions{
    instance<static_cast<Operation<Object, Object, Object>>(&performSelector_withObject_withObject_withObject)>(
        "performSelector:withObject:withObject:withObject:"),
    instance<&performSelector_inThread_waitUntilDone>("performSelector:inThread:waitUntilDone:"),
    instance<static_cast<Operation<NSThread*, const NSDate*, bool>>(
        &performSelector_inThread_beforeDate_waitUntilDone)>("performSelector:inThread:beforeDate:waitUntilDone:"),
    instance<&performSelector_withObject_inThread_waitUntilDone>("performSelector:withObject:inThread:waitUntilDone:"),
    instance<static_cast<Operation<Object, NSThread*, const NSDate*, bool>>(
        &performSelector_withObject_inThread_beforeDate_waitUntilDone)>(
        "performSelector:withObject:inThread:beforeDate:waitUntilDone:"),
    instance<&performSelector_withObject_withObject_inThread_waitUntilDone>(
        "performSelector:withObject:withObject:inThread:waitUntilDone:"),
    instance<static_cast<Operation<Object, Object, NSThread*, const NSDate*, bool>>(
        &performSelector_withObject_withObject_inThread_beforeDate_waitUntilDone)>(
        "performSelector:withObject:withObject:inThread:beforeDate:waitUntilDone:"),
    instance<&performSelector_withObject_withObject_withObject_inThread_waitUntilDone>(
        "performSelector:withObject:withObject:withObject:inThread:waitUntilDone:"),
    instance<static_cast<Operation<Object, Object, Object, NSThread*, const NSDate*, bool>>(
        &performSelector_withObject_withObject_withObject_inThread_beforeDate_waitUntilDone)>(
        "performSelector:withObject:withObject:withObject:inThread:beforeDate:waitUntilDone:"),
};

const Additions<NSNotificationCenter> centerAdditions{
    instance<&postNotification_inThread>("postNotification:inThread:"),
    instance<&postNotification_inThread_beforeDate>("postNotification:inThread:beforeDate:"),
    instance<&postNotificationName_object_inThread>("postNotificationName:object:inThread:"),
    instance<&postNotificationName_object_inThread_beforeDate>("postNotificationName:object:inThread:beforeDate:"),
    instance<&postNotificationName_object_userInfo_inThread>("postNotificationName:object:userInfo:inThread:"),
    instance<&postNotificationName_object_userInfo_inThread_beforeDate>(
        "postNotificationName:object:userInfo:inThread:beforeDate:"),
};

}  // namespace

}  // namespace InterThreadMessaging
}  // namespace tovi
