#pragma once

#include <ToviFoundationKit/Foundation/NSArray.h>
#include <ToviFoundationKit/Foundation/NSMutableSet.h>

namespace tovi {
inline namespace QVLAdditions {

// Set algebra that leaves the receiver alone and answers a new mutable set.

TOVI_EXPORT Ref<NSMutableSet> setByUnioningSet(const NSSet& receiver, const NSSet& other);
TOVI_EXPORT Ref<NSMutableSet> setByMinusingSet(const NSSet& receiver, const NSSet& other);
TOVI_EXPORT Ref<NSMutableSet> setByIntersectingSet(const NSSet& receiver, const NSSet& other);
/// The elements that are in one of the two sets but not in both.
TOVI_EXPORT Ref<NSMutableSet> setByComplementingIntersectionWithSet(const NSSet& receiver, const NSSet& other);
TOVI_EXPORT Ref<NSMutableSet> setByAddingObject(const NSSet& receiver, NSObject& object);
TOVI_EXPORT Ref<NSMutableSet> setByAddingObjectsFromArray(const NSSet& receiver, const NSArray& list);
TOVI_EXPORT Ref<NSMutableSet> setByRemovingObject(const NSSet& receiver, const NSObject& object);

}  // namespace QVLAdditions
}  // namespace tovi
