#pragma once

#include <ToviFoundationKit/Foundation/NSMutableDictionary.h>

namespace tovi {
inline namespace ThreadSafety {

// Access to a dictionary that several threads share, safe as long as all access goes through these operations with one
// and the same lock: any object that responds to `lock` and `unlock`. It is taken once for each operation and given
// back also when the operation raises.

/// The value, or nil. The result stays valid when another thread removes it from the dictionary.
TOVI_EXPORT id threadSafeObjectForKey_usingLock(NSMutableDictionary& receiver, const NSObject& key, NSObject& lock);

TOVI_EXPORT void threadSafeSetObject_forKey_usingLock(NSMutableDictionary& receiver, NSObject& object, NSObject& key,
                                                      NSObject& lock);

TOVI_EXPORT void threadSafeRemoveObjectForKey_usingLock(NSMutableDictionary& receiver, const NSObject& key,
                                                        NSObject& lock);

}  // namespace ThreadSafety
}  // namespace tovi
