#pragma once

#include <functional>
#include <memory>

#include <ToviFoundationKit/Foundation/NSNotification.h>

namespace tovi {

namespace detail {
class ObserverTable;
}

/// Tells observers what they asked to hear of, on the thread that posts, before the posting operation returns, in the
/// order in which they were added. Any thread may use a centre at any time, observers as they are told included:
///
/// - Who is added while something is posted does not hear of that; who is removed and was not told yet is not told.
/// - Observers and the objects that they asked about are *not* held, so that an observer can remove itself as it goes.
///   It must do so before it is gone. When another thread may be telling it something at that moment, removing does not
///   wait for that to end: let such an observer live on the thread that posts, or hold it.
/// - Blocks are held by the centre until they are removed.
/// - An exception of an observer's does not keep the others from being told; the first one then leaves the posting
///   operation.
///
/// Posting looks up the name and the object; registrations for others cost nothing. It does not allocate.
class TOVI_EXPORT NSNotificationCenter final : public NSObject {
    TOVI_DECLARE_CLASS(NSNotificationCenter)

public:
    using Block = std::function<void(NSNotification& notification)>;

    static Ref<NSNotificationCenter> defaultCenter();
    static Ref<NSNotificationCenter> init();
    ~NSNotificationCenter() override;

    /// Sends the observer that message, with the notification, for each one of that name (nil: any) about that very
    /// object (nil: any, and none). An observer may be added many times; it is told as often. A null selector raises
    /// NSInvalidArgumentException. A class is an observer as good as any; it gets the class-level operation.
    void addObserver_selector_name_object(NSObject& observer, Selector selector, const NSString* name,
                                          const NSObject* object);
    /// Calls the block; what it answers is to be handed to `removeObserver`.
    Ref<NSObject> addObserverForName_object_usingBlock(const NSString* name, const NSObject* object, Block block);

    void removeObserver(const NSObject& observer);
    /// Takes back what was asked for with that name and that object only; nil takes any.
    void removeObserver_name_object(const NSObject& observer, const NSString* name, const NSObject* object);

    void postNotification(NSNotification& notification);
    void postNotificationName_object(const NSString& name, NSObject* object);
    void postNotificationName_object_userInfo(const NSString& name, NSObject* object, const NSDictionary* userInfo);

private:
    NSNotificationCenter();

    std::unique_ptr<detail::ObserverTable> table_;
};

}  // namespace tovi
