// A GLib program whose workers report to it: with messages to the main thread, which GLib's main loop serves between
// its own events, and with notifications posted there.

#include <iostream>
#include <thread>

#include <ToviFoundationKit/HostLoops/GLibRunLoop.h>
#include <ToviFoundationKit/ToviFoundationKit.h>

using namespace tovi;

namespace {

/// The part of the program that the user sees. Only the main thread uses it.
class Window : public NSObject {
    TOVI_CLASS(Window, NSObject)

public:
    static Ref<Window> window() { return adopt(*new Window); }
    void show(const NSString& text) { std::cout << text << std::endl; }

private:
    Window() = default;
};
const Additions<Window> additions{instance<&Window::show>("show:")};

const auto workDone = u"WorkDone"_ns;

void work(const NSString& what, NSThread& mainThread, Window& window) {
    const auto text = NSString::stringWithFormat(u"fetched %@", what);
    performSelector_withObject_inThread_waitUntilDone(window, "show:"_sel, text.get(), &mainThread, true);
    postNotificationName_object_inThread(NSNotificationCenter::defaultCenter(), workDone, nullptr, &mainThread);
}

gboolean tick(gpointer count) {
    ++*static_cast<int*>(count);
    return G_SOURCE_CONTINUE;
}

}  // namespace

int main() {
    GMainLoop* const loop = g_main_loop_new(nullptr, FALSE);
    const GLibRunLoop served;
    prepareForInterThreadMessages();

    const auto window = Window::window();
    const auto mainThread = NSThread::currentThread();
    int ticks = 0, left = 3;
    g_timeout_add(1, tick, &ticks);
    const auto token = NSNotificationCenter::defaultCenter()->addObserverForName_object_usingBlock(
        workDone.get(), nullptr, [&](NSNotification&) {
            if (--left == 0)
                NSTimer::scheduledTimerWithTimeInterval_repeats_block(0.02, false,
                                                                      [&](NSTimer&) { g_main_loop_quit(loop); });
        });

    std::vector<std::thread> workers;
    for (const char16_t* what : {u"one letter", u"two letters", u"three letters"})
        workers.emplace_back([&, what] { work(NSString::stringWithCharacters(what), mainThread, window); });
    g_main_loop_run(loop);
    for (std::thread& each : workers)
        each.join();

    NSNotificationCenter::defaultCenter()->removeObserver(token);
    g_main_loop_unref(loop);
    std::cout << "all done, after " << ticks << " ticks of the main loop's own timer\n";
    return ticks > 0 ? 0 : 1;
}
