#include <gtest/gtest.h>

#include <ToviFoundationKit/ToviFoundationKit.h>

#include <support/SmallStack.h>

using namespace tovi;

namespace {

constexpr int depth = 100'000;

using Wrap = Ref<NSObject> (*)(NSObject& inner);

Ref<NSObject> nested(Wrap wrap, Ref<NSObject> innermost) {
    for (int i = 0; i < depth; ++i)
        innermost = wrap(innermost);
    return innermost;
}

Ref<NSObject> inList(NSObject& inner) { return NSArray::of(0, inner); }
Ref<NSObject> inMutableList(NSObject& inner) { return NSMutableArray::of(0, inner); }
Ref<NSObject> inValue(NSObject& inner) { return NSDictionary::of({{u"k", inner}}); }
Ref<NSObject> inKey(NSObject& inner) { return NSDictionary::of({{inner, 1}}); }
Ref<NSObject> inSet(NSObject& inner) { return NSSet::of(inner, 1); }
Ref<NSObject> inTurns(NSObject& inner) { return NSSet::of(NSArray::of(NSDictionary::of({{u"k", inner}}))); }

struct Nesting {
    const char* name;
    Wrap wrap;
    Wrap sameWrap;
};

class DeepNesting : public testing::TestWithParam<Nesting> {};

}  // namespace

TEST_P(DeepNesting, IsComparedHashedDescribedAndDestroyedOnASmallStack) {
    onSmallStack([] {
        const auto a = nested(GetParam().wrap, u"a"_ns);
        const auto same = nested(GetParam().sameWrap, NSMutableString::stringWithString(u"a"_ns));
        const auto other = nested(GetParam().wrap, u"b"_ns);
        EXPECT_TRUE(a->isEqual(same.get()));
        EXPECT_FALSE(a->isEqual(other.get()));
        EXPECT_EQ(a->hash(), same->hash());
        EXPECT_GT(a->description()->length(), NSUInteger{depth});
    });
}

INSTANTIATE_TEST_SUITE_P(Collections, DeepNesting,
                         testing::Values(Nesting{"Lists", inList, inMutableList}, Nesting{"Values", inValue, inValue},
                                         Nesting{"Keys", inKey, inKey}, Nesting{"Sets", inSet, inSet},
                                         Nesting{"Turns", inTurns, inTurns}),
                         [](const auto& each) { return each.param.name; });

// Elements of one hash make the comparison try them all.
TEST(DeepEquality, ChoosesAmongElementsOfOneHash) {
    class Same : public NSObject {
    public:
        explicit Same(int v) : value(v) {}
        bool isEqual(const NSObject* other) const override { return static_cast<const Same*>(other)->value == value; }
        NSUInteger hash() const override { return 1; }
        int value;
    };
    const auto list = [](int value) { return NSArray::of(adopt(*new Same(value))); };
    const auto set = NSSet::of(list(1), list(2), list(3));
    EXPECT_EQ(set, NSSet::of(list(3), list(1), list(2)));
    EXPECT_NE(set, NSSet::of(list(3), list(1), list(4)));
    const auto keyed = [&](int a, int b) { return NSDictionary::of({{list(a), list(10)}, {list(b), list(20)}}); };
    EXPECT_NE(keyed(1, 2), keyed(2, 1));
    EXPECT_EQ(NSSet::of(keyed(1, 2), keyed(2, 1)), NSSet::of(keyed(2, 1), keyed(1, 2)));
}
