#include <gtest/gtest.h>

#include <ToviFoundationKit/ToviFoundationKit.h>

using namespace tovi;

namespace {
template <class... A> Ref<NSSet> set(const A&... values) { return NSSet::setWithArray(NSArray::of(values...)); }
}  // namespace

TEST(NSSetAdditions, AlgebraAnswersNewSets) {
    const auto receiver = set(1, 2);
    EXPECT_EQ(setByUnioningSet(receiver, set(2, 3)), set(1, 2, 3));
    EXPECT_EQ(setByMinusingSet(receiver, set(2, 3)), set(1));
    EXPECT_EQ(setByIntersectingSet(receiver, set(2, 3)), set(2));
    EXPECT_EQ(setByComplementingIntersectionWithSet(receiver, set(2, 3)), set(1, 3));
    EXPECT_EQ(setByComplementingIntersectionWithSet(receiver, receiver), set());
    EXPECT_EQ(setByAddingObject(receiver, *NSNumber::numberWithInt(9)), set(1, 2, 9));
    EXPECT_EQ(setByAddingObjectsFromArray(receiver, NSArray::of(3, 3, 1)), set(1, 2, 3));
    EXPECT_EQ(setByRemovingObject(receiver, *NSNumber::numberWithDouble(2)), set(1));
    EXPECT_EQ(setByMinusingSet(receiver, receiver), set());
    EXPECT_EQ(receiver, set(1, 2));
}

TEST(NSSetAdditions, OddEqualityDoesNoHarm) {
    // Equal to everything, though nothing is equal to it.
    struct Flatterer : NSObject {
        bool isEqual(const NSObject* other) const override { return other; }
        NSUInteger hash() const override { return NSNumber::numberWithInt(1)->hash(); }
    };
    const auto flatterers = NSMutableSet::set();
    for (int i = 0; i < 3; ++i)
        flatterers->addObject(adopt(*new Flatterer));
    EXPECT_EQ(flatterers->count(), 1U);
    flatterers->addObject(NSNumber::numberWithInt(1));
    EXPECT_EQ(setByComplementingIntersectionWithSet(set(1, 2), flatterers), set(2));
}
