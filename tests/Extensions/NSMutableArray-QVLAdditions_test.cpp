#include <gtest/gtest.h>

#include <ToviFoundationKit/ToviFoundationKit.h>

#include <support/Expect.h>

using namespace tovi;

namespace {

const Selector compare = "compare:"_sel;

NSInteger compareByFunction(NSObject& object, NSObject& element, void*) {
    return send<NSInteger>(object, compare, element);
}

NSInteger twoForBefore(NSObject& object, NSObject& element, void*) {
    const NSInteger order = send<NSInteger>(object, compare, element);
    return order == NSOrderedAscending ? 2 : order;
}

NSInteger insertionIndex(NSMutableArray& list, int object, NSInteger start, bool duplicates) {
    const auto number = NSNumber::numberWithInt(object);
    const NSInteger index = insertionIndexOfObject_usingComparator_startingAtIndex_allowsDuplicates(
        list, number, compare, start, duplicates);
    EXPECT_EQ(insertionIndexOfObject_usingComparatorFunction_startingAtIndex_allowsDuplicates(
                  list, number, compareByFunction, start, duplicates),
              index);
    return index;
}

}  // namespace

TEST(NSMutableArrayAdditions, InsertionIndexesAreFoundByHalving) {
    const auto odd = NSMutableArray::of(1, 3, 5, 7);
    const struct {
        int object;
        NSInteger start;
        bool duplicates;
        NSInteger index;
    } rows[] = {
        {4, 0, true, 2}, {0, 0, true, 0}, {9, 0, true, 4},  {3, 0, true, 2},  {3, 0, false, NSNotFound},
        {0, 2, true, 2}, {0, 4, true, 4}, {0, 50, true, 4}, {8, 2, false, 4},
    };
    for (const auto& row : rows)
        EXPECT_EQ(insertionIndex(*odd, row.object, row.start, row.duplicates), row.index) << row.object << row.start;
    EXPECT_EQ(insertionIndex(*NSMutableArray::array(), 4, 5, false), 0);
    // The halving meets index 2 first, so that is the one the new element follows.
    EXPECT_EQ(insertionIndex(*NSMutableArray::of(3, 3, 3, 3, 3), 3, 0, true), 3);
    EXPECT_RAISES(insertionIndex(*odd, 4, -20, true), NSRangeException, "index");
}

TEST(NSMutableArrayAdditions, OnlyMinusOneMeansBefore) {
    const auto list = NSMutableArray::of(1, 3, 5);
    const auto zero = NSNumber::numberWithInt(0);
    EXPECT_EQ(insertObject_usingComparatorFunction_startingAtIndex(list, zero, twoForBefore, 0), 3);
    EXPECT_EQ(list, NSArray::of(1, 3, 5, 0));
}

TEST(NSMutableArrayAdditions, InsertingKeepsAListSorted) {
    srandom(11);
    const auto list = NSMutableArray::array();
    for (int i = 0; i < 500; ++i) {
        const auto number = NSNumber::numberWithLong(random() % 100);
        if (i % 2)
            insertObject_usingComparator_startingAtIndex(list, number, compare, 0);
        else
            insertObject_usingComparatorFunction_startingAtIndex(list, number, compareByFunction, 0);
    }
    EXPECT_EQ(list->count(), 500U);
    EXPECT_EQ(list, list->sortedArrayUsingSelector(compare));
    const auto present = list->objectAtIndex(40);
    EXPECT_EQ(insertObject_usingComparator_startingAtIndex_allowsDuplicates(list, present, compare, 0, false),
              NSNotFound);
    EXPECT_EQ(insertObject_usingComparatorFunction_startingAtIndex_allowsDuplicates(list, present, compareByFunction, 0,
                                                                                    false),
              NSNotFound);
    EXPECT_EQ(list->count(), 500U);
}

TEST(NSMutableArrayAdditions, ShuffleFollowsTheProcessesGenerator) {
    const auto list = NSMutableArray::array();
    std::vector<int> model;
    for (int i = 0; i < 50; ++i) {
        list->addObject(NSNumber::numberWithInt(i));
        model.push_back(i);
    }
    srandom(42);
    for (std::size_t i = model.size(); i-- > 0;)
        std::swap(model[i], model[static_cast<std::size_t>(random()) % model.size()]);
    srandom(42);
    shuffle(list);
    EXPECT_EQ(list, NSArray::from(model));
    const auto single = NSMutableArray::of(1), none = NSMutableArray::array();
    shuffle(single);
    shuffle(none);
    EXPECT_EQ(single, NSArray::of(1));
    reverse(list);
    EXPECT_EQ(list, NSArray::from(std::vector<int>(model.rbegin(), model.rend())));
}

TEST(NSMutableArrayAdditions, IdenticalObjectsGoAndEqualOnesStay) {
    const auto a = NSMutableString::stringWithString(u"a"_ns), twin = NSMutableString::stringWithString(u"a"_ns);
    const auto list = NSMutableArray::of(a, twin, a, 1);
    removeIdenticalObjectsFromArray(list, NSArray::of(a, 2).get());
    ASSERT_EQ(list->count(), 2U);
    EXPECT_EQ(&(*list)[0], twin.get());
    removeIdenticalObjectsFromArray(list, nullptr);
    EXPECT_EQ(list->count(), 2U);
    EXPECT_RAISES(removeIdenticalObjectsFromArray(list, list.get()), NSGenericException,
                  "was mutated while being enumerated");
}

TEST(NSMutableArrayAdditions, ABlockIsInsertedInItsOwnOrder) {
    const auto list = NSMutableArray::of(u"x", u"y");
    insertObjectsFromArray_atIndex(list, NSArray::of(u"a", u"b"), 1);
    EXPECT_EQ(list, NSArray::of(u"x", u"a", u"b", u"y"));
    insertObjectsFromArray_atIndex(list, NSArray::array(), 99);
    EXPECT_RAISES(insertObjectsFromArray_atIndex(list, NSArray::of(1), 5), NSRangeException,
                  "*** -[NSMutableArray insertObject:atIndex:]: index 5 beyond bounds [0 .. 3]");
    const auto single = NSMutableArray::of(1);
    EXPECT_RAISES(insertObjectsFromArray_atIndex(single, single, 0), NSGenericException, "was mutated");
    const auto frozen = NSMutableArray::immutableArray();
    EXPECT_RAISES(insertObjectsFromArray_atIndex(frozen, NSArray::of(1), 0), NSInvalidArgumentException,
                  "unrecognized selector sent to instance");
}
