#include <ToviFoundationKit/Extensions/NSMutableArray-QVLAdditions.h>

#include <cstdlib>

#include <ToviFoundationKit/Extensions/ElementTable_p.h>
#include <ToviFoundationKit/Extensions/NSArray-QVLAdditions.h>
#include <ToviFoundationKit/Extensions/OrderedSearch_p.h>
#include <ToviFoundationKit/Runtime/Additions.h>

namespace tovi {
inline namespace QVLAdditions {

namespace {

template <class Comparator> NSInteger insertionIndex(const NSMutableArray& list, NSObject& object,
                                                     Comparator comparator, NSInteger start, bool allowsDuplicates) {
    const NSUInteger count = list.count();
    if (count == 0)
        return 0;
    const HalvingResult place = halve(list, start, comparing(object, comparator));
    if (place.found)
        return allowsDuplicates ? place.index + 1 : NSNotFound;
    return static_cast<NSInteger>(std::min(static_cast<NSUInteger>(place.index), count));
}

template <class Comparator> NSInteger insert(NSMutableArray& list, NSObject& object, Comparator comparator,
                                             NSInteger start, bool allowsDuplicates) {
    const NSInteger index = insertionIndex(list, object, comparator, start, allowsDuplicates);
    if (index != NSNotFound)
        list.insertObject_atIndex(object, static_cast<NSUInteger>(index));
    return index;
}

}  // namespace

NSInteger insertionIndexOfObject_usingComparator_startingAtIndex_allowsDuplicates(const NSMutableArray& receiver,
                                                                                  NSObject& object, Selector comparator,
                                                                                  NSInteger start,
                                                                                  bool allowsDuplicates) {
    return insertionIndex(receiver, object, comparator, start, allowsDuplicates);
}

NSInteger insertionIndexOfObject_usingComparatorFunction_startingAtIndex_allowsDuplicates(
    const NSMutableArray& receiver, NSObject& object, ComparatorFunction comparator, NSInteger start,
    bool allowsDuplicates) {
    return insertionIndex(receiver, object, comparator, start, allowsDuplicates);
}

NSInteger insertObject_usingComparator_startingAtIndex_allowsDuplicates(NSMutableArray& receiver, NSObject& object,
                                                                        Selector comparator, NSInteger start,
                                                                        bool allowsDuplicates) {
    return insert(receiver, object, comparator, start, allowsDuplicates);
}

NSInteger insertObject_usingComparatorFunction_startingAtIndex_allowsDuplicates(
    NSMutableArray& receiver, NSObject& object, ComparatorFunction comparator, NSInteger start, bool allowsDuplicates) {
    return insert(receiver, object, comparator, start, allowsDuplicates);
}

NSInteger insertObject_usingComparator_startingAtIndex(NSMutableArray& receiver, NSObject& object, Selector comparator,
                                                       NSInteger start) {
    return insert(receiver, object, comparator, start, true);
}

NSInteger insertObject_usingComparatorFunction_startingAtIndex(NSMutableArray& receiver, NSObject& object,
                                                               ComparatorFunction comparator, NSInteger start) {
    return insert(receiver, object, comparator, start, true);
}

void shuffle(NSMutableArray& receiver) {
    const NSUInteger count = receiver.count();
    for (NSUInteger i = count; i-- > 0;) {
        const NSUInteger other = static_cast<NSUInteger>(random()) % count;
        if (other != i)
            receiver.exchangeObjectAtIndex_withObjectAtIndex(i, other);
    }
}

void reverse(NSMutableArray& receiver) { receiver.setArray(reversedArray(receiver)); }

namespace {

/// A list that is given itself: its first element is dealt with before the enumeration comes upon the change.
template <class Change> void changeUnderEnumeration(NSMutableArray& list, Change change) {
    const id first = list.firstObject();
    if (!first)
        return;
    change(*first);
    detail::raiseMutatedWhileEnumerated(list);
}

}  // namespace

void removeIdenticalObjectsFromArray(NSMutableArray& receiver, const NSArray* list) {
    if (!list)
        return;
    if (list == &receiver)
        return changeUnderEnumeration(receiver, [&](NSObject& object) { receiver.removeObjectIdenticalTo(object); });
    const ElementTable<ByIdentity> removed(*list);
    receiver.removeObjectsPassingTest([&](const NSObject& object) { return removed.contains(object); });
}

void insertObjectsFromArray_atIndex(NSMutableArray& receiver, const NSArray& list, NSUInteger index) {
    if (list.count() == 0)
        return;
    if (&list == &receiver)
        return changeUnderEnumeration(receiver,
                                      [&](NSObject& object) { receiver.insertObject_atIndex(object, index); });
    if (index > receiver.count())
        receiver.insertObject_atIndex(list[0], index);  // raises
    receiver.replaceObjectsInRange_withObjectsFromArray({index, 0}, list);
}

namespace {

const Additions<NSMutableArray> additions{
    instance<&insertionIndexOfObject_usingComparator_startingAtIndex_allowsDuplicates>(
        "insertionIndexOfObject:usingComparator:startingAtIndex:allowsDuplicates:"),
    instance<&insertionIndexOfObject_usingComparatorFunction_startingAtIndex_allowsDuplicates>(
        "insertionIndexOfObject:usingComparatorFunction:startingAtIndex:allowsDuplicates:"),
    instance<&insertObject_usingComparator_startingAtIndex_allowsDuplicates>(
        "insertObject:usingComparator:startingAtIndex:allowsDuplicates:"),
    instance<&insertObject_usingComparatorFunction_startingAtIndex_allowsDuplicates>(
        "insertObject:usingComparatorFunction:startingAtIndex:allowsDuplicates:"),
    instance<&insertObject_usingComparator_startingAtIndex>("insertObject:usingComparator:startingAtIndex:"),
    instance<&insertObject_usingComparatorFunction_startingAtIndex>(
        "insertObject:usingComparatorFunction:startingAtIndex:"),
    instance<&shuffle>("shuffle"),
    instance<&reverse>("reverse"),
    instance<&removeIdenticalObjectsFromArray>("removeIdenticalObjectsFromArray:"),
    instance<&insertObjectsFromArray_atIndex>("insertObjectsFromArray:atIndex:"),
};

}  // namespace

}  // namespace QVLAdditions
}  // namespace tovi
