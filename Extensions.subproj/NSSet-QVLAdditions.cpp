#include <ToviFoundationKit/Extensions/NSSet-QVLAdditions.h>

#include <ToviFoundationKit/Runtime/Additions.h>

namespace tovi {
inline namespace QVLAdditions {

namespace {

template <class Change> Ref<NSMutableSet> changed(const NSSet& set, Change change) {
    Ref<NSMutableSet> result = NSMutableSet::setWithSet(set);
    change(*result);
    return result;
}

}  // namespace

Ref<NSMutableSet> setByUnioningSet(const NSSet& receiver, const NSSet& other) {
    return changed(receiver, [&](NSMutableSet& set) { set.unionSet(other); });
}

Ref<NSMutableSet> setByMinusingSet(const NSSet& receiver, const NSSet& other) {
    return changed(receiver, [&](NSMutableSet& set) { set.minusSet(other); });
}

Ref<NSMutableSet> setByIntersectingSet(const NSSet& receiver, const NSSet& other) {
    return changed(receiver, [&](NSMutableSet& set) { set.intersectSet(other); });
}

Ref<NSMutableSet> setByComplementingIntersectionWithSet(const NSSet& receiver, const NSSet& other) {
    return NSMutableSet::symmetricDifference(receiver, other);
}

Ref<NSMutableSet> setByAddingObject(const NSSet& receiver, NSObject& object) {
    return changed(receiver, [&](NSMutableSet& set) { set.addObject(object); });
}

Ref<NSMutableSet> setByAddingObjectsFromArray(const NSSet& receiver, const NSArray& list) {
    return changed(receiver, [&](NSMutableSet& set) { set.addObjectsFromArray(list); });
}

Ref<NSMutableSet> setByRemovingObject(const NSSet& receiver, const NSObject& object) {
    return changed(receiver, [&](NSMutableSet& set) { set.removeObject(object); });
}

namespace {

const Additions<NSSet> additions{
    instance<&setByUnioningSet>("setByUnioningSet:"),
    instance<&setByMinusingSet>("setByMinusingSet:"),
    instance<&setByIntersectingSet>("setByIntersectingSet:"),
    instance<&setByComplementingIntersectionWithSet>("setByComplementingIntersectionWithSet:"),
    instance<&setByAddingObject>("setByAddingObject:"),
    instance<&setByAddingObjectsFromArray>("setByAddingObjectsFromArray:"),
    instance<&setByRemovingObject>("setByRemovingObject:"),
};

}  // namespace

}  // namespace QVLAdditions
}  // namespace tovi
