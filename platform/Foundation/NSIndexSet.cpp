#include <ToviFoundationKit/Foundation/NSIndexSet.h>

#include <algorithm>

#include <ToviFoundationKit/Foundation/NSMutableIndexSet.h>
#include <ToviFoundationKit/Runtime/Additions.h>
#include <ToviFoundationKit/Runtime/NSException.h>

namespace tovi {

TOVI_DEFINE_CLASS(NSIndexSet, NSObject)

Ref<NSIndexSet> NSIndexSet::indexSet() {
    static NSIndexSet& empty = *adopt(*new NSIndexSet).leak();
    return empty;
}

Ref<NSIndexSet> NSIndexSet::indexSetWithIndex(NSUInteger index) { return indexSetWithIndexesInRange({index, 1}); }

Ref<NSIndexSet> NSIndexSet::indexSetWithIndexesInRange(NSRange range) {
    checkRange("+[NSIndexSet indexSetWithIndexesInRange:]", range);
    detail::IndexBlocks blocks;
    blocks.add(range);
    return adopt(*new NSIndexSet(std::move(blocks)));
}

Ref<NSIndexSet> NSIndexSet::indexSetWithIndexSet(const NSIndexSet& other) {
    return static_cast<NSIndexSet&>(*other.copy());
}

Ref<NSIndexSet> NSIndexSet::of(std::initializer_list<NSUInteger> indexes) {
    return adopt(*new NSIndexSet(std::move(NSMutableIndexSet::of(indexes)->blocks_)));
}

void NSIndexSet::checkRange(const char* operation, NSRange range) {
    constexpr NSUInteger limit = NSNotFound;
    if (!range.length || range.fitsIn(limit)) [[likely]]
        return;
    if (range.length == 1)
        NSException::raise(NSRangeException, u"*** %s: Index (%lu) out of bounds [0, %lu]", operation, range.location,
                           limit - 1);
    NSException::raise(NSRangeException, u"*** %s: Range {%lu, %lu} exceeds maximum index value of %lu", operation,
                       range.location, range.length, limit - 1);
}

NSUInteger NSIndexSet::firstIndex() const noexcept {
    const NSRange run = blocks_.from(0).current();
    return run.length ? run.location : NSNotFound;
}

NSUInteger NSIndexSet::lastIndex() const noexcept { return blocks_.lastUpTo(NSNotFound); }

NSUInteger NSIndexSet::indexGreaterThanIndex(NSUInteger index) const noexcept {
    const NSRange run = index < NSNotFound ? blocks_.from(index + 1).current() : NSRange();
    return run.length ? run.location : NSNotFound;
}

NSUInteger NSIndexSet::indexLessThanIndex(NSUInteger index) const noexcept {
    return index ? blocks_.lastUpTo(index - 1) : NSNotFound;
}

bool NSIndexSet::containsIndexesInRange(NSRange range) const noexcept {
    const NSRange run = blocks_.from(range.location).current();
    return range.length && run.location == range.location && run.length >= range.length;
}

bool NSIndexSet::containsIndexes(const NSIndexSet& other) const noexcept {
    detail::IndexBlocks::Cursor cursor = other.blocks_.from(0);
    for (NSRange run = cursor.current(); run.length; run = cursor.next())
        if (!containsIndexesInRange(run))
            return false;
    return true;
}

NSUInteger NSIndexSet::countOfIndexesInRange(NSRange range) const noexcept {
    NSUInteger count = 0;
    detail::IndexBlocks::Cursor cursor = blocks_.from(range.location);
    for (NSRange run = cursor.current(); run.length; run = cursor.next()) {
        const NSUInteger offset = run.location - range.location;
        if (offset >= range.length)
            break;
        count += std::min(run.length, range.length - offset);
    }
    return count;
}

bool NSIndexSet::isEqualToIndexSet(const NSIndexSet& other) const noexcept { return blocks_ == other.blocks_; }

std::vector<NSRange> NSIndexSet::ranges() const {
    std::vector<NSRange> ranges;
    detail::IndexBlocks::Cursor cursor = blocks_.from(0);
    for (NSRange run = cursor.current(); run.length; run = cursor.next())
        ranges.push_back(run);
    return ranges;
}

bool NSIndexSet::isEqual(const NSObject* other) const {
    const auto* const set = as<NSIndexSet>(other);
    return set && isEqualToIndexSet(*set);
}

NSUInteger NSIndexSet::hash() const {
    NSUInteger sum = count();
    detail::IndexBlocks::Cursor cursor = blocks_.from(0);
    for (NSRange run = cursor.current(); run.length; run = cursor.next()) {
        sum = (sum ^ run.location) * 0x9E3779B97F4A7C15U;
        sum = (sum ^ sum >> 32 ^ run.length) * 0xD6E8FEB86659FD93U;
    }
    return sum ^ sum >> 32;
}

Ref<NSString> NSIndexSet::description() const {
    const Ref<NSMutableString> text = NSMutableString::string();
    text->appendFormat(u"<%s: %p>", isa().name(), static_cast<const void*>(this));
    if (!count()) {
        text->appendCharacters(u"(no indexes)");
        return text;
    }
    const std::vector<NSRange> runs = ranges();
    text->appendFormat(u"[number of indexes: %lu (in %lu ranges), indexes: (", count(), runs.size());
    std::u16string_view gap;
    for (const NSRange run : runs) {
        text->appendCharacters(gap);
        gap = u" ";
        if (run.length == 1)
            text->appendFormat(u"%lu", run.location);
        else
            text->appendFormat(u"%lu-%lu", run.location, run.end() - 1);
    }
    text->appendCharacters(u")]");
    return text;
}

Ref<NSObject> NSIndexSet::copy() const { return share(*this); }
Ref<NSObject> NSIndexSet::mutableCopy() const { return NSMutableIndexSet::indexSetWithIndexSet(*this); }

namespace {

const Additions<NSIndexSet> additions{
    classLevel<&NSIndexSet::indexSet>("indexSet"),
    classLevel<&NSIndexSet::indexSetWithIndex>("indexSetWithIndex:"),
    classLevel<&NSIndexSet::indexSetWithIndexesInRange>("indexSetWithIndexesInRange:"),
    instance<&NSIndexSet::count>("count"),
    instance<&NSIndexSet::firstIndex>("firstIndex"),
    instance<&NSIndexSet::lastIndex>("lastIndex"),
    instance<&NSIndexSet::indexGreaterThanIndex>("indexGreaterThanIndex:"),
    instance<&NSIndexSet::indexLessThanIndex>("indexLessThanIndex:"),
    instance<&NSIndexSet::containsIndex>("containsIndex:"),
    instance<&NSIndexSet::containsIndexesInRange>("containsIndexesInRange:"),
    instance<&NSIndexSet::containsIndexes>("containsIndexes:"),
    instance<&NSIndexSet::countOfIndexesInRange>("countOfIndexesInRange:"),
    instance<&NSIndexSet::isEqualToIndexSet>("isEqualToIndexSet:"),
};

}  // namespace

}  // namespace tovi
