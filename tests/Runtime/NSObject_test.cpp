#include <gtest/gtest.h>

#include <ToviFoundationKit/ToviFoundationKit.h>

#include <support/Expect.h>
#include <support/Threads.h>

using namespace tovi;

namespace {

class Link : public NSObject {
    TOVI_CLASS(Link, NSObject)

public:
    static Ref<Link> before(RefPtr<Link> next) {
        const Ref<Link> link = adopt(*new Link);
        link->next = std::move(next);
        return link;
    }
    ~Link() override { ++destroyed; }

    RefPtr<Link> next;
    inline static std::atomic<int> destroyed{0};
};

class Coin final : public Link {
    TOVI_CLASS(Coin, Link)

public:
    Ref<NSObject> copy() const override { return share(*this); }
};

/// Takes a reference to itself as it dies.
class Grasping final : public NSObject {
    TOVI_CLASS(Grasping, NSObject)

public:
    ~Grasping() override { const id again = this; }
};

#ifdef NDEBUG
constexpr bool lifeCycleIsChecked = false;
#else
constexpr bool lifeCycleIsChecked = true;
#endif

}  // namespace

TEST(NSObject, LivesAsLongAsSomebodyHoldsIt) {
    Link::destroyed = 0;
    {
        const Ref<Link> first = Link::before(nullptr);
        EXPECT_EQ(first->retainCount(), 1U);
        RefPtr<NSObject> second = first;
        EXPECT_EQ(first->retainCount(), 2U);
        const id moved = std::move(second);
        EXPECT_EQ(first->retainCount(), 2U);
        EXPECT_FALSE(second);
        EXPECT_TRUE(identical(moved, first.get()));
    }
    EXPECT_EQ(Link::destroyed, 1);
}

TEST(NSObject, IsDestroyedOnceAtTheEndOfAnyChain) {
    constexpr int length = 1'000'000;
    Link::destroyed = 0;
    RefPtr<Link> chain;
    for (int i = 0; i < length; ++i)
        chain = Link::before(std::move(chain));
    const RefPtr<Link> rest = chain->next->next;
    chain = nullptr;
    EXPECT_EQ(Link::destroyed, 2);
    std::thread([kept = rest]() mutable { kept = nullptr; }).join();
    EXPECT_EQ(Link::destroyed, 2);
    const_cast<RefPtr<Link>&>(rest) = nullptr;
    EXPECT_EQ(Link::destroyed, length);
}

TEST(NSObject, IsDestroyedOnceHoweverManyThreadsLetGo) {
    Link::destroyed = 0;
    for (int round = 0; round < 200; ++round) {
        const Ref<Link> shared = Link::before(Link::before(nullptr));
        onThreads(4, [mine = RefPtr<Link>(shared)](int) {
            for (int i = 0; i < 100; ++i)
                const RefPtr<Link> another = mine;
        });
    }
    EXPECT_EQ(Link::destroyed, 400);
}

TEST(NSObject, NilUsedAsAnObjectRaises) {
    const RefPtr<Link> nothing;
    EXPECT_RAISES(nothing->description(), NSInvalidArgumentException, "nil was used as an object");
    EXPECT_RAISES(nothing.ref(), NSInvalidArgumentException, "nil was used as an object");
}

TEST(NSObject, IsDescribedByClassAndAddress) {
    const Ref<Link> link = Link::before(nullptr);
    EXPECT_EQ(link->description(), NSString::stringWithFormat(u"<Link: %p>", static_cast<void*>(link.get())));
}

TEST(NSObject, CopiesOnlyWhereItsClassDoes) {
    const Ref<Link> link = Link::before(nullptr);
    EXPECT_FALSE(link->conformsTo(Protocol::NSCopying));
    EXPECT_RAISES(link->copy(), NSInvalidArgumentException,
                  "-[Link copyWithZone:]: unrecognized selector sent to instance 0x");
    EXPECT_RAISES(link->mutableCopy(), NSInvalidArgumentException, "-[Link mutableCopyWithZone:]: unrecognized");
    EXPECT_TRUE(Coin::classObject().conformsTo(Protocol::NSCopying));
    EXPECT_FALSE(Coin::classObject().conformsTo(Protocol::NSMutableCopying));
    EXPECT_TRUE(NSMutableArray::classObject().conformsTo(Protocol::NSMutableCopying));
    EXPECT_TRUE(identical(Link::classObject().copy().get(), &Link::classObject()));
}

TEST(NSObjectDeathTest, DebugBuildsCheckTheLifeCycle) {
    if (!lifeCycleIsChecked)
        GTEST_SKIP() << "built without assertions";
    EXPECT_DEATH(
        {
            Link& link = *Link::before(nullptr).leak();
            (void)adopt(link);
        },
        "adopted twice");
    EXPECT_DEATH({ Ref<Link> early(*new Link); }, "retained before adoption");
    EXPECT_DEATH((void)adopt(*new Grasping), "or in death");
}
