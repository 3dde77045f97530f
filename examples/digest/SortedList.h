#pragma once

#include <variant>
#include <vector>

#include <ToviFoundationKit/ToviFoundationKit.h>

namespace digest {

/// Keeps objects in order while they come in, any number of them in any order: a binary insertion into a short run, and
/// a merge when the run is full. So n objects take n log n comparisons and moves; already sorted ones take n moves.
class SortedList {
public:
    /// What becomes of an object that compares as same to one that is there.
    enum class Duplicates { kept, dropped };

    /// A selector sent to an object with another as argument ("compare:"), or a function of both.
    using Comparator = std::variant<tovi::Selector, tovi::ComparatorFunction>;

    explicit SortedList(Comparator comparator, Duplicates duplicates = Duplicates::kept);

    void add(tovi::NSObject& object);
    void addSorted(const tovi::NSArray& list);  ///< many at once; the list is sorted by the same comparator

    /// All objects in order. Adding may go on afterwards.
    tovi::Ref<tovi::NSArray> objects();

private:
    tovi::NSInteger compare(tovi::NSObject& a, tovi::NSObject& b) const;
    void closeRun();
    void mergeLastTwo();
    tovi::Ref<tovi::NSMutableArray> merged(const tovi::NSArray& a, const tovi::NSArray& b) const;

    Comparator comparator_;
    Duplicates duplicates_;
    tovi::Ref<tovi::NSMutableArray> run_;                // where objects are inserted
    std::vector<tovi::Ref<tovi::NSMutableArray>> runs_;  // full ones, long to short
};

}  // namespace digest
