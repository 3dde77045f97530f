#pragma once

#include <algorithm>
#include <cstdint>
#include <utility>
#include <vector>

#include <ToviFoundationKit/Runtime/Export.h>
#include <ToviFoundationKit/Runtime/NSTypes.h>

namespace tovi::detail {

/// Sorted runs of indexes, no two of which touch, in blocks of some hundred: finding takes two binary searches, changing
/// moves at most one block, and appending is a store.
class TOVI_EXPORT IndexRuns {
public:
    class Cursor;

    IndexRuns() noexcept = default;
    IndexRuns(const IndexRuns& other);
    IndexRuns(IndexRuns&& other) noexcept { swap(other); }
    IndexRuns& operator=(IndexRuns other) noexcept {
        swap(other);
        return *this;
    }
    ~IndexRuns();
    void swap(IndexRuns& other) noexcept;

    NSUInteger indexCount() const noexcept { return indexCount_; }
    std::size_t runCount() const noexcept;
    /// The first and the last run; an empty one when there is none.
    NSRange first() const noexcept { return blocks_.empty() ? NSRange() : blocks_.front().run(0); }
    NSRange last() const noexcept { return blocks_.empty() ? NSRange() : blocks_.back().run(blocks_.back().count - 1); }
    /// The last run that starts at or before the index; an empty one when there is none.
    NSRange runStartingUpTo(NSUInteger index) const noexcept;
    Cursor firstRunBehind(NSUInteger index) const noexcept;  ///< the first run that starts behind the index
    bool contains(NSUInteger index) const noexcept {
        const NSRange run = runStartingUpTo(index);
        return index - run.location < run.length;
    }

    void add(NSRange added);
    void remove(NSRange removed);
    static IndexRuns united(const IndexRuns& a, const IndexRuns& b);
    static IndexRuns intersected(const IndexRuns& a, const IndexRuns& b);
    static IndexRuns subtracted(const IndexRuns& a, const IndexRuns& b);

    friend TOVI_EXPORT bool operator==(const IndexRuns& a, const IndexRuns& b) noexcept;

private:
    static constexpr std::uint32_t blockLimit = 256;

    /// Run i reaches from edges[2i] up to, and not including, edges[2i + 1].
    struct Block {
        NSUInteger first;  ///< edges[0]
        NSUInteger* edges;
        std::uint32_t count;
        std::uint32_t capacity;

        NSRange run(std::uint32_t i) const noexcept { return {edges[2 * i], edges[2 * i + 1] - edges[2 * i]}; }
        void trim();
    };
    struct Place {
        std::size_t block;
        std::uint32_t position;
        bool operator==(const Place&) const = default;
    };
    class Reader;
    class Writer;

    NSUInteger endAt(Place place) const noexcept { return blocks_[place.block].edges[2 * place.position + 1]; }
    NSRange runAt(Place place) const noexcept { return blocks_[place.block].run(place.position); }
    Place placeBehind(NSUInteger index) const noexcept;
    bool stepBack(Place& place) const noexcept;
    void setStart(Place place, NSUInteger start) noexcept;
    void setEnd(Place place, NSUInteger end) noexcept;
    Place insertRun(Place place, NSUInteger start, NSUInteger end);
    void eraseRuns(Place from, Place to) noexcept;
    void eraseWithin(Block& block, std::uint32_t from, std::uint32_t to) noexcept;
    Place makeRoom(Place place);
    void addBlock(std::size_t at, std::uint32_t capacity);
    void splitBlock(std::size_t at);

    std::vector<Block> blocks_;  ///< none is empty
    NSUInteger indexCount_ = 0;
};

/// Walks over the runs.
class IndexRuns::Cursor {
public:
    Cursor() noexcept = default;
    explicit Cursor(const IndexRuns& runs, Place place = {0, 0}) noexcept : runs_(&runs), place_(place) {}

    /// The run here, {0, 0} behind the last one.
    NSRange current() const noexcept {
        return place_.block < runs_->blocks_.size() ? runs_->blocks_[place_.block].run(place_.position) : NSRange();
    }
    NSRange next() noexcept {
        if (++place_.position == runs_->blocks_[place_.block].count)
            place_ = {place_.block + 1, 0};
        return current();
    }

private:
    const IndexRuns* runs_ = nullptr;
    Place place_{};
};

}  // namespace tovi::detail
