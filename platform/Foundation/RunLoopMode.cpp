#include <ToviFoundationKit/Foundation/RunLoopMode_p.h>

#include <algorithm>
#include <mutex>

#include <ToviFoundationKit/Foundation/NSRunLoop.h>
#include <ToviFoundationKit/Foundation/SendDiscarding.h>
#include <ToviFoundationKit/Runtime/Cast.h>

namespace tovi::detail {

namespace {

struct ModeNames {
    std::mutex mutex;
    std::vector<Ref<NSString>> names{NSDefaultRunLoopMode, NSRunLoopCommonModes};

    static ModeNames& shared() {
        static ModeNames& names = *new ModeNames;
        return names;
    }
};

}  // namespace

ModeKey keyOfMode(const NSString& name) {
    if (name == NSDefaultRunLoopMode)
        return defaultMode;
    ModeNames& known = ModeNames::shared();
    const std::lock_guard guard(known.mutex);
    const auto found = std::ranges::find_if(known.names, [&](const auto& each) { return *each == name; });
    const auto key = static_cast<ModeKey>(found - known.names.begin());
    if (found == known.names.end())
        known.names.push_back(to<NSString>(name.copy()));
    return key;
}

Ref<NSString> nameOfMode(ModeKey key) {
    ModeNames& known = ModeNames::shared();
    const std::lock_guard guard(known.mutex);
    return known.names[key];
}

void RunLoopItem::perform() {
    struct Finish {
        RunLoopItem& item;
        ~Finish() {
            item.target = item.argument = nullptr;
            if (item.ticket)
                item.ticket->finish(PerformTicket::performed);
        }
    } const finish{*this};
    if (selector)
        sendDiscarding(*target, selector, argument.get());
    else
        static_cast<BlockObject&>(*target).invoke();
}

void RunLoopMode::dropInvalidPorts() {
    std::erase_if(ports, [](const auto& port) { return !port->isValid(); });
}

}  // namespace tovi::detail
