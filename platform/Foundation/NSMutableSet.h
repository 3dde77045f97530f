#pragma once

#include <ToviFoundationKit/Foundation/NSSet.h>

namespace tovi {

/// A set that can be changed. Not for several threads at once.
class TOVI_EXPORT NSMutableSet final : public NSSet {
    TOVI_DECLARE_CLASS(NSMutableSet)

public:
    static Ref<NSMutableSet> set();
    static Ref<NSMutableSet> setWithCapacity(NSUInteger capacity);
    static Ref<NSMutableSet> setWithObject(NSObject& object);
    static Ref<NSMutableSet> setWithArray(const NSArray& array);
    static Ref<NSMutableSet> setWithSet(const NSSet& other);
    /// The elements that are in one of the two sets only.
    static Ref<NSMutableSet> symmetricDifference(const NSSet& a, const NSSet& b);
    template <class... A> static Ref<NSMutableSet> of(const A&... values) {
        return setWithArray(NSArray::of(values...));
    }
    template <std::ranges::input_range R> static Ref<NSMutableSet> from(R&& values) {
        return setWithArray(NSArray::from(std::forward<R>(values)));
    }

    void addObject(NSObject& object);  ///< nothing happens when an equal one is there
    void addObjectsFromArray(const NSArray& array);
    void removeObject(const NSObject& object);
    void removeAllObjects();
    void unionSet(const NSSet& other);
    void minusSet(const NSSet& other);
    void intersectSet(const NSSet& other);
    void setSet(const NSSet& other);
    void filterUsingPredicate(const NSPredicate& predicate);  ///< keeps the elements for which it is true
    /// Room for so many elements in all.
    void reserve(NSUInteger capacity);

    Ref<NSObject> copy() const override;  ///< an NSSet

private:
    NSMutableSet() noexcept = default;
    explicit NSMutableSet(Table table) noexcept : NSSet(std::move(table)) {}
};

}  // namespace tovi
