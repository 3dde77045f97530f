#pragma once

#include <ToviFoundationKit/Foundation/NSMutableArray.h>
#include <ToviFoundationKit/Foundation/NSMutableDictionary.h>
#include <ToviFoundationKit/Foundation/NSSet.h>

namespace tovi {
inline namespace QVLAdditions {

/// The values for the keys, in the keys' order; keys without a value are left out. A value that is NSNull is left out
/// too.
TOVI_EXPORT Ref<NSMutableArray> objectsForKeysIgnoringNotFound(const NSDictionary& receiver, const NSArray& keys);

/// Maps each element of the receiver's values, which must be lists, to a mutable list of the keys under which it
/// occurs, in the receiver's key order. An element that occurs twice under a key gets that key twice. A value that is
/// no list raises NSInvalidArgumentException (unrecognized selector).
TOVI_EXPORT Ref<NSMutableDictionary> invertKeysAndObjects(const NSDictionary& receiver);

/// The keys (the values) in ascending order of `compare:`; one that does not respond to it raises
/// NSInvalidArgumentException as soon as it is compared.
TOVI_EXPORT Ref<NSArray> allOrderedKeys(const NSDictionary& receiver);
TOVI_EXPORT Ref<NSArray> allOrderedValues(const NSDictionary& receiver);

TOVI_EXPORT Ref<NSSet> allKeysSet(const NSDictionary& receiver);
TOVI_EXPORT Ref<NSSet> allValuesSet(const NSDictionary& receiver);  ///< equal values merged

/// Never use this: `objectForKey` answers the question, and faster. Every call first reports an assertion failure,
/// which raises NSInternalInconsistencyException unless the thread's assertion handler was replaced by one that
/// returns; then a linear search of the keys gives the answer.
TOVI_EXPORT bool hasKey(const NSDictionary& receiver, const NSObject& key);

/// A mutable copy whose values are copies by the rule of `deepMutableCopy` of a list: see NSArray-QVLAdditions.h. The
/// keys are shared.
TOVI_EXPORT Ref<NSMutableDictionary> deepMutableCopy(const NSDictionary& receiver);

}  // namespace QVLAdditions
}  // namespace tovi
