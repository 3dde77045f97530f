// Sorting, and insertion into a sorted list, each at three sizes. The elements are numbers behind pointers everywhere:
// NSNumber here, std::shared_ptr<long> for the peers, made in the same order.

#include <algorithm>
#include <chrono>
#include <cstring>
#include <memory>

#include <ToviFoundationKit/Extensions/NSMutableArray-QVLAdditions.h>
#include <ToviFoundationKit/Runtime/Additions.h>

#include "Bench.h"

#ifdef TOVI_BENCH_HAVE_GLIB
#include <glib.h>
#endif

using namespace tovi;
using namespace bench;

namespace {

using SharedLong = std::shared_ptr<long>;

/// A kit list of these numbers, and the same for the peers.
Ref<NSMutableArray> kitNumbers(const std::vector<long>& numbers) { return NSMutableArray::from(numbers); }

std::vector<SharedLong> sharedNumbers(const std::vector<long>& numbers) {
    std::vector<SharedLong> result;
    for (const long number : numbers)
        result.push_back(std::make_shared<long>(number));
    return result;
}

long valueOf(const NSObject& number) { return static_cast<const NSNumber&>(number).longValue(); }

/// An element whose order the kit does not know.
class Item final : public NSObject {
    TOVI_CLASS(Item, NSObject)

public:
    static Ref<NSObject> make(long rank) { return adopt(*new Item(rank)); }
    NSInteger compare(const Item& other) const noexcept { return rank_ < other.rank_ ? -1 : rank_ > other.rank_; }
    long rank() const noexcept { return rank_; }

private:
    explicit Item(long rank) noexcept : rank_(rank) {}
    long rank_;
};

const Additions<Item> additions{instance<&Item::compare>("compare:")};

template <class Rank> void sortBySelector(State& state, const NSArray& list, Rank rank) {
    const Ref<NSArray> sorted = list.sortedArrayUsingSelector("compare:"_sel);
    for (long i = 0; NSObject & each : *sorted)
        check(rank(each) == i++, "sortedArrayUsingSelector:");
    repeat(state, state.range(0), [&] { return list.sortedArrayUsingSelector("compare:"_sel); });
}

void sortNumbers(State& state) { sortBySelector(state, kitNumbers(shuffledNumbers(state.range(0))), valueOf); }

void sortItems(State& state) {
    const Ref<NSMutableArray> list = NSMutableArray::array();
    for (const long rank : shuffledNumbers(state.range(0)))
        list->addObject(Item::make(rank));
    sortBySelector(state, list, [](const NSObject& item) { return static_cast<const Item&>(item).rank(); });
}

template <auto sort> void sortShared(State& state) {
    const std::vector<SharedLong> list = sharedNumbers(shuffledNumbers(state.range(0)));
    repeat(state, state.range(0), [&] {
        std::vector<SharedLong> sorted = list;
        sort(sorted.begin(), sorted.end(), [](const SharedLong& a, const SharedLong& b) { return *a < *b; });
        return sorted;
    });
}

constexpr auto unstable = [](auto... arguments) { std::sort(arguments...); };
constexpr auto stable = [](auto... arguments) { std::stable_sort(arguments...); };

BENCHMARK(sortNumbers)->Name("sort by compare:/kit")->Apply(sizes);
BENCHMARK(sortItems)->Name("sort by compare:/kit, a host's class")->Apply(sizes);
BENCHMARK(sortShared<unstable>)->Name("sort by compare:/std::sort of std::shared_ptr")->Apply(sizes);
BENCHMARK(sortShared<stable>)->Name("sort by compare:/std::stable_sort of std::shared_ptr")->Apply(sizes);

// ---- Insertion into a sorted list of n even numbers. Odd ones are put in by the batch; what takes them out again is
// not timed.

constexpr long batch = 256;

std::vector<long> evenNumbers(long n) {
    std::vector<long> numbers(static_cast<std::size_t>(n));
    for (long i = 0; i < n; ++i)
        numbers[static_cast<std::size_t>(i)] = 2 * i;
    return numbers;
}

std::vector<long> oddNumbers(long n) {
    std::vector<long> numbers = shuffledNumbers(n);
    numbers.resize(batch);
    for (long& each : numbers)
        each = 2 * each + 1;
    return numbers;
}

/// insert(i) puts the i-th odd number in and answers its place; removeAt takes out what is at a place.
template <class Insert, class RemoveAt> void insertBatches(State& state, Insert insert, RemoveAt removeAt) {
    std::vector<std::size_t> places(batch);
    for (auto _ : state) {
        const auto start = std::chrono::steady_clock::now();
        for (std::size_t i = 0; i < batch; ++i)
            places[i] = insert(i);
        state.SetIterationTime(std::chrono::duration<double>(std::chrono::steady_clock::now() - start).count());
        for (std::size_t i = batch; i-- > 0;)
            removeAt(places[i]);
    }
    countItems(state, batch);
}

template <class Insert> void insertIntoKit(State& state, Insert insert) {
    const Ref<NSMutableArray> list = kitNumbers(evenNumbers(state.range(0)));
    const Ref<NSMutableArray> added = kitNumbers(oddNumbers(state.range(0)));
    const auto place = insert(*list, (*added)[0]);
    check(2 * place == valueOf((*added)[0]) + 1 && identical(&(*list)[NSUInteger(place)], &(*added)[0]), "insertion");
    list->removeObjectAtIndex(NSUInteger(place));
    insertBatches(
        state, [&](std::size_t i) { return static_cast<std::size_t>(insert(*list, (*added)[i])); },
        [&](std::size_t index) { list->removeObjectAtIndex(index); });
}

void insertBySelector(State& state) {
    insertIntoKit(state, [](NSMutableArray& list, NSObject& object) {
        return insertObject_usingComparator_startingAtIndex(list, object, "compare:"_sel, 0);
    });
}

NSInteger compareNumbers(NSObject& a, NSObject& b, void*) {
    return static_cast<NSNumber&>(a).compare(static_cast<NSNumber&>(b));
}

void insertByFunction(State& state) {
    insertIntoKit(state, [](NSMutableArray& list, NSObject& object) {
        return insertObject_usingComparatorFunction_startingAtIndex(list, object, compareNumbers, 0);
    });
}

int compareLongs(const void* a, const void* b) {
    const long x = *static_cast<const long*>(a), y = *static_cast<const long*>(b);
    return x < y ? -1 : x > y;
}

/// The peers' halving, through a function as theirs are.
template <class Pointer> std::size_t placeFor(const long* object, const Pointer* list, std::size_t count) {
    int (*volatile compare)(const void*, const void*) = compareLongs;
    std::size_t low = 0, high = count;
    while (low < high) {
        const std::size_t middle = (low + high) / 2;
        if (compare(object, list[middle]) < 0)
            high = middle;
        else
            low = middle + 1;
    }
    return low;
}

void insertByMemoryMove(State& state) {
    const std::vector<SharedLong> numbers = sharedNumbers(evenNumbers(state.range(0)));
    const std::vector<SharedLong> added = sharedNumbers(oddNumbers(state.range(0)));
    std::vector<void*> list(numbers.size() + batch);
    std::ranges::transform(numbers, list.begin(), [](const SharedLong& each) { return each.get(); });
    std::size_t count = numbers.size();
    insertBatches(
        state,
        [&](std::size_t i) {
            const std::size_t place = placeFor(added[i].get(), list.data(), count);
            std::memmove(&list[place + 1], &list[place], (count++ - place) * sizeof(void*));
            list[place] = added[i].get();
            return place;
        },
        [&](std::size_t place) { std::memmove(&list[place], &list[place + 1], (--count - place) * sizeof(void*)); });
}

void insertionSizes(benchmark::internal::Benchmark* benchmark) { benchmark->Apply(sizes)->UseManualTime(); }

BENCHMARK(insertBySelector)->Name("insertion into a sorted list/kit")->Apply(insertionSizes);
BENCHMARK(insertByFunction)->Name("insertion into a sorted list/kit, comparator function")->Apply(insertionSizes);
BENCHMARK(insertByMemoryMove)->Name("insertion into a sorted list/memmove")->Apply(insertionSizes);

#ifdef TOVI_BENCH_HAVE_GLIB
void insertIntoPtrArray(State& state) {
    const std::vector<SharedLong> numbers = sharedNumbers(evenNumbers(state.range(0)));
    const std::vector<SharedLong> added = sharedNumbers(oddNumbers(state.range(0)));
    GPtrArray* const list = g_ptr_array_new();
    for (const SharedLong& each : numbers)
        g_ptr_array_add(list, each.get());
    insertBatches(
        state,
        [&](std::size_t i) {
            const std::size_t place = placeFor(added[i].get(), list->pdata, list->len);
            g_ptr_array_insert(list, static_cast<int>(place), added[i].get());
            return place;
        },
        [&](std::size_t place) { g_ptr_array_remove_index(list, static_cast<guint>(place)); });
    g_ptr_array_unref(list);
}

BENCHMARK(insertIntoPtrArray)->Name("insertion into a sorted list/GPtrArray")->Apply(insertionSizes);
#endif

}  // namespace
