// The main program of every benchmark. With --threaded as its first argument a second thread sleeps all the time: as
// long as a process has one thread, the kit, std::shared_ptr and malloc all do without the processor's atomic
// operations.

#include <malloc.h>
#include <sys/single_threaded.h>

#include <algorithm>
#include <numeric>
#include <random>
#include <semaphore>
#include <string_view>
#include <thread>

#include "Bench.h"

namespace bench {

std::vector<long> shuffledNumbers(long n, unsigned seed) {
    std::vector<long> numbers(static_cast<std::size_t>(n));
    std::iota(numbers.begin(), numbers.end(), 0L);
    std::ranges::shuffle(numbers, std::mt19937(seed));
    return numbers;
}

std::size_t bytesInUse() {
    const struct mallinfo2 heap = mallinfo2();
    return heap.uordblks + heap.hblkhd;
}

}  // namespace bench

int main(int argc, char** argv) {
    // No row shall pay for memory that the one before gave back to the system.
    mallopt(M_MMAP_THRESHOLD, 32 << 20);
    mallopt(M_TRIM_THRESHOLD, 1 << 30);
    const bool threaded = argc > 1 && std::string_view(argv[1]) == "--threaded";
    std::binary_semaphore done(0);
    std::thread idle;
    if (threaded) {
        idle = std::thread([&] { done.acquire(); });
        std::copy(argv + 2, argv + argc, argv + 1);
        --argc;
    }
    benchmark::AddCustomContext("threads", threaded ? "2" : "1");
    benchmark::Initialize(&argc, argv);
    if (benchmark::ReportUnrecognizedArguments(argc, argv))
        return 1;
    benchmark::RunSpecifiedBenchmarks();
    bench::check(bench::startsThreads || static_cast<bool>(__libc_single_threaded) != threaded,
                 "the number of threads");
    if (threaded) {
        done.release();
        idle.join();
    }
    return 0;
}
