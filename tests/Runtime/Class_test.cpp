#include <gtest/gtest.h>

#include <ToviFoundationKit/ToviFoundationKit.h>

#include <support/Expect.h>

#include <atomic>
#include <thread>

using namespace tovi;

namespace {

class Vehicle : public NSObject {
    TOVI_CLASS(Vehicle, NSObject)

public:
    NSInteger wheels() const { return 4; }
};

class Bicycle final : public Vehicle {
    TOVI_CLASS(Bicycle, Vehicle)

    Bicycle() = default;
};

class Engine final : public NSObject {
    TOVI_CLASS(Engine, NSObject)

    explicit Engine(int) {}
};

const Additions<Vehicle> additions{
    instance<&Vehicle::wheels>("wheels"),
};

Selector numbered(const char* name, int number) {
    return Selector::named(std::string(name).append(std::to_string(number)));
}

NSInteger ask(NSObject& receiver, Selector selector) { return send<NSInteger>(receiver, selector); }

}  // namespace

TEST(Class, IsFoundByNameAndKnowsItsAncestors) {
    Class& bicycle = Bicycle::classObject();
    EXPECT_EQ(Class::named("Bicycle"), &bicycle);
    EXPECT_EQ(Class::named("Tricycle"), nullptr);
    EXPECT_EQ(bicycle.superclass(), &Vehicle::classObject());
    EXPECT_TRUE(bicycle.isSubclassOfClass(NSObject::classObject()));
    EXPECT_FALSE(Vehicle::classObject().isSubclassOfClass(bicycle));
    EXPECT_EQ(bicycle.description()->UTF8String(), "Bicycle");
    EXPECT_EQ(&bicycle.isa(), &Class::classObject());
}

TEST(Class, MakesInstancesThatNeedNothing) {
    const id made = Bicycle::classObject().makeInstance();
    ASSERT_TRUE(made);
    EXPECT_TRUE(made->isMemberOfClass(Bicycle::classObject()));
    EXPECT_TRUE(made->isKindOfClass(Vehicle::classObject()));
    EXPECT_FALSE(Engine::classObject().makeInstance());
    EXPECT_FALSE(NSObject::classObject().makeInstance());
}

TEST(Class, OperationsReachSubclassesUntilTheseBringTheirOwn) {
    const id bicycle = Bicycle::classObject().makeInstance(), vehicle = Vehicle::classObject().makeInstance();
    EXPECT_EQ(ask(*bicycle, "wheels"_sel), 4);
    Bicycle::classObject().addMethod("wheels"_sel, [](Bicycle&) { return 2; });
    EXPECT_EQ(ask(*bicycle, "wheels"_sel), 2);
    EXPECT_EQ(ask(*vehicle, "wheels"_sel), 4);
    Bicycle::classObject().addMethod("wheels"_sel, [](NSObject&) { return 3; });
    EXPECT_EQ(ask(*bicycle, "wheels"_sel), 3);
    EXPECT_EQ(ask(*bicycle->performSelector("class"_sel)->performSelector("superclass"_sel), "hash"_sel),
              static_cast<NSInteger>(Vehicle::classObject().hash()));
}

TEST(Class, ClassLevelOperationsAreInheritedAndKeptApart) {
    Vehicle::classObject().addClassMethod("fleet"_sel, [](NSInteger extra) { return 10 + extra; });
    EXPECT_EQ(send<int>(Bicycle::classObject(), "fleet"_sel, 2), 12);
    EXPECT_TRUE(Vehicle::classObject().respondsToSelector("fleet"_sel));
    EXPECT_FALSE(Vehicle::classObject().instancesRespondToSelector("fleet"_sel));
    EXPECT_FALSE(Engine::classObject().respondsToSelector("fleet"_sel));
    EXPECT_TRUE(Engine::classObject().respondsToSelector("description"_sel));  // a class is an object
    EXPECT_FALSE(Vehicle::classObject().respondsToSelector("wheels"_sel));
}

TEST(Class, RefusesOperationsOfAnUnrelatedReceiver) {
    EXPECT_RAISES(Engine::classObject().addMethod("wheels"_sel, [](Vehicle&) { return 0; }), NSInvalidArgumentException,
                  "operation wheels of Vehicle cannot be added to Engine");
}

TEST(Class, OperationsMayBeAddedWhileOthersAreSent) {
    const id vehicle = Vehicle::classObject().makeInstance();
    std::atomic<bool> done{false};
    std::atomic<int> wrong{0};
    std::vector<std::thread> senders;
    for (int t = 0; t < 3; ++t)
        senders.emplace_back([&] {
            while (!done)
                wrong += ask(*vehicle, "wheels"_sel) != 4 || numbered("interned", wrong) == Selector();
        });
    for (int i = 0; i < 200; ++i) {
        const Selector selector = numbered("added", i);
        EXPECT_FALSE(vehicle->respondsToSelector(selector));
        Vehicle::classObject().addMethod(selector, [i](NSObject&) { return i; });
        EXPECT_EQ(ask(*vehicle, selector), i);
    }
    done = true;
    for (std::thread& sender : senders)
        sender.join();
    EXPECT_EQ(wrong, 0);
}

TEST(Selector, IsOnePointerForEachName) {
    EXPECT_EQ("insertObject:atIndex:"_sel, Selector::named(std::string("insertObject:").append("atIndex:")));
    EXPECT_NE("a"_sel, "a:"_sel);
    EXPECT_EQ("insertObject:atIndex:"_sel.numberOfArguments(), 2U);
    EXPECT_FALSE(Selector::existing("never interned anywhere"));
    EXPECT_EQ(Selector::existing("a:"), "a:"_sel);
    EXPECT_FALSE(Selector());
    EXPECT_EQ(Selector().name(), "");
}
