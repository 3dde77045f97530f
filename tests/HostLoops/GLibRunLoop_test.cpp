#include <ToviFoundationKit/HostLoops/GLibRunLoop.h>

#include "HostLoop.h"

namespace {

class GLibHost {
public:
    GLibHost() {
        served_.onException = [this](const std::exception&) { ++exceptions_; };
    }
    ~GLibHost() { g_main_loop_unref(loop_); }
    void run() { g_main_loop_run(loop_); }
    void quit() { g_main_loop_quit(loop_); }
    int exceptions() const { return exceptions_; }

private:
    GMainLoop* const loop_ = g_main_loop_new(nullptr, FALSE);
    tovi::GLibRunLoop served_;
    int exceptions_ = 0;
};

}  // namespace

TEST(GLibRunLoop, ServesMessagesNotificationsAndTimers) { expectToBeServed<GLibHost>(); }

TEST(GLibRunLoop, LetsTheMainLoopSleepAndHaveItsTurn) {
    const tovi::GLibRunLoop served;
    EXPECT_FALSE(g_main_context_iteration(nullptr, FALSE));
    int rounds = 0, performed = 0;
    g_idle_add(
        [](gpointer count) -> gboolean {
            ++*static_cast<int*>(count);
            return G_SOURCE_REMOVE;
        },
        &rounds);
    for (tovi::NSUInteger i = 0; i < 3 * tovi::GLibRunLoop::operationsARound; ++i)
        tovi::NSRunLoop::currentRunLoop()->performBlock([&] { ++performed; });
    while (g_main_context_iteration(nullptr, FALSE)) {
    }
    EXPECT_EQ(performed, 192);
    EXPECT_EQ(rounds, 1);
}
