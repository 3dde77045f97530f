#pragma once

#include <cstdio>
#include <cstdlib>
#include <vector>

#include <benchmark/benchmark.h>

/// For callables that are timed call by call.
#define BENCH_INLINE __attribute__((always_inline))

namespace bench {

using benchmark::DoNotOptimize;
using benchmark::State;

// A benchmark's name is "what/who" or "what/who/size". The kit's own rows have a who that begins with "kit"; the others
// of the same what are measured in the same run, under the same conditions, and `run` compares them.

/// Set by programs that start threads themselves, whose rows all have to do with more than one.
inline bool startsThreads = false;

/// Ends the program when an answer is wrong: nobody needs the time of that.
inline void check(bool right, const char* what) {
    if (right) [[likely]]
        return;
    std::fprintf(stderr, "wrong answer: %s\n", what);
    std::abort();
}

/// The numbers from 0 to n - 1 in an order without pattern that is the same in every run.
std::vector<long> shuffledNumbers(long n, unsigned seed = 1);

/// The bytes that the heap has given away, its own headers included.
std::size_t bytesInUse();

/// The sizes at which growth is looked at.
inline void sizes(benchmark::internal::Benchmark* benchmark) {
    benchmark->Arg(10'000)->Arg(100'000)->Arg(1'000'000)->Unit(benchmark::kMillisecond);
}

/// Counts n items for each iteration; the times in the table are those of one item.
inline void countItems(State& state, long n) { state.SetItemsProcessed(static_cast<long>(state.iterations()) * n); }

/// Times an operation on n items, but not its first time, which pays for fresh memory.
template <class Operation> void repeat(State& state, long n, Operation operation) {
    DoNotOptimize(operation());
    for (auto _ : state)
        DoNotOptimize(operation());
    countItems(state, n);
}

}  // namespace bench
