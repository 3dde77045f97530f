// Sets and dictionaries.

#define QT_NO_KEYWORDS

#include <memory>
#include <string>
#include <unordered_map>

#include <ToviFoundationKit/Extensions/NSSet-QVLAdditions.h>
#include <ToviFoundationKit/Foundation/NSMutableDictionary.h>

#include "Bench.h"

#ifdef TOVI_BENCH_HAVE_QT
#include <QHash>
#include <QString>
#endif
#ifdef TOVI_BENCH_HAVE_ABSEIL
#include <absl/container/flat_hash_map.h>
#include <absl/container/flat_hash_set.h>
#endif

using namespace tovi;
using namespace bench;

namespace {

using SharedLong = std::shared_ptr<long>;

// ---- Set algebra: two sets of n elements, half of them common to both, give a new set that owns its elements. Once
// the elements are numbers, equal by value; once they are objects without a value, which are equal to themselves only.
// The peer's sets own their elements through std::shared_ptr and hash and compare the same things: the number behind
// the pointer, or the pointer.

class Thing final : public NSObject {
    TOVI_CLASS(Thing, NSObject)

public:
    static Ref<Thing> make() { return adopt(*new Thing); }

private:
    Thing() = default;
};

template <class Make> std::pair<Ref<NSSet>, Ref<NSSet>> overlapping(long n, Make make) {
    std::vector<Ref<NSObject>> objects;
    for (long i = 0; i < n + n / 2; ++i)
        objects.push_back(make(i));
    const Ref<NSMutableSet> low = NSMutableSet::set(), high = NSMutableSet::set();
    for (const long i : shuffledNumbers(n)) {
        low->addObject(objects[static_cast<std::size_t>(i)]);
        high->addObject(objects[static_cast<std::size_t>(i + n / 2)]);
    }
    return {low, high};
}

Ref<NSObject> number(long i) { return NSNumber::numberWithLong(i); }
Ref<NSObject> thing(long) { return Thing::make(); }

template <auto make, auto operation> void kitAlgebra(State& state) {
    const auto [low, high] = overlapping(state.range(0), make);
    const Ref<NSSet> result = operation(low, high);
    const bool unites = operation == setByUnioningSet, meets = operation == setByIntersectingSet;
    check(result->count() * 2 == NSUInteger(state.range(0) * (unites                                   ? 3
                                                              : operation == setByMinusingSet || meets ? 1
                                                                                                       : 2)),
          "set algebra");
    for (NSObject& each : *result)
        check(meets ? low->containsObject(each) && high->containsObject(each)
                    : unites || low->containsObject(each) != high->containsObject(each),
              "set algebra");
    repeat(state, state.range(0), [&, a = low, b = high] { return operation(a, b); });
}

BENCHMARK(kitAlgebra<number, setByUnioningSet>)->Name("union of sets of numbers/kit")->Apply(sizes);
BENCHMARK(kitAlgebra<number, setByMinusingSet>)->Name("difference of sets of numbers/kit")->Apply(sizes);
BENCHMARK(kitAlgebra<number, setByIntersectingSet>)->Name("intersection of sets of numbers/kit")->Apply(sizes);
BENCHMARK(kitAlgebra<number, setByComplementingIntersectionWithSet>)
    ->Name("symmetric difference of sets of numbers/kit")
    ->Apply(sizes);
BENCHMARK(kitAlgebra<thing, setByUnioningSet>)->Name("union of sets by identity/kit")->Apply(sizes);
BENCHMARK(kitAlgebra<thing, setByMinusingSet>)->Name("difference of sets by identity/kit")->Apply(sizes);
BENCHMARK(kitAlgebra<thing, setByIntersectingSet>)->Name("intersection of sets by identity/kit")->Apply(sizes);
BENCHMARK(kitAlgebra<thing, setByComplementingIntersectionWithSet>)
    ->Name("symmetric difference of sets by identity/kit")
    ->Apply(sizes);

#ifdef TOVI_BENCH_HAVE_ABSEIL

struct PointedHash {
    std::size_t operator()(const SharedLong& p) const { return absl::Hash<long>()(*p); }
};
struct PointedEqual {
    bool operator()(const SharedLong& a, const SharedLong& b) const { return *a == *b; }
};
using ByValue = absl::flat_hash_set<SharedLong, PointedHash, PointedEqual>;
using ByAddress = absl::flat_hash_set<SharedLong>;

constexpr auto united = [](const auto& a, const auto& b) {
    auto result = a;
    result.insert(b.begin(), b.end());
    return result;
};
constexpr auto subtracted = [](const auto& a, const auto& b) {
    auto result = a;
    for (const auto& each : b)
        result.erase(each);
    return result;
};
constexpr auto intersected = [](const auto& a, const auto& b) {
    auto result = a;
    absl::erase_if(result, [&](const auto& each) { return !b.contains(each); });
    return result;
};
constexpr auto inOneOnly = [](const auto& a, const auto& b) {
    auto result = a;
    for (const auto& each : b)
        if (const auto [place, added] = result.insert(each); !added)
            result.erase(place);
    return result;
};

template <class Set, auto operation> void abseilAlgebra(State& state) {
    const long n = state.range(0);
    std::vector<SharedLong> objects;
    for (long i = 0; i < n + n / 2; ++i)
        objects.push_back(std::make_shared<long>(i));
    Set low, high;
    for (const long i : shuffledNumbers(n)) {
        low.insert(objects[static_cast<std::size_t>(i)]);
        high.insert(objects[static_cast<std::size_t>(i + n / 2)]);
    }
    repeat(state, n, [&] { return operation(low, high); });
}

BENCHMARK(abseilAlgebra<ByValue, united>)->Name("union of sets of numbers/absl::flat_hash_set")->Apply(sizes);
BENCHMARK(abseilAlgebra<ByValue, subtracted>)->Name("difference of sets of numbers/absl::flat_hash_set")->Apply(sizes);
BENCHMARK(abseilAlgebra<ByValue, intersected>)
    ->Name("intersection of sets of numbers/absl::flat_hash_set")
    ->Apply(sizes);
BENCHMARK(abseilAlgebra<ByValue, inOneOnly>)
    ->Name("symmetric difference of sets of numbers/absl::flat_hash_set")
    ->Apply(sizes);
BENCHMARK(abseilAlgebra<ByAddress, united>)->Name("union of sets by identity/absl::flat_hash_set")->Apply(sizes);
BENCHMARK(abseilAlgebra<ByAddress, subtracted>)
    ->Name("difference of sets by identity/absl::flat_hash_set")
    ->Apply(sizes);
BENCHMARK(abseilAlgebra<ByAddress, intersected>)
    ->Name("intersection of sets by identity/absl::flat_hash_set")
    ->Apply(sizes);
BENCHMARK(abseilAlgebra<ByAddress, inOneOnly>)
    ->Name("symmetric difference of sets by identity/absl::flat_hash_set")
    ->Apply(sizes);

#endif

// ---- Dictionaries: text keys, shared numbers as values. The keys looked for are equal to those in the dictionary but
// other objects, in another order. An NSString remembers its hash; the peers' texts work it out each time.

std::u16string keyText(long i) {
    const std::string digits = std::to_string(1'000'000 + i);
    return u"key " + std::u16string(digits.begin(), digits.end());
}

/// What each dictionary is made of: keys to enter, keys to look for, values.
template <class Key, class Value, class MakeKey, class MakeValue> struct Entries {
    std::vector<Key> keys, probes;
    std::vector<Value> values;

    Entries(long n, MakeKey makeKey, MakeValue makeValue) {
        for (const long i : shuffledNumbers(n)) {
            keys.push_back(makeKey(i));
            values.push_back(makeValue(i));
        }
        for (const long i : shuffledNumbers(n, 2))
            probes.push_back(makeKey(i));
    }
};

auto kitEntries(long n) {
    const auto makeKey = [](long i) { return NSString::stringWithCharacters(keyText(i)); };
    const auto makeValue = [](long i) { return NSNumber::numberWithLong(i); };
    return Entries<Ref<NSString>, Ref<NSNumber>, decltype(makeKey), decltype(makeValue)>(n, makeKey, makeValue);
}

Ref<NSMutableDictionary> kitDictionary(const auto& entries) {
    Ref<NSMutableDictionary> dictionary = NSMutableDictionary::dictionary();
    for (std::size_t i = 0; i < entries.keys.size(); ++i)
        dictionary->setObject_forKey(*entries.values[i], *entries.keys[i]);
    return dictionary;
}

void kitSet(State& state) {
    const auto entries = kitEntries(state.range(0));
    check(kitDictionary(entries)->count() == entries.keys.size(), "setObject:forKey:");
    repeat(state, state.range(0), [&] { return kitDictionary(entries); });
}

void kitGet(State& state) {
    const auto entries = kitEntries(state.range(0));
    const Ref<NSMutableDictionary> dictionary = kitDictionary(entries);
    for (std::size_t i = 0; i < entries.keys.size(); ++i)
        check(dictionary->find(entries.keys[i]) == entries.values[i].get(), "objectForKey:");
    repeat(state, state.range(0), [&] {
        std::size_t found = 0;
        for (const Ref<NSString>& probe : entries.probes)
            found += dictionary->find(probe) != nullptr;
        check(found == entries.probes.size(), "objectForKey:");
        return found;
    });
}

void kitIterate(State& state) {
    const long n = state.range(0);
    const Ref<NSMutableDictionary> dictionary = kitDictionary(kitEntries(n));
    repeat(state, n, [&] {
        long sum = 0;
        for (const auto& [key, value] : *dictionary)
            sum += static_cast<NSNumber&>(value).longValue();
        check(sum == n * (n - 1) / 2, "enumerating a dictionary");
        return sum;
    });
}

auto peerEntries(long n, auto makeKey) {
    const auto makeValue = [](long i) { return std::make_shared<long>(i); };
    return Entries<decltype(makeKey(0L)), SharedLong, decltype(makeKey), decltype(makeValue)>(n, makeKey, makeValue);
}

template <class Map> Map peerMap(const auto& entries) {
    Map map;
    for (std::size_t i = 0; i < entries.keys.size(); ++i)
        map[entries.keys[i]] = entries.values[i];
    return map;
}

template <class Map, auto makeKey> void peerSet(State& state) {
    const auto entries = peerEntries(state.range(0), makeKey);
    repeat(state, state.range(0), [&] { return peerMap<Map>(entries); });
}

template <class Map, auto makeKey> void peerGet(State& state) {
    const auto entries = peerEntries(state.range(0), makeKey);
    const Map map = peerMap<Map>(entries);
    repeat(state, state.range(0), [&] {
        std::size_t found = 0;
        for (const auto& probe : entries.probes)
            found += map.find(probe) != map.end();
        return found;
    });
}

template <class Map, auto makeKey> void peerIterate(State& state) {
    const Map map = peerMap<Map>(peerEntries(state.range(0), makeKey));
    repeat(state, state.range(0), [&] {
        long sum = 0;
        for (auto entry = map.begin(); entry != map.end(); ++entry) {
            if constexpr (requires { entry->second; })
                sum += *entry->second;
            else
                sum += **entry;
        }
        return sum;
    });
}

BENCHMARK(kitSet)->Name("dictionary filled/kit")->Apply(sizes);
BENCHMARK(kitGet)->Name("dictionary asked/kit")->Apply(sizes);
BENCHMARK(kitIterate)->Name("dictionary enumerated/kit")->Apply(sizes);

using StandardMap = std::unordered_map<std::u16string, SharedLong>;
BENCHMARK(peerSet<StandardMap, keyText>)->Name("dictionary filled/std::unordered_map")->Apply(sizes);
BENCHMARK(peerGet<StandardMap, keyText>)->Name("dictionary asked/std::unordered_map")->Apply(sizes);
BENCHMARK(peerIterate<StandardMap, keyText>)->Name("dictionary enumerated/std::unordered_map")->Apply(sizes);

#ifdef TOVI_BENCH_HAVE_ABSEIL
using AbseilMap = absl::flat_hash_map<std::u16string, SharedLong>;
BENCHMARK(peerSet<AbseilMap, keyText>)->Name("dictionary filled/absl::flat_hash_map")->Apply(sizes);
BENCHMARK(peerGet<AbseilMap, keyText>)->Name("dictionary asked/absl::flat_hash_map")->Apply(sizes);
BENCHMARK(peerIterate<AbseilMap, keyText>)->Name("dictionary enumerated/absl::flat_hash_map")->Apply(sizes);
#endif

#ifdef TOVI_BENCH_HAVE_QT
QString qtKey(long i) { return QString::fromStdU16String(keyText(i)); }
using QtMap = QHash<QString, SharedLong>;
BENCHMARK(peerSet<QtMap, qtKey>)->Name("dictionary filled/QHash")->Apply(sizes);
BENCHMARK(peerGet<QtMap, qtKey>)->Name("dictionary asked/QHash")->Apply(sizes);
BENCHMARK(peerIterate<QtMap, qtKey>)->Name("dictionary enumerated/QHash")->Apply(sizes);
#endif

}  // namespace
