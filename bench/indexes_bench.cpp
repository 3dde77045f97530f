// Index sets, beside compressed bitmaps: n indexes, in disorder, out of ten times as many (dense) or a hundred times as
// many (sparse).

#include <algorithm>
#include <memory>

#include <ToviFoundationKit/Foundation/NSMutableIndexSet.h>

#include "Bench.h"

#ifdef TOVI_BENCH_HAVE_ROARING
#include <roaring/roaring.h>
#endif

using namespace tovi;
using namespace bench;

namespace {

std::vector<std::uint32_t> randomIndexes(long n, long universe, unsigned seed) {
    std::vector<std::uint32_t> result;
    for (const long each : shuffledNumbers(universe, seed)) {
        result.push_back(static_cast<std::uint32_t>(each));
        if (result.size() == static_cast<std::size_t>(n))
            break;
    }
    return result;
}

struct IndexSample {
    std::vector<std::uint32_t> added, others;
    explicit IndexSample(const State& state)
        : added(randomIndexes(state.range(0), state.range(0) * state.range(1), 1)),
          others(randomIndexes(state.range(0), state.range(0) * state.range(1), 2)) {}
};

Ref<NSMutableIndexSet> kitIndexSet(const std::vector<std::uint32_t>& indexes) {
    Ref<NSMutableIndexSet> set = NSMutableIndexSet::indexSet();
    for (const std::uint32_t each : indexes)
        set->addIndex(each);
    return set;
}

std::vector<std::uint32_t> sorted(std::vector<std::uint32_t> indexes) {
    std::ranges::sort(indexes);
    indexes.erase(std::ranges::unique(indexes).begin(), indexes.end());
    return indexes;
}

void checkIndexes(const NSIndexSet& set, const std::vector<std::uint32_t>& expected) {
    check(set.count() == expected.size() && std::ranges::equal(set, sorted(expected)), "index set");
}

void kitIndexBuild(State& state) {
    const IndexSample indexes(state);
    checkIndexes(kitIndexSet(indexes.added), indexes.added);
    repeat(state, state.range(0), [&] { return kitIndexSet(indexes.added); });
}

void kitIndexContains(State& state) {
    const IndexSample indexes(state);
    const Ref<NSIndexSet> set = kitIndexSet(indexes.added);
    const auto present = sorted(indexes.added);
    for (const std::uint32_t each : indexes.others)
        check(set->containsIndex(each) == std::ranges::binary_search(present, each), "containsIndex:");
    repeat(state, state.range(0), [&] {
        std::size_t found = 0;
        for (const std::uint32_t each : indexes.others)
            found += set->containsIndex(each);
        return found;
    });
}

void kitIndexUnion(State& state) {
    IndexSample indexes(state);
    const Ref<NSIndexSet> a = kitIndexSet(indexes.added), b = kitIndexSet(indexes.others);
    const auto unite = [&] {
        Ref<NSMutableIndexSet> result = NSMutableIndexSet::indexSetWithIndexSet(a);
        result->addIndexes(b);
        return result;
    };
    indexes.added.insert(indexes.added.end(), indexes.others.begin(), indexes.others.end());
    checkIndexes(unite(), sorted(indexes.added));
    repeat(state, state.range(0), unite);
}

void dense(benchmark::internal::Benchmark* b) { b->Args({10'000, 10})->Args({100'000, 10})->Args({1'000'000, 10}); }
void sparse(benchmark::internal::Benchmark* b) { b->Args({10'000, 100})->Args({100'000, 100}); }

BENCHMARK(kitIndexBuild)->Name("index set, dense, built/kit")->Apply(dense);
BENCHMARK(kitIndexContains)->Name("index set, dense, asked/kit")->Apply(dense);
BENCHMARK(kitIndexUnion)->Name("index sets, dense, united/kit")->Apply(dense);
BENCHMARK(kitIndexBuild)->Name("index set, sparse, built/kit")->Apply(sparse);
BENCHMARK(kitIndexContains)->Name("index set, sparse, asked/kit")->Apply(sparse);
BENCHMARK(kitIndexUnion)->Name("index sets, sparse, united/kit")->Apply(sparse);

#ifdef TOVI_BENCH_HAVE_ROARING

using Bitmap = std::unique_ptr<roaring_bitmap_t, decltype([](roaring_bitmap_t* each) { roaring_bitmap_free(each); })>;

Bitmap bitmap(const std::vector<std::uint32_t>& indexes) {
    Bitmap result(roaring_bitmap_create());
    for (const std::uint32_t each : indexes)
        roaring_bitmap_add(result.get(), each);
    return result;
}

void roaringBuild(State& state) {
    const IndexSample indexes(state);
    repeat(state, state.range(0), [&] { return bitmap(indexes.added); });
}

void roaringContains(State& state) {
    const IndexSample indexes(state);
    const Bitmap set = bitmap(indexes.added);
    repeat(state, state.range(0), [&] {
        std::size_t found = 0;
        for (const std::uint32_t each : indexes.others)
            found += roaring_bitmap_contains(set.get(), each);
        return found;
    });
}

void roaringUnion(State& state) {
    const IndexSample indexes(state);
    const Bitmap a = bitmap(indexes.added), b = bitmap(indexes.others);
    repeat(state, state.range(0), [&] { return Bitmap(roaring_bitmap_or(a.get(), b.get())); });
}

BENCHMARK(roaringBuild)->Name("index set, dense, built/CRoaring")->Apply(dense);
BENCHMARK(roaringContains)->Name("index set, dense, asked/CRoaring")->Apply(dense);
BENCHMARK(roaringUnion)->Name("index sets, dense, united/CRoaring")->Apply(dense);
BENCHMARK(roaringBuild)->Name("index set, sparse, built/CRoaring")->Apply(sparse);
BENCHMARK(roaringContains)->Name("index set, sparse, asked/CRoaring")->Apply(sparse);
BENCHMARK(roaringUnion)->Name("index sets, sparse, united/CRoaring")->Apply(sparse);

#endif

}  // namespace
