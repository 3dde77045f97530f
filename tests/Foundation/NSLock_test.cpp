#include <gtest/gtest.h>

#include <ToviFoundationKit/ToviFoundationKit.h>

#include <mutex>

#include <support/Threads.h>

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
    onThreads(4, [&](int) {
        for (int i = 0; i < 20000; ++i) {
            const std::lock_guard guard(*lock);
            ++sum;
        }
    });
    EXPECT_EQ(sum, 80000);
}
