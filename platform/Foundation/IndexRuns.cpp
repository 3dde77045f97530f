#include <ToviFoundationKit/Foundation/IndexRuns.h>

#include <cstring>
#include <memory>
#include <numeric>

#include <ToviFoundationKit/Foundation/Storage_p.h>

namespace tovi::detail {

namespace {

// How many of the ascending numbers are at most `limit`. Without branches: nobody can predict which way a search goes.
template <class NumberAt> std::size_t countUpTo(NSUInteger limit, std::size_t count, NumberAt numberAt) noexcept {
    std::size_t skipped = 0;
    while (count > 1) {
        const std::size_t half = count / 2;
        skipped += numberAt(skipped + half - 1) <= limit ? half : 0;
        count -= half;
    }
    return skipped + (count && numberAt(skipped) <= limit);
}

template <class Vector> auto iterator(Vector& vector, std::size_t at) noexcept {
    return vector.begin() + static_cast<std::ptrdiff_t>(at);
}

}  // namespace

IndexRuns::IndexRuns(const IndexRuns& other) {
    IndexRuns copy;
    copy.blocks_.reserve(other.blocks_.size());
    for (const Block& block : other.blocks_) {
        auto* const edges = reallocated<NSUInteger>(nullptr, std::size_t{2} * block.count);
        std::copy_n(block.edges, std::size_t{2} * block.count, edges);
        copy.blocks_.push_back({block.first, edges, block.count, block.count});
    }
    copy.indexCount_ = other.indexCount_;
    swap(copy);
}

IndexRuns::~IndexRuns() {
    for (const Block& block : blocks_)
        std::free(block.edges);
}

void IndexRuns::swap(IndexRuns& other) noexcept {
    blocks_.swap(other.blocks_);
    std::swap(indexCount_, other.indexCount_);
}

std::size_t IndexRuns::runCount() const noexcept {
    return std::accumulate(blocks_.begin(), blocks_.end(), std::size_t{0},
                           [](std::size_t sum, const Block& block) { return sum + block.count; });
}

void IndexRuns::Block::trim() {
    edges = reallocated(edges, std::size_t{2} * count);
    capacity = count;
}

// --- Finding ---------------------------------------------------------------------------------------------------------

// Where a run that starts behind the index would be inserted: the end of a block rather than the start of the next one.
IndexRuns::Place IndexRuns::placeBehind(NSUInteger index) const noexcept {
    const std::size_t blocks = countUpTo(index, blocks_.size(), [this](std::size_t i) { return blocks_[i].first; });
    if (!blocks)
        return {0, 0};
    const Block& block = blocks_[blocks - 1];
    const NSUInteger* const edges = block.edges;
    const std::size_t runs = countUpTo(index, block.count, [edges](std::size_t i) { return edges[2 * i]; });
    return {blocks - 1, static_cast<std::uint32_t>(runs)};
}

// To the run before; answers false where there is none.
bool IndexRuns::stepBack(Place& place) const noexcept {
    if (!place.position && !place.block)
        return false;
    if (place.position)
        --place.position;
    else
        place = {place.block - 1, blocks_[place.block - 1].count - 1};
    return true;
}

NSRange IndexRuns::runStartingUpTo(NSUInteger index) const noexcept {
    Place place = placeBehind(index);
    return stepBack(place) ? runAt(place) : NSRange();
}

IndexRuns::Cursor IndexRuns::firstRunBehind(NSUInteger index) const noexcept {
    const Place place = placeBehind(index);
    if (place.block < blocks_.size() && place.position == blocks_[place.block].count)
        return Cursor(*this, {place.block + 1, 0});
    return Cursor(*this, place);
}

bool operator==(const IndexRuns& a, const IndexRuns& b) noexcept {
    if (a.indexCount_ != b.indexCount_)
        return false;
    IndexRuns::Cursor x(a);
    IndexRuns::Cursor y(b);
    NSRange run = x.current();
    for (NSRange other = y.current(); run == other; run = x.next(), other = y.next())
        if (!run.length)
            return true;
    return false;
}

// --- Changing --------------------------------------------------------------------------------------------------------

void IndexRuns::setStart(Place place, NSUInteger start) noexcept {
    Block& block = blocks_[place.block];
    block.edges[2 * place.position] = start;
    block.first = block.edges[0];
}

void IndexRuns::setEnd(Place place, NSUInteger end) noexcept { blocks_[place.block].edges[2 * place.position + 1] = end; }

void IndexRuns::addBlock(std::size_t at, std::uint32_t capacity) {
    std::unique_ptr<NSUInteger, decltype(&std::free)> edges(
        reallocated<NSUInteger>(nullptr, std::size_t{2} * capacity), &std::free);
    blocks_.insert(iterator(blocks_, at), Block{0, edges.get(), 0, capacity});
    static_cast<void>(edges.release());
}

void IndexRuns::splitBlock(std::size_t at) {
    addBlock(at + 1, blockLimit);
    Block& left = blocks_[at];
    Block& right = blocks_[at + 1];
    left.count = right.count = blockLimit / 2;
    std::copy_n(left.edges + blockLimit, blockLimit, right.edges);
    right.first = right.edges[0];
}

// Room for one more run; answers where the place has gone. A full block at the end of all is left full, for sets that are
// built in ascending order.
IndexRuns::Place IndexRuns::makeRoom(Place place) {
    if (place.block == blocks_.size())
        addBlock(place.block, 1);
    Block& block = blocks_[place.block];
    if (block.count < block.capacity)
        return place;
    if (block.count < blockLimit) {
        const std::uint32_t capacity = std::min(blockLimit, 2 * block.capacity + 2);
        block.edges = reallocated(block.edges, std::size_t{2} * capacity);
        block.capacity = capacity;
        return place;
    }
    if (place.block + 1 == blocks_.size() && place.position == block.count) {
        addBlock(place.block + 1, blockLimit);
        return {place.block + 1, 0};
    }
    splitBlock(place.block);
    if (place.position <= blockLimit / 2)
        return place;
    return {place.block + 1, place.position - blockLimit / 2};
}

IndexRuns::Place IndexRuns::insertRun(Place place, NSUInteger start, NSUInteger end) {
    place = makeRoom(place);
    Block& block = blocks_[place.block];
    NSUInteger* const gap = block.edges + std::size_t{2} * place.position;
    std::memmove(gap + 2, gap, std::size_t{2} * (block.count - place.position) * sizeof *gap);
    ++block.count;
    gap[1] = end;
    setStart(place, start);
    return place;
}

void IndexRuns::eraseWithin(Block& block, std::uint32_t from, std::uint32_t to) noexcept {
    std::copy(block.edges + std::size_t{2} * to, block.edges + std::size_t{2} * block.count,
              block.edges + std::size_t{2} * from);
    block.count -= to - from;
    block.first = block.edges[0];
}

void IndexRuns::eraseRuns(Place from, Place to) noexcept {
    if (from.block == to.block) {
        eraseWithin(blocks_[from.block], from.position, to.position);
    } else {
        blocks_[from.block].count = from.position;
        for (std::size_t i = from.block + 1; i < to.block; ++i)
            blocks_[i].count = 0;
        eraseWithin(blocks_[to.block], 0, to.position);
    }
    const auto begin = iterator(blocks_, from.block);
    const auto end = iterator(blocks_, to.block + 1);
    blocks_.erase(std::remove_if(begin, end,
                                 [](const Block& block) {
                                     if (!block.count)
                                         std::free(block.edges);
                                     return !block.count;
                                 }),
                  end);
}

// Runs that overlap or touch the new one become one with it.
void IndexRuns::add(NSRange added) {
    if (!added.length)
        return;
    NSUInteger start = added.location;
    NSUInteger end = added.end();
    NSUInteger swallowed = 0;
    const Place behind = placeBehind(end);
    Place from = behind;
    for (Place before = behind; stepBack(before) && endAt(before) >= start;) {
        from = before;
        const NSRange run = runAt(from);
        swallowed += run.length;
        end = std::max(end, run.end());
        if (run.location <= start) {
            start = run.location;
            break;
        }
    }
    if (from == behind) {
        insertRun(behind, start, end);
    } else {
        setStart(from, start);
        setEnd(from, end);
        if (const Place next{from.block, from.position + 1}; next != behind)
            eraseRuns(next, behind);
    }
    indexCount_ += end - start - swallowed;
}

void IndexRuns::remove(NSRange removed) {
    const NSUInteger start = removed.location;
    const NSUInteger end = removed.end();
    Place last = removed.length ? placeBehind(end - 1) : Place{0, 0};
    if (!stepBack(last) || endAt(last) <= start)
        return;
    const NSUInteger lastEnd = endAt(last);
    Place first = last;
    NSUInteger touched = runAt(last).length;
    for (Place before = last; stepBack(before) && endAt(before) > start; first = before)
        touched += runAt(before).length;
    const NSUInteger firstStart = runAt(first).location;
    const NSUInteger before = firstStart < start ? start - firstStart : 0;
    const NSUInteger behind = end < lastEnd ? lastEnd - end : 0;
    if (before && behind && first == last) {
        Place left = insertRun({first.block, first.position + 1}, end, lastEnd);
        stepBack(left);
        setEnd(left, start);
    } else {
        if (before)
            setEnd(first, start);
        if (behind)
            setStart(last, end);
        eraseRuns({first.block, first.position + (before ? 1U : 0U)}, {last.block, last.position + (behind ? 0U : 1U)});
    }
    indexCount_ -= touched - before - behind;
}

}  // namespace tovi::detail
