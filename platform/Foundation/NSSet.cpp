#include <ToviFoundationKit/Foundation/NSSet.h>

#include <ToviFoundationKit/Foundation/Collections_p.h>
#include <ToviFoundationKit/Foundation/Enumerators_p.h>
#include <ToviFoundationKit/Runtime/Additions.h>
#include <ToviFoundationKit/Runtime/Message.h>

namespace tovi {

TOVI_DEFINE_CLASS(NSSet, NSObject)

Ref<NSSet> NSSet::set() {
    static NSSet& empty = *adopt(*new NSSet).leak();
    return empty;
}

Ref<NSSet> NSSet::setWithObject(NSObject& object) {
    Ref<NSSet> result = adopt(*new NSSet);
    result->insert(object);
    return result;
}

Ref<NSSet> NSSet::setWithArray(const NSArray& array) {
    Ref<NSSet> result = adopt(*new NSSet);
    result->insertAll(array);
    return result;
}

Ref<NSSet> NSSet::setWithSet(const NSSet& other) { return static_cast<NSSet&>(*other.copy()); }

void NSSet::insert(NSObject& object) {
    const std::uint32_t hash = Table::hashOf(object);
    if (table_.find(object, hash))
        return;
    table_.add({&object}, hash);
    object.retain();
}

void NSSet::insertAll(const NSArray& array) {
    table_.reserve(array.count());
    for (NSObject& each : array)
        insert(each);
}

id NSSet::member(const NSObject& object) const {
    const auto slot = table_.find(object);
    return slot ? table_.entryAt(slot).key : nullptr;
}

bool NSSet::containsObject(const NSObject& object) const { return static_cast<bool>(table_.find(object)); }

id NSSet::anyObject() const { return count() ? table_.begin()->key : nullptr; }

Ref<NSArray> NSSet::allObjects() const {
    std::vector<Ref<NSObject>> objects;
    objects.reserve(count());
    for (NSObject& each : *this)
        objects.emplace_back(each);
    return NSArray::arrayTakingObjects(objects);
}

Ref<NSEnumerator> NSSet::objectEnumerator() const { return detail::enumeratorOver(*this); }

bool NSSet::isSubsetOfSet(const NSSet& other) const { return table_.areAllIn(other.table_); }
bool NSSet::intersectsSet(const NSSet& other) const { return table_.areAnyIn(other.table_); }
bool NSSet::isEqualToSet(const NSSet& other) const { return detail::equalSets(*this, other); }

void NSSet::makeObjectsPerformSelector(Selector selector) const {
    MessageSite site(selector);
    for (NSObject& each : *this)
        site.send(each);
}

void NSSet::makeObjectsPerformSelector_withObject(Selector selector, NSObject* argument) const {
    MessageSite site(selector);
    for (NSObject& each : *this)
        site.send(each, argument);
}

bool NSSet::isEqual(const NSObject* other) const {
    if (this == other)
        return true;
    const auto* const set = as<NSSet>(other);
    return set && isEqualToSet(*set);
}

NSUInteger NSSet::hash() const { return detail::hashOfCollection(*this, detail::CollectionKind::Set); }
Ref<NSString> NSSet::description() const { return detail::descriptionOfCollection(*this, detail::CollectionKind::Set); }
Ref<NSObject> NSSet::copy() const { return share(*this); }
Ref<NSObject> NSSet::mutableCopy() const { return NSMutableSet::setWithSet(*this); }

id NSSet::valueForKey(const NSString& key) {
    Ref<NSSet> values = adopt(*new NSSet);
    for (NSObject& each : *this)
        if (id value = each.valueForKey(key))
            values->insert(*value);
    return values;
}

namespace {

const Additions<NSSet> additions{
    classLevel<&NSSet::set>("set"),
    classLevel<&NSSet::setWithObject>("setWithObject:"),
    classLevel<&NSSet::setWithArray>("setWithArray:"),
    classLevel<&NSSet::setWithSet>("setWithSet:"),
    instance<&NSSet::count>("count"),
    instance<&NSSet::member>("member:"),
    instance<&NSSet::containsObject>("containsObject:"),
    instance<&NSSet::anyObject>("anyObject"),
    instance<&NSSet::allObjects>("allObjects"),
    instance<&NSSet::objectEnumerator>("objectEnumerator"),
    instance<&NSSet::isSubsetOfSet>("isSubsetOfSet:"),
    instance<&NSSet::intersectsSet>("intersectsSet:"),
    instance<&NSSet::isEqualToSet>("isEqualToSet:"),
    instance<&NSSet::makeObjectsPerformSelector>("makeObjectsPerformSelector:"),
    instance<&NSSet::makeObjectsPerformSelector_withObject>("makeObjectsPerformSelector:withObject:"),
};

}  // namespace

}  // namespace tovi
