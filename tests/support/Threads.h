#pragma once

#include <thread>
#include <vector>

/// Runs a function on so many threads at once, which get their numbers, and waits for all.
template <class F> void onThreads(int count, const F& function) {
    std::vector<std::thread> threads;
    for (int number = 0; number < count; ++number)
        threads.emplace_back([&function, number] { function(number); });
    for (std::thread& each : threads)
        each.join();
}
