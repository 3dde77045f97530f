#pragma once

#include <cstdint>
#include <span>
#include <vector>

#include <ToviFoundationKit/Runtime/Export.h>
#include <ToviFoundationKit/Runtime/NSTypes.h>

namespace tovi::detail {

/// Ascending indexes, in blocks. Most blocks hold up to some hundred runs of indexes; where many runs stand close
/// together, a block holds a bit for each index of an aligned chunk. No run reaches into such a chunk, and the blocks
/// are in order. Finding takes two binary searches at most; changing moves at most one block.
class TOVI_EXPORT IndexBlocks {
public:
    class Cursor;

    IndexBlocks() noexcept = default;
    IndexBlocks(const IndexBlocks& other);
    IndexBlocks(IndexBlocks&& other) noexcept { swap(other); }
    IndexBlocks& operator=(IndexBlocks other) noexcept {
        swap(other);
        return *this;
    }
    ~IndexBlocks();
    void swap(IndexBlocks& other) noexcept;

    NSUInteger count() const noexcept { return count_; }
    std::size_t blockCount() const noexcept { return blocks_.size(); }
    bool contains(NSUInteger index) const noexcept;
    NSUInteger lastUpTo(NSUInteger index) const noexcept;  ///< the last index that is not greater, or NSNotFound
    Cursor from(NSUInteger index) const noexcept;          ///< at what is not less

    void add(NSRange added);
    void remove(NSRange removed);
    static IndexBlocks ofBits(std::span<const NSUInteger> words);
    static IndexBlocks united(const IndexBlocks& a, const IndexBlocks& b);
    static IndexBlocks intersected(const IndexBlocks& a, const IndexBlocks& b);
    static IndexBlocks subtracted(const IndexBlocks& a, const IndexBlocks& b);

    friend TOVI_EXPORT bool operator==(const IndexBlocks& a, const IndexBlocks& b) noexcept;

private:
    static constexpr std::uint32_t mostRuns = 256;
    static constexpr NSUInteger chunkLength = 32768;  ///< as many bits as take the room of a full block of runs
    static constexpr std::size_t chunkWords = chunkLength / 64;

    struct Block {
        NSUInteger first;        ///< the first index; of bits the start of their chunk
        NSUInteger* data;        ///< where each run starts and, next to it, where it ends (one behind); or the bits
        std::uint32_t count;     ///< of runs, or of bits set; never 0
        std::uint32_t capacity;  ///< for runs; 0 where there are bits

        bool isBits() const noexcept { return !capacity; }
        bool hasBitsFor(NSUInteger index) const noexcept { return isBits() && index - first < chunkLength; }
        NSUInteger start(std::size_t run) const noexcept { return data[2 * run]; }
        NSUInteger end(std::size_t run) const noexcept { return data[2 * run + 1]; }
        NSUInteger end() const noexcept { return isBits() ? first + chunkLength : end(count - 1); }
        std::uint32_t runsStartingUpTo(NSUInteger index) const noexcept;
    };
    /// A run in a block of runs, or where one would be inserted.
    struct Place {
        std::size_t block;
        std::uint32_t run;
        bool operator==(const Place&) const = default;
    };
    class Reader;
    class Writer;
    struct Union;
    struct Intersection;
    struct Difference;
    template <class Operation> static IndexBlocks combined(const IndexBlocks& a, const IndexBlocks& b);

    std::size_t blocksStartingUpTo(NSUInteger index) const noexcept;
    Place placeBehind(NSUInteger index) const noexcept;
    bool stepBack(Place& place) const noexcept;
    NSUInteger startAt(Place place) const noexcept { return blocks_[place.block].start(place.run); }
    NSUInteger endAt(Place place) const noexcept { return blocks_[place.block].end(place.run); }
    void setStart(Place place, NSUInteger start) noexcept;
    void setEnd(Place place, NSUInteger end) noexcept { blocks_[place.block].data[2 * place.run + 1] = end; }

    void addBlock(std::size_t at, std::uint32_t capacity);
    void splitBlock(Place place);
    Place besideRuns(Place place) const noexcept;
    Place makeRoom(Place place);
    Place insertRun(Place place, NSUInteger start, NSUInteger end);
    void eraseRuns(Place from, Place to) noexcept;
    template <class Test> void eraseBlocks(std::size_t from, std::size_t to, Test test) noexcept;

    NSUInteger addPart(NSUInteger start, NSUInteger end);
    NSUInteger endOfGap(std::size_t block, NSUInteger end) const noexcept;
    void addRun(NSUInteger start, NSUInteger end);
    bool makeBitsAround(Place place);
    void eraseCovered(NSUInteger start, NSUInteger end) noexcept;
    NSUInteger removePart(NSUInteger start, NSUInteger end);
    void removeRuns(NSUInteger start, NSUInteger end);

    std::vector<Block> blocks_;
    NSUInteger count_ = 0;
};

/// Walks over the runs, each as long as it can be. It is of no use any more when the indexes have changed.
class TOVI_EXPORT IndexBlocks::Cursor {
public:
    Cursor() noexcept = default;

    /// The run here; {0, 0} behind the last one.
    NSRange current() const noexcept { return current_; }
    NSRange next() noexcept;

private:
    friend class IndexBlocks;
    Cursor(const IndexBlocks& blocks, std::size_t block, std::size_t position, NSUInteger from) noexcept;
    NSRange nextPiece() noexcept;

    const std::vector<Block>* blocks_ = nullptr;
    std::size_t block_ = 0;
    std::size_t position_ = 0;  ///< the run or bit in the block
    NSRange current_;
    NSRange piece_;  ///< what comes next
};

inline std::size_t IndexBlocks::blocksStartingUpTo(NSUInteger index) const noexcept {
    // Without branches: nobody can predict which way a search goes.
    const Block* block = blocks_.data();
    std::size_t count = blocks_.size();
    while (count > 1) {
        const std::size_t half = count / 2;
        block += block[half - 1].first <= index ? half : 0;
        count -= half;
    }
    return static_cast<std::size_t>(block - blocks_.data()) + (count && block->first <= index);
}

inline std::uint32_t IndexBlocks::Block::runsStartingUpTo(NSUInteger index) const noexcept {
    const NSUInteger* run = data;
    std::size_t left = count;
    while (left > 1) {
        const std::size_t half = left / 2;
        run += run[2 * (half - 1)] <= index ? 2 * half : 0;
        left -= half;
    }
    return static_cast<std::uint32_t>((run - data) / 2) + (*run <= index);
}

inline bool IndexBlocks::contains(NSUInteger index) const noexcept {
    const std::size_t blocks = blocksStartingUpTo(index);
    if (!blocks)
        return false;
    const Block& block = blocks_[blocks - 1];
    if (!block.isBits())
        return index < block.end(block.runsStartingUpTo(index) - 1);
    const NSUInteger bit = index - block.first;
    return bit < chunkLength && (block.data[bit / 64] >> bit % 64 & 1);
}

}  // namespace tovi::detail
