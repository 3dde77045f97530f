#pragma once

#include <initializer_list>
#include <iterator>
#include <vector>

#include <ToviFoundationKit/Foundation/FastEnumeration.h>
#include <ToviFoundationKit/Foundation/IndexBlocks.h>

namespace tovi {

/// Unsigned indexes in ascending order, kept as runs. An index is less than NSNotFound; others raise NSRangeException.
/// Look-ups take logarithmic time, enumerating and combining linear time in the number of runs.
class TOVI_EXPORT NSIndexSet : public NSObject {
    TOVI_DECLARE_CLASS(NSIndexSet)

public:
    class Iterator;

    static Ref<NSIndexSet> indexSet();
    static Ref<NSIndexSet> indexSetWithIndex(NSUInteger index);
    static Ref<NSIndexSet> indexSetWithIndexesInRange(NSRange range);
    static Ref<NSIndexSet> indexSetWithIndexSet(const NSIndexSet& other);
    static Ref<NSIndexSet> of(std::initializer_list<NSUInteger> indexes);

    NSUInteger count() const noexcept { return blocks_.count(); }
    /// These four answer NSNotFound when there is no such index.
    NSUInteger firstIndex() const noexcept;
    NSUInteger lastIndex() const noexcept;
    NSUInteger indexGreaterThanIndex(NSUInteger index) const noexcept;
    NSUInteger indexLessThanIndex(NSUInteger index) const noexcept;
    bool containsIndex(NSUInteger index) const noexcept { return blocks_.contains(index); }
    bool containsIndexesInRange(NSRange range) const noexcept;  ///< all of them; false for an empty range
    bool containsIndexes(const NSIndexSet& other) const noexcept;
    NSUInteger countOfIndexesInRange(NSRange range) const noexcept;
    bool isEqualToIndexSet(const NSIndexSet& other) const noexcept;

    /// The indexes, ascending. Changing the set in a range-for raises NSGenericException at the next step.
    Iterator begin() const noexcept;
    std::default_sentinel_t end() const noexcept { return {}; }
    /// The runs, ascending; no two touch.
    std::vector<NSRange> ranges() const;

    bool isEqual(const NSObject* other) const override;
    NSUInteger hash() const override;
    /// "<NSIndexSet: 0x...>[number of indexes: 3 (in 2 ranges), indexes: (0-1 5)]"; "(no indexes)" after the address
    /// when it is empty.
    Ref<NSString> description() const override;
    Ref<NSObject> copy() const override;
    Ref<NSObject> mutableCopy() const override;  ///< an NSMutableIndexSet

protected:
    NSIndexSet() noexcept = default;
    explicit NSIndexSet(detail::IndexBlocks blocks) noexcept : blocks_(std::move(blocks)) {}
    ~NSIndexSet() override = default;

    static void checkRange(const char* operation, NSRange range);

    std::uint32_t mutations_ = 0;
    detail::IndexBlocks blocks_;

private:
    friend class NSMutableIndexSet;
};

/// A forward iterator over the indexes.
class NSIndexSet::Iterator {
public:
    using value_type = NSUInteger;
    using difference_type = std::ptrdiff_t;

    Iterator() noexcept = default;
    NSUInteger operator*() const noexcept { return index_; }
    Iterator& operator++() {
        if (set_->mutations_ != expected_) [[unlikely]]
            detail::raiseMutatedWhileEnumerated(*set_);
        if (++index_ == runEnd_)
            load(cursor_.next());
        return *this;
    }
    Iterator operator++(int) {
        const Iterator before = *this;
        ++*this;
        return before;
    }
    bool operator==(const Iterator& other) const noexcept { return index_ == other.index_; }
    bool operator==(std::default_sentinel_t) const noexcept { return runEnd_ == 0; }

private:
    friend class NSIndexSet;
    explicit Iterator(const NSIndexSet& set) noexcept
        : set_(&set), cursor_(set.blocks_.from(0)), expected_(set.mutations_) {
        load(cursor_.current());
    }
    void load(NSRange run) noexcept {
        index_ = run.location;
        runEnd_ = run.end();
    }

    const NSIndexSet* set_ = nullptr;
    detail::IndexBlocks::Cursor cursor_;
    NSUInteger index_ = 0;
    NSUInteger runEnd_ = 0;  ///< 0 at the end
    std::uint32_t expected_ = 0;
};

inline NSIndexSet::Iterator NSIndexSet::begin() const noexcept { return Iterator(*this); }

}  // namespace tovi
