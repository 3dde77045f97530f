#pragma once

#include <array>
#include <compare>
#include <span>
#include <vector>

#include <ToviFoundationKit/Foundation/FastEnumeration.h>
#include <ToviFoundationKit/Runtime/Box.h>

namespace tovi {

class NSEnumerator;
class NSIndexSet;
class NSPredicate;
namespace detail {
struct CollectionAccess;
}

/// Orders two objects: negative, zero or positive.
using NSSortFunction = NSInteger (*)(NSObject& a, NSObject& b, void* context);

/// A list of objects, which it retains. Indexes count from 0 and raise NSRangeException where there is no element.
///
/// Equality, hash, description and destruction follow nested lists, dictionaries and sets to any depth without deep
/// recursion. A list that contains itself, at whatever depth, can only be held and enumerated: the first three of these
/// do not end, and it is never destroyed.
class TOVI_EXPORT NSArray : public NSObject {
    TOVI_DECLARE_CLASS(NSArray)

public:
    class Iterator;

    static Ref<NSArray> array();
    static Ref<NSArray> arrayWithObject(NSObject& object);
    static Ref<NSArray> arrayWithArray(const NSArray& other);
    /// A list of the arguments: objects as they are; numbers, text and structures boxed. `NSArray::of(1, u"two", 3.0)`
    template <class... A> static Ref<NSArray> of(const A&... values);
    /// The same for the elements of a range.
    template <std::ranges::input_range R> static Ref<NSArray> from(R&& values);
    /// A list of these objects, whose references it takes over.
    static Ref<NSArray> arrayTakingObjects(std::span<Ref<NSObject>> objects);

    NSUInteger count() const noexcept { return count_; }
    Ref<NSObject> objectAtIndex(NSUInteger index) const { return (*this)[index]; }
    /// Borrowed: valid as long as the list holds it.
    NSObject& operator[](NSUInteger index) const {
        if (index >= count_) [[unlikely]]
            raiseOutOfBounds("objectAtIndex:", index);
        return *objects_[index];
    }
    id firstObject() const noexcept { return count_ ? id(objects_[0]) : id(); }  ///< nil when empty
    id lastObject() const noexcept { return count_ ? id(objects_[count_ - 1]) : id(); }
    /// Changing the list in a range-for raises NSGenericException at the next step. The list must be held by somebody
    /// meanwhile, which a temporary Ref does not do; `each` does.
    Iterator begin() const noexcept;
    Iterator end() const noexcept;
    /// The elements as objects of one class, checked as they are reached.
    template <class T> TypedView<T, NSArray> each() const noexcept { return TypedView<T, NSArray>(*this); }
    Ref<NSEnumerator> objectEnumerator() const;
    Ref<NSEnumerator> reverseObjectEnumerator() const;

    /// By equality, first to last; NSNotFound when there is none.
    NSUInteger indexOfObject(const NSObject& object) const;
    NSUInteger indexOfObject_inRange(const NSObject& object, NSRange range) const;
    /// The very object.
    NSUInteger indexOfObjectIdenticalTo(const NSObject& object) const;
    NSUInteger indexOfObjectIdenticalTo_inRange(const NSObject& object, NSRange range) const;
    bool containsObject(const NSObject& object) const;
    bool isEqualToArray(const NSArray& other) const;

    Ref<NSArray> subarrayWithRange(NSRange range) const;
    Ref<NSArray> objectsAtIndexes(const NSIndexSet& indexes) const;
    Ref<NSArray> arrayByAddingObject(NSObject& object) const;
    Ref<NSArray> arrayByAddingObjectsFromArray(const NSArray& other) const;
    /// The descriptions of the elements with the separator between them.
    Ref<NSString> componentsJoinedByString(const NSString& separator) const;

    void makeObjectsPerformSelector(Selector selector) const;
    void makeObjectsPerformSelector_withObject(Selector selector, NSObject* argument) const;

    /// Sorting is stable. A comparison that throws, or is inconsistent, does no harm; an inconsistent one leaves the
    /// order open. The selector takes one object and answers an ordering ("compare:").
    Ref<NSArray> sortedArrayUsingSelector(Selector comparator) const;
    Ref<NSArray> sortedArrayUsingFunction_context(NSSortFunction compare, void* context) const;
    /// With any callable that orders two objects: `[](NSObject& a, NSObject& b) { return NSOrderedSame; }`.
    template <std::invocable<NSObject&, NSObject&> F> Ref<NSArray> sortedArrayUsing(F compare) const;

    /// The elements for which the predicate is true, in their order.
    Ref<NSArray> filteredArrayUsingPredicate(const NSPredicate& predicate) const;

    bool isEqual(const NSObject* other) const override;
    NSUInteger hash() const override;
    /// "(\n    1,\n    two\n)". Texts other than plain words (ASCII letters and digits) are quoted and escaped; nested
    /// collections are indented by four more spaces, up to 64.
    Ref<NSString> description() const override;
    Ref<NSObject> copy() const override;
    Ref<NSObject> mutableCopy() const override;  ///< an NSMutableArray
    /// The elements' values for the key, nil as NSNull.
    id valueForKey(const NSString& key) override;
    /// Follows the path key by key. The collection operators take what the rest of the path gives for the list (the
    /// list itself, when there is no rest): `@count`, `@sum`, `@avg`, `@min`, `@max`, `@unionOfObjects`,
    /// `@distinctUnionOfObjects`; and for a list of lists or sets `@unionOfArrays`, `@distinctUnionOfArrays`,
    /// `@distinctUnionOfSets`. They pass over nil. Without values the sum and the average are 0, the minimum and the
    /// maximum nil. The key `self` is the value itself. `list->valueForKeyPath(u"@sum.price"_ns)`
    id valueForKeyPath(const NSString& path) override;

    static void operator delete(void* memory);

protected:
    NSArray() noexcept = default;
    ~NSArray() override;

    [[noreturn]] void raiseOutOfBounds(const char* selector, NSUInteger index) const;
    void checkRange(const char* selector, NSRange range) const;

    std::uint32_t mutations_ = 0;
    NSObject** objects_ = nullptr;
    NSUInteger count_ = 0;

private:
    friend class FastEnumeration;
    friend class NSMutableArray;
    friend struct detail::CollectionAccess;
    static Ref<NSArray> allocate(NSUInteger count);
    static Ref<NSArray> arrayWithObjects(NSObject* const* objects, NSUInteger count);
    void append(NSObject* const* objects, NSUInteger count) noexcept;
    template <class Sort> Ref<NSArray> sortedCopy(Sort sort) const;
    template <class F> static NSInteger invokeComparison(NSObject& a, NSObject& b, void* context) {
        return static_cast<NSInteger>((*static_cast<F*>(context))(a, b));
    }
};

/// A random-access iterator over the elements.
class NSArray::Iterator {
public:
    using iterator_category = std::random_access_iterator_tag;
    using value_type = NSObject;
    using difference_type = std::ptrdiff_t;
    using pointer = NSObject*;
    using reference = NSObject&;

    Iterator() noexcept = default;

    NSObject& operator*() const { return **checked(); }
    NSObject* operator->() const { return *checked(); }
    NSObject& operator[](difference_type n) const { return *checked()[n]; }
    Iterator& operator++() noexcept { return *this += 1; }
    Iterator& operator--() noexcept { return *this -= 1; }
    Iterator operator++(int) noexcept { return *this += 1, *this - 1; }
    Iterator operator--(int) noexcept { return *this -= 1, *this + 1; }
    Iterator& operator+=(difference_type n) noexcept { return position_ += n, *this; }
    Iterator& operator-=(difference_type n) noexcept { return position_ -= n, *this; }
    friend Iterator operator+(Iterator i, difference_type n) noexcept { return i += n; }
    friend Iterator operator+(difference_type n, Iterator i) noexcept { return i += n; }
    friend Iterator operator-(Iterator i, difference_type n) noexcept { return i -= n; }
    friend difference_type operator-(Iterator a, Iterator b) noexcept { return a.position_ - b.position_; }
    friend bool operator==(Iterator a, Iterator b) noexcept { return a.position_ == b.position_; }
    friend auto operator<=>(Iterator a, Iterator b) noexcept { return a.position_ <=> b.position_; }

private:
    friend class NSArray;
    Iterator(const NSArray& array, NSObject* const* position) noexcept
        : position_(position), array_(&array), expected_(array.mutations_) {}

    NSObject* const* checked() const {
        if (array_->mutations_ != expected_) [[unlikely]]
            detail::raiseMutatedWhileEnumerated(*array_);
        return position_;
    }

    NSObject* const* position_ = nullptr;
    const NSArray* array_ = nullptr;
    std::uint32_t expected_ = 0;
};

inline NSArray::Iterator NSArray::begin() const noexcept { return {*this, objects_}; }
inline NSArray::Iterator NSArray::end() const noexcept { return {*this, objects_ + count_}; }

template <class... A> Ref<NSArray> NSArray::of(const A&... values) {
    std::array<Ref<NSObject>, sizeof...(A)> objects{Ref<NSObject>(box(values))...};
    return arrayTakingObjects(objects);
}

template <std::ranges::input_range R> Ref<NSArray> NSArray::from(R&& values) {
    std::vector<Ref<NSObject>> objects;
    if constexpr (std::ranges::sized_range<R>)
        objects.reserve(std::ranges::size(values));
    for (auto&& value : values)
        objects.push_back(box(value));
    return arrayTakingObjects(objects);
}

template <std::invocable<NSObject&, NSObject&> F> Ref<NSArray> NSArray::sortedArrayUsing(F compare) const {
    return sortedArrayUsingFunction_context(&invokeComparison<F>, &compare);
}

}  // namespace tovi
