#pragma once

#include <cstdint>
#include <span>

#include <ToviFoundationKit/Foundation/NSIndexSet.h>

namespace tovi {

/// A set of indexes that can be changed. Not for several threads at once.
class TOVI_EXPORT NSMutableIndexSet final : public NSIndexSet {
    TOVI_DECLARE_CLASS(NSMutableIndexSet)

public:
    static Ref<NSMutableIndexSet> indexSet();
    static Ref<NSMutableIndexSet> indexSetWithIndex(NSUInteger index);
    static Ref<NSMutableIndexSet> indexSetWithIndexesInRange(NSRange range);
    static Ref<NSMutableIndexSet> indexSetWithIndexSet(const NSIndexSet& other);
    /// The positions of the bits that are set, counted from the lowest bit of the first word.
    static Ref<NSMutableIndexSet> indexSetWithBits(std::span<const std::uint64_t> words);
    static Ref<NSMutableIndexSet> of(std::initializer_list<NSUInteger> indexes);

    /// Fast in any order, and fastest in ascending order.
    void addIndex(NSUInteger index);
    void addIndexesInRange(NSRange range);
    void addIndexes(const NSIndexSet& other);
    void removeIndex(NSUInteger index);
    void removeIndexesInRange(NSRange range);
    void removeIndexes(const NSIndexSet& other);
    void removeAllIndexes();
    /// Keeps only the indexes that the other set has too.
    void intersectIndexes(const NSIndexSet& other);

    Ref<NSObject> copy() const override;  ///< an NSIndexSet

private:
    NSMutableIndexSet() noexcept = default;
    explicit NSMutableIndexSet(detail::IndexBlocks blocks) noexcept : NSIndexSet(std::move(blocks)) {}
};

}  // namespace tovi
