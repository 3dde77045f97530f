#include <ToviFoundationKit/Foundation/NSPort.h>

#include <algorithm>
#include <chrono>

#include <ToviFoundationKit/Foundation/NSRunLoop.h>
#include <ToviFoundationKit/Foundation/SendDiscarding.h>
#include <ToviFoundationKit/Runtime/Additions.h>

namespace tovi {

TOVI_DEFINE_CLASS(NSPort, NSObject)

Ref<NSPort> NSPort::port() { return portWithCapacity(usualCapacity); }

Ref<NSPort> NSPort::portWithCapacity(NSUInteger messages) { return adopt(*new NSPort(messages)); }

id NSPort::delegate() const {
    const std::lock_guard guard(outgoingMutex_);
    return delegate_;
}

void NSPort::setDelegate(NSObject* delegate) {
    id exchanged = delegate;
    const std::lock_guard guard(outgoingMutex_);
    std::swap(delegate_, exchanged);
}

void NSPort::scheduleInRunLoop_forMode(NSRunLoop& runLoop, const NSString& mode) {
    runLoop.addPort_forMode(*this, mode);
}

void NSPort::removeFromRunLoop_forMode(NSRunLoop& runLoop, const NSString& mode) {
    runLoop.removePort_forMode(*this, mode);
}

bool NSPort::isValid() const {
    const std::lock_guard guard(mutex_);
    return valid_;
}

void NSPort::invalidate() {
    id delegate;
    const std::scoped_lock guard(outgoingMutex_, mutex_);
    valid_ = false;
    std::swap(delegate, delegate_);
    room_.notify_all();
    // Those that serve it find out that there is one source less.
    for (const Schedule& each : schedules_)
        each.runLoop->portHasMessages();
}

NSUInteger NSPort::numberOfMessages() const { return count_; }

bool NSPort::isServedHere() const {
    return std::ranges::any_of(schedules_, [](const Schedule& each) { return each.runLoop->belongsHere(); });
}

namespace {

/// Senders are woken up when half of the queue is free, but the operation that the server performs until then may
/// itself wait for one of them; so they look for room by themselves, too.
constexpr NSTimeInterval secondsBetweenLooks = 0.01;

}  // namespace

// Time is asked for each time round, since the clock may be another one or be set meanwhile.
bool NSPort::waitForRoom(std::unique_lock<std::mutex>& guard, const NSDate& date) {
    while (valid_ && count_ >= capacity_ && !isServedHere()) {
        const NSTimeInterval seconds = date.timeIntervalSinceNow();
        if (!(seconds > 0))
            return false;
        ++waiting_;
        if (count_ >= capacity_)
            room_.wait_for(guard, std::chrono::duration<double>(std::min(seconds, secondsBetweenLooks)));
        --waiting_;
    }
    return valid_;
}

bool NSPort::enqueue(NSPortMessage& message, const NSDate& date) {
    std::unique_lock guard(mutex_);
    if (!waitForRoom(guard, date))
        return false;
    incoming_.push_back(message);
    ++count_;
    if (incoming_.size() == 1)
        for (const Schedule& each : schedules_)
            each.runLoop->portHasMessages();
    return true;
}

void NSPort::wakeWaiting() {
    if (waiting_ == 0)
        return;
    const std::lock_guard guard(mutex_);
    room_.notify_all();
}

RefPtr<NSPortMessage> NSPort::takeLocked() {
    if (outgoing_.empty()) {
        const std::lock_guard guard(mutex_);
        outgoing_.swap(incoming_);
    }
    if (outgoing_.empty())
        return nullptr;
    RefPtr<NSPortMessage> message = std::move(outgoing_.front());
    outgoing_.pop_front();
    // Waking senders one by one would change threads at each message.
    if (--count_ == capacity_ / 2)
        wakeWaiting();
    return message;
}

RefPtr<NSPortMessage> NSPort::takeMessage() {
    const std::lock_guard guard(outgoingMutex_);
    RefPtr<NSPortMessage> message = takeLocked();
    wakeWaiting();
    return message;
}

bool NSPort::serveNext(const Schedule& schedule) {
    RefPtr<NSPortMessage> message;
    id delegate;
    {
        const std::lock_guard guard(outgoingMutex_);
        if (valid_ && isScheduled(schedule))
            message = takeLocked();
        delegate = delegate_;
    }
    if (message && delegate)
        detail::sendDiscarding(*delegate, "handlePortMessage:"_sel, message.get());
    return static_cast<bool>(message);
}

bool NSPort::passEnds(const Schedule& schedule) {
    const std::lock_guard guard(mutex_);
    if (waiting_ > 0 && count_ < capacity_)
        room_.notify_all();
    return valid_ && count_ > 0 && isScheduled(schedule);
}

bool NSPort::isScheduled(const Schedule& schedule) const {
    return std::ranges::find(schedules_, schedule) != schedules_.end();
}

bool NSPort::addSchedule(const Schedule& schedule) {
    const std::scoped_lock guard(outgoingMutex_, mutex_);
    if (!valid_ || isScheduled(schedule))
        return false;
    schedules_.push_back(schedule);
    return true;
}

void NSPort::removeSchedule(const Schedule& schedule) {
    const std::scoped_lock guard(outgoingMutex_, mutex_);
    std::erase(schedules_, schedule);
}

namespace {

const Additions<NSPort> additions{
    classLevel<&NSPort::port>("port"),
    instance<&NSPort::delegate>("delegate"),
    instance<&NSPort::setDelegate>("setDelegate:"),
    instance<&NSPort::scheduleInRunLoop_forMode>("scheduleInRunLoop:forMode:"),
    instance<&NSPort::removeFromRunLoop_forMode>("removeFromRunLoop:forMode:"),
    instance<&NSPort::isValid>("isValid"),
    instance<&NSPort::invalidate>("invalidate"),
};

}  // namespace

}  // namespace tovi
