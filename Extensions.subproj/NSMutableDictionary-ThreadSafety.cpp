#include <ToviFoundationKit/Extensions/NSMutableDictionary-ThreadSafety.h>

#include <ToviFoundationKit/Runtime/Additions.h>
#include <ToviFoundationKit/Runtime/Message.h>

namespace tovi {
inline namespace ThreadSafety {

namespace {

/// Holds a lock object of any class while it lives. Both operations are looked up before the lock is taken.
class Locked {
public:
    explicit Locked(NSObject& lock) : lock_(lock), unlock_(detail::methodFor(lock, "unlock"_sel)) {
        send<void>(lock, "lock"_sel);
    }
    ~Locked() { detail::sendResolved<void>(unlock_, lock_); }
    Locked(const Locked&) = delete;
    Locked& operator=(const Locked&) = delete;

private:
    NSObject& lock_;
    const Method& unlock_;
};

}  // namespace

id threadSafeObjectForKey_usingLock(NSMutableDictionary& receiver, const NSObject& key, NSObject& lock) {
    const Locked locked(lock);
    return receiver.objectForKey(key);
}

void threadSafeSetObject_forKey_usingLock(NSMutableDictionary& receiver, NSObject& object, NSObject& key,
                                          NSObject& lock) {
    const Locked locked(lock);
    receiver.setObject_forKey(object, key);
}

void threadSafeRemoveObjectForKey_usingLock(NSMutableDictionary& receiver, const NSObject& key, NSObject& lock) {
    const Locked locked(lock);
    receiver.removeObjectForKey(key);
}

namespace {

const Additions<NSMutableDictionary> additions{
    instance<&threadSafeObjectForKey_usingLock>("threadSafeObjectForKey:usingLock:"),
    instance<&threadSafeSetObject_forKey_usingLock>("threadSafeSetObject:forKey:usingLock:"),
    instance<&threadSafeRemoveObjectForKey_usingLock>("threadSafeRemoveObjectForKey:usingLock:"),
};

}  // namespace

}  // namespace ThreadSafety
}  // namespace tovi
