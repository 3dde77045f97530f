#include <random>
#include <set>

#include <gtest/gtest.h>

#include <ToviFoundationKit/ToviFoundationKit.h>

#include <support/Expect.h>

using namespace tovi;

static_assert(std::forward_iterator<NSSet::Iterator>);

namespace {

std::vector<int> ints(const NSSet& set) {
    std::vector<int> result;
    for (NSNumber& each : set.each<NSNumber>())
        result.push_back(each.intValue());
    return result;
}

/// What a set should be: numbers in the order of their addition.
struct Model {
    std::vector<int> numbers;

    bool has(int n) const { return std::find(numbers.begin(), numbers.end(), n) != numbers.end(); }
    void add(int n) {
        if (!has(n))
            numbers.push_back(n);
    }
    void keep(const Model& other, bool common) {
        std::erase_if(numbers, [&](int n) { return other.has(n) != common; });
    }
};

}  // namespace

TEST(NSMutableSet, AlgebraAgreesWithAModelAndKeepsTheOrderOfAddition) {
    for (unsigned seed = 0; seed < 30; ++seed) {
        std::mt19937 random(seed);
        const unsigned limit = 5U << seed % 9;
        const Ref<NSMutableSet> sets[] = {NSMutableSet::set(), NSMutableSet::set()};
        Model models[2];
        for (int step = 0; step < 300; ++step) {
            const bool which = random() % 2;
            NSMutableSet& set = sets[which];
            NSMutableSet& other = sets[!which];
            Model& model = models[which];
            const Model& otherModel = models[!which];
            switch (random() % 8) {
                case 0:
                    set.unionSet(other);
                    for (int n : otherModel.numbers)
                        model.add(n);
                    break;
                case 1:
                    set.minusSet(other), model.keep(otherModel, false);
                    break;
                case 2:
                    set.intersectSet(other), model.keep(otherModel, true);
                    break;
                case 3: {
                    const int n = static_cast<int>(random() % limit);
                    set.removeObject(NSNumber::numberWithDouble(n)), std::erase(model.numbers, n);
                    break;
                }
                default:
                    for (unsigned i = 0; i < limit / 4 + 1; ++i) {
                        const int n = static_cast<int>(random() % limit);
                        set.addObject(NSNumber::numberWithInt(n)), model.add(n);
                    }
            }
            ASSERT_EQ(ints(set), model.numbers) << "seed " << seed << " step " << step;
            const std::set<int> a(model.numbers.begin(), model.numbers.end());
            const std::set<int> b(otherModel.numbers.begin(), otherModel.numbers.end());
            EXPECT_EQ(set.isSubsetOfSet(other), std::includes(b.begin(), b.end(), a.begin(), a.end()));
            EXPECT_EQ(set.intersectsSet(other), std::any_of(a.begin(), a.end(), [&](int n) { return b.contains(n); }));
            EXPECT_EQ(set.isEqualToSet(other), a == b);
            Model inOneOnly = model, onlyInOther = otherModel;
            inOneOnly.keep(otherModel, false), onlyInOther.keep(model, false);
            for (const int n : onlyInOther.numbers)
                inOneOnly.add(n);
            const auto difference = NSMutableSet::symmetricDifference(set, other);
            EXPECT_EQ(ints(difference), inOneOnly.numbers);
            for (const int n : inOneOnly.numbers)
                EXPECT_TRUE(difference->containsObject(NSNumber::numberWithInt(n)));
            EXPECT_TRUE(a != b || set.hash() == other.hash());
        }
    }
}

TEST(NSSet, FindsTheElementThatIsEqualAndHoldsItOnce) {
    const auto first = NSNumber::numberWithInt(1);
    const auto set = NSMutableSet::of(first, 1.0, 2);
    EXPECT_EQ(set->count(), 2U);
    EXPECT_EQ(set->member(NSNumber::numberWithDouble(1)).get(), first.get());
    EXPECT_FALSE(set->member(NSNumber::numberWithDouble(1.5)));
    EXPECT_EQ(set->allObjects(), NSArray::of(1, 2));
    EXPECT_EQ(set->objectEnumerator()->allObjects(), NSArray::of(1, 2));
    EXPECT_EQ(set->anyObject(), first);
    EXPECT_FALSE(NSSet::set()->anyObject());
    EXPECT_EQ(NSSet::of(u"a", u"bb", u"c")->valueForKey(u"length"_ns), NSSet::of(1, 2));
    EXPECT_EQ(NSSet::of(u"a", u"b b")->description(), u"{(\n    a,\n    \"b b\"\n)}"_ns);
    EXPECT_EQ(NSSet::set()->description(), u"{(\n)}"_ns);
}

TEST(NSSet, SetsAndListsAreElementsByTheirContents) {
    const auto set = NSMutableSet::of(NSSet::of(1, 2), NSArray::of(1, 2));
    EXPECT_TRUE(set->containsObject(NSMutableSet::of(2, 1)));
    EXPECT_FALSE(set->containsObject(NSArray::of(2, 1)));
    EXPECT_EQ(set, NSSet::of(NSMutableArray::of(1, 2), NSSet::of(2, 1)));
    EXPECT_NE(set, NSSet::of(NSArray::of(1, 2), NSSet::of(2, 3)));
}

TEST(NSMutableSet, CombinesWithItselfAndRefusesNil) {
    const auto set = NSMutableSet::of(1, 2);
    set->unionSet(set);
    set->intersectSet(set);
    set->setSet(set);
    EXPECT_EQ(set->copy(), NSSet::of(1, 2));
    set->minusSet(set);
    EXPECT_EQ(set->count(), 0U);
    EXPECT_RAISES(send<void>(set, "addObject:"_sel, nullptr), NSInvalidArgumentException,
                  "*** -[NSMutableSet addObject:]: object cannot be nil");
}

TEST(NSMutableSet, NoticesAChangeWhileItIsEnumerated) {
    const auto set = NSMutableSet::of(1, 2, 3);
    EXPECT_RAISES(
        [&] {
            for (NSObject& each : *set)
                set->removeObject(each);
        }(),
        NSGenericException, "*** Collection <NSMutableSet: 0x");
    const auto enumerator = set->objectEnumerator();
    set->removeAllObjects();
    EXPECT_RAISES(enumerator->nextObject(), NSGenericException, "was mutated while being enumerated.");
}
