#include <ToviFoundationKit/Foundation/NSMutableIndexSet.h>

#include <ToviFoundationKit/Runtime/Additions.h>

namespace tovi {

TOVI_DEFINE_CLASS(NSMutableIndexSet, NSIndexSet)

Ref<NSMutableIndexSet> NSMutableIndexSet::indexSet() { return adopt(*new NSMutableIndexSet); }

Ref<NSMutableIndexSet> NSMutableIndexSet::indexSetWithIndex(NSUInteger index) {
    Ref<NSMutableIndexSet> result = indexSet();
    result->addIndex(index);
    return result;
}

Ref<NSMutableIndexSet> NSMutableIndexSet::indexSetWithIndexesInRange(NSRange range) {
    Ref<NSMutableIndexSet> result = indexSet();
    result->addIndexesInRange(range);
    return result;
}

Ref<NSMutableIndexSet> NSMutableIndexSet::indexSetWithIndexSet(const NSIndexSet& other) {
    return adopt(*new NSMutableIndexSet(other.blocks_));
}

Ref<NSMutableIndexSet> NSMutableIndexSet::indexSetWithBits(std::span<const std::uint64_t> words) {
    return adopt(*new NSMutableIndexSet(detail::IndexBlocks::ofBits(words)));
}

Ref<NSMutableIndexSet> NSMutableIndexSet::of(std::initializer_list<NSUInteger> indexes) {
    Ref<NSMutableIndexSet> result = indexSet();
    for (const NSUInteger index : indexes)
        result->addIndex(index);
    return result;
}

void NSMutableIndexSet::addIndex(NSUInteger index) {
    checkRange("-[NSMutableIndexSet addIndex:]", {index, 1});
    ++mutations_;
    blocks_.add({index, 1});
}

void NSMutableIndexSet::addIndexesInRange(NSRange range) {
    checkRange("-[NSMutableIndexSet addIndexesInRange:]", range);
    ++mutations_;
    blocks_.add(range);
}

void NSMutableIndexSet::removeIndex(NSUInteger index) {
    checkRange("-[NSMutableIndexSet removeIndex:]", {index, 1});
    ++mutations_;
    blocks_.remove({index, 1});
}

void NSMutableIndexSet::removeIndexesInRange(NSRange range) {
    checkRange("-[NSMutableIndexSet removeIndexesInRange:]", range);
    ++mutations_;
    blocks_.remove(range);
}

namespace {

// A few runs are quicker changed one by one; combining goes over all blocks.
bool isSmallBeside(const detail::IndexBlocks& blocks, const detail::IndexBlocks& others) {
    return blocks.blockCount() < others.blockCount() / 32;
}

}  // namespace

void NSMutableIndexSet::addIndexes(const NSIndexSet& other) {
    ++mutations_;
    if (isSmallBeside(other.blocks_, blocks_))
        for (const NSRange run : other.ranges())
            blocks_.add(run);
    else
        blocks_ = detail::IndexBlocks::united(blocks_, other.blocks_);
}

void NSMutableIndexSet::removeIndexes(const NSIndexSet& other) {
    ++mutations_;
    if (isSmallBeside(other.blocks_, blocks_))
        for (const NSRange run : other.ranges())
            blocks_.remove(run);
    else
        blocks_ = detail::IndexBlocks::subtracted(blocks_, other.blocks_);
}

void NSMutableIndexSet::removeAllIndexes() {
    ++mutations_;
    blocks_ = detail::IndexBlocks();
}

void NSMutableIndexSet::intersectIndexes(const NSIndexSet& other) {
    ++mutations_;
    blocks_ = detail::IndexBlocks::intersected(blocks_, other.blocks_);
}

Ref<NSObject> NSMutableIndexSet::copy() const { return adopt(*new NSIndexSet(blocks_)); }

namespace {

const Additions<NSMutableIndexSet> additions{
    classLevel<&NSMutableIndexSet::indexSet>("indexSet"),
    classLevel<&NSMutableIndexSet::indexSetWithIndex>("indexSetWithIndex:"),
    classLevel<&NSMutableIndexSet::indexSetWithIndexesInRange>("indexSetWithIndexesInRange:"),
    instance<&NSMutableIndexSet::addIndex>("addIndex:"),
    instance<&NSMutableIndexSet::addIndexesInRange>("addIndexesInRange:"),
    instance<&NSMutableIndexSet::addIndexes>("addIndexes:"),
    instance<&NSMutableIndexSet::removeIndex>("removeIndex:"),
    instance<&NSMutableIndexSet::removeIndexesInRange>("removeIndexesInRange:"),
    instance<&NSMutableIndexSet::removeIndexes>("removeIndexes:"),
    instance<&NSMutableIndexSet::removeAllIndexes>("removeAllIndexes"),
};

}  // namespace

}  // namespace tovi
