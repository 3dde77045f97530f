#include <gtest/gtest.h>

#include <ToviFoundationKit/ToviFoundationKit.h>

#include <support/Expect.h>
#include <support/Threads.h>
#include <support/Worker.h>

#include <malloc.h>

using namespace tovi;

TEST(NSNotificationCenter, TellsThoseWhoAskedForTheNameAndTheObject) {
    const auto center = NSNotificationCenter::init();
    const auto one = u"one"_ns, other = u"other"_ns, changed = u"changed"_ns, gone = u"gone"_ns;
    std::string told;
    const auto add = [&](char who, const NSString* name, const NSObject* object) {
        return center->addObserverForName_object_usingBlock(name, object,
                                                            [&told, who](NSNotification&) { told += who; });
    };
    const Ref<NSObject> tokens[] = {
        add('a', nullptr, nullptr),
        add('b', changed.get(), one.get()),
        add('c', changed.get(), nullptr),
        add('d', nullptr, one.get()),
        add('e', gone.get(), nullptr),
        add('f', changed.get(), other.get()),
        add('g', u"changed"_ns.get(), nullptr),
    };
    const struct {
        const char* what;
        NSString* name;
        NSObject* object;
        const char* expected;
    } rows[] = {
        {"of that name and object", changed.get(), one.get(), "abcdg"},
        {"without object", changed.get(), nullptr, "acg"},
        {"about another object", changed.get(), other.get(), "acfg"},
        {"of another name", gone.get(), one.get(), "ade"},
        {"that nobody named", u"unknown"_ns.get(), nullptr, "a"},
    };
    for (const auto& row : rows) {
        told.clear();
        center->postNotificationName_object(*row.name, row.object);
        EXPECT_EQ(told, row.expected) << row.what;
    }
    for (const auto& token : tokens)
        center->removeObserver(token);
    told.clear();
    center->postNotificationName_object(changed, one.get());
    EXPECT_EQ(told, "");
}

TEST(NSNotificationCenter, SendsTheNotificationToObserversThatItDoesNotHold) {
    const auto center = NSNotificationCenter::init();
    const auto recorder = Recorder::recorder();
    const auto name = u"changed"_ns, other = u"other"_ns;
    const auto add = [&](const NSString* each, const NSObject* object) {
        center->addObserver_selector_name_object(recorder, "notified:"_sel, each, object);
    };
    add(name.get(), nullptr);
    add(name.get(), nullptr);
    add(other.get(), recorder.get());
    EXPECT_EQ(recorder->retainCount(), 1U);
    const auto info = NSDictionary::of({{u"key", 1}});
    const auto notification = NSNotification::notificationWithName_object_userInfo(name, recorder.get(), info.get());
    EXPECT_EQ(*notification->description(),
              *NSString::stringWithFormat(u"<NSNotification: %p>{name = changed; object = %@; userInfo = %@}",
                                          static_cast<void*>(notification.get()), recorder, info));
    center->postNotification(notification);
    EXPECT_EQ(recorder->lines().size(), 2U) << "added twice, told twice";
    center->removeObserver_name_object(recorder, name.get(), recorder.get());
    center->postNotification(notification);
    EXPECT_EQ(recorder->lines().size(), 4U) << "it was not asked for with that object";
    center->removeObserver_name_object(recorder, nullptr, recorder.get());
    center->postNotificationName_object(other, recorder.get());
    center->removeObserver_name_object(recorder, name.get(), nullptr);
    center->postNotification(notification);
    EXPECT_EQ(recorder->lines().size(), 4U);
    center->removeObserver(recorder);
    EXPECT_RAISES(center->addObserver_selector_name_object(recorder, Selector(), nullptr, nullptr),
                  NSInvalidArgumentException, "selector cannot be null");
}

TEST(NSNotificationCenter, IsAskedBySelectorToo) {
    NSObject& center = *send(NSNotificationCenter::classObject(), "defaultCenter"_sel);
    const auto recorder = Recorder::recorder();
    const auto name = u"asked by selector"_ns;
    send<void>(center, "addObserver:selector:name:object:"_sel, *recorder, "notified:"_sel, *name, nullptr);
    send<void>(center, "postNotificationName:object:"_sel, *name, nullptr);
    send<void>(center, "removeObserver:"_sel, *recorder);
    send<void>(center, "postNotificationName:object:userInfo:"_sel, *name, nullptr, nullptr);
    EXPECT_EQ(recorder->lines(), std::vector<std::string>{"asked by selector"});
}

TEST(NSNotificationCenter, MayBeChangedByThoseWhoAreTold) {
    const auto center = NSNotificationCenter::init();
    const auto name = u"changed"_ns;
    std::string told;
    std::map<char, Ref<NSObject>> tokens;
    const auto add = [&](char who, std::function<void()> then) {
        tokens.insert_or_assign(
            who, center->addObserverForName_object_usingBlock(name.get(), nullptr, [&told, who, then](NSNotification&) {
                told += who;
                then();
            }));
    };
    const auto remove = [&](char who) { center->removeObserver(tokens.at(who)); };
    add('a', [&] { remove('a'), remove('c'); });
    add('b', [&] {
        add('z', [] {});
        if (told.size() < 3)
            center->postNotificationName_object(name, nullptr);
    });
    add('c', [] {});
    add('d', [&] { remove('b'); });
    center->postNotificationName_object(name, nullptr);
    EXPECT_EQ(told, "abbdzd") << "removed: not told; added: told by later ones; posting again is allowed";
    told.clear();
    center->postNotificationName_object(name, nullptr);
    EXPECT_EQ(told, "dzz");
}

TEST(NSNotificationCenter, LetsGoOfBlocksWhenTheyAreRemoved) {
    const auto held = Recorder::recorder();
    const auto name = u"changed"_ns;
    {
        const auto center = NSNotificationCenter::init();
        RefPtr<NSObject> token;
        token = center->addObserverForName_object_usingBlock(name.get(), nullptr, [&, held](NSNotification&) {
            center->removeObserver(*token);
            EXPECT_EQ(held->retainCount(), 2U) << "not while it is called";
        });
        center->postNotificationName_object(name, nullptr);
        token = nullptr;
        EXPECT_EQ(held->retainCount(), 1U);
        center->addObserverForName_object_usingBlock(nullptr, nullptr, [held](NSNotification&) {});
        EXPECT_EQ(held->retainCount(), 2U);
    }
    EXPECT_EQ(held->retainCount(), 1U);
}

TEST(NSNotificationCenter, TellsEverybodyBeforeAnExceptionLeaves) {
    const auto center = NSNotificationCenter::init();
    const auto recorder = Recorder::recorder();
    const auto name = u"changed"_ns;
    for (const Selector each : {"notified:"_sel, "raise"_sel, "unknown"_sel, "notified:"_sel})
        center->addObserver_selector_name_object(recorder, each, name.get(), nullptr);
    EXPECT_RAISES(center->postNotificationName_object(name, nullptr), u"Recorded", "on purpose");
    EXPECT_EQ(recorder->lines().size(), 2U);
}

TEST(NSNotificationCenter, PostsWithoutAllocating) {
    const auto center = NSNotificationCenter::init();
    const auto name = u"changed"_ns;
    std::size_t outside = 0, inside = 0;
    for (int i = 0; i < 100; ++i)
        center->addObserverForName_object_usingBlock(name.get(), nullptr,
                                                     [&](NSNotification&) { inside = mallinfo2().uordblks; });
    const auto notification = NSNotification::notificationWithName_object(name, nullptr);
    center->postNotification(notification);
    outside = mallinfo2().uordblks;
    center->postNotification(notification);
    EXPECT_EQ(inside, outside);
}

TEST(NSNotificationCenter, IsUsedByManyThreadsAtOnce) {
    const auto center = NSNotificationCenter::init();
    const auto name = u"changed"_ns;
    std::atomic<int> told = 0;
    const auto always =
        center->addObserverForName_object_usingBlock(name.get(), nullptr, [&](NSNotification&) { ++told; });
    onThreads(4, [&](int t) {
        const auto held = Recorder::recorder();
        for (int i = 0; i < 500; ++i) {
            const auto token = center->addObserverForName_object_usingBlock(t % 2 ? name.get() : nullptr, nullptr,
                                                                            [held](NSNotification&) { held->none(); });
            center->postNotificationName_object(name, nullptr);
            center->removeObserver(token);
        }
        EXPECT_GE(held->lines().size(), 500U);
    });
    EXPECT_EQ(told, 2000);
}
