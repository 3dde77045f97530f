#include <algorithm>
#include <limits>
#include <memory>

#include <ToviFoundationKit/Foundation/BitWords_p.h>
#include <ToviFoundationKit/Foundation/IndexBlocks.h>
#include <ToviFoundationKit/Foundation/Storage_p.h>

// Two sets are combined chunk by chunk where one of them has bits, and run by run between those chunks. Which set has
// the next run cannot be predicted, so the loops over runs choose by arithmetic and not by branches.

namespace tovi::detail {

namespace {
constexpr NSUInteger beyondAll = std::numeric_limits<NSUInteger>::max();
}

/// Reads a set from front to back: its runs up to a limit, or its bits of one chunk.
class IndexBlocks::Reader {
public:
    explicit Reader(const IndexBlocks& blocks) noexcept
        : next_(blocks.blocks_.data()), nextBits_(next_), end_(next_ + blocks.blocks_.size()) {}

    /// The start of the next chunk of bits; beyondAll when there is none.
    NSUInteger nextChunk() noexcept {
        nextBits_ = std::max(nextBits_, next_);
        while (nextBits_ != end_ && !nextBits_->isBits())
            ++nextBits_;
        return nextBits_ == end_ ? beyondAll : nextBits_->first;
    }

    /// The part of a run that lies before the limit: {beyondAll, beyondAll} behind the last one.
    NSUInteger start() const noexcept { return start_; }
    NSUInteger end() const noexcept { return stop_; }
    bool atEnd() const noexcept { return start_ == beyondAll; }

    void limitTo(NSUInteger limit) noexcept {
        limit_ = limit;
        load();
    }

    void advanceIf(bool condition) noexcept {
        if (atEnd() || (condition && run_[1] > limit_)) [[unlikely]]
            return finish();
        run_ += condition ? 2 : 0;
        load();
    }

    /// The bits of the chunk at the limit, null when there are none. What comes next starts behind the chunk.
    const NSUInteger* takeChunk(NSUInteger chunk) noexcept {
        while (!atEnd())
            advanceIf(true);
        floor_ = chunk + chunkLength;
        if (run_ == blockEnd_ && next_ != end_ && next_->isBits() && next_->first == chunk)
            return next_++->data;
        limitTo(floor_);
        if (run_ == blockEnd_ || run_[0] >= limit_)
            return nullptr;
        return readChunk(chunk);
    }

private:
    void finish() noexcept { start_ = stop_ = beyondAll; }

    void load() noexcept {
        if (run_ == blockEnd_) [[unlikely]] {
            if (next_ == end_ || next_->isBits())
                return finish();
            run_ = next_->data;
            blockEnd_ = run_ + std::size_t{2} * next_->count;
            ++next_;
        }
        if (run_[0] >= limit_) [[unlikely]]
            return finish();
        start_ = std::max(run_[0], floor_);
        stop_ = std::min(run_[1], limit_);
    }

    const NSUInteger* readChunk(NSUInteger chunk) noexcept {
        std::fill_n(bits_, chunkWords, 0);
        for (; !atEnd(); advanceIf(true))
            forEachWord(bits_, std::max(run_[0], chunk) - chunk, stop_ - chunk,
                        [](NSUInteger& word, NSUInteger mask) { word |= mask; });
        return bits_;
    }

    const Block* next_;
    const Block* nextBits_;
    const Block* end_;
    const NSUInteger* run_ = nullptr;
    const NSUInteger* blockEnd_ = nullptr;
    NSUInteger floor_ = 0;
    NSUInteger limit_ = 0;
    NSUInteger start_ = beyondAll;
    NSUInteger stop_ = beyondAll;
    NSUInteger bits_[chunkWords];
};

/// Makes a set of runs and chunks that come in ascending order. Runs that touch become one.
class IndexBlocks::Writer {
public:
    void putIf(bool condition, NSUInteger start, NSUInteger end) {
        const bool isApart = condition && start > last_[1];
        if (isApart && last_ == &runs_[2 * (mostRuns - 1)]) [[unlikely]]
            flush();
        last_ += isApart ? 2 : 0;
        last_[0] = isApart ? start : last_[0];
        last_[1] = condition ? std::max(end, last_[1]) : last_[1];
    }

    template <class Operation> void putChunk(NSUInteger chunk, const NSUInteger* a, const NSUInteger* b) {
        Words bits = newWords();
        for (std::size_t i = 0; i < chunkWords; ++i)
            bits[i] = Operation::combineWords(a[i], b[i]);
        put(chunk, std::move(bits));
    }

    /// Of a chunk up to as many words as it has.
    void putBits(NSUInteger chunk, std::span<const NSUInteger> words) {
        if (countBits(words.data(), words.size()) < fewBits)
            return putRuns(chunk, words);
        Words bits = newWords();
        std::fill(std::ranges::copy(words, bits.get()).out, bits.get() + chunkWords, 0);
        put(chunk, std::move(bits));
    }

    IndexBlocks finish() {
        flush();
        return std::move(result_);
    }

private:
    static constexpr std::uint32_t fewBits = 64;  // take less room as runs, however they lie

    using Words = std::unique_ptr<NSUInteger[], decltype(&std::free)>;
    static Words newWords() { return {reallocated<NSUInteger>(nullptr, chunkWords), &std::free}; }

    void put(NSUInteger chunk, Words bits) {
        const auto count = static_cast<std::uint32_t>(countBits(bits.get(), chunkWords));
        if (count == chunkLength)
            return putIf(true, chunk, chunk + chunkLength);
        if (count < fewBits)
            return putRuns(chunk, {bits.get(), chunkWords});
        flush();
        result_.blocks_.push_back({chunk, bits.get(), count, 0});
        static_cast<void>(bits.release());
        result_.count_ += count;
    }

    void putRuns(NSUInteger chunk, std::span<const NSUInteger> words) {
        const std::size_t length = words.size() * 64;
        for (std::size_t start = 0, end = 0;; putIf(true, chunk + start, chunk + end)) {
            start = nextBit<true>(words.data(), length, end);
            end = nextBit<false>(words.data(), length, start);
            if (start == length)
                return;
        }
    }

    // The first place may hold an empty run, which there was nothing to put on.
    void flush() {
        const NSUInteger* const begin = runs_[0] == runs_[1] ? runs_ + 2 : runs_;
        const NSUInteger* const end = last_ + 2;
        if (begin != end) {
            const auto count = static_cast<std::uint32_t>((end - begin) / 2);
            result_.addBlock(result_.blocks_.size(), count);
            Block& block = result_.blocks_.back();
            std::copy(begin, end, block.data);
            block.first = begin[0];
            block.count = count;
            for (const NSUInteger* run = begin; run != end; run += 2)
                result_.count_ += run[1] - run[0];
        }
        last_ = runs_;
        runs_[0] = runs_[1] = 0;
    }

    IndexBlocks result_;
    NSUInteger runs_[2 * mostRuns] = {0, 0};
    NSUInteger* last_ = runs_;
};

struct IndexBlocks::Union {
    static void combineRuns(Reader& x, Reader& y, Writer& result) {
        while (!x.atEnd() || !y.atEnd()) {
            const bool takesX = x.start() <= y.start();
            result.putIf(true, takesX ? x.start() : y.start(), takesX ? x.end() : y.end());
            x.advanceIf(takesX);
            y.advanceIf(!takesX);
        }
    }
    static NSUInteger combineWords(NSUInteger a, NSUInteger b) noexcept { return a | b; }
};

struct IndexBlocks::Intersection {
    static void combineRuns(Reader& x, Reader& y, Writer& result) {
        while (!x.atEnd() && !y.atEnd()) {
            const NSUInteger start = std::max(x.start(), y.start());
            const NSUInteger end = std::min(x.end(), y.end());
            result.putIf(start < end, start, end);
            const bool xEndsFirst = x.end() <= y.end();
            x.advanceIf(xEndsFirst);
            y.advanceIf(!xEndsFirst);
        }
    }
    static NSUInteger combineWords(NSUInteger a, NSUInteger b) noexcept { return a & b; }
};

struct IndexBlocks::Difference {
    static void combineRuns(Reader& x, Reader& y, Writer& result) {
        for (NSUInteger done = 0; !x.atEnd();) {
            const NSUInteger start = std::max(x.start(), done);
            const NSUInteger end = std::min(x.end(), y.start());
            result.putIf(start < end, start, end);
            const bool xEndsFirst = x.end() <= y.end();
            done = xEndsFirst ? done : y.end();
            x.advanceIf(xEndsFirst);
            y.advanceIf(!xEndsFirst);
        }
    }
    static NSUInteger combineWords(NSUInteger a, NSUInteger b) noexcept { return a & ~b; }
};

template <class Operation> IndexBlocks IndexBlocks::combined(const IndexBlocks& a, const IndexBlocks& b) {
    static constexpr NSUInteger noBits[chunkWords] = {};
    Reader x(a);
    Reader y(b);
    Writer result;
    for (;;) {
        const NSUInteger chunk = std::min(x.nextChunk(), y.nextChunk());
        x.limitTo(chunk);
        y.limitTo(chunk);
        Operation::combineRuns(x, y, result);
        if (chunk == beyondAll)
            return result.finish();
        const NSUInteger* const bitsOfX = x.takeChunk(chunk);
        const NSUInteger* const bitsOfY = y.takeChunk(chunk);
        result.putChunk<Operation>(chunk, bitsOfX ? bitsOfX : noBits, bitsOfY ? bitsOfY : noBits);
    }
}

IndexBlocks IndexBlocks::ofBits(std::span<const NSUInteger> words) {
    Writer result;
    for (std::size_t i = 0; i < words.size(); i += chunkWords)
        result.putBits(i * 64, words.subspan(i, std::min(chunkWords, words.size() - i)));
    return result.finish();
}

IndexBlocks IndexBlocks::united(const IndexBlocks& a, const IndexBlocks& b) { return combined<Union>(a, b); }
IndexBlocks IndexBlocks::intersected(const IndexBlocks& a, const IndexBlocks& b) {
    return combined<Intersection>(a, b);
}
IndexBlocks IndexBlocks::subtracted(const IndexBlocks& a, const IndexBlocks& b) { return combined<Difference>(a, b); }

}  // namespace tovi::detail
