#include <ToviFoundationKit/Foundation/NSMutableSet.h>

#include <ToviFoundationKit/Runtime/Additions.h>

namespace tovi {

TOVI_DEFINE_CLASS(NSMutableSet, NSSet)

Ref<NSMutableSet> NSMutableSet::set() { return adopt(*new NSMutableSet); }

Ref<NSMutableSet> NSMutableSet::setWithCapacity(NSUInteger capacity) {
    Ref<NSMutableSet> result = set();
    result->reserve(capacity);
    return result;
}

Ref<NSMutableSet> NSMutableSet::setWithObject(NSObject& object) {
    Ref<NSMutableSet> result = set();
    result->insert(object);
    return result;
}

Ref<NSMutableSet> NSMutableSet::setWithArray(const NSArray& array) {
    Ref<NSMutableSet> result = set();
    result->insertAll(array);
    return result;
}

Ref<NSMutableSet> NSMutableSet::setWithSet(const NSSet& other) { return adopt(*new NSMutableSet(other.table_)); }

Ref<NSMutableSet> NSMutableSet::symmetricDifference(const NSSet& a, const NSSet& b) {
    return adopt(*new NSMutableSet(Table::symmetricDifference(a.table_, b.table_)));
}

void NSMutableSet::addObject(NSObject& object) {
    ++mutations_;
    insert(object);
}

void NSMutableSet::addObjectsFromArray(const NSArray& array) {
    ++mutations_;
    for (NSObject& each : array)
        insert(each);
}

void NSMutableSet::removeObject(const NSObject& object) {
    const auto slot = table_.find(object);
    if (!slot)
        return;
    ++mutations_;
    table_.remove(slot).key->release();
}

void NSMutableSet::removeAllObjects() {
    ++mutations_;
    Table removed;
    table_.swap(removed);
}

namespace {

// A few elements are quicker treated one by one; the algebra goes over all elements of both sets.
bool hasFewBeside(const NSSet& set, const NSSet& other) { return set.count() < other.count() / 8; }

}  // namespace

void NSMutableSet::unionSet(const NSSet& other) {
    ++mutations_;
    if (hasFewBeside(other, *this))
        for (NSObject& each : other)
            insert(each);
    else
        table_.unite(other.table_);
}

void NSMutableSet::minusSet(const NSSet& other) {
    ++mutations_;
    if (hasFewBeside(other, *this))
        for (NSObject& each : other)
            removeObject(each);
    else
        table_.removeWhere(other.table_, true);
}

void NSMutableSet::intersectSet(const NSSet& other) {
    ++mutations_;
    table_.removeWhere(other.table_, false);
}

void NSMutableSet::setSet(const NSSet& other) {
    Table replaced = other.table_;
    ++mutations_;
    table_.swap(replaced);
}

void NSMutableSet::reserve(NSUInteger capacity) {
    ++mutations_;
    table_.reserve(capacity);
}

Ref<NSObject> NSMutableSet::copy() const {
    if (!count())
        return NSSet::set();
    return adopt(*new NSSet(table_));
}

namespace {

const Additions<NSMutableSet> additions{
    classLevel<&NSMutableSet::set>("set"),
    classLevel<&NSMutableSet::setWithCapacity>("setWithCapacity:"),
    classLevel<&NSMutableSet::setWithObject>("setWithObject:"),
    classLevel<&NSMutableSet::setWithArray>("setWithArray:"),
    classLevel<&NSMutableSet::setWithSet>("setWithSet:"),
    instance<&NSMutableSet::addObject>("addObject:"),
    instance<&NSMutableSet::addObjectsFromArray>("addObjectsFromArray:"),
    instance<&NSMutableSet::removeObject>("removeObject:"),
    instance<&NSMutableSet::removeAllObjects>("removeAllObjects"),
    instance<&NSMutableSet::unionSet>("unionSet:"),
    instance<&NSMutableSet::minusSet>("minusSet:"),
    instance<&NSMutableSet::intersectSet>("intersectSet:"),
    instance<&NSMutableSet::setSet>("setSet:"),
};

}  // namespace

}  // namespace tovi
