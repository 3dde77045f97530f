#include <ToviFoundationKit/Extensions/NSMutableDictionary-ThreadSafety.h>

#include <ToviFoundationKit/Runtime/Additions.h>
#include <ToviFoundationKit/Runtime/Message.h>

namespace tovi {
inline namespace ThreadSafety {

namespace {

/// Does the work under a lock object of any class, which is kept alive and given back also when the work raises. Both
/// of its operations are looked up before it is taken.
template <class Work> auto underLock(NSObject& lock, Work work) {
    const Ref<NSObject> held(lock);
    const Method& unlock = detail::methodFor(lock, "unlock"_sel);
    send<void>(lock, "lock"_sel);
    id result;
    try {
        result = work();
    } catch (...) {
        detail::sendResolved<void>(unlock, lock);
        throw;
    }
    detail::sendResolved<void>(unlock, lock);
    return result;
}

}  // namespace

id threadSafeObjectForKey_usingLock(NSMutableDictionary& receiver, const NSObject& key, NSObject& lock) {
    return underLock(lock, [&] { return receiver.objectForKey(key); });
}

void threadSafeSetObject_forKey_usingLock(NSMutableDictionary& receiver, NSObject& object, NSObject& key,
                                          NSObject& lock) {
    underLock(lock, [&] { return receiver.setObject_forKey(object, key), nullptr; });
}

void threadSafeRemoveObjectForKey_usingLock(NSMutableDictionary& receiver, const NSObject& key, NSObject& lock) {
    underLock(lock, [&] { return receiver.removeObjectForKey(key), nullptr; });
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
