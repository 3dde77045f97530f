#include <ToviFoundationKit/Foundation/NSMutableArray.h>

#include <algorithm>
#include <cstring>

#include <ToviFoundationKit/Foundation/NSIndexSet.h>
#include <ToviFoundationKit/Foundation/Storage_p.h>
#include <ToviFoundationKit/Runtime/Additions.h>
#include <ToviFoundationKit/Runtime/Message.h>

namespace tovi {

TOVI_DEFINE_CLASS(NSMutableArray, NSArray)

NSMutableArray::~NSMutableArray() {
    for (NSUInteger i = 0; i < count_; ++i)
        objects_[i]->release();
    count_ = 0;
    std::free(storage_);
}

Ref<NSMutableArray> NSMutableArray::array() { return adopt(*new NSMutableArray); }

Ref<NSMutableArray> NSMutableArray::arrayWithCapacity(NSUInteger capacity) {
    Ref<NSMutableArray> result = array();
    result->reserve(capacity);
    return result;
}

Ref<NSMutableArray> NSMutableArray::arrayWithObject(NSObject& object) {
    Ref<NSMutableArray> result = array();
    result->addObject(object);
    return result;
}

Ref<NSMutableArray> NSMutableArray::arrayWithArray(const NSArray& other) {
    Ref<NSMutableArray> result = arrayWithCapacity(other.count());
    result->addObjectsFromArray(other);
    return result;
}

Ref<NSMutableArray> NSMutableArray::arrayTakingObjects(std::span<Ref<NSObject>> objects) {
    Ref<NSMutableArray> result = arrayWithCapacity(objects.size());
    for (Ref<NSObject>& each : objects)
        result->append(each.leak());
    return result;
}

/// The form of a mutable list that says, and insists, that it is none.
class NSMutableArray::Frozen final : public NSMutableArray {
public:
    Class& isa() const noexcept override { return NSArray::classObject(); }
    const DispatchTable& dispatchTable() const noexcept override { return NSArray::classObject().instanceMethods(); }
    Ref<NSObject> copy() const override { return share(*this); }
};

Ref<NSMutableArray> NSMutableArray::immutableArray() { return immutableArrayWithArray(NSArray::array()); }

Ref<NSMutableArray> NSMutableArray::immutableArrayWithArray(const NSArray& other) {
    Ref<NSMutableArray> result = adopt(*new Frozen);
    result->reserve(other.count());
    result->addObjectsFromArray(other);
    result->roomBehind_ = result->count_;  // so that adding an object takes the way where the flag is looked at
    result->immutable_ = true;
    return result;
}

void NSMutableArray::willChange(const char* selector) const {
    if (immutable_) [[unlikely]]
        detail::raiseUnrecognizedSelector(*this, Selector::named(selector));
}

// --- Storage ---------------------------------------------------------------------------------------------------------
//
// The elements lie somewhere in the storage, with room before and behind. A gap in the middle is made by moving the
// shorter side; where only the other side has room it is moved as long as that costs little more. When there is no
// room, the elements get new storage, or a new place in the old one when most of it is empty, with the room where it is
// wanted.

void NSMutableArray::relocate(NSUInteger before, NSUInteger capacity) {
    if (capacity == roomBefore() + roomBehind_) {
        std::memmove(storage_ + before, objects_, count_ * sizeof *objects_);
    } else if (!before && !roomBefore()) {
        storage_ = detail::reallocated(storage_, capacity);
    } else {
        NSObject** const fresh = detail::reallocated<NSObject*>(nullptr, capacity);
        std::copy_n(objects_, count_, fresh + before);
        std::free(std::exchange(storage_, fresh));
    }
    objects_ = storage_ + before;
    roomBehind_ = capacity - before;
    ++mutations_;
}

void NSMutableArray::makeRoom(NSUInteger index, NSUInteger length) {
    const NSUInteger old = roomBefore() + roomBehind_;
    const NSUInteger needed = count_ + length;
    const bool roomy = old >= needed && old - needed >= old / 3;
    const NSUInteger capacity = roomy ? old : std::max<NSUInteger>(4, needed + needed / 2);
    const NSUInteger extra = capacity - needed;
    if (index == count_)
        relocate(0, capacity);
    else if (index == 0)
        relocate(length + extra - extra / 4, capacity);
    else
        relocate((index < count_ - index ? length : 0) + extra / 2, capacity);
}

void NSMutableArray::makeRoomBehind() {
    willChange("addObject:");
    makeRoom(count_, 1);
}

// Makes a gap whose content the caller fills in.
NSObject** NSMutableArray::open(NSUInteger index, NSUInteger length) {
    const NSUInteger tail = count_ - index;
    const auto fits = [&](bool front) { return (front ? roomBefore() : roomBehind_ - count_) >= length; };
    bool front = index < tail;
    if (!fits(front)) {
        if (fits(!front) && std::min(index, tail) > count_ / 4)
            front = !front;
        else
            makeRoom(index, length);
    }
    if (front) {
        std::memmove(objects_ - length, objects_, index * sizeof *objects_);
        objects_ -= length;
        roomBehind_ += length;
    } else {
        std::memmove(objects_ + index + length, objects_ + index, tail * sizeof *objects_);
    }
    count_ += length;
    ++mutations_;
    return objects_ + index;
}

// Closes a gap whose content the caller has taken out.
void NSMutableArray::close(NSUInteger index, NSUInteger length) noexcept {
    const NSUInteger tail = count_ - index - length;
    if (index < tail) {
        std::memmove(objects_ + length, objects_, index * sizeof *objects_);
        objects_ += length;
        roomBehind_ -= length;
    } else {
        std::memmove(objects_ + index, objects_ + index + length, tail * sizeof *objects_);
    }
    count_ -= length;
    ++mutations_;
}

void NSMutableArray::reserve(NSUInteger capacity) {
    if (capacity > roomBehind_ && !immutable_)
        relocate(0, capacity);
}

// --- Adding ----------------------------------------------------------------------------------------------------------

void NSMutableArray::addObjectsFromArray(const NSArray& other) {
    willChange("addObjectsFromArray:");
    const NSUInteger added = other.count_;
    if (!added)
        return;
    NSObject** const gap = open(count_, added);
    for (NSUInteger i = 0; i < added; ++i)  // of itself, the list adds what it had
        gap[i] = detail::retained(other.objects_[i]);
}

void NSMutableArray::insertObject_atIndex(NSObject& object, NSUInteger index) {
    willChange("insertObject:atIndex:");
    if (index > count_)
        raiseOutOfBounds("insertObject:atIndex:", index);
    *open(index, 1) = detail::retained(&object);
}

void NSMutableArray::replaceObjectAtIndex_withObject(NSUInteger index, NSObject& object) {
    willChange("replaceObjectAtIndex:withObject:");
    if (index >= count_)
        raiseOutOfBounds("replaceObjectAtIndex:withObject:", index);
    NSObject* const replaced = std::exchange(objects_[index], detail::retained(&object));
    ++mutations_;
    replaced->release();
}

void NSMutableArray::exchangeObjectAtIndex_withObjectAtIndex(NSUInteger first, NSUInteger second) {
    willChange("exchangeObjectAtIndex:withObjectAtIndex:");
    if (std::max(first, second) >= count_)
        raiseOutOfBounds("exchangeObjectAtIndex:withObjectAtIndex:", std::max(first, second));
    std::swap(objects_[first], objects_[second]);
    ++mutations_;
}

void NSMutableArray::replaceObjectsInRange_withObjectsFromArray(NSRange range, const NSArray& other) {
    willChange("replaceObjectsInRange:withObjectsFromArray:");
    checkRange("replaceObjectsInRange:withObjectsFromArray:", range);
    const Ref<NSArray> inserted = NSArray::arrayWithArray(other);
    const Ref<NSArray> replaced = subarrayWithRange(range);
    if (inserted->count_)
        std::copy_n(inserted->objects_, inserted->count_, open(range.location, inserted->count_));
    for (NSObject& each : *inserted)
        each.retain();
    if (!range.length)
        return;
    close(range.location + inserted->count_, range.length);
    for (NSObject& each : *replaced)
        each.release();
}

void NSMutableArray::setArray(const NSArray& other) {
    willChange("setArray:");
    replaceObjectsInRange_withObjectsFromArray({0, count_}, other);
}

// --- Removing --------------------------------------------------------------------------------------------------------
//
// Objects leave the list before they are released, since their destruction may come back to it.

void NSMutableArray::removeAt(NSUInteger index) {
    NSObject* const removed = objects_[index];
    close(index, 1);
    removed->release();
}

void NSMutableArray::removeObjectAtIndex(NSUInteger index) {
    willChange("removeObjectAtIndex:");
    if (index >= count_)
        raiseOutOfBounds("removeObjectAtIndex:", index);
    removeAt(index);
}

void NSMutableArray::removeLastObject() {
    willChange("removeLastObject");
    if (!count_)
        raiseOutOfBounds("removeLastObject", 0);
    removeAt(count_ - 1);
}

void NSMutableArray::removeAllObjects() {
    willChange("removeAllObjects");
    const Ref<NSMutableArray> removed = array();
    std::swap(storage_, removed->storage_);
    std::swap(roomBehind_, removed->roomBehind_);
    std::swap(objects_, removed->objects_);
    std::swap(count_, removed->count_);
    ++mutations_;
}

void NSMutableArray::removeObjectsInRange(NSRange range) {
    willChange("removeObjectsInRange:");
    checkRange("removeObjectsInRange:", range);
    replaceObjectsInRange_withObjectsFromArray(range, NSArray::array());
}

void NSMutableArray::removeObject(const NSObject& object) {
    willChange("removeObject:");
    const Ref<NSObject> searched = share(object);
    removeObjectsPassingTest([&](NSObject& each) { return &each == searched.get() || searched->isEqual(&each); });
}

void NSMutableArray::removeObjectIdenticalTo(const NSObject& object) {
    willChange("removeObjectIdenticalTo:");
    removeObjectsPassingTest([&](NSObject& each) { return &each == &object; });
}

void NSMutableArray::removeObjectsAtIndexes(const NSIndexSet& indexes) {
    willChange("removeObjectsAtIndexes:");
    if (indexes.count() && indexes.lastIndex() >= count_)
        raiseOutOfBounds("removeObjectsAtIndexes:", indexes.lastIndex());
    std::vector<bool> marked(count_);
    for (const NSUInteger index : indexes)
        marked[index] = true;
    removeMarked(marked);
}

NSUInteger NSMutableArray::removeMarked(const std::vector<bool>& marked) {
    willChange("removeObjectsAtIndexes:");
    if (marked.size() != count_)
        detail::raiseMutatedWhileEnumerated(*this);
    std::vector<NSObject*> removed(static_cast<NSUInteger>(std::count(marked.begin(), marked.end(), true)));
    if (removed.empty())
        return 0;
    NSObject** kept = objects_;
    NSObject** out = removed.data();
    for (NSUInteger i = 0; i < count_; ++i)
        *(marked[i] ? out : kept)++ = objects_[i];
    count_ -= removed.size();
    ++mutations_;
    for (NSObject* const each : removed)
        each->release();
    return removed.size();
}

// --- Sorting ---------------------------------------------------------------------------------------------------------

void NSMutableArray::sortUsingSelector(Selector comparator) {
    willChange("sortUsingSelector:");
    const std::uint32_t before = mutations_;
    takeOrder(sortedArrayUsingSelector(comparator), before);
}

void NSMutableArray::sortUsingFunction_context(NSSortFunction compare, void* context) {
    willChange("sortUsingFunction:context:");
    const std::uint32_t before = mutations_;
    takeOrder(sortedArrayUsingFunction_context(compare, context), before);
}

void NSMutableArray::takeOrder(const NSArray& sorted, std::uint32_t before) {
    if (mutations_ != before)
        detail::raiseMutatedWhileEnumerated(*this);
    std::copy_n(sorted.objects_, count_, objects_);  // the same objects, so each keeps its references
    ++mutations_;
}

Ref<NSObject> NSMutableArray::copy() const { return NSArray::arrayWithObjects(objects_, count_); }

namespace {

const Additions<NSMutableArray> additions{
    classLevel<&NSMutableArray::array>("array"),
    classLevel<&NSMutableArray::arrayWithCapacity>("arrayWithCapacity:"),
    classLevel<&NSMutableArray::arrayWithObject>("arrayWithObject:"),
    classLevel<&NSMutableArray::arrayWithArray>("arrayWithArray:"),
    instance<static_cast<void (NSMutableArray::*)(NSObject&)>(&NSMutableArray::addObject)>("addObject:"),
    instance<&NSMutableArray::addObjectsFromArray>("addObjectsFromArray:"),
    instance<&NSMutableArray::insertObject_atIndex>("insertObject:atIndex:"),
    instance<&NSMutableArray::replaceObjectAtIndex_withObject>("replaceObjectAtIndex:withObject:"),
    instance<&NSMutableArray::exchangeObjectAtIndex_withObjectAtIndex>("exchangeObjectAtIndex:withObjectAtIndex:"),
    instance<&NSMutableArray::replaceObjectsInRange_withObjectsFromArray>(
        "replaceObjectsInRange:withObjectsFromArray:"),
    instance<&NSMutableArray::setArray>("setArray:"),
    instance<&NSMutableArray::removeObjectAtIndex>("removeObjectAtIndex:"),
    instance<&NSMutableArray::removeLastObject>("removeLastObject"),
    instance<&NSMutableArray::removeAllObjects>("removeAllObjects"),
    instance<&NSMutableArray::removeObject>("removeObject:"),
    instance<&NSMutableArray::removeObjectIdenticalTo>("removeObjectIdenticalTo:"),
    instance<&NSMutableArray::removeObjectsInRange>("removeObjectsInRange:"),
    instance<&NSMutableArray::removeObjectsAtIndexes>("removeObjectsAtIndexes:"),
    instance<&NSMutableArray::sortUsingSelector>("sortUsingSelector:"),
    instance<&NSMutableArray::sortUsingFunction_context>("sortUsingFunction:context:"),
};

}  // namespace

}  // namespace tovi
