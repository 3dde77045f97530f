#include <ToviFoundationKit/Foundation/NSTimer.h>

#include <atomic>
#include <cmath>

#include <ToviFoundationKit/Foundation/Clock.h>
#include <ToviFoundationKit/Foundation/NSRunLoop.h>
#include <ToviFoundationKit/Foundation/SendDiscarding.h>
#include <ToviFoundationKit/Runtime/Additions.h>

namespace tovi {

TOVI_DEFINE_CLASS(NSTimer, NSObject)

namespace {

constinit std::atomic<std::uint64_t> timersMade{0};

NSTimeInterval atLeastTheSmallest(NSTimeInterval seconds) { return seconds > 1e-4 ? seconds : 1e-4; }

}  // namespace

NSTimer::NSTimer(NSTimeInterval seconds, bool repeats, NSObject* userInfo, Block block)
    : date_(Clock::current().now() + atLeastTheSmallest(seconds)),
      interval_(repeats ? atLeastTheSmallest(seconds) : 0),
      number_(timersMade.fetch_add(1, std::memory_order_relaxed)),
      userInfo_(userInfo),
      block_(std::make_shared<const Block>(std::move(block))) {}

Ref<NSTimer> NSTimer::timerWithTimeInterval_target_selector_userInfo_repeats(NSTimeInterval seconds, NSObject& target,
                                                                             Selector selector, NSObject* userInfo,
                                                                             bool repeats) {
    const auto send = [held = Ref<NSObject>(target), selector](NSTimer& timer) {
        detail::sendDiscarding(*held, selector, static_cast<NSObject*>(&timer));
    };
    return adopt(*new NSTimer(seconds, repeats, userInfo, send));
}

Ref<NSTimer> NSTimer::timerWithTimeInterval_repeats_block(NSTimeInterval seconds, bool repeats, Block block) {
    return adopt(*new NSTimer(seconds, repeats, nullptr, std::move(block)));
}

namespace {

Ref<NSTimer> scheduled(Ref<NSTimer> timer) {
    NSRunLoop::currentRunLoop()->addTimer_forMode(timer, NSDefaultRunLoopMode);
    return timer;
}

}  // namespace

Ref<NSTimer> NSTimer::scheduledTimerWithTimeInterval_target_selector_userInfo_repeats(
    NSTimeInterval seconds, NSObject& target, Selector selector, NSObject* userInfo, bool repeats) {
    return scheduled(
        timerWithTimeInterval_target_selector_userInfo_repeats(seconds, target, selector, userInfo, repeats));
}

Ref<NSTimer> NSTimer::scheduledTimerWithTimeInterval_repeats_block(NSTimeInterval seconds, bool repeats, Block block) {
    return scheduled(timerWithTimeInterval_repeats_block(seconds, repeats, std::move(block)));
}

Ref<NSDate> NSTimer::fireDate() const { return NSDate::dateWithTimeIntervalSinceReferenceDate(date_); }

void NSTimer::setFireDate(const NSDate& date) {
    const NSTimeInterval seconds = date.timeIntervalSinceReferenceDate();
    if (runLoop_)
        runLoop_->requireOwnThread("setFireDate:");
    const NSTimeInterval before = std::exchange(date_, std::isnan(seconds) ? -HUGE_VAL : seconds);
    if (runLoop_)
        runLoop_->moveTimer(*this, before, true);
}

void NSTimer::comeAgainAfter(NSTimeInterval now) {
    if (interval_ == 0)
        return;
    const NSTimeInterval before = std::exchange(date_, nextDateAfter(now));
    runLoop_->moveTimer(*this, before, false);
}

void NSTimer::invalidate() {
    const Ref<NSTimer> self(*this);
    if (runLoop_)
        runLoop_->forgetTimer(*this);
    runLoop_ = nullptr;
    const auto block = std::exchange(block_, nullptr);
    const id userInfo = std::exchange(userInfo_, nullptr);
}

NSTimeInterval NSTimer::nextDateAfter(NSTimeInterval now) const noexcept {
    const NSTimeInterval next = date_ + interval_ * (std::floor((now - date_) / interval_) + 1);
    return next > now && std::isfinite(next) ? next : now + interval_;
}

// It may do anything to itself meanwhile, so what is done is held.
void NSTimer::fire() {
    if (!isValid())
        return;
    const Ref<NSTimer> self(*this);
    const auto block = block_;
    if (interval_ == 0) {
        const id userInfo = userInfo_;
        invalidate();
        userInfo_ = userInfo;
    }
    (*block)(*this);
}

namespace {

const Additions<NSTimer> additions{
    classLevel<&NSTimer::timerWithTimeInterval_target_selector_userInfo_repeats>(
        "timerWithTimeInterval:target:selector:userInfo:repeats:"),
    classLevel<&NSTimer::scheduledTimerWithTimeInterval_target_selector_userInfo_repeats>(
        "scheduledTimerWithTimeInterval:target:selector:userInfo:repeats:"),
    instance<&NSTimer::timeInterval>("timeInterval"),
    instance<&NSTimer::userInfo>("userInfo"),
    instance<&NSTimer::fireDate>("fireDate"),
    instance<&NSTimer::setFireDate>("setFireDate:"),
    instance<&NSTimer::isValid>("isValid"),
    instance<&NSTimer::invalidate>("invalidate"),
    instance<&NSTimer::fire>("fire"),
};

}  // namespace

}  // namespace tovi
