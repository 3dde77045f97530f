#pragma once

#include <atomic>
#include <functional>
#include <mutex>
#include <utility>
#include <vector>

#include <ToviFoundationKit/Foundation/ConstantString.h>
#include <ToviFoundationKit/Foundation/NSMutableDictionary.h>

namespace tovi {

class NSRunLoop;
namespace detail {
struct RunLoopItem;
}

/// Posted to the default notification centre by a thread that ends, on that thread, while its dictionary and its run
/// loop are still there; the object is the thread. Threads that this library did not start announce their end, too, and
/// so does the main thread when the process ends with it. The observers are called as the thread's local variables are
/// destroyed, those that were used before NSThread being left.
inline constexpr ConstantString<u"NSThreadWillExitNotification"> NSThreadWillExitNotification;

/// Raised when a thread ended before it had performed what another one waits for.
inline constexpr std::u16string_view NSDestinationInvalidException = u"NSDestinationInvalidException";

/// A thread of the process. Every thread, however it was started, has its object from the first time it asks for it.
/// Except for the dictionary, any thread may use a thread's object.
class TOVI_EXPORT NSThread final : public NSObject {
    TOVI_DECLARE_CLASS(NSThread)

public:
    /// What a thread's local variables ask for after its end was announced is an object for that one time.
    static Ref<NSThread> currentThread();
    static Ref<NSThread> mainThread();
    /// Whether the calling thread is the process's main thread, as the operating system sees it.
    static bool isMainThread() noexcept;

    /// A thread that sends the message when it is started, and ends after that. Target and argument are held until
    /// then. An exception that leaves the operation ends the process, as one that leaves a std::thread.
    static Ref<NSThread> initWithTarget_selector_object(NSObject& target, Selector selector, NSObject* argument);
    static Ref<NSThread> initWithBlock(std::function<void()> block);
    static void detachNewThreadSelector_toTarget_withObject(Selector selector, NSObject& target, NSObject* argument);
    static void detachNewThreadWithBlock(std::function<void()> block);
    ~NSThread() override;

    /// Once; a second time, or for a thread that was not made by the operations above, raises
    /// NSInvalidArgumentException. NSGenericException when the system has no more threads.
    void start();
    /// Waits until the thread, its notification included, has ended. Raises NSInvalidArgumentException where that would
    /// be never: on the thread itself, and before it was started.
    void join() const;
    void cancel() noexcept { cancelled_ = true; }  ///< sets a mark that the thread may look at
    bool isCancelled() const noexcept { return cancelled_; }
    bool isExecuting() const noexcept { return state_ >= executing && state_ < finished; }
    bool isEnding() const noexcept { return state_ >= announcing; }  ///< its end is being announced, or was
    bool isFinished() const noexcept { return state_ == finished; }

    RefPtr<NSString> name() const;
    /// Debuggers show its first 15 bytes when it is set on the thread itself or before the start. The main thread's is
    /// for this library only.
    void setName(const NSString* name);

    /// A dictionary for whatever belongs to this thread; only this thread may use it. It is emptied when the thread
    /// ends.
    Ref<NSMutableDictionary> threadDictionary();
    /// Puts something into the thread's dictionary from any thread: it is there when the thread next asks for its
    /// dictionary, in place of what was there under the key. After the thread's end it is let go of.
    void leaveObject_forKey(NSObject& object, const NSString& key);

    /// The thread's run loop; nil until it was asked for on the thread, or something was to be performed there.
    RefPtr<NSRunLoop> runLoop() const;

    Ref<NSString> description() const override;  ///< "<NSThread: 0x...>{number = 2, name = worker}"

private:
    friend class NSRunLoop;
    friend TOVI_EXPORT void performSelector_onThread_withObject_waitUntilDone(NSObject& receiver, Selector selector,
                                                                              NSThread* thread, NSObject* object,
                                                                              bool wait);
    struct Current;
    struct Registry;
    enum State : int { notStarted, executing, announcing, ending, finished };

    NSThread(unsigned long number, State state, std::function<void()> block = nullptr);
    static NSRunLoop* runLoopHere() noexcept;
    NSRunLoop& runLoopMade();
    bool enqueue(detail::RunLoopItem&& item);
    void takeWhatWasLeft(NSMutableDictionary& dictionary);
    void nameItself() const;
    void end() noexcept;

    const unsigned long number_;
    std::function<void()> block_;
    std::atomic<int> state_;
    std::atomic<bool> cancelled_{false};
    std::atomic<NSRunLoop*> runLoop_{nullptr};  ///< owned
    std::atomic<bool> somethingWasLeft_{false};
    NSThread* next_ = nullptr;  ///< in the registry
    NSThread** link_ = nullptr;

    mutable std::mutex mutex_;  ///< guards what follows
    RefPtr<NSMutableDictionary> dictionary_;
    std::vector<std::pair<Ref<NSString>, Ref<NSObject>>> left_;
    RefPtr<NSString> name_;
};

/// Sends the message with one object, which may be nil, to the receiver on that thread, from its run loop while that
/// runs in a common mode. Any number may wait there; they are performed in the order in which each thread sent them.
/// The receiver and the object are held until then. A waiting call returns when the operation has returned, or raised:
/// its exception leaves the operation that runs the loop there. On the thread itself a waiting call performs at once.
///
/// When the thread ends before, nothing is performed, and a waiting call raises NSDestinationInvalidException. A nil
/// selector or thread raises NSInvalidArgumentException.
TOVI_EXPORT void performSelector_onThread_withObject_waitUntilDone(NSObject& receiver, Selector selector,
                                                                   NSThread* thread, NSObject* object, bool wait);

}  // namespace tovi
