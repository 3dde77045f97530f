#pragma once

#include <cstdint>

#include <ToviFoundationKit/Extensions/Comparator.h>
#include <ToviFoundationKit/Foundation/NSMutableArray.h>
#include <ToviFoundationKit/Foundation/NSMutableIndexSet.h>

namespace tovi {
inline namespace QVLAdditions {

// Questions to an ordered list, and lists derived from it. The receiver is never changed. Results are new lists:
// mutable where the result says so. A "collection" is a list, a set, a dictionary (its keys) or an enumerator. An
// element that does not respond to the message it is sent raises NSInvalidArgumentException (unrecognized selector).

/// A copy in which `object` takes the place of the element at the index. An index that is negative or not below the
/// count leaves the copy unchanged; that is no error.
TOVI_EXPORT Ref<NSMutableArray> arrayByReplacingObjectAtIndex_withObject(const NSArray& receiver, std::int32_t index,
                                                                         NSObject& object);

/// The object followed by the receiver's elements; for nil the receiver itself, not a copy.
TOVI_EXPORT Ref<NSArray> arrayByAddingObjectToFront(const NSArray& receiver, NSObject* object);

/// A copy without every element that is equal to the object.
TOVI_EXPORT Ref<NSArray> arrayByRemovingObject(const NSArray& receiver, const NSObject& object);

/// A copy without every occurrence of that very object. An object that is merely equal to an element removes nothing.
TOVI_EXPORT Ref<NSArray> arrayByRemovingObjectIdenticalTo(const NSArray& receiver, const NSObject& object);

/// Each element's answer to the selector, sent with nil (with `object`). Nil answers are left out, so the result may be
/// shorter than the receiver.
TOVI_EXPORT Ref<NSMutableArray> arrayByPerformingSelector(const NSArray& receiver, Selector selector);
TOVI_EXPORT Ref<NSMutableArray> arrayByPerformingSelector_withObject(const NSArray& receiver, Selector selector,
                                                                     NSObject* object);

/// Sends the selector with both objects to every element in order.
TOVI_EXPORT void makeObjectsPerformSelector_withObject_withObject(const NSArray& receiver, Selector selector,
                                                                  NSObject* first, NSObject* second);

TOVI_EXPORT Ref<NSArray> reversedArray(const NSArray& receiver);

/// A copy reordered by `shuffle` (see NSMutableArray-QVLAdditions.h), which says how random it is.
TOVI_EXPORT Ref<NSMutableArray> shuffledArray(const NSArray& receiver);

/// The elements of the argument that are equal to no element of the receiver: argument minus receiver, in the
/// argument's order, duplicates kept.
TOVI_EXPORT Ref<NSMutableArray> differenceWithArray(const NSArray& receiver, const NSArray& other);

/// The elements, in order, that answer true to `hasPrefix:` (`hasSuffix:`) with the string.
TOVI_EXPORT Ref<NSMutableArray> searchItemsStartingWith(const NSArray& receiver, const NSString& prefix);
TOVI_EXPORT Ref<NSMutableArray> searchItemsFinishingWith(const NSArray& receiver, const NSString& suffix);

/// True when the very object is an element.
TOVI_EXPORT bool containsObjectIdenticalTo(const NSArray& receiver, const NSObject& object);

/// Binary search of a sorted receiver, from the start index to the end: the index of an element that compares as same,
/// or NSNotFound. Which one of several such elements follows from the halving, not from their position. Comparator.h
/// tells how the comparator is applied. A start index past the end gives NSNotFound; a negative one may lead outside
/// the list and then raises NSRangeException.
TOVI_EXPORT NSInteger indexOfObject_usingComparator_startingAtIndex(const NSArray& receiver, NSObject& object,
                                                                    Selector comparator, NSInteger start);
TOVI_EXPORT NSInteger indexOfObject_usingComparatorFunction_startingAtIndex(const NSArray& receiver, NSObject& object,
                                                                            ComparatorFunction comparator,
                                                                            NSInteger start);

/// All indexes of the elements that are equal to an object of the collection.
TOVI_EXPORT Ref<NSMutableIndexSet> indexesOfObjects(const NSArray& receiver, const NSObject& collection);

/// For every object of the collection the index of the first equal (of the first identical) element. When one has none:
/// nil, unless not-found is allowed, and then nothing for it.
TOVI_EXPORT RefPtr<NSMutableIndexSet> indexesOfObjects_allowsNotFound(const NSArray& receiver,
                                                                      const NSObject& collection, bool allowsNotFound);
TOVI_EXPORT RefPtr<NSMutableIndexSet> indexesOfObjectsIdenticalTo_allowsNotFound(const NSArray& receiver,
                                                                                 const NSObject& collection,
                                                                                 bool allowsNotFound);

/// The same by identity and in order, never looking back: each object is looked for from the place of the one found
/// before, that place included. So [b, a] in [a, b, a] gives {1, 2}, and [a, a] in [a, b] gives {0}: one element may
/// answer for the same object twice.
TOVI_EXPORT RefPtr<NSMutableIndexSet> indexesOfOrderedObjectsIdenticalTo_allowsNotFound(const NSArray& receiver,
                                                                                        const NSObject& collection,
                                                                                        bool allowsNotFound);

/// A mutable copy whose elements are copies: an element's `deepMutableCopy` where it answers to that (lists and
/// dictionaries do, and host classes may), else its `mutableCopy` where it conforms to NSMutableCopying, else the
/// element itself, shared. Lists and dictionaries nested to any depth are copied; one that contains itself never ends.
TOVI_EXPORT Ref<NSMutableArray> deepMutableCopy(const NSArray& receiver);

}  // namespace QVLAdditions
}  // namespace tovi
