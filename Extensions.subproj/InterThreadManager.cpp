#include <ToviFoundationKit/Extensions/InterThreadManager.h>

#include <pthread.h>

#include <cstring>
#include <mutex>
#include <new>
#include <unordered_map>

#include <ToviFoundationKit/Extensions/InterThreadMessage_p.h>
#include <ToviFoundationKit/Extensions/NSThread-NSNotificationCenter-QVLAdditions.h>
#include <ToviFoundationKit/Foundation/NSData.h>
#include <ToviFoundationKit/Foundation/NSRunLoop.h>
#include <ToviFoundationKit/Foundation/SendDiscarding.h>
#include <ToviFoundationKit/Runtime/Additions.h>
#include <ToviFoundationKit/Runtime/Cast.h>
#include <ToviFoundationKit/Runtime/NSException.h>
#include <ToviFoundationKit/Runtime/NSLog.h>

namespace tovi {

TOVI_DEFINE_CLASS(InterThreadManager, NSObject)

namespace {

/// The ports of the threads. They are held, the threads are not.
using PortTable = std::unordered_map<const NSThread*, Ref<NSPort>>;

constinit std::atomic<PortTable*> threadMessagePorts{nullptr};
pthread_mutex_t threadMessagePortsMutex;

class PortTableLock {
public:
    PortTableLock(const char* function, int line) : table_(threadMessagePorts.load(std::memory_order_acquire)) {
        detail::interThreadAssert(table_ != nullptr, function, line, "NULL != pThreadMessagePorts");
        pthread_mutex_lock(&threadMessagePortsMutex);
    }
    ~PortTableLock() { pthread_mutex_unlock(&threadMessagePortsMutex); }
    PortTableLock(const PortTableLock&) = delete;
    PortTableLock& operator=(const PortTableLock&) = delete;

    PortTable& operator*() const noexcept { return *table_; }
    PortTable* operator->() const noexcept { return table_; }

private:
    PortTable* const table_;
};

// In a forked child the other threads are not there.
void keepOwnPortInChild() {
    const NSThread* const own = NSThread::currentThread().get();
    std::erase_if(*threadMessagePorts.load(), [&](const auto& entry) { return entry.first != own; });
    pthread_mutex_unlock(&threadMessagePortsMutex);
}

}  // namespace

void InterThreadManager::initialize() {
    static std::once_flag once;
    std::call_once(once, [] {
        pthread_mutex_init(&threadMessagePortsMutex, nullptr);
        threadMessagePorts.store(new PortTable, std::memory_order_release);
        NSNotificationCenter::defaultCenter()->addObserver_selector_name_object(
            classObject(), "threadDied:"_sel, static_cast<NSString*>(NSThreadWillExitNotification), nullptr);
        // In a child the threads come first, one of which the ports then ask for.
        (void)NSThread::currentThread();
        pthread_atfork([] { pthread_mutex_lock(&threadMessagePortsMutex); },
                       [] { pthread_mutex_unlock(&threadMessagePortsMutex); }, keepOwnPortInChild);
    });
}

void InterThreadManager::threadDied(NSNotification& notification) {
    const id object = notification.object();
    if (!object)
        return;
    const auto thread = to<NSThread>(object);
    const RefPtr<NSRunLoop> runLoop = thread->runLoop();
    if (!runLoop)
        return;
    detail::removeMessagePortForThread(thread, *runLoop, detail::Waiting::Left);
    const auto dictionary = thread->threadDictionary();
    const auto key = NSString::stringWithCharacters(waitLockKey);
    if (const id lock = dictionary->objectForKey(key)) {
        to<NSLock>(lock)->unlock();
        dictionary->removeObjectForKey(key);
    }
}

namespace {

/// The message that travels by its address.
InterThreadMessage* messageIn(const NSPortMessage& message, const char* function) {
    if (const void* const address = message.address()) [[likely]]
        return static_cast<InterThreadMessage*>(const_cast<void*>(address));
    const RefPtr<NSArray> components = message.components();
    detail::interThreadAssert(components && components->count() == 1, function, __LINE__, "1 == [components count]");
    const auto* const data = as<NSData>(components->objectAtIndex(0).get());
    InterThreadMessage* result = nullptr;
    detail::interThreadAssert(data && data->length() >= sizeof result, function, __LINE__,
                              "sizeof(InterThreadMessage *) <= [data length]");
    std::memcpy(&result, data->bytes().data(), sizeof result);
    return result;
}

void perform(const InterThreadMessage& message, const char* function) {
    using detail::sendDiscarding;
    switch (message.kind) {
        case InterThreadMessage::Perform:
            return sendDiscarding(*message.target, message.selector);
        case InterThreadMessage::PerformWithObject:
            return sendDiscarding(*message.target, message.selector, message.object1);
        case InterThreadMessage::PerformWithTwo:
            return sendDiscarding(*message.target, message.selector, message.object1, message.object2);
        case InterThreadMessage::PerformWithThree:
            return sendDiscarding(*message.target, message.selector, message.object1, message.object2, message.object3);
        default:
            assertionFailed(function, detail::interThreadUnit, __LINE__, "0");
    }
}

}  // namespace

void InterThreadManager::handlePortMessage(NSPortMessage& portMessage) {
    constexpr const char* function = "+[InterThreadManager handlePortMessage:]";
    detail::OwnedInterThreadMessage message(messageIn(portMessage, function));
    if (message->kind == InterThreadMessage::PostNotification)
        return NSNotificationCenter::defaultCenter()->postNotification(*message->notification);
    const RefPtr<NSLock> waitLock = message->waitLock;
    perform(*message, function);
    message.reset();
    if (waitLock)
        waitLock->unlock();
}

namespace detail {

void InterThreadMessageDeleter::operator()(InterThreadMessage* message) const noexcept {
    if (message->kind == InterThreadMessage::PostNotification)
        released(message->notification);
    for (NSObject* const each : {message->target, message->object1, message->object2, message->object3})
        released(each);
    std::free(message);
}

OwnedInterThreadMessage interThreadMessage(InterThreadMessage::Kind kind) {
    void* const memory = std::malloc(sizeof(InterThreadMessage));
    if (!memory)
        throw std::bad_alloc();
    return OwnedInterThreadMessage(new (memory) InterThreadMessage{kind, {}, {}, {}, {}, {}, {}});
}

void createMessagePortForThread() {
    const auto thread = NSThread::currentThread();
    const auto runLoop = NSRunLoop::currentRunLoop();
    const PortTableLock ports("createMessagePortForThread", __LINE__);
    // Nobody would take the port away again.
    if (ports->contains(thread.get()) || thread->isEnding())
        return;
    const auto port = NSPort::port();
    port->setDelegate(&InterThreadManager::classObject());
    port->scheduleInRunLoop_forMode(runLoop, NSDefaultRunLoopMode);
    ports->emplace(thread.get(), port);
}

namespace {

RefPtr<NSPort> messagePortForThread(const NSThread& thread) {
    const PortTableLock ports("messagePortForThread", __LINE__);
    const auto found = ports->find(&thread);
    return found == ports->end() ? nullptr : RefPtr<NSPort>(found->second);
}

void letGoOfQueued(NSPort& port, Waiting waiting) {
    while (const RefPtr<NSPortMessage> queued = port.takeMessage()) {
        OwnedInterThreadMessage message(messageIn(*queued, "removeMessagePortForThread"));
        const RefPtr<NSLock> waitLock = message->waitLock;
        message.reset();
        if (waitLock && waiting == Waiting::SetFree)
            waitLock->unlock();
    }
}

}  // namespace

// The port is closed before it is looked through, so that no message gets lost in it: a sender that found it in the
// table is told that it failed.
void removeMessagePortForThread(NSThread& thread, NSRunLoop& runLoop, Waiting waiting) {
    RefPtr<NSPort> port;
    {
        const PortTableLock ports("removeMessagePortForThread", __LINE__);
        const auto found = ports->find(&thread);
        if (found == ports->end())
            return;
        port = found->second;
        port->removeFromRunLoop_forMode(runLoop, NSDefaultRunLoopMode);
        ports->erase(found);
    }
    port->invalidate();
    letGoOfQueued(*port, waiting);
}

namespace {

bool send(const InterThreadMessage* message, RefPtr<NSPort> port, const NSDate& beforeDate) {
    try {
        return NSPortMessage::initWithSendPort_receivePort_address(std::move(port), nullptr, message)
            ->sendBeforeDate(beforeDate);
    } catch (const std::exception& raised) {
        NSLog(u"NSThread, postMessage() raised an exception:%s", raised.what());
        return false;
    }
}

}  // namespace

void postMessage(OwnedInterThreadMessage message, NSThread* thread, const NSDate* beforeDate) {
    RefPtr<NSThread> own;  // the other one is the caller's
    if (!thread)
        own = NSThread::currentThread();
    NSThread& target = thread ? *thread : *own;
    RefPtr<NSPort> port = messagePortForThread(target);
    if (!port)
        NSException::raise(NSInvalidArgumentException,
                           u"Thread %@ is not prepared to receive inter-thread messages.  You must invoke "
                           u"+prepareForInterThreadMessages first.",
                           target);
    const RefPtr<NSLock> waitLock = message->waitLock;
    if (waitLock) {
        target.leaveObject_forKey(*waitLock, NSString::stringWithCharacters(InterThreadManager::waitLockKey));
        waitLock->lock();
    }
    static const NSDate& anyTime = *NSDate::distantFuture().leak();
    const NSDate& date = beforeDate ? *beforeDate : anyTime;
    if (!send(message.get(), std::move(port), date))
        NSException::raise(NSPortTimeoutException, u"Can't send message to thread %@: timeout before date %@", target,
                           share(date));
    message.release();  // to the receiver, who may be done with it already
    if (waitLock)
        waitLock->lock();
}

}  // namespace detail

namespace {

const Additions<InterThreadManager> additions{
    classLevel<&InterThreadManager::initialize>("initialize"),
    classLevel<&InterThreadManager::threadDied>("threadDied:"),
    classLevel<&InterThreadManager::handlePortMessage>("handlePortMessage:"),
};

}  // namespace

}  // namespace tovi
