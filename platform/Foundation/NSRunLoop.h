#pragma once

#include <functional>
#include <memory>

#include <ToviFoundationKit/Foundation/ConstantString.h>
#include <ToviFoundationKit/Foundation/NSPort.h>
#include <ToviFoundationKit/Foundation/NSTimer.h>

namespace tovi {

class NSThread;
namespace detail {
struct RunLoopItem;
struct RunLoopMode;
struct RunLoopState;
using ModeKey = std::uint32_t;
}  // namespace detail

/// The mode that run loops run in unless they are told otherwise.
inline constexpr ConstantString<u"NSDefaultRunLoopMode"> NSDefaultRunLoopMode;
/// Not a mode to run in: what is added for it is served in each of the loop's common modes. The default mode is one.
inline constexpr ConstantString<u"NSRunLoopCommonModes"> NSRunLoopCommonModes;

/// What a thread does when it has nothing else to do: each thread has one loop, which serves its ports, timers and what
/// other threads want to be performed there, in the mode that it runs in. What belongs to other modes waits. While
/// there is nothing to do the thread sleeps, without waking up in between.
///
/// Only the loop's own thread may run it, and add and remove ports and timers; elsewhere that raises
/// NSInternalInconsistencyException. `performBlock`, `stop` and the sending operations are for any thread.
///
/// An exception that leaves what is performed leaves the operation that runs the loop; the rest stays queued, and the
/// loop can be run again. When the thread ends its loop is closed: what is still queued is let go of unperformed.
///
/// A child of `fork` has the forking thread's loop as it was, with a wake-up of its own. The other threads are not
/// there, and are finished. It has to be forked by a thread, and at a time, at which no other thread is in this
/// library, as anything else that a child of a threaded process does; or do nothing but `exec` or `_exit`.
class TOVI_EXPORT NSRunLoop final : public NSObject {
    TOVI_DECLARE_CLASS(NSRunLoop)

public:
    static Ref<NSRunLoop> currentRunLoop();
    static Ref<NSRunLoop> mainRunLoop();
    ~NSRunLoop() override;

    RefPtr<NSString> currentMode() const;  ///< nil while it does not run
    /// What is added for the common modes is served in this mode as well, from now on and for good.
    void addCommonMode(const NSString& mode);

    void addTimer_forMode(NSTimer& timer, const NSString& mode);  ///< nothing happens when it is invalid
    void addPort_forMode(NSPort& port, const NSString& mode);     ///< held until removed or invalid
    void removePort_forMode(NSPort& port, const NSString& mode);

    /// Calls the function in the default mode, or in another. Any number may wait.
    void performBlock(std::function<void()> block);
    void performBlock_forMode(std::function<void()> block, const NSString& mode);

    /// Serves what is ready in the mode; when that was nothing but timers, sleeps until there is something, until the
    /// date, by Clock, or until it is stopped. Everything that was ready is served, not only the first. False, at once,
    /// when nothing is scheduled in the mode: no port, no timer, nothing to perform.
    bool runMode_beforeDate(const NSString& mode, const NSDate& date);
    /// Runs in the default mode until the date, until it is stopped, or until nothing is scheduled there.
    void runUntilDate(const NSDate& date);
    void run();
    /// Makes the innermost of the three operations above return after what it performs at the moment; when none is
    /// under way, the next one. On any thread.
    void stop();

    // A loop of the host's can serve this one, in place of the three operations above:

    /// Readable when `runReady` is to be called, because something is ready or because `nextDeadline` has changed; once
    /// more than needed after several operations, during which it told a loop that one of them may run of the rest. For
    /// waiting only: do not read or close it. On the loop's own thread. Raises NSGenericException when the process has
    /// no descriptors left.
    int fileDescriptor();
    /// When the first timer of the default mode fires; nil without one.
    RefPtr<NSDate> nextDeadline() const;
    /// Serves what is ready in the default mode, at most so many operations and nothing that they add, without waiting,
    /// and answers how many it were. The descriptor stays readable while there is more.
    NSUInteger runReady(NSUInteger maximum);

private:
    friend class NSPort;
    friend class NSThread;
    friend class NSTimer;
    enum class Outcome { NothingScheduled, Served, TimedOut, Stopped };
    class Running;

    NSRunLoop();

    bool belongsHere() const noexcept;
    void requireOwnThread(const char* operation) const;
    /// False when the loop is closed.
    bool enqueue(detail::RunLoopItem&& item);
    void portHasMessages();
    void moveTimer(NSTimer& timer, NSTimeInterval before, bool isNews);
    void forgetTimer(NSTimer& timer);
    Outcome runOnce(detail::ModeKey mode, const NSDate& date);
    void close();
    void forked(bool isOwn) noexcept;

    std::unique_ptr<detail::RunLoopState> state_;
};

}  // namespace tovi
