#include <ToviFoundationKit/Foundation/NSArray.h>

#include <algorithm>
#include <limits>
#include <new>

#include <ToviFoundationKit/Foundation/Collections_p.h>
#include <ToviFoundationKit/Foundation/Enumerators_p.h>
#include <ToviFoundationKit/Foundation/NSIndexSet.h>
#include <ToviFoundationKit/Foundation/NSMutableArray.h>
#include <ToviFoundationKit/Foundation/NSNull.h>
#include <ToviFoundationKit/Runtime/Additions.h>
#include <ToviFoundationKit/Runtime/Message.h>
#include <ToviFoundationKit/Runtime/NSException.h>

namespace tovi {

TOVI_DEFINE_CLASS(NSArray, NSObject)

// An immutable list keeps its elements behind itself, in one piece of memory.
void NSArray::operator delete(void* memory) { ::operator delete(memory); }

Ref<NSArray> NSArray::allocate(NSUInteger count) {
    if (count > (std::numeric_limits<std::ptrdiff_t>::max() - sizeof(NSArray)) / sizeof(NSObject*))
        throw std::bad_array_new_length();
    void* const memory = ::operator new(sizeof(NSArray) + count * sizeof(NSObject*));
    NSArray& array = *new (memory) NSArray;
    array.objects_ = reinterpret_cast<NSObject**>(&array + 1);
    return adopt(array);
}

NSArray::~NSArray() {
    for (NSUInteger i = 0; i < count_; ++i)
        objects_[i]->release();
}

Ref<NSArray> NSArray::array() {
    static NSArray& empty = *allocate(0).leak();
    return empty;
}

Ref<NSArray> NSArray::arrayWithObject(NSObject& object) {
    NSObject* const only = &object;
    return arrayWithObjects(&only, 1);
}

Ref<NSArray> NSArray::arrayWithArray(const NSArray& other) { return static_cast<NSArray&>(*other.copy()); }

Ref<NSArray> NSArray::arrayWithObjects(NSObject* const* objects, NSUInteger count) {
    if (!count)
        return array();
    Ref<NSArray> result = allocate(count);
    result->append(objects, count);
    return result;
}

// Only for a new list that was allocated with room for them.
void NSArray::append(NSObject* const* objects, NSUInteger count) noexcept {
    for (NSUInteger i = 0; i < count; ++i)
        objects_[count_ + i] = detail::retained(objects[i]);
    count_ += count;
}

Ref<NSArray> NSArray::arrayTakingObjects(std::span<Ref<NSObject>> objects) {
    if (objects.empty())
        return array();
    Ref<NSArray> result = allocate(objects.size());
    for (Ref<NSObject>& each : objects)
        result->objects_[result->count_++] = each.leak();
    return result;
}

void NSArray::raiseOutOfBounds(const char* selector, NSUInteger index) const {
    if (!count_)
        NSException::raise(NSRangeException, u"*** -[%s %s]: index %lu beyond bounds for empty array", isa().name(),
                           selector, index);
    NSException::raise(NSRangeException, u"*** -[%s %s]: index %lu beyond bounds [0 .. %lu]", isa().name(), selector,
                       index, count_ - 1);
}

void NSArray::checkRange(const char* selector, NSRange range) const {
    if (range.fitsIn(count_)) [[likely]]
        return;
    if (!count_)
        NSException::raise(NSRangeException, u"*** -[%s %s]: range {%lu, %lu} extends beyond bounds for empty array",
                           isa().name(), selector, range.location, range.length);
    NSException::raise(NSRangeException, u"*** -[%s %s]: range {%lu, %lu} extends beyond bounds [0 .. %lu]",
                       isa().name(), selector, range.location, range.length, count_ - 1);
}

Ref<NSEnumerator> NSArray::objectEnumerator() const { return detail::enumeratorOver(*this); }

namespace {

class ReverseEnumerator final : public NSEnumerator {
public:
    explicit ReverseEnumerator(const NSArray& array) : array_(share(array)), position_(array.end()) {}

    id nextObject() override { return position_ == array_->begin() ? nullptr : id(*--position_); }

private:
    Ref<NSArray> array_;
    NSArray::Iterator position_;
};

}  // namespace

Ref<NSEnumerator> NSArray::reverseObjectEnumerator() const { return adopt(*new ReverseEnumerator(*this)); }

NSUInteger NSArray::indexOfObject(const NSObject& object) const { return indexOfObject_inRange(object, {0, count_}); }

// An element's equality may be a host's code, which may change the list.
NSUInteger NSArray::indexOfObject_inRange(const NSObject& object, NSRange range) const {
    checkRange("indexOfObject:inRange:", range);
    for (NSUInteger i = range.location; i < std::min(range.end(), count_); ++i)
        if (objects_[i] == &object || object.isEqual(objects_[i]))
            return i;
    return NSNotFound;
}

NSUInteger NSArray::indexOfObjectIdenticalTo(const NSObject& object) const {
    return indexOfObjectIdenticalTo_inRange(object, {0, count_});
}

NSUInteger NSArray::indexOfObjectIdenticalTo_inRange(const NSObject& object, NSRange range) const {
    checkRange("indexOfObjectIdenticalTo:inRange:", range);
    NSObject** const end = objects_ + range.end();
    NSObject** const found = std::find(objects_ + range.location, end, &object);
    return found == end ? NSNotFound : static_cast<NSUInteger>(found - objects_);
}

bool NSArray::containsObject(const NSObject& object) const { return indexOfObject(object) != NSNotFound; }

Ref<NSArray> NSArray::subarrayWithRange(NSRange range) const {
    checkRange("subarrayWithRange:", range);
    return arrayWithObjects(objects_ + range.location, range.length);
}

Ref<NSArray> NSArray::objectsAtIndexes(const NSIndexSet& indexes) const {
    if (indexes.count() && indexes.lastIndex() >= count_)
        raiseOutOfBounds("objectsAtIndexes:", indexes.lastIndex());
    Ref<NSArray> result = allocate(indexes.count());
    for (const NSUInteger index : indexes)
        result->objects_[result->count_++] = detail::retained(objects_[index]);
    return result;
}

Ref<NSArray> NSArray::arrayByAddingObject(NSObject& object) const {
    Ref<NSArray> result = allocate(count_ + 1);
    result->append(objects_, count_);
    NSObject* const last = &object;
    result->append(&last, 1);
    return result;
}

Ref<NSArray> NSArray::arrayByAddingObjectsFromArray(const NSArray& other) const {
    Ref<NSArray> result = allocate(count_ + other.count_);
    result->append(objects_, count_);
    result->append(other.objects_, other.count_);
    return result;
}

Ref<NSString> NSArray::componentsJoinedByString(const NSString& separator) const {
    std::u16string joined;
    std::u16string_view gap;
    for (NSObject& each : *this) {
        joined += gap;
        joined += each.description()->view();
        gap = separator;
    }
    return NSString::stringWithCharacters(joined);
}

void NSArray::makeObjectsPerformSelector(Selector selector) const {
    MessageSite site(selector);
    for (NSObject& each : *this)
        site.send(each);
}

void NSArray::makeObjectsPerformSelector_withObject(Selector selector, NSObject* argument) const {
    MessageSite site(selector);
    for (NSObject& each : *this)
        site.send(each, argument);
}

bool NSArray::isEqualToArray(const NSArray& other) const { return detail::equalLists(*this, other); }

bool NSArray::isEqual(const NSObject* other) const {
    if (this == other)
        return true;
    const auto* const array = as<NSArray>(other);
    return array && isEqualToArray(*array);
}

NSUInteger NSArray::hash() const { return detail::hashOfCollection(*this, detail::CollectionKind::Array); }

Ref<NSString> NSArray::description() const {
    return detail::descriptionOfCollection(*this, detail::CollectionKind::Array);
}

Ref<NSObject> NSArray::copy() const { return share(*this); }

Ref<NSObject> NSArray::mutableCopy() const { return NSMutableArray::arrayWithArray(*this); }

id NSArray::valueForKey(const NSString& key) {
    std::vector<Ref<NSObject>> values;
    values.reserve(count_);
    for (NSObject& each : *this) {
        id value = each.valueForKey(key);
        values.push_back(value ? value.ref() : Ref<NSObject>(NSNull::null()));
    }
    return arrayTakingObjects(values);
}

namespace {

const Additions<NSArray> additions{
    classLevel<&NSArray::array>("array"),
    classLevel<&NSArray::arrayWithObject>("arrayWithObject:"),
    classLevel<&NSArray::arrayWithArray>("arrayWithArray:"),
    instance<&NSArray::count>("count"),
    instance<&NSArray::objectAtIndex>("objectAtIndex:"),
    instance<&NSArray::firstObject>("firstObject"),
    instance<&NSArray::lastObject>("lastObject"),
    instance<&NSArray::objectEnumerator>("objectEnumerator"),
    instance<&NSArray::reverseObjectEnumerator>("reverseObjectEnumerator"),
    instance<&NSArray::indexOfObject>("indexOfObject:"),
    instance<&NSArray::indexOfObject_inRange>("indexOfObject:inRange:"),
    instance<&NSArray::indexOfObjectIdenticalTo>("indexOfObjectIdenticalTo:"),
    instance<&NSArray::indexOfObjectIdenticalTo_inRange>("indexOfObjectIdenticalTo:inRange:"),
    instance<&NSArray::containsObject>("containsObject:"),
    instance<&NSArray::isEqualToArray>("isEqualToArray:"),
    instance<&NSArray::subarrayWithRange>("subarrayWithRange:"),
    instance<&NSArray::objectsAtIndexes>("objectsAtIndexes:"),
    instance<&NSArray::arrayByAddingObject>("arrayByAddingObject:"),
    instance<&NSArray::arrayByAddingObjectsFromArray>("arrayByAddingObjectsFromArray:"),
    instance<&NSArray::componentsJoinedByString>("componentsJoinedByString:"),
    instance<&NSArray::makeObjectsPerformSelector>("makeObjectsPerformSelector:"),
    instance<&NSArray::makeObjectsPerformSelector_withObject>("makeObjectsPerformSelector:withObject:"),
    instance<&NSArray::sortedArrayUsingSelector>("sortedArrayUsingSelector:"),
    instance<&NSArray::sortedArrayUsingFunction_context>("sortedArrayUsingFunction:context:"),
};

}  // namespace

}  // namespace tovi
