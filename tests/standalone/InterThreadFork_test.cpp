#include <gtest/gtest.h>

#include <ToviFoundationKit/ToviFoundationKit.h>

#include <sys/wait.h>
#include <unistd.h>

#include <thread>

using namespace tovi;

// Here the main thread has not used the library when it forks.

namespace {

bool childCanUseMessages() {
    const pid_t child = fork();
    if (child == 0) {
        alarm(10);
        int told = 0;
        const auto center = NSNotificationCenter::defaultCenter();
        center->addObserverForName_object_usingBlock(nullptr, nullptr, [&](NSNotification&) { ++told; });
        prepareForInterThreadMessages();
        postNotificationName_object_inThread(center, u"n"_ns, nullptr, nullptr);
        NSRunLoop::currentRunLoop()->runReady(10);
        _exit(told == 1 ? 0 : 1);
    }
    int status = -1;
    return waitpid(child, &status, 0) == child && status == 0;
}

}  // namespace

TEST(InterThreadFork, LeavesMessagesToAMainThreadWithoutAnObject) {
    std::thread([] { prepareForInterThreadMessages(); }).join();
    EXPECT_TRUE(childCanUseMessages());
    std::thread([] { NSThread::mainThread(); }).join();
    EXPECT_TRUE(childCanUseMessages()) << "another thread made its object";
}
