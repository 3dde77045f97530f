// A Qt program whose workers report to it: with messages to the main thread, which Qt's event loop serves between
// its own events, and with notifications posted there.

#include <iostream>
#include <QCoreApplication>
#include <thread>

#include <ToviFoundationKit/HostLoops/QtRunLoop.h>
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

}  // namespace

int main(int argc, char** argv) {
    QCoreApplication application(argc, argv);
    const QtRunLoop served;
    prepareForInterThreadMessages();

    const auto window = Window::window();
    const auto mainThread = NSThread::currentThread();
    int ticks = 0, left = 3;
    QTimer ticking;
    QObject::connect(&ticking, &QTimer::timeout, [&] { ++ticks; });
    ticking.start(1);
    const auto token = NSNotificationCenter::defaultCenter()->addObserverForName_object_usingBlock(
        workDone.get(), nullptr, [&](NSNotification&) {
            if (--left == 0)
                NSTimer::scheduledTimerWithTimeInterval_repeats_block(0.02, false,
                                                                      [&](NSTimer&) { application.quit(); });
        });

    std::vector<std::thread> workers;
    for (const char16_t* what : {u"one letter", u"two letters", u"three letters"})
        workers.emplace_back([&, what] { work(NSString::stringWithCharacters(what), mainThread, window); });
    application.exec();
    for (std::thread& each : workers)
        each.join();

    NSNotificationCenter::defaultCenter()->removeObserver(token);
    std::cout << "all done, after " << ticks << " ticks of the event loop's own timer\n";
    return ticks > 0 ? 0 : 1;
}
