#include <ToviFoundationKit/Foundation/IndexBlocks.h>

#include <algorithm>
#include <memory>

#include <ToviFoundationKit/Foundation/BitWords_p.h>
#include <ToviFoundationKit/Foundation/Storage_p.h>

namespace tovi::detail {

namespace {

// So many runs that start in one chunk make a full block give way to bits.
constexpr std::uint32_t crowd = 96;

template <class Vector> auto iterator(Vector& vector, std::size_t at) noexcept {
    return vector.begin() + static_cast<std::ptrdiff_t>(at);
}

}  // namespace

IndexBlocks::IndexBlocks(const IndexBlocks& other) {
    IndexBlocks copy;
    copy.blocks_.reserve(other.blocks_.size());
    for (Block block : other.blocks_) {
        const std::size_t words = block.isBits() ? chunkWords : std::size_t{2} * block.count;
        const NSUInteger* const data = block.data;
        block.data = reallocated<NSUInteger>(nullptr, words);
        std::copy_n(data, words, block.data);
        block.capacity = block.isBits() ? 0 : block.count;
        copy.blocks_.push_back(block);
    }
    copy.count_ = other.count_;
    swap(copy);
}

IndexBlocks::~IndexBlocks() {
    for (const Block& block : blocks_)
        std::free(block.data);
}

void IndexBlocks::swap(IndexBlocks& other) noexcept {
    blocks_.swap(other.blocks_);
    std::swap(count_, other.count_);
}

// --- Finding ---------------------------------------------------------------------------------------------------------

NSUInteger IndexBlocks::lastUpTo(NSUInteger index) const noexcept {
    for (std::size_t blocks = blocksStartingUpTo(index); blocks; --blocks) {
        const Block& block = blocks_[blocks - 1];
        if (!block.isBits())
            return std::min(index, block.end(block.runsStartingUpTo(index) - 1) - 1);
        if (const auto bit = lastSetBit(block.data, std::min(index - block.first, chunkLength - 1)))
            return block.first + *bit;
    }
    return NSNotFound;
}

IndexBlocks::Cursor IndexBlocks::from(NSUInteger index) const noexcept {
    const std::size_t blocks = blocksStartingUpTo(index);
    if (!blocks)
        return Cursor(*this, 0, 0, index);
    const Block& block = blocks_[blocks - 1];
    if (block.isBits())
        return Cursor(*this, blocks - 1, std::min(index - block.first, chunkLength), index);
    const std::uint32_t run = block.runsStartingUpTo(index);
    return Cursor(*this, blocks - 1, block.end(run - 1) > index ? run - 1 : run, index);
}

IndexBlocks::Cursor::Cursor(const IndexBlocks& blocks, std::size_t block, std::size_t position,
                            NSUInteger from) noexcept
    : blocks_(&blocks.blocks_), block_(block), position_(position), piece_(nextPiece()) {
    if (piece_.length && piece_.location < from)
        piece_ = {from, piece_.end() - from};
    next();
}

NSRange IndexBlocks::Cursor::next() noexcept {
    current_ = piece_;
    piece_ = nextPiece();
    while (piece_.length && piece_.location == current_.end()) {
        current_.length += piece_.length;
        piece_ = nextPiece();
    }
    return current_;
}

NSRange IndexBlocks::Cursor::nextPiece() noexcept {
    for (; block_ < blocks_->size(); ++block_, position_ = 0) {
        const Block& block = (*blocks_)[block_];
        if (!block.isBits()) {
            if (position_ == block.count)
                continue;
            const NSUInteger start = block.start(position_);
            return {start, block.end(position_++) - start};
        }
        const std::size_t start = nextBit<true>(block.data, chunkLength, position_);
        position_ = nextBit<false>(block.data, chunkLength, start);
        if (start < chunkLength)
            return {block.first + start, position_ - start};
    }
    return {};
}

bool operator==(const IndexBlocks& a, const IndexBlocks& b) noexcept {
    if (a.count_ != b.count_)
        return false;
    IndexBlocks::Cursor x = a.from(0);
    IndexBlocks::Cursor y = b.from(0);
    while (x.current() == y.current() && x.current().length) {
        x.next();
        y.next();
    }
    return x.current() == y.current();
}

// --- Runs ------------------------------------------------------------------------------------------------------------

// Where a run that starts behind the index would be inserted. Never inside a chunk of bits, nor behind one that holds
// the index.
IndexBlocks::Place IndexBlocks::placeBehind(NSUInteger index) const noexcept {
    const std::size_t blocks = blocksStartingUpTo(index);
    if (!blocks)
        return {0, 0};
    const Block& block = blocks_[blocks - 1];
    if (block.isBits())
        return {block.hasBitsFor(index) ? blocks - 1 : blocks, 0};
    return {blocks - 1, block.runsStartingUpTo(index)};
}

// To the run before; answers false where there is none, or bits.
bool IndexBlocks::stepBack(Place& place) const noexcept {
    if (place.run) {
        --place.run;
        return true;
    }
    if (!place.block || blocks_[place.block - 1].isBits())
        return false;
    place = {place.block - 1, blocks_[place.block - 1].count - 1};
    return true;
}

void IndexBlocks::setStart(Place place, NSUInteger start) noexcept {
    Block& block = blocks_[place.block];
    block.data[2 * place.run] = start;
    block.first = block.data[0];
}

void IndexBlocks::addBlock(std::size_t at, std::uint32_t capacity) {
    std::unique_ptr<NSUInteger, decltype(&std::free)> runs(reallocated<NSUInteger>(nullptr, std::size_t{2} * capacity),
                                                           &std::free);
    blocks_.insert(iterator(blocks_, at), Block{0, runs.get(), 0, capacity});
    static_cast<void>(runs.release());
}

// The runs from the place on get a block of their own.
void IndexBlocks::splitBlock(Place place) {
    addBlock(place.block + 1, mostRuns);
    Block& left = blocks_[place.block];
    Block& right = blocks_[place.block + 1];
    right.count = left.count - place.run;
    left.count = place.run;
    std::copy_n(left.data + std::size_t{2} * left.count, std::size_t{2} * right.count, right.data);
    right.first = right.data[0];
}

// Between bits, or between them and runs, a run goes to a block of runs beside it if there is one.
IndexBlocks::Place IndexBlocks::besideRuns(Place place) const noexcept {
    const bool isInRuns = place.block < blocks_.size() && !blocks_[place.block].isBits();
    if (!isInRuns && place.block && !blocks_[place.block - 1].isBits())
        return {place.block - 1, blocks_[place.block - 1].count};
    return place;
}

// Room for one more run; answers where the place has gone. A full block at the end of all is left full, for indexes
// that come in ascending order.
IndexBlocks::Place IndexBlocks::makeRoom(Place place) {
    if (place.block == blocks_.size() || blocks_[place.block].isBits())
        addBlock(place.block, 1);
    Block& block = blocks_[place.block];
    if (block.count < block.capacity)
        return place;
    if (block.count < mostRuns) {
        const std::uint32_t capacity = std::min(mostRuns, 2 * block.capacity + 2);
        block.data = reallocated(block.data, std::size_t{2} * capacity);
        block.capacity = capacity;
        return place;
    }
    if (place.block + 1 == blocks_.size() && place.run == block.count) {
        addBlock(place.block + 1, mostRuns);
        return {place.block + 1, 0};
    }
    splitBlock({place.block, mostRuns / 2});
    return place.run <= mostRuns / 2 ? place : Place{place.block + 1, place.run - mostRuns / 2};
}

IndexBlocks::Place IndexBlocks::insertRun(Place place, NSUInteger start, NSUInteger end) {
    place = makeRoom(besideRuns(place));
    Block& block = blocks_[place.block];
    NSUInteger* const gap = block.data + std::size_t{2} * place.run;
    std::copy_backward(gap, block.data + std::size_t{2} * block.count, block.data + std::size_t{2} * block.count + 2);
    ++block.count;
    gap[1] = end;
    setStart(place, start);
    return place;
}

// The runs from one place up to another, between which there are no bits.
void IndexBlocks::eraseRuns(Place from, Place to) noexcept {
    for (std::size_t i = from.block; i < blocks_.size() && i <= to.block; ++i) {
        Block& block = blocks_[i];
        const std::size_t begin = i == from.block ? from.run : 0;
        const std::size_t end = i == to.block ? to.run : block.count;
        if (begin >= end)
            continue;
        std::copy(block.data + 2 * end, block.data + std::size_t{2} * block.count, block.data + 2 * begin);
        block.count -= static_cast<std::uint32_t>(end - begin);
        block.first = block.data[0];
    }
    eraseBlocks(from.block, to.block + 1, [](const Block& block) { return !block.count; });
}

template <class Test> void IndexBlocks::eraseBlocks(std::size_t from, std::size_t to, Test test) noexcept {
    const auto begin = iterator(blocks_, from);
    const auto end = iterator(blocks_, std::min(to, blocks_.size()));
    const auto kept = std::remove_if(begin, end, [&](const Block& block) {
        const bool goes = test(block);
        if (goes)
            std::free(block.data);
        return goes;
    });
    blocks_.erase(kept, end);
}

// --- Adding ----------------------------------------------------------------------------------------------------------

void IndexBlocks::add(NSRange added) {
    if (added.length > chunkLength)
        eraseCovered(added.location, added.end());
    for (NSUInteger at = added.location; at < added.end();)
        at = addPart(at, added.end());
}

// Adds as much of the range as is to go to one chunk of bits, or between two; answers how far that reaches.
NSUInteger IndexBlocks::addPart(NSUInteger start, NSUInteger end) {
    const std::size_t blocks = blocksStartingUpTo(start);
    if (blocks && blocks_[blocks - 1].hasBitsFor(start)) {
        Block& block = blocks_[blocks - 1];
        end = std::min(end, block.end());
        std::uint32_t added = 0;
        forEachWord(block.data, start - block.first, end - block.first, [&](NSUInteger& word, NSUInteger mask) {
            added += static_cast<std::uint32_t>(std::popcount(mask & ~word));
            word |= mask;
        });
        block.count += added;
        count_ += added;
        return end;
    }
    end = endOfGap(blocks, end);
    addRun(start, end);
    return end;
}

// The first chunk of bits from a block on ends what may be runs.
NSUInteger IndexBlocks::endOfGap(std::size_t block, NSUInteger end) const noexcept {
    while (block < blocks_.size() && blocks_[block].first < end && !blocks_[block].isBits())
        ++block;
    return block < blocks_.size() ? std::min(end, blocks_[block].first) : end;
}

// Runs that overlap or touch the new one become one with it.
void IndexBlocks::addRun(NSUInteger start, NSUInteger end) {
    const Place behind = placeBehind(end);
    Place from = behind;
    NSUInteger swallowed = 0;
    for (Place before = behind; stepBack(before) && endAt(before) >= start;) {
        from = before;
        swallowed += endAt(from) - startAt(from);
        end = std::max(end, endAt(from));
        if (startAt(from) <= start) {
            start = startAt(from);
            break;
        }
    }
    if (from == behind) {
        if (makeBitsAround(besideRuns(behind)))
            return add({start, end - start});
        insertRun(behind, start, end);
    } else {
        setStart(from, start);
        setEnd(from, end);
        eraseRuns({from.block, from.run + 1}, behind);
    }
    count_ += end - start - swallowed;
}

// Where a place is in a full block with many runs in the chunk around its middle, that chunk becomes one of bits.
bool IndexBlocks::makeBitsAround(Place place) {
    if (place.block == blocks_.size() || blocks_[place.block].isBits() || blocks_[place.block].count < mostRuns)
        return false;
    const NSUInteger chunk = blocks_[place.block].start(mostRuns / 2) / chunkLength * chunkLength;
    const std::uint32_t before = chunk ? blocks_[place.block].runsStartingUpTo(chunk - 1) : 0;
    if (blocks_[place.block].runsStartingUpTo(chunk + chunkLength - 1) - before < crowd)
        return false;
    std::unique_ptr<NSUInteger, decltype(&std::free)> bits(reallocated<NSUInteger>(nullptr, chunkWords), &std::free);
    std::fill_n(bits.get(), chunkWords, 0);
    Cursor cursor = from(chunk);
    for (NSRange run = cursor.current(); run.length && run.location < chunk + chunkLength; run = cursor.next())
        forEachWord(bits.get(), run.location - chunk, std::min(run.end() - chunk, chunkLength),
                    [](NSUInteger& word, NSUInteger mask) { word |= mask; });
    removeRuns(chunk, chunk + chunkLength);
    Place at = placeBehind(chunk);
    if (at.block < blocks_.size() && at.run && at.run < blocks_[at.block].count)
        splitBlock(at);
    const auto count = static_cast<std::uint32_t>(countBits(bits.get(), chunkWords));
    blocks_.insert(iterator(blocks_, at.block + (at.run ? 1 : 0)), Block{chunk, bits.get(), count, 0});
    static_cast<void>(bits.release());
    count_ += count;
    return true;
}

// --- Removing --------------------------------------------------------------------------------------------------------

void IndexBlocks::remove(NSRange removed) {
    if (removed.length > chunkLength)
        eraseCovered(removed.location, removed.end());
    for (NSUInteger at = removed.location; at < removed.end();)
        at = removePart(at, removed.end());
}

// Blocks that lie in a range as a whole.
void IndexBlocks::eraseCovered(NSUInteger start, NSUInteger end) noexcept {
    const std::size_t from = start ? blocksStartingUpTo(start - 1) : 0;
    eraseBlocks(from, end ? blocksStartingUpTo(end - 1) : 0, [&](const Block& block) {
        if (block.end() > end)
            return false;
        if (block.isBits())
            count_ -= block.count;
        else
            for (std::uint32_t i = 0; i < block.count; ++i)
                count_ -= block.end(i) - block.start(i);
        return true;
    });
}

NSUInteger IndexBlocks::removePart(NSUInteger start, NSUInteger end) {
    const std::size_t blocks = blocksStartingUpTo(start);
    if (!blocks || !blocks_[blocks - 1].hasBitsFor(start)) {
        end = endOfGap(blocks, end);
        removeRuns(start, end);
        return end;
    }
    Block& block = blocks_[blocks - 1];
    end = std::min(end, block.end());
    std::uint32_t removed = 0;
    forEachWord(block.data, start - block.first, end - block.first, [&](NSUInteger& word, NSUInteger mask) {
        removed += static_cast<std::uint32_t>(std::popcount(mask & word));
        word &= ~mask;
    });
    block.count -= removed;
    count_ -= removed;
    eraseBlocks(blocks - 1, blocks, [](const Block& emptied) { return !emptied.count; });
    return end;
}

void IndexBlocks::removeRuns(NSUInteger start, NSUInteger end) {
    Place last = placeBehind(end - 1);
    if (!stepBack(last) || endAt(last) <= start)
        return;
    const NSUInteger lastEnd = endAt(last);
    Place first = last;
    NSUInteger touched = lastEnd - startAt(last);
    for (Place before = last; stepBack(before) && endAt(before) > start; first = before)
        touched += endAt(before) - startAt(before);
    const NSUInteger before = startAt(first) < start ? start - startAt(first) : 0;
    const NSUInteger behind = end < lastEnd ? lastEnd - end : 0;
    if (before && behind && first == last) {
        Place left = insertRun({first.block, first.run + 1}, end, lastEnd);
        stepBack(left);
        setEnd(left, start);
    } else {
        if (before)
            setEnd(first, start);
        if (behind)
            setStart(last, end);
        eraseRuns({first.block, first.run + (before ? 1U : 0U)}, {last.block, last.run + (behind ? 0U : 1U)});
    }
    count_ -= touched - before - behind;
}

}  // namespace tovi::detail
