#include <ToviFoundationKit/Foundation/NSThread.h>

#include <pthread.h>
#include <unistd.h>

#include <algorithm>
#include <string>
#include <system_error>
#include <thread>

#include <ToviFoundationKit/Foundation/NSNotificationCenter.h>
#include <ToviFoundationKit/Foundation/NSRunLoop.h>
#include <ToviFoundationKit/Foundation/RunLoopMode_p.h>
#include <ToviFoundationKit/Foundation/SendDiscarding.h>
#include <ToviFoundationKit/Runtime/Additions.h>
#include <ToviFoundationKit/Runtime/NSException.h>
#include <ToviFoundationKit/Runtime/NSLog.h>

namespace tovi {

TOVI_DEFINE_CLASS(NSThread, NSObject)

namespace {

constexpr unsigned long mainNumber = 1;

}  // namespace

/// All thread objects, for the child of a fork, in which there is but one thread.
struct NSThread::Registry {
    std::mutex mutex;
    NSThread* first = nullptr;
    bool mainForks = false;

    static Registry& shared() {
        static Registry& registry = *[] {
            pthread_atfork(
                [] {
                    shared().mutex.lock();
                    shared().mainForks = isMainThread();
                },
                [] { shared().mutex.unlock(); }, forked);
            return new Registry;
        }();
        return registry;
    }
    static void forked();
    void add(NSThread& thread) {
        const std::lock_guard guard(mutex);
        thread.next_ = first;
        thread.link_ = &first;
        if (first)
            first->link_ = &thread.next_;
        first = &thread;
    }
    void remove(NSThread& thread) {
        const std::lock_guard guard(mutex);
        *thread.link_ = thread.next_;
        if (thread.next_)
            thread.next_->link_ = thread.link_;
    }
};

struct NSThread::Current {
    // A plain pointer, which can be asked for even while the thread's other variables are being destroyed.
    static thread_local constinit NSThread* thread;
    static thread_local constinit bool ended;

    ~Current() {
        thread->end();
        ended = true;
        std::exchange(thread, nullptr)->release();
    }

    static NSThread& begin(Ref<NSThread> made) {
        thread = made.leak();
        static thread_local const Current current;
        (void)&current;
        return *thread;
    }
};

thread_local constinit NSThread* NSThread::Current::thread = nullptr;
thread_local constinit bool NSThread::Current::ended = false;

// The main thread need not have asked for its object for there to be one.
void NSThread::Registry::forked() {
    const bool wasMain = shared().mainForks;
    for (NSThread* each = shared().first; each; each = each->next_) {
        const bool isOwn = Current::thread ? each == Current::thread : wasMain && each->number_ == mainNumber;
        if (!isOwn && each->state_ != notStarted)
            each->state_ = finished;
        if (NSRunLoop* const loop = each->runLoop_)
            loop->forked(isOwn);
    }
    shared().mutex.unlock();
}

namespace {

unsigned long nextNumber() noexcept {
    static constinit std::atomic<unsigned long> last{mainNumber};
    return last.fetch_add(1, std::memory_order_relaxed) + 1;
}

}  // namespace

NSThread::NSThread(unsigned long number, State state, std::function<void()> block)
    : number_(number), block_(std::move(block)), state_(state) {
    Registry::shared().add(*this);
}

NSThread::~NSThread() {
    Registry::shared().remove(*this);
    detail::released(runLoop_.load());
}

Ref<NSThread> NSThread::currentThread() {
    if (Current::thread) [[likely]]
        return *Current::thread;
    if (Current::ended)
        return adopt(*new NSThread(nextNumber(), finished));
    return Current::begin(isMainThread() ? mainThread() : adopt(*new NSThread(nextNumber(), executing)));
}

Ref<NSThread> NSThread::mainThread() {
    static NSThread& thread = *adopt(*new NSThread(mainNumber, executing)).leak();
    return thread;
}

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

Ref<NSThread> NSThread::initWithTarget_selector_object(NSObject& target, Selector selector, NSObject* argument) {
    return initWithBlock([target = Ref<NSObject>(target), selector, argument = id(argument)] {
        detail::sendDiscarding(*target, selector, argument.get());
    });
}

Ref<NSThread> NSThread::initWithBlock(std::function<void()> block) {
    return adopt(*new NSThread(nextNumber(), notStarted, std::move(block)));
}

void NSThread::detachNewThreadSelector_toTarget_withObject(Selector selector, NSObject& target, NSObject* argument) {
    initWithTarget_selector_object(target, selector, argument)->start();
}

void NSThread::detachNewThreadWithBlock(std::function<void()> block) { initWithBlock(std::move(block))->start(); }

void NSThread::start() {
    int expected = notStarted;
    if (!state_.compare_exchange_strong(expected, executing))
        NSException::raise(NSInvalidArgumentException, u"*** -[NSThread start]: %@ was started before", *this);
    try {
        std::thread([self = Ref<NSThread>(*this)]() mutable {
            NSThread& thread = Current::begin(std::move(self));
            thread.nameItself();
            std::exchange(thread.block_, nullptr)();
        }).detach();
    } catch (const std::system_error& error) {
        state_ = notStarted;
        NSException::raise(NSGenericException, u"*** -[NSThread start]: %s", error.what());
    }
}

void NSThread::join() const {
    if (Current::thread == this || state_ == notStarted)
        NSException::raise(NSInvalidArgumentException, u"*** -[NSThread join]: %@ will not end meanwhile", *this);
    const Ref<NSThread> held = share(*this);
    for (int state = state_; state != finished; state = state_)
        state_.wait(state);
}

RefPtr<NSString> NSThread::name() const {
    const std::lock_guard guard(mutex_);
    return name_;
}

void NSThread::setName(const NSString* name) {
    RefPtr<NSString> copied = name ? to<NSString>(name->copy()).get() : nullptr;
    {
        const std::lock_guard guard(mutex_);
        std::swap(name_, copied);
    }
    if (Current::thread == this)
        nameItself();
}

void NSThread::nameItself() const {
    const RefPtr<NSString> whole = name();
    if (!whole || isMainThread())
        return;
    std::string text = whole->UTF8String();
    std::size_t length = std::min<std::size_t>(text.size(), 15);
    while (length < text.size() && length > 0 && (static_cast<unsigned char>(text[length]) & 0xC0) == 0x80)
        --length;
    text.resize(length);
    pthread_setname_np(pthread_self(), text.c_str());
}

Ref<NSMutableDictionary> NSThread::threadDictionary() {
    const auto dictionary = [this] {
        const std::lock_guard guard(mutex_);
        if (!dictionary_)
            dictionary_ = NSMutableDictionary::dictionary();
        return dictionary_.ref();
    }();
    if (Current::thread == this)
        takeWhatWasLeft(dictionary);
    return dictionary;
}

void NSThread::leaveObject_forKey(NSObject& object, const NSString& key) {
    Ref<NSObject> given(object);
    const std::lock_guard guard(mutex_);
    if (state_ >= ending)
        return;
    const auto same = std::ranges::find_if(left_, [&](const auto& each) { return *each.first == key; });
    if (same == left_.end())
        left_.emplace_back(to<NSString>(key.copy()), std::move(given));
    else
        std::swap(same->second, given);
    somethingWasLeft_ = true;
}

// One by one: what they take the place of may ask for the dictionary as it goes, and find something newer.
void NSThread::takeWhatWasLeft(NSMutableDictionary& dictionary) {
    while (somethingWasLeft_) {
        decltype(left_) taken;
        {
            const std::lock_guard guard(mutex_);
            if (!left_.empty()) {
                taken.push_back(std::move(left_.back()));
                left_.pop_back();
            }
            somethingWasLeft_ = !left_.empty();
        }
        for (auto& [key, object] : taken)
            dictionary.setObject_forKey(object, key);
    }
}

NSRunLoop* NSThread::runLoopHere() noexcept {
    return Current::thread ? Current::thread->runLoop_.load(std::memory_order_acquire) : nullptr;
}

RefPtr<NSRunLoop> NSThread::runLoop() const { return runLoop_.load(std::memory_order_acquire); }

NSRunLoop& NSThread::runLoopMade() {
    if (NSRunLoop* const loop = runLoop_.load(std::memory_order_acquire)) [[likely]]
        return *loop;
    const std::lock_guard guard(mutex_);
    if (!runLoop_)
        runLoop_ = adopt(*new NSRunLoop).leak();
    if (state_ >= ending)
        (*runLoop_).close();
    return *runLoop_;
}

bool NSThread::enqueue(detail::RunLoopItem&& item) { return runLoopMade().enqueue(std::move(item)); }

// What goes may ask for the thread, its dictionary and its loop once more.
void NSThread::end() noexcept {
    state_ = announcing;
    try {
        NSNotificationCenter::defaultCenter()->postNotificationName_object(NSThreadWillExitNotification, this);
    } catch (const std::exception& raised) {
        NSLog(u"An observer of NSThreadWillExitNotification raised an exception:%s", raised.what());
    }
    if (NSRunLoop* const loop = runLoop_)
        loop->close();
    while (threadDictionary()->count())
        threadDictionary()->removeAllObjects();
    decltype(left_) left;
    {
        const std::lock_guard guard(mutex_);
        state_ = ending;
        left.swap(left_);
    }
    left.clear();
    if (NSRunLoop* const loop = runLoop_)
        loop->close();
    state_ = finished;
    state_.notify_all();
}

Ref<NSString> NSThread::description() const {
    return NSString::stringWithFormat(u"<NSThread: %p>{number = %lu, name = %@}", static_cast<const void*>(this),
                                      number_, name());
}

namespace {

[[noreturn]] void raiseCannotPerform(const NSObject& receiver, std::u16string_view name, const char* reason) {
    NSException::raise(name, u"*** -[%@ performSelector:onThread:withObject:waitUntilDone:]: %s", receiver.isa(),
                       reason);
}

}  // namespace

void performSelector_onThread_withObject_waitUntilDone(NSObject& receiver, Selector selector, NSThread* thread,
                                                       NSObject* object, bool wait) {
    if (!selector || !thread)
        raiseCannotPerform(receiver, NSInvalidArgumentException,
                           selector ? "thread cannot be nil" : "selector cannot be nil");
    if (wait && NSThread::currentThread().get() == thread)
        return detail::sendDiscarding(receiver, selector, object);
    detail::RunLoopItem item;
    item.target = receiver;
    item.selector = selector;
    item.argument = object;
    if (!wait)
        return void(thread->enqueue(std::move(item)));
    const auto ticket = detail::PerformTicket::ticket();
    item.ticket = ticket;
    if (!thread->enqueue(std::move(item)) || ticket->wait() == detail::PerformTicket::dropped)
        raiseCannotPerform(receiver, NSDestinationInvalidException,
                           "target thread exited while waiting for the perform");
}

namespace {

const Additions<NSThread> additions{
    classLevel<&NSThread::currentThread>("currentThread"),
    classLevel<&NSThread::mainThread>("mainThread"),
    classLevel<&NSThread::isMainThread>("isMainThread"),
    classLevel<&NSThread::initWithTarget_selector_object>("initWithTarget:selector:object:"),
    classLevel<&NSThread::detachNewThreadSelector_toTarget_withObject>("detachNewThreadSelector:toTarget:withObject:"),
    instance<&NSThread::start>("start"),
    instance<&NSThread::cancel>("cancel"),
    instance<&NSThread::isCancelled>("isCancelled"),
    instance<&NSThread::isExecuting>("isExecuting"),
    instance<&NSThread::isFinished>("isFinished"),
    instance<&NSThread::name>("name"),
    instance<&NSThread::setName>("setName:"),
    instance<&NSThread::threadDictionary>("threadDictionary"),
    instance<&NSThread::runLoop>("runLoop"),
};

const Additions<NSObject> objectAdditions{
    instance<&performSelector_onThread_withObject_waitUntilDone>("performSelector:onThread:withObject:waitUntilDone:"),
};

}  // namespace

}  // namespace tovi
