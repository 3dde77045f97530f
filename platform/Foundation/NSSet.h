#pragma once

#include <ToviFoundationKit/Foundation/HashTable.h>
#include <ToviFoundationKit/Foundation/NSArray.h>

namespace tovi {

/// Objects without duplicates, as equality has it. They are enumerated in the order in which they were added. An object
/// must not change its equality while it is in a set. What NSArray says about depth holds here too.
class TOVI_EXPORT NSSet : public NSObject {
    TOVI_DECLARE_CLASS(NSSet)

public:
    class Iterator;

    static Ref<NSSet> set();
    static Ref<NSSet> setWithObject(NSObject& object);
    static Ref<NSSet> setWithArray(const NSArray& array);
    static Ref<NSSet> setWithSet(const NSSet& other);
    /// As NSArray::of and NSArray::from.
    template <class... A> static Ref<NSSet> of(const A&... values) { return setWithArray(NSArray::of(values...)); }
    template <std::ranges::input_range R> static Ref<NSSet> from(R&& values) {
        return setWithArray(NSArray::from(std::forward<R>(values)));
    }

    NSUInteger count() const noexcept { return table_.count(); }
    id member(const NSObject& object) const;  ///< the element equal to the object, or nil
    bool containsObject(const NSObject& object) const;
    id anyObject() const;  ///< nil when empty
    Ref<NSArray> allObjects() const;
    Ref<NSEnumerator> objectEnumerator() const;
    /// Changing the set in a range-for raises NSGenericException at the next step.
    Iterator begin() const noexcept;
    Iterator end() const noexcept;
    template <class T> TypedView<T, NSSet> each() const noexcept { return TypedView<T, NSSet>(*this); }

    bool isSubsetOfSet(const NSSet& other) const;
    bool intersectsSet(const NSSet& other) const;
    bool isEqualToSet(const NSSet& other) const;
    void makeObjectsPerformSelector(Selector selector) const;
    void makeObjectsPerformSelector_withObject(Selector selector, NSObject* argument) const;

    /// The elements for which the predicate is true.
    Ref<NSSet> filteredSetUsingPredicate(const NSPredicate& predicate) const;

    bool isEqual(const NSObject* other) const override;
    NSUInteger hash() const override;
    /// "{(\n    1,\n    two\n)}", as NSArray's.
    Ref<NSString> description() const override;
    Ref<NSObject> copy() const override;
    Ref<NSObject> mutableCopy() const override;  ///< an NSMutableSet
    /// The set of the elements' values for the key, nil left out.
    id valueForKey(const NSString& key) override;
    /// As NSArray's; the unions are sets.
    id valueForKeyPath(const NSString& path) override;

protected:
    using Table = detail::HashTable<detail::SetEntry>;
    NSSet() noexcept = default;
    explicit NSSet(Table table) noexcept : table_(std::move(table)) {}
    ~NSSet() override = default;

    void insert(NSObject& object);
    void insertAll(const NSArray& array);

    std::uint32_t mutations_ = 0;
    Table table_;

private:
    friend class FastEnumeration;
    friend class NSMutableSet;
    friend struct detail::CollectionAccess;
};

/// A forward iterator over the elements.
class NSSet::Iterator {
public:
    using iterator_category = std::forward_iterator_tag;
    using value_type = NSObject;
    using difference_type = std::ptrdiff_t;
    using pointer = NSObject*;
    using reference = NSObject&;

    Iterator() noexcept = default;
    NSObject& operator*() const {
        check();
        return *position_->key;
    }
    NSObject* operator->() const { return &**this; }
    Iterator& operator++() {
        check();
        ++position_;
        skipHoles();
        return *this;
    }
    Iterator operator++(int) {
        const Iterator before = *this;
        ++*this;
        return before;
    }
    friend bool operator==(Iterator a, Iterator b) noexcept { return a.position_ == b.position_; }

private:
    friend class NSSet;
    Iterator(const NSSet& set, const detail::SetEntry* position) noexcept
        : position_(position), set_(&set), expected_(set.mutations_) {
        skipHoles();
    }
    void check() const {
        if (set_->mutations_ != expected_) [[unlikely]]
            detail::raiseMutatedWhileEnumerated(*set_);
    }
    void skipHoles() noexcept {
        while (position_ != set_->table_.end() && !position_->key)
            ++position_;
    }

    const detail::SetEntry* position_ = nullptr;
    const NSSet* set_ = nullptr;
    std::uint32_t expected_ = 0;
};

inline NSSet::Iterator NSSet::begin() const noexcept { return {*this, table_.begin()}; }
inline NSSet::Iterator NSSet::end() const noexcept { return {*this, table_.end()}; }

}  // namespace tovi
