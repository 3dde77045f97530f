#include <array>
#include <limits>

#include <ToviFoundationKit/Foundation/IndexRuns.h>
#include <ToviFoundationKit/Foundation/Storage_p.h>

// Which of two sets has the next run cannot be predicted, so these loops choose by arithmetic and not by branches.

namespace tovi::detail {

namespace {
constexpr NSUInteger beyondAll = std::numeric_limits<NSUInteger>::max();
constexpr std::array<NSUInteger, 2> endOfRuns{beyondAll, beyondAll};
}  // namespace

/// Goes over the runs of a set; behind the last one the run is {beyondAll, beyondAll}.
class IndexRuns::Reader {
public:
    explicit Reader(const IndexRuns& runs) noexcept : blocks_(runs.blocks_) { nextBlock(); }

    NSUInteger start() const noexcept { return at_[0]; }
    NSUInteger end() const noexcept { return at_[1]; }
    bool atEnd() const noexcept { return at_ == endOfRuns.data(); }

    void advanceIf(bool condition) noexcept {
        at_ += condition ? 2 : 0;
        if (at_ == blockEnd_) [[unlikely]]
            nextBlock();
    }

private:
    void nextBlock() noexcept {
        if (next_ == blocks_.size()) {
            at_ = endOfRuns.data();
            blockEnd_ = nullptr;
            return;
        }
        const Block& block = blocks_[next_++];
        at_ = block.edges;
        blockEnd_ = at_ + std::size_t{2} * block.count;
    }

    const std::vector<Block>& blocks_;
    std::size_t next_ = 0;
    const NSUInteger* at_ = nullptr;
    const NSUInteger* blockEnd_ = nullptr;
};

/// Makes a set of runs that come in ascending order.
class IndexRuns::Writer {
public:
    /// Writes the run, or, on no condition, what the next one is written over.
    void putIf(bool condition, NSUInteger start, NSUInteger end) {
        if (at_ == blockEnd_) [[unlikely]]
            nextBlock();
        at_[0] = start;
        at_[1] = end;
        at_ += condition ? 2 : 0;
    }

    IndexRuns finish() {
        finishBlock();
        if (!runs_.blocks_.empty())
            runs_.blocks_.back().trim();
        return std::move(runs_);
    }

private:
    void nextBlock() {
        finishBlock();
        runs_.addBlock(runs_.blocks_.size(), blockLimit);
        at_ = runs_.blocks_.back().edges;
        blockEnd_ = at_ + std::size_t{2} * blockLimit;
    }

    void finishBlock() noexcept {
        if (runs_.blocks_.empty())
            return;
        Block& block = runs_.blocks_.back();
        block.count = static_cast<std::uint32_t>((at_ - block.edges) / 2);
        block.first = block.edges[0];
        for (const NSUInteger* edge = block.edges; edge != at_; edge += 2)
            runs_.indexCount_ += edge[1] - edge[0];
        if (!block.count) {
            std::free(block.edges);
            runs_.blocks_.pop_back();
        }
    }

    IndexRuns runs_;
    NSUInteger* at_ = nullptr;
    NSUInteger* blockEnd_ = nullptr;
};

IndexRuns IndexRuns::united(const IndexRuns& a, const IndexRuns& b) {
    Reader x(a);
    Reader y(b);
    Writer result;
    NSUInteger start = std::min(x.start(), y.start());
    NSUInteger end = start;
    while (!x.atEnd() || !y.atEnd()) {
        const bool takesX = x.start() <= y.start();
        const NSUInteger nextStart = takesX ? x.start() : y.start();
        const NSUInteger nextEnd = takesX ? x.end() : y.end();
        const bool isApart = nextStart > end;
        result.putIf(isApart, start, end);
        start = isApart ? nextStart : start;
        end = std::max(end, nextEnd);
        x.advanceIf(takesX);
        y.advanceIf(!takesX);
    }
    result.putIf(end > start, start, end);
    return result.finish();
}

IndexRuns IndexRuns::intersected(const IndexRuns& a, const IndexRuns& b) {
    Reader x(a);
    Reader y(b);
    Writer result;
    while (!x.atEnd() && !y.atEnd()) {
        const NSUInteger start = std::max(x.start(), y.start());
        const NSUInteger end = std::min(x.end(), y.end());
        result.putIf(start < end, start, end);
        const bool xEndsFirst = x.end() <= y.end();
        x.advanceIf(xEndsFirst);
        y.advanceIf(!xEndsFirst);
    }
    return result.finish();
}

IndexRuns IndexRuns::subtracted(const IndexRuns& a, const IndexRuns& b) {
    Reader x(a);
    Reader y(b);
    Writer result;
    for (NSUInteger done = 0; !x.atEnd();) {
        const NSUInteger start = std::max(x.start(), done);
        const NSUInteger end = std::min(x.end(), y.start());
        result.putIf(start < end, start, end);
        const bool xEndsFirst = x.end() <= y.end();
        done = xEndsFirst ? done : y.end();
        x.advanceIf(xEndsFirst);
        y.advanceIf(!xEndsFirst);
    }
    return result.finish();
}

}  // namespace tovi::detail
