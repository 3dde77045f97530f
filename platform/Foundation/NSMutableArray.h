#pragma once

#include <ToviFoundationKit/Foundation/NSArray.h>

namespace tovi {

/// A list that can be changed. Adding and removing are fast at both ends, and move the shorter side in the middle. Not
/// for several threads at once.
///
/// An operation that raises NSRangeException has changed nothing. The list may turn out immutable (see
/// `immutableArray`).
class TOVI_EXPORT NSMutableArray : public NSArray {
public:
    static Class& classObject() noexcept { return class_.value; }
    Class& isa() const noexcept override { return class_.value; }
    const DispatchTable& dispatchTable() const noexcept override { return class_.value.instanceMethods(); }

    static Ref<NSMutableArray> array();
    static Ref<NSMutableArray> arrayWithCapacity(NSUInteger capacity);
    static Ref<NSMutableArray> arrayWithObject(NSObject& object);
    static Ref<NSMutableArray> arrayWithArray(const NSArray& other);
    template <class... A> static Ref<NSMutableArray> of(const A&... values);
    template <std::ranges::input_range R> static Ref<NSMutableArray> from(R&& values);
    static Ref<NSMutableArray> arrayTakingObjects(std::span<Ref<NSObject>> objects);
    /// An immutable list for a place that asks for a mutable one: its class is NSArray, and changing it raises
    /// NSInvalidArgumentException, as sending a list a message that it does not know.
    static Ref<NSMutableArray> immutableArray();
    static Ref<NSMutableArray> immutableArrayWithArray(const NSArray& other);

    void addObject(NSObject& object) {
        if (count_ == roomBehind_) [[unlikely]]
            makeRoomBehind();
        object.retain();
        append(&object);
    }
    /// Takes the reference over.
    template <class T> void addObject(Ref<T>&& object) {
        if (count_ == roomBehind_) [[unlikely]]
            makeRoomBehind();
        append(object.leak());
    }
    void addObjectsFromArray(const NSArray& other);
    /// The index may be the count.
    void insertObject_atIndex(NSObject& object, NSUInteger index);
    void replaceObjectAtIndex_withObject(NSUInteger index, NSObject& object);
    void exchangeObjectAtIndex_withObjectAtIndex(NSUInteger first, NSUInteger second);
    /// Puts the other list's elements, as a block, in the place of a range, which may be empty.
    void replaceObjectsInRange_withObjectsFromArray(NSRange range, const NSArray& other);
    void setArray(const NSArray& other);

    void removeObjectAtIndex(NSUInteger index);
    void removeLastObject();  ///< raises NSRangeException when there is none
    void removeAllObjects();
    void removeObject(const NSObject& object);  ///< every equal element
    void removeObjectIdenticalTo(const NSObject& object);
    void removeObjectsInRange(NSRange range);
    void removeObjectsAtIndexes(const NSIndexSet& indexes);
    /// Every element for which the callable answers true, in one pass. Answers how many they were.
    template <std::predicate<NSObject&> F> NSUInteger removeObjectsPassingTest(F test);

    /// Keeps the elements for which the predicate is true.
    void filterUsingPredicate(const NSPredicate& predicate);

    /// As `sortedArray...`. When a comparison throws the list stays as it was.
    void sortUsingSelector(Selector comparator);
    void sortUsingFunction_context(NSSortFunction compare, void* context);
    template <std::invocable<NSObject&, NSObject&> F> void sortUsing(F compare) {
        sortUsingFunction_context(&invokeComparison<F>, &compare);
    }

    /// Sorts by objects that stand for the elements, one for each in their order: the comparator is sent to these. Nil
    /// compares as same. Raises NSInvalidArgumentException when there are more or fewer of them than elements.
    void sortUsingKeys(std::span<const id> keys, Selector comparator, bool descending = false);

    /// Room for so many elements in all.
    void reserve(NSUInteger capacity);

    Ref<NSObject> copy() const override;  ///< an NSArray

protected:
    NSMutableArray() noexcept = default;
    ~NSMutableArray() override;
    TOVI_CLASS_RECIPE(NSMutableArray)
    static detail::ImmortalClass class_;
    static const ClassRegistrar registrar_;

private:
    class Frozen;

    void append(NSObject* owned) noexcept {
        objects_[count_++] = owned;
        ++mutations_;
    }
    NSUInteger roomBefore() const noexcept { return static_cast<NSUInteger>(objects_ - storage_); }
    void willChange(const char* selector) const;
    void relocate(NSUInteger before, NSUInteger capacity);
    void makeRoom(NSUInteger index, NSUInteger length);
    void makeRoomBehind();
    NSObject** open(NSUInteger index, NSUInteger length);
    void close(NSUInteger index, NSUInteger length) noexcept;
    void removeAt(NSUInteger index);
    NSUInteger removeMarked(const std::vector<bool>& marked);
    void takeOrder(const NSArray& sorted, std::uint32_t before);

    NSObject** storage_ = nullptr;
    NSUInteger roomBehind_ = 0;  ///< how many elements fit from the first one to the end of the storage
    bool immutable_ = false;
};

template <class... A> Ref<NSMutableArray> NSMutableArray::of(const A&... values) {
    std::array<Ref<NSObject>, sizeof...(A)> objects{Ref<NSObject>(box(values))...};
    return arrayTakingObjects(objects);
}

template <std::ranges::input_range R> Ref<NSMutableArray> NSMutableArray::from(R&& values) {
    const Ref<NSMutableArray> array = NSMutableArray::array();
    if constexpr (std::ranges::sized_range<R>)
        array->reserve(std::ranges::size(values));
    for (auto&& value : values)
        array->addObject(Ref<NSObject>(box(value)));
    return array;
}

template <std::predicate<NSObject&> F> NSUInteger NSMutableArray::removeObjectsPassingTest(F test) {
    std::vector<bool> marked;
    marked.reserve(count_);
    for (NSObject& each : *this)
        marked.push_back(test(each));
    return removeMarked(marked);
}

}  // namespace tovi
