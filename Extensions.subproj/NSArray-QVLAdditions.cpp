#include <ToviFoundationKit/Extensions/NSArray-QVLAdditions.h>

#include <ToviFoundationKit/Extensions/DeepMutableCopy_p.h>
#include <ToviFoundationKit/Extensions/NSMutableArray-QVLAdditions.h>
#include <ToviFoundationKit/Extensions/OrderedSearch_p.h>
#include <ToviFoundationKit/Runtime/Additions.h>
#include <ToviFoundationKit/Runtime/Cast.h>

namespace tovi {
inline namespace QVLAdditions {

Ref<NSMutableArray> arrayByReplacingObjectAtIndex_withObject(const NSArray& receiver, std::int32_t index,
                                                             NSObject& object) {
    Ref<NSMutableArray> result = NSMutableArray::arrayWithArray(receiver);
    const auto position = static_cast<NSUInteger>(index);  // a negative index turns into one past any end
    if (position < result->count())
        result->replaceObjectAtIndex_withObject(position, object);
    return result;
}

Ref<NSArray> arrayByAddingObjectToFront(const NSArray& receiver, NSObject* object) {
    if (!object)
        return share(receiver);
    const Ref<NSMutableArray> result = NSMutableArray::arrayWithCapacity(receiver.count() + 1);
    result->addObject(*object);
    result->addObjectsFromArray(receiver);
    return NSArray::arrayWithArray(result);
}

namespace {

template <class Keep> Ref<NSMutableArray> filtered(const NSArray& list, Keep keep) {
    Ref<NSMutableArray> result = NSMutableArray::array();
    for (NSObject& element : list) {
        const Ref<NSObject> held(element);  // what is asked below is its own code, which may remove it
        if (keep(element))
            result->addObject(*held);
    }
    return result;
}

template <class Keep> Ref<NSArray> immutableFiltered(const NSArray& list, Keep keep) {
    return NSArray::arrayWithArray(filtered(list, keep));
}

}  // namespace

Ref<NSArray> arrayByRemovingObject(const NSArray& receiver, const NSObject& object) {
    return immutableFiltered(
        receiver, [&](NSObject& element) { return !identical(&object, &element) && !object.isEqual(&element); });
}

// The receiver must also contain an equal object for anything to be removed; the object itself is one.
Ref<NSArray> arrayByRemovingObjectIdenticalTo(const NSArray& receiver, const NSObject& object) {
    return immutableFiltered(receiver, [&](NSObject& element) { return !identical(&object, &element); });
}

Ref<NSMutableArray> arrayByPerformingSelector(const NSArray& receiver, Selector selector) {
    return arrayByPerformingSelector_withObject(receiver, selector, nullptr);
}

Ref<NSMutableArray> arrayByPerformingSelector_withObject(const NSArray& receiver, Selector selector, NSObject* object) {
    Ref<NSMutableArray> result = NSMutableArray::array();
    MessageSite site(selector);
    for (NSObject& element : receiver)
        if (const id answer = site.send<id>(element, object))
            result->addObject(*answer);
    return result;
}

void makeObjectsPerformSelector_withObject_withObject(const NSArray& receiver, Selector selector, NSObject* first,
                                                      NSObject* second) {
    MessageSite site(selector);
    for (NSObject& element : receiver)
        site.send<id>(element, first, second);
}

Ref<NSArray> reversedArray(const NSArray& receiver) {
    const NSUInteger count = receiver.count();
    const Ref<NSMutableArray> result = NSMutableArray::arrayWithCapacity(count);
    for (NSUInteger i = count; i-- > 0;)
        result->addObject(receiver[i]);
    return NSArray::arrayWithArray(result);
}

Ref<NSMutableArray> shuffledArray(const NSArray& receiver) {
    Ref<NSMutableArray> result = NSMutableArray::arrayWithArray(receiver);
    shuffle(*result);
    return result;
}

namespace {

template <class Argument>
Ref<NSMutableArray> answeringTrue(const NSArray& list, Selector question, const Argument& argument) {
    MessageSite site(question);
    return filtered(list, [&](NSObject& element) { return site.send<bool>(element, argument); });
}

}  // namespace

Ref<NSMutableArray> searchItemsStartingWith(const NSArray& receiver, const NSString& prefix) {
    return answeringTrue(receiver, "hasPrefix:"_sel, prefix);
}

Ref<NSMutableArray> searchItemsFinishingWith(const NSArray& receiver, const NSString& suffix) {
    return answeringTrue(receiver, "hasSuffix:"_sel, suffix);
}

bool containsObjectIdenticalTo(const NSArray& receiver, const NSObject& object) {
    return receiver.indexOfObjectIdenticalTo(object) != NSNotFound;
}

namespace {

template <class Comparator>
NSInteger orderedIndex(const NSArray& list, NSObject& object, Comparator comparator, NSInteger start) {
    const HalvingResult place = halve(list, start, comparing(object, comparator));
    return place.found ? place.index : NSNotFound;
}

}  // namespace

NSInteger indexOfObject_usingComparator_startingAtIndex(const NSArray& receiver, NSObject& object, Selector comparator,
                                                        NSInteger start) {
    return orderedIndex(receiver, object, comparator, start);
}

NSInteger indexOfObject_usingComparatorFunction_startingAtIndex(const NSArray& receiver, NSObject& object,
                                                                ComparatorFunction comparator, NSInteger start) {
    return orderedIndex(receiver, object, comparator, start);
}

Ref<NSMutableArray> deepMutableCopy(const NSArray& receiver) {
    const id copy = send(*share(receiver), "deepMutableCopy"_sel);
    return to<NSMutableArray>(copy);
}

namespace {

const Additions<NSArray> additions{
    instance<&arrayByReplacingObjectAtIndex_withObject>("arrayByReplacingObjectAtIndex:withObject:"),
    instance<&arrayByAddingObjectToFront>("arrayByAddingObjectToFront:"),
    instance<&arrayByRemovingObject>("arrayByRemovingObject:"),
    instance<&arrayByRemovingObjectIdenticalTo>("arrayByRemovingObjectIdenticalTo:"),
    instance<&arrayByPerformingSelector>("arrayByPerformingSelector:"),
    instance<&arrayByPerformingSelector_withObject>("arrayByPerformingSelector:withObject:"),
    instance<&makeObjectsPerformSelector_withObject_withObject>("makeObjectsPerformSelector:withObject:withObject:"),
    instance<&reversedArray>("reversedArray"),
    instance<&shuffledArray>("shuffledArray"),
    instance<&differenceWithArray>("differenceWithArray:"),
    instance<&searchItemsStartingWith>("searchItemsStartingWith:"),
    instance<&searchItemsFinishingWith>("searchItemsFinishingWith:"),
    instance<&containsObjectIdenticalTo>("containsObjectIdenticalTo:"),
    instance<&indexOfObject_usingComparator_startingAtIndex>("indexOfObject:usingComparator:startingAtIndex:"),
    instance<&indexOfObject_usingComparatorFunction_startingAtIndex>(
        "indexOfObject:usingComparatorFunction:startingAtIndex:"),
    instance<&indexesOfObjects>("indexesOfObjects:"),
    instance<&indexesOfObjects_allowsNotFound>("indexesOfObjects:allowsNotFound:"),
    instance<&indexesOfObjectsIdenticalTo_allowsNotFound>("indexesOfObjectsIdenticalTo:allowsNotFound:"),
    instance<&indexesOfOrderedObjectsIdenticalTo_allowsNotFound>("indexesOfOrderedObjectsIdenticalTo:allowsNotFound:"),
    instance<&deepMutableCopyOfArray>("deepMutableCopy"),
};

}  // namespace

}  // namespace QVLAdditions
}  // namespace tovi
