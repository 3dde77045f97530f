#pragma once

#include <cstdint>
#include <functional>
#include <memory>

#include <ToviFoundationKit/Foundation/NSDate.h>

namespace tovi {

class NSRunLoop;
namespace detail {
struct RunLoopState;
}

/// Something that a run loop does at a date, by Clock, once or again and again. A timer belongs to the thread of the
/// run loop that it is added to, which holds it until it is invalid; nothing here may be called on another thread. A
/// timer that is late fires once, and then at the next of its dates that is still to come.
class TOVI_EXPORT NSTimer final : public NSObject {
    TOVI_DECLARE_CLASS(NSTimer)

public:
    using Block = std::function<void(NSTimer& timer)>;

    /// A timer for `addTimer:forMode:`. It holds its target until it is invalid; the operation is given the timer. An
    /// interval under a tenth of a millisecond counts as that; NaN, too.
    static Ref<NSTimer> timerWithTimeInterval_target_selector_userInfo_repeats(NSTimeInterval seconds, NSObject& target,
                                                                               Selector selector, NSObject* userInfo,
                                                                               bool repeats);
    static Ref<NSTimer> timerWithTimeInterval_repeats_block(NSTimeInterval seconds, bool repeats, Block block);
    /// The same, added to the current thread's run loop in the default mode.
    static Ref<NSTimer> scheduledTimerWithTimeInterval_target_selector_userInfo_repeats(
        NSTimeInterval seconds, NSObject& target, Selector selector, NSObject* userInfo, bool repeats);
    static Ref<NSTimer> scheduledTimerWithTimeInterval_repeats_block(NSTimeInterval seconds, bool repeats, Block block);

    NSTimeInterval timeInterval() const noexcept { return interval_; }  ///< 0 when it does not repeat
    id userInfo() const { return userInfo_; }
    Ref<NSDate> fireDate() const;
    void setFireDate(const NSDate& date);
    bool isValid() const noexcept { return block_ != nullptr; }
    /// Takes it from its run loop for good and lets go of its target.
    void invalidate();
    /// Does now what it does; one that does not repeat is invalid after that. Nothing happens when it is invalid.
    void fire();

private:
    friend class NSRunLoop;
    friend struct detail::RunLoopState;
    NSTimer(NSTimeInterval seconds, bool repeats, NSObject* userInfo, Block block);
    /// The first of its dates after that, which lies in the future.
    NSTimeInterval nextDateAfter(NSTimeInterval now) const noexcept;
    /// Sets the next date of one that repeats.
    void comeAgainAfter(NSTimeInterval now);

    NSTimeInterval date_;
    NSTimeInterval interval_;
    std::uint64_t number_;
    id userInfo_;
    std::shared_ptr<const Block> block_;
    NSRunLoop* runLoop_ = nullptr;  ///< which holds it, not the other way round
};

}  // namespace tovi
