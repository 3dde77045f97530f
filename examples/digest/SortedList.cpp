#include <SortedList.h>

using namespace tovi;

namespace digest {

namespace {

constexpr NSUInteger longestRun = 1024;

}  // namespace

SortedList::SortedList(Comparator comparator, Duplicates duplicates)
    : comparator_(comparator), duplicates_(duplicates), run_(NSMutableArray::array()) {}

void SortedList::add(NSObject& object) {
    const bool keeps = duplicates_ == Duplicates::kept;
    if (const auto* selector = std::get_if<Selector>(&comparator_))
        insertObject_usingComparator_startingAtIndex_allowsDuplicates(run_, object, *selector, 0, keeps);
    else
        insertObject_usingComparatorFunction_startingAtIndex_allowsDuplicates(
            run_, object, std::get<ComparatorFunction>(comparator_), 0, keeps);
    if (run_->count() == longestRun)
        closeRun();
}

void SortedList::addSorted(const NSArray& list) {
    closeRun();
    run_ = NSMutableArray::arrayWithArray(list);
    closeRun();
}

Ref<NSArray> SortedList::objects() {
    closeRun();
    while (runs_.size() > 1)
        mergeLastTwo();
    return runs_.empty() ? NSArray::array() : to<NSArray>(runs_.back()->copy());
}

// Each run is at least twice as long as the next one, so that an object moves log n times.
void SortedList::closeRun() {
    if (run_->count() == 0)
        return;
    runs_.push_back(std::exchange(run_, NSMutableArray::array()));
    while (runs_.size() > 1 && runs_[runs_.size() - 2]->count() < 2 * runs_.back()->count())
        mergeLastTwo();
}

void SortedList::mergeLastTwo() {
    const auto last = std::move(runs_.back());
    runs_.pop_back();
    runs_.back() = merged(runs_.back(), last);
}

Ref<NSMutableArray> SortedList::merged(const NSArray& a, const NSArray& b) const {
    const auto result = NSMutableArray::arrayWithCapacity(a.count() + b.count());
    NSUInteger i = 0, j = 0;
    while (i < a.count() && j < b.count()) {
        const NSInteger order = compare(b[j], a[i]);
        if (order == NSOrderedSame && duplicates_ == Duplicates::dropped)
            ++j;
        else
            result->addObject(order == NSOrderedAscending ? b[j++] : a[i++]);
    }
    result->addObjectsFromArray(a.subarrayWithRange({i, a.count() - i}));
    result->addObjectsFromArray(b.subarrayWithRange({j, b.count() - j}));
    return result;
}

NSInteger SortedList::compare(NSObject& a, NSObject& b) const {
    if (const auto* selector = std::get_if<Selector>(&comparator_))
        return send<NSInteger>(a, *selector, b);
    return std::get<ComparatorFunction>(comparator_)(a, b, nullptr);
}

}  // namespace digest
