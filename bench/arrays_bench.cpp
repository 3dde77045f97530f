// Questions to lists: differences, sets of indexes, inverted lists, each at three sizes. The elements are numbers
// behind pointers everywhere: NSNumber here, std::shared_ptr<long> for the peers, made in the same order. The peers'
// tables find a number through its pointer (Pointed...), as the kit's find an object through its hash and isEqual.

#include <algorithm>
#include <memory>
#include <string>

#include <ToviFoundationKit/Extensions/NSArray-QVLAdditions.h>
#include <ToviFoundationKit/Extensions/NSDictionary-QVLAdditions.h>
#include <ToviFoundationKit/Foundation/NSMutableDictionary.h>
#include <ToviFoundationKit/Foundation/NSMutableIndexSet.h>

#include "Bench.h"

#ifdef TOVI_BENCH_HAVE_ABSEIL
#include <absl/container/flat_hash_map.h>
#include <absl/container/flat_hash_set.h>
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

// The list holds 0 to n - 1 in disorder, and so does the collection, or n / 2 to 3n / 2 where
// half of it shall not be found.

std::vector<long> halfOverlapping(long n) {
    std::vector<long> numbers = shuffledNumbers(n, 2);
    for (long& each : numbers)
        each += n / 2;
    return numbers;
}

/// The elements of a list, the very same ones, in another order, or every second one in the list's own order.
template <class List> List reordered(const List& list) {
    List result;
    for (const long i : shuffledNumbers(static_cast<long>(list.size()), 2))
        result.push_back(list[static_cast<std::size_t>(i)]);
    return result;
}
Ref<NSArray> reordered(const NSArray& list) {
    return NSArray::from(reordered(std::vector<Ref<NSObject>>(list.begin(), list.end())));
}

template <class List> List everySecond(const List& list) {
    List result;
    for (std::size_t i = 0; i < list.size(); i += 2)
        result.push_back(list[i]);
    return result;
}
Ref<NSArray> everySecond(const NSArray& list) {
    return NSArray::from(everySecond(std::vector<Ref<NSObject>>(list.begin(), list.end())));
}

void kitDifference(State& state) {
    const Ref<NSArray> list = kitNumbers(shuffledNumbers(state.range(0)));
    const Ref<NSArray> other = kitNumbers(halfOverlapping(state.range(0)));
    const Ref<NSArray> difference = differenceWithArray(list, other);
    check(difference->count() * 2 == other->count(), "differenceWithArray:");
    for (const NSObject& each : *difference)
        check(valueOf(each) >= state.range(0), "differenceWithArray:");
    repeat(state, state.range(0), [&] { return differenceWithArray(list, other); });
}

void kitIndexes(State& state) {
    const Ref<NSArray> list = kitNumbers(shuffledNumbers(state.range(0)));
    const Ref<NSArray> other = kitNumbers(halfOverlapping(state.range(0)));
    const Ref<NSIndexSet> indexes = indexesOfObjects(list, other);
    check(indexes->count() * 2 == other->count(), "indexesOfObjects:");
    for (const NSUInteger index : *indexes)
        check(valueOf((*list)[index]) >= state.range(0) / 2, "indexesOfObjects:");
    repeat(state, state.range(0), [&] { return indexesOfObjects(list, other); });
}

void kitIdenticalIndexes(State& state) {
    const Ref<NSArray> list = kitNumbers(shuffledNumbers(state.range(0)));
    const Ref<NSArray> other = reordered(*list);
    const auto find = [&] { return indexesOfObjectsIdenticalTo_allowsNotFound(list, other, false); };
    check(find()->isEqual(NSIndexSet::indexSetWithIndexesInRange({0, list->count()}).get()),
          "indexesOfObjectsIdenticalTo:allowsNotFound:");
    repeat(state, state.range(0), find);
}

void kitOrderedIndexes(State& state) {
    const Ref<NSArray> list = kitNumbers(shuffledNumbers(state.range(0)));
    const Ref<NSArray> other = everySecond(*list);
    const auto find = [&] { return indexesOfOrderedObjectsIdenticalTo_allowsNotFound(list, other, false); };
    const auto indexes = find();
    check(indexes->count() == other->count() && indexes->containsIndex(2) && !indexes->containsIndex(1),
          "indexesOfOrderedObjectsIdenticalTo:allowsNotFound:");
    repeat(state, state.range(0), find);
}

/// n occurrences of n / 10 elements, in lists of ten.
constexpr long occurrences = 10;

Ref<NSDictionary> kitLists(long n) {
    const long count = n / occurrences;
    const std::vector<long> numbers = shuffledNumbers(count);
    const Ref<NSMutableDictionary> lists = NSMutableDictionary::dictionary();
    for (long i = 0; i < count; ++i) {
        const Ref<NSMutableArray> list = NSMutableArray::array();
        for (long j = 0; j < occurrences; ++j)
            list->addObject(NSNumber::numberWithLong(numbers[static_cast<std::size_t>((i + j) % count)]));
        lists->setObject_forKey(list, NSString::stringWithFormat(u"key %ld", i));
    }
    return lists;
}

void kitInverted(State& state) {
    const Ref<NSDictionary> lists = kitLists(state.range(0));
    const Ref<NSDictionary> inverted = invertKeysAndObjects(lists);
    check(inverted->count() == lists->count(), "invertKeysAndObjects");
    for (const auto& [element, keys] : *inverted)
        check(static_cast<NSArray&>(keys).count() == occurrences, "invertKeysAndObjects");
    repeat(state, state.range(0), [&] { return invertKeysAndObjects(lists); });
}

BENCHMARK(kitDifference)->Name("differenceWithArray:/kit")->Apply(sizes);
BENCHMARK(kitIndexes)->Name("indexesOfObjects:/kit")->Apply(sizes);
BENCHMARK(kitIdenticalIndexes)->Name("indexesOfObjectsIdenticalTo:/kit")->Apply(sizes);
BENCHMARK(kitOrderedIndexes)->Name("indexesOfOrderedObjectsIdenticalTo:/kit")->Apply(sizes);
BENCHMARK(kitInverted)->Name("invertKeysAndObjects/kit")->Apply(sizes);

#ifdef TOVI_BENCH_HAVE_ABSEIL

struct PointedHash {
    std::size_t operator()(const long* p) const { return absl::Hash<long>()(*p); }
};
struct PointedEqual {
    bool operator()(const long* a, const long* b) const { return *a == *b; }
};
using ByValue = absl::flat_hash_map<const long*, std::uint32_t, PointedHash, PointedEqual>;
using ByAddress = absl::flat_hash_map<const long*, std::uint32_t>;

void abseilDifference(State& state) {
    const auto list = sharedNumbers(shuffledNumbers(state.range(0)));
    const auto other = sharedNumbers(halfOverlapping(state.range(0)));
    repeat(state, state.range(0), [&] {
        absl::flat_hash_set<const long*, PointedHash, PointedEqual> present;
        present.reserve(list.size());
        for (const SharedLong& each : list)
            present.insert(each.get());
        std::vector<SharedLong> difference;
        for (const SharedLong& each : other)
            if (!present.contains(each.get()))
                difference.push_back(each);
        return difference;
    });
}

/// The first index of each element, and from each index the next one of an equal element.
template <class Map> struct Occurrences {
    Map first;
    std::vector<std::uint32_t> next;

    explicit Occurrences(const std::vector<SharedLong>& list) : next(list.size(), ~0U) {
        first.reserve(list.size());
        for (std::size_t i = list.size(); i-- > 0;) {
            const auto [entry, added] = first.try_emplace(list[i].get(), i);
            if (!added)
                next[i] = std::exchange(entry->second, static_cast<std::uint32_t>(i));
        }
    }
};

/// Every index of every element of the collection, ascending.
template <class Map> std::vector<std::uint32_t> abseilIndexes(const std::vector<SharedLong>& list,
                                                              const std::vector<SharedLong>& collection) {
    const Occurrences<Map> occurring(list);
    std::vector<bool> marked(list.size());
    for (const SharedLong& each : collection)
        if (const auto found = occurring.first.find(each.get()); found != occurring.first.end())
            for (std::uint32_t i = found->second; i != ~0U; i = occurring.next[i])
                marked[i] = true;
    std::vector<std::uint32_t> indexes;
    for (std::uint32_t i = 0; i < marked.size(); ++i)
        if (marked[i])
            indexes.push_back(i);
    return indexes;
}

void abseilEqual(State& state) {
    const auto list = sharedNumbers(shuffledNumbers(state.range(0)));
    const auto other = sharedNumbers(halfOverlapping(state.range(0)));
    repeat(state, state.range(0), [&] { return abseilIndexes<ByValue>(list, other); });
}

template <bool ordered> void abseilIdentical(State& state) {
    const auto list = sharedNumbers(shuffledNumbers(state.range(0)));
    const auto other = ordered ? everySecond(list) : reordered(list);
    repeat(state, state.range(0), [&] { return abseilIndexes<ByAddress>(list, other); });
}

void abseilInverted(State& state) {
    using Key = std::shared_ptr<std::u16string>;
    const long count = state.range(0) / occurrences;
    const std::vector<long> numbers = shuffledNumbers(count);
    std::vector<std::pair<Key, std::vector<SharedLong>>> lists;
    for (long i = 0; i < count; ++i) {
        auto& [key, list] = lists.emplace_back();
        const std::string digits = std::to_string(i);
        key = std::make_shared<std::u16string>(u"key " + std::u16string(digits.begin(), digits.end()));
        for (long j = 0; j < occurrences; ++j)
            list.push_back(std::make_shared<long>(numbers[static_cast<std::size_t>((i + j) % count)]));
    }
    struct Hash : PointedHash {
        std::size_t operator()(const SharedLong& p) const { return PointedHash::operator()(p.get()); }
    };
    struct Equal : PointedEqual {
        bool operator()(const SharedLong& a, const SharedLong& b) const { return *a == *b; }
    };
    repeat(state, state.range(0), [&] {
        absl::flat_hash_map<SharedLong, std::vector<Key>, Hash, Equal> inverted;
        for (const auto& [key, list] : lists)
            for (const SharedLong& element : list)
                inverted[element].push_back(key);
        return inverted;
    });
}

BENCHMARK(abseilDifference)->Name("differenceWithArray:/absl::flat_hash_set")->Apply(sizes);
BENCHMARK(abseilEqual)->Name("indexesOfObjects:/absl::flat_hash_map")->Apply(sizes);
BENCHMARK(abseilIdentical<false>)->Name("indexesOfObjectsIdenticalTo:/absl::flat_hash_map")->Apply(sizes);
BENCHMARK(abseilIdentical<true>)->Name("indexesOfOrderedObjectsIdenticalTo:/absl::flat_hash_map")->Apply(sizes);
BENCHMARK(abseilInverted)->Name("invertKeysAndObjects/absl::flat_hash_map")->Apply(sizes);

#endif

}  // namespace
