#include <gtest/gtest.h>

#include <ToviFoundationKit/ToviFoundationKit.h>

#include <mutex>
#include <thread>

using namespace tovi;

TEST(NSLock, IsGivenBackByAnyThread) {
    const auto lock = NSLock::init();
    lock->lock();
    EXPECT_FALSE(lock->tryLock());
    std::thread([&] { lock->unlock(); }).join();
    EXPECT_TRUE(lock->tryLock());
    std::thread waiting([&] { lock->lock(); });
    lock->unlock();
    waiting.join();
    EXPECT_FALSE(lock->tryLock());
    lock->unlock();
    lock->unlock();
    EXPECT_TRUE(lock->tryLock());
}

TEST(NSLock, ExcludesThreadsFromEachOther) {
    const auto lock = NSLock::init();
    long sum = 0;
    std::vector<std::thread> threads;
    for (int t = 0; t < 4; ++t)
        threads.emplace_back([&] {
            for (int i = 0; i < 20000; ++i) {
                const std::lock_guard guard(*lock);
                ++sum;
            }
        });
    for (std::thread& thread : threads)
        thread.join();
    EXPECT_EQ(sum, 80000);
}
