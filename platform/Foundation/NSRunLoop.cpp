#include <ToviFoundationKit/Foundation/NSRunLoop.h>

#include <algorithm>
#include <limits>

#include <ToviFoundationKit/Foundation/Clock.h>
#include <ToviFoundationKit/Foundation/NSThread.h>
#include <ToviFoundationKit/Foundation/RunLoopState_p.h>
#include <ToviFoundationKit/Runtime/Additions.h>
#include <ToviFoundationKit/Runtime/NSException.h>

namespace tovi {

TOVI_DEFINE_CLASS(NSRunLoop, NSObject)

using detail::keyOfMode;
using detail::ModeKey;
using detail::RunLoopItem;
using detail::RunLoopMode;

NSRunLoop::NSRunLoop() : state_(std::make_unique<detail::RunLoopState>()) {}

NSRunLoop::~NSRunLoop() { close(); }

Ref<NSRunLoop> NSRunLoop::currentRunLoop() { return NSThread::currentThread()->runLoopMade(); }

Ref<NSRunLoop> NSRunLoop::mainRunLoop() { return NSThread::mainThread()->runLoopMade(); }

bool NSRunLoop::belongsHere() const noexcept { return NSThread::runLoopHere() == this; }

void NSRunLoop::requireOwnThread(const char* operation) const {
    if (!belongsHere()) [[unlikely]]
        NSException::raise(NSInternalInconsistencyException,
                           u"*** -[NSRunLoop %s]: the run loop belongs to another thread", operation);
}

RefPtr<NSString> NSRunLoop::currentMode() const {
    requireOwnThread("currentMode");
    if (state_->running.empty())
        return nullptr;
    return detail::nameOfMode(state_->running.back());
}

void NSRunLoop::addCommonMode(const NSString& mode) {
    requireOwnThread("addCommonMode:");
    const ModeKey key = keyOfMode(mode);
    if (!state_->isCommon(key))
        state_->common.push_back(key);
}

void NSRunLoop::addTimer_forMode(NSTimer& timer, const NSString& mode) {
    requireOwnThread("addTimer:forMode:");
    if (!timer.isValid())
        return;
    if (timer.runLoop_ && timer.runLoop_ != this)
        NSException::raise(NSInternalInconsistencyException,
                           u"*** -[NSRunLoop addTimer:forMode:]: the timer belongs to another run loop");
    timer.runLoop_ = this;
    const auto [place, isNew] =
        state_->mode(keyOfMode(mode)).timers.emplace(RunLoopMode::Due{timer.date_, timer.number_}, timer);
    if (isNew)
        state_->wakeup.signal();
}

void NSRunLoop::moveTimer(NSTimer& timer, NSTimeInterval before, bool isNews) {
    for (RunLoopMode& mode : state_->modes)
        if (auto entry = mode.timers.extract({before, timer.number_})) {
            entry.key().date = timer.date_;
            mode.timers.insert(std::move(entry));
        }
    if (isNews)
        state_->wakeup.signal();
}

void NSRunLoop::forgetTimer(NSTimer& timer) {
    requireOwnThread("invalidate");
    for (RunLoopMode& mode : state_->modes)
        mode.timers.erase({timer.date_, timer.number_});
}

void NSRunLoop::addPort_forMode(NSPort& port, const NSString& mode) {
    requireOwnThread("addPort:forMode:");
    const ModeKey key = keyOfMode(mode);
    if (!port.addSchedule({this, key}))
        return;
    RunLoopMode& scheduled = state_->mode(key);
    scheduled.ports.push_back(port);
    scheduled.portsMayHaveMessages = true;
    state_->wakeup.signal();
}

void NSRunLoop::removePort_forMode(NSPort& port, const NSString& mode) {
    requireOwnThread("removePort:forMode:");
    const ModeKey key = keyOfMode(mode);
    port.removeSchedule({this, key});
    const Ref<NSPort> held(port);
    RunLoopMode& scheduled = state_->mode(key);
    std::erase_if(scheduled.ports, [&](const auto& each) { return each.get() == &port; });
    // Who is going through them may now have missed the next one.
    scheduled.portsMayHaveMessages |= scheduled.portsAreServed > 0;
}

bool NSRunLoop::enqueue(RunLoopItem&& item) { return state_->enqueue(std::move(item)); }

void NSRunLoop::portHasMessages() { state_->portHasMessages(); }

void NSRunLoop::performBlock(std::function<void()> block) {
    performBlock_forMode(std::move(block), NSDefaultRunLoopMode);
}

void NSRunLoop::performBlock_forMode(std::function<void()> block, const NSString& mode) {
    RunLoopItem item;
    item.target = adopt<NSObject>(*new detail::BlockObject(std::move(block)));
    item.mode = keyOfMode(mode);
    enqueue(std::move(item));
}

/// The loop as it runs in a mode. It may have taken note of what a host's loop would have been woken up for.
class NSRunLoop::Running {
public:
    Running(NSRunLoop& loop, ModeKey mode) : loop_(loop) { loop.state_->running.push_back(mode); }
    ~Running() {
        detail::RunLoopState& state = *loop_->state_;
        const ModeKey mode = state.running.back();
        state.running.pop_back();
        if (mode == detail::defaultMode)
            return;
        state.signalWhatIsLeft(detail::defaultMode);
        if (state.nextDeadline(detail::defaultMode))
            state.wakeup.signal();
    }
    Running(const Running&) = delete;
    Running& operator=(const Running&) = delete;

private:
    const Ref<NSRunLoop> loop_;
};

NSRunLoop::Outcome NSRunLoop::runOnce(ModeKey mode, const NSDate& date) {
    requireOwnThread("runMode:beforeDate:");
    detail::RunLoopState& state = *state_;
    const Running running(*this, mode);
    for (Outcome outcome = Outcome::NothingScheduled;; outcome = Outcome::TimedOut) {
        state.collect();
        if (state.stopping.exchange(false))
            return Outcome::Stopped;
        if (!state.hasSources(mode))
            return outcome;
        detail::RunLoopState::Pass pass{std::numeric_limits<NSUInteger>::max(), true};
        state.serve(mode, *this, pass);
        if (state.stopping.exchange(false))
            return Outcome::Stopped;
        if (pass.inputs > 0)
            return Outcome::Served;
        const NSTimeInterval now = Clock::current().now();
        const NSTimeInterval left = date.timeIntervalSinceReferenceDate() - now;
        if (!(left > 0))
            return Outcome::TimedOut;
        if (pass.timers > 0)
            continue;  // that may have been the last one
        const auto deadline = state.nextDeadline(mode);
        state.wakeup.wait(deadline ? std::min(left, *deadline - now) : left);
    }
}

bool NSRunLoop::runMode_beforeDate(const NSString& mode, const NSDate& date) {
    return runOnce(keyOfMode(mode), date) != Outcome::NothingScheduled;
}

void NSRunLoop::runUntilDate(const NSDate& date) {
    while (runOnce(detail::defaultMode, date) == Outcome::Served && date.timeIntervalSinceNow() > 0) {
    }
}

void NSRunLoop::run() { runUntilDate(NSDate::distantFuture()); }

void NSRunLoop::stop() {
    state_->stopping = true;
    state_->wakeup.signal();
}

int NSRunLoop::fileDescriptor() {
    requireOwnThread("fileDescriptor");
    return state_->wakeup.descriptor();
}

RefPtr<NSDate> NSRunLoop::nextDeadline() const {
    requireOwnThread("nextDeadline");
    const auto deadline = state_->nextDeadline(detail::defaultMode);
    if (!deadline)
        return nullptr;
    return NSDate::dateWithTimeIntervalSinceReferenceDate(*deadline);
}

NSUInteger NSRunLoop::runReady(NSUInteger maximum) {
    requireOwnThread("runReady:");
    const Running running(*this, detail::defaultMode);
    detail::RunLoopState::Pass pass{maximum, false};
    state_->serve(detail::defaultMode, *this, pass);
    return pass.timers + pass.inputs;
}

// What is let go of may call back, even add something; hence the rounds.
void NSRunLoop::close() {
    {
        const std::lock_guard guard(state_->mutex);
        state_->closed = true;
    }
    for (state_->collect(); !state_->modes.empty(); state_->collect()) {
        RunLoopMode& mode = state_->modes.back();
        const auto ports = std::exchange(mode.ports, {});
        for (const Ref<NSPort>& port : ports)
            port->removeSchedule({this, mode.key});
        const auto timers = std::exchange(mode.timers, {});
        for (const auto& [due, timer] : timers) {
            timer->runLoop_ = nullptr;
            timer->invalidate();
        }
        const auto performs = std::exchange(mode.performs, {});
        if (!mode.hasSources())
            state_->modes.pop_back();
    }
}

void NSRunLoop::forked(bool isOwn) noexcept {
    if (isOwn)
        state_->wakeup.renewDescriptor();
    else
        state_->closed = true;
}

namespace {

const Additions<NSRunLoop> additions{
    classLevel<&NSRunLoop::currentRunLoop>("currentRunLoop"),
    classLevel<&NSRunLoop::mainRunLoop>("mainRunLoop"),
    instance<&NSRunLoop::currentMode>("currentMode"),
    instance<&NSRunLoop::addTimer_forMode>("addTimer:forMode:"),
    instance<&NSRunLoop::addPort_forMode>("addPort:forMode:"),
    instance<&NSRunLoop::removePort_forMode>("removePort:forMode:"),
    instance<&NSRunLoop::runMode_beforeDate>("runMode:beforeDate:"),
    instance<&NSRunLoop::runUntilDate>("runUntilDate:"),
    instance<&NSRunLoop::run>("run"),
    instance<&NSRunLoop::stop>("stop"),
};

}  // namespace

}  // namespace tovi
