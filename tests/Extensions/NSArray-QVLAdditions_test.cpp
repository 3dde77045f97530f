#include <gtest/gtest.h>

#include <ToviFoundationKit/ToviFoundationKit.h>

#include <support/Expect.h>

using namespace tovi;

namespace {

const Selector compare = "compare:"_sel;

NSInteger compareByFunction(NSObject& object, NSObject& element, void* context) {
    EXPECT_EQ(context, nullptr);
    return send<NSInteger>(object, compare, element);
}

/// Equal to every Lookalike, the same as none.
class Lookalike : public NSObject {
    TOVI_CLASS(Lookalike, NSObject)
public:
    static Ref<Lookalike> make() { return adopt(*new Lookalike); }
    bool isEqual(const NSObject* other) const override { return other && &other->isa() == &isa(); }
    NSUInteger hash() const override { return 7; }
};

using Indexes = std::vector<NSUInteger>;

Indexes indexes(const RefPtr<NSMutableIndexSet>& set) {
    Indexes result;
    for (NSUInteger i = set->firstIndex(); i != static_cast<NSUInteger>(NSNotFound); i = set->indexGreaterThanIndex(i))
        result.push_back(i);
    return result;
}

}  // namespace

TEST(NSArrayAdditions, ReplacingOutsideTheListLeavesTheCopyUnchanged) {
    const auto list = NSArray::of(1, 2, 3);
    const auto nine = NSNumber::numberWithInt(9);
    EXPECT_EQ(arrayByReplacingObjectAtIndex_withObject(list, 1, nine), NSArray::of(1, 9, 3));
    for (const std::int32_t index : {-1, 3, std::numeric_limits<std::int32_t>::min()}) {
        const auto copy = arrayByReplacingObjectAtIndex_withObject(list, index, nine);
        EXPECT_EQ(copy, list) << index;
        copy->addObject(*nine);
        EXPECT_EQ(list->count(), 3U);
    }
}

TEST(NSArrayAdditions, AddingNilToTheFrontAnswersTheReceiverItself) {
    const auto list = NSArray::of(u"b");
    EXPECT_EQ(arrayByAddingObjectToFront(list, nullptr).get(), list.get());
    const auto longer = arrayByAddingObjectToFront(list, u"a"_ns.get());
    EXPECT_EQ(longer, NSArray::of(u"a", u"b"));
    EXPECT_EQ(&longer->isa(), &NSArray::classObject());
}

TEST(NSArrayAdditions, RemovingByEqualityAndByIdentityDiffer) {
    const auto a = Lookalike::make(), b = Lookalike::make(), stranger = Lookalike::make();
    const auto list = NSArray::of(a, 1, b, a);
    EXPECT_EQ(arrayByRemovingObject(list, *stranger), NSArray::of(1));
    EXPECT_EQ(arrayByRemovingObjectIdenticalTo(list, *stranger)->count(), 4U);
    const auto rest = arrayByRemovingObjectIdenticalTo(list, *a);
    ASSERT_EQ(rest->count(), 2U);
    EXPECT_EQ(&(*rest)[1], b.get());
    EXPECT_NE(arrayByRemovingObject(list, *u"absent"_ns).get(), list.get());
    EXPECT_TRUE(containsObjectIdenticalTo(list, *b));
    EXPECT_FALSE(containsObjectIdenticalTo(list, *stranger));
}

TEST(NSArrayAdditions, PerformingLeavesNilAnswersOut) {
    Class& type = Lookalike::classObject();
    type.addMethod("nothing"_sel, [](Lookalike&) { return id(); });
    type.addMethod("joined:with:"_sel, [](Lookalike& self, NSMutableString& to, NSString& text) -> id {
        to.appendString(text);
        return self;
    });
    const auto list = NSArray::of(Lookalike::make(), Lookalike::make());
    EXPECT_EQ(arrayByPerformingSelector(list, "nothing"_sel)->count(), 0U);
    const auto words = NSArray::of(u"a", u"b");
    EXPECT_EQ(arrayByPerformingSelector(words, "uppercaseString"_sel), NSArray::of(u"A", u"B"));
    EXPECT_EQ(arrayByPerformingSelector_withObject(words, "stringByAppendingString:"_sel, u"!"_ns.get()),
              NSArray::of(u"a!", u"b!"));
    EXPECT_RAISES(arrayByPerformingSelector(list, "uppercaseString"_sel), NSInvalidArgumentException,
                  "-[Lookalike uppercaseString]: unrecognized selector sent to instance 0x");
    const auto text = NSMutableString::string();
    makeObjectsPerformSelector_withObject_withObject(list, "joined:with:"_sel, text.get(), u"x"_ns.get());
    EXPECT_EQ(*text, u"xx");
}

TEST(NSArrayAdditions, DifferenceIsTheArgumentMinusTheReceiver) {
    EXPECT_EQ(differenceWithArray(NSArray::of(u"a", u"b"), NSArray::of(u"b", u"c", u"c")), NSArray::of(u"c", u"c"));
    EXPECT_EQ(differenceWithArray(NSArray::array(), NSArray::of(1, 1)), NSArray::of(1, 1));
    EXPECT_EQ(differenceWithArray(NSArray::of(1), NSArray::of(1.0, 2)), NSArray::of(2));
}

TEST(NSArrayAdditions, SearchesByPrefixAndSuffixKeepTheOrder) {
    const auto files = NSArray::of(u"b.txt", u"a.mbox", u"a.txt");
    EXPECT_EQ(searchItemsStartingWith(files, u"a"_ns), NSArray::of(u"a.mbox", u"a.txt"));
    EXPECT_EQ(searchItemsFinishingWith(files, u".txt"_ns), NSArray::of(u"b.txt", u"a.txt"));
    EXPECT_RAISES(searchItemsStartingWith(NSArray::of(u"a", 1), u"a"_ns), NSInvalidArgumentException,
                  "-[NSNumber hasPrefix:]: unrecognized selector");
}

TEST(NSArrayAdditions, ReversingAndShufflingLeaveTheReceiver) {
    const auto list = NSArray::of(1, 2, 3);
    EXPECT_EQ(reversedArray(list), NSArray::of(3, 2, 1));
    EXPECT_EQ(reversedArray(NSArray::array())->count(), 0U);
    srandom(1);
    const auto shuffled = shuffledArray(list);
    EXPECT_EQ(list, NSArray::of(1, 2, 3));
    shuffled->sortUsingSelector(compare);
    EXPECT_EQ(shuffled, list);
}

TEST(NSArrayAdditions, BinarySearchTakesBothComparatorForms) {
    const auto list = NSArray::of(1, 3, 3, 3, 5);
    const struct {
        int object;
        NSInteger start, index;
    } rows[] = {
        {1, 0, 0},          {3, 0, 2},          {5, 0, 4},           {4, 0, NSNotFound},
        {1, 1, NSNotFound}, {5, 5, NSNotFound}, {5, 99, NSNotFound}, {3, 3, 3},
    };
    for (const auto& row : rows) {
        const auto object = NSNumber::numberWithInt(row.object);
        EXPECT_EQ(indexOfObject_usingComparator_startingAtIndex(list, object, compare, row.start), row.index);
        EXPECT_EQ(indexOfObject_usingComparatorFunction_startingAtIndex(list, object, compareByFunction, row.start),
                  row.index);
    }
    const auto one = NSNumber::numberWithInt(1);
    EXPECT_EQ(indexOfObject_usingComparator_startingAtIndex(NSArray::array(), one, "unknown:"_sel, 0), NSNotFound);
    EXPECT_RAISES(indexOfObject_usingComparator_startingAtIndex(list, one, compare, -20), NSRangeException,
                  "objectAtIndex:]: index");
}

TEST(NSArrayAdditions, IndexesOfObjectsComeFromAnyCollection) {
    const auto list = NSArray::of(u"x", u"y", u"x");
    EXPECT_EQ(indexes(indexesOfObjects(list, *NSArray::of(u"x", u"x", u"z"))), (Indexes{0, 2}));
    EXPECT_EQ(indexes(indexesOfObjects(list, *NSSet::setWithArray(NSArray::of(u"y")))), (Indexes{1}));
    EXPECT_EQ(indexes(indexesOfObjects(list, *NSArray::of(u"y", u"x")->objectEnumerator())), (Indexes{0, 1, 2}));
    EXPECT_EQ(indexesOfObjects_allowsNotFound(list, *NSArray::of(u"x", u"z"), false), nullptr);
    EXPECT_EQ(indexes(indexesOfObjects_allowsNotFound(list, *NSArray::of(u"x", u"z", u"y"), true)), (Indexes{0, 1}));
    EXPECT_RAISES(indexesOfObjects(list, *NSNumber::numberWithInt(1)), NSInvalidArgumentException,
                  "unrecognized selector");
}

TEST(NSArrayAdditions, LongListsWithRepetitionsAreSearchedLikeShortOnes) {
    srandom(5);
    const auto numbers = [](int count, long limit) {
        const auto list = NSMutableArray::array();
        for (int i = 0; i < count; ++i)
            list->addObject(NSNumber::numberWithLong(random() % limit));
        return list;
    };
    for (const int count : {0, 31, 32, 33, 1000}) {
        const auto list = numbers(count, 300), objects = numbers(200, 600);
        const auto all = NSMutableIndexSet::indexSet(), first = NSMutableIndexSet::indexSet();
        const auto absent = NSMutableArray::array();
        for (NSObject& object : *objects) {
            if (!list->containsObject(object))
                absent->addObject(object);
            else
                first->addIndex(list->indexOfObject(object));
            for (NSUInteger i = 0; i < list->count(); ++i)
                if ((*list)[i].isEqual(&object))
                    all->addIndex(i);
        }
        EXPECT_EQ(differenceWithArray(list, objects), absent);
        EXPECT_EQ(indexesOfObjects(list, *objects), all);
        EXPECT_EQ(indexesOfObjects_allowsNotFound(list, *objects, true)->isEqual(first.get()), true);
    }
}

TEST(NSArrayAdditions, AListThatItsElementsChangeIsNotReadFurther) {
    static NSMutableArray* emptied = nullptr;
    struct Vandal : NSObject {
        bool isEqual(const NSObject*) const override {
            if (emptied)
                emptied->removeAllObjects();
            return false;
        }
        NSUInteger hash() const override { return 7; }
    };
    const auto vandals = [] { return NSMutableArray::of(adopt(*new Vandal), adopt(*new Vandal)); };
    const auto list = NSMutableArray::of(Lookalike::make()), others = vandals();
    for (NSMutableArray* victim : {list.get(), others.get()}) {
        emptied = victim;
        EXPECT_RAISES(differenceWithArray(list, others), NSGenericException, "was mutated while being enumerated");
        emptied = nullptr;
        list->addObject(Lookalike::make());
    }
}

TEST(NSArrayAdditions, OrderedIdentityMatchingNeverLooksBack) {
    const auto a = Lookalike::make(), b = Lookalike::make(), z = Lookalike::make();
    const auto ordered = [](const NSArray& list, const NSArray& objects, bool allows) {
        return indexesOfOrderedObjectsIdenticalTo_allowsNotFound(list, objects, allows);
    };
    const auto aba = NSArray::of(a, b, a);
    EXPECT_EQ(indexes(ordered(aba, NSArray::of(b, a), false)), (Indexes{1, 2}));
    EXPECT_EQ(indexes(ordered(NSArray::of(a, b), NSArray::of(a, a), false)), (Indexes{0}));
    EXPECT_EQ(ordered(NSArray::of(a, b), NSArray::of(b, a), false), nullptr);
    EXPECT_EQ(indexes(ordered(NSArray::of(a, b), NSArray::of(b, a, z, b), true)), (Indexes{1}));
    EXPECT_EQ(ordered(aba, NSArray::of(z), false), nullptr);
    EXPECT_EQ(indexes(indexesOfObjectsIdenticalTo_allowsNotFound(aba, *NSArray::of(a, z, b), true)), (Indexes{0, 1}));
    EXPECT_EQ(indexesOfObjectsIdenticalTo_allowsNotFound(aba, *NSArray::of(z), false), nullptr);
}

TEST(NSArrayAdditions, OrderedMatchingAgreesWithSearchingEachTime) {
    srandom(3);
    std::vector<Ref<Lookalike>> pool;
    for (int i = 0; i < 6; ++i)
        pool.push_back(Lookalike::make());
    for (int round = 0; round < 300; ++round) {
        const auto list = NSMutableArray::array(), objects = NSMutableArray::array();
        for (long i = random() % 12; i > 0; --i)
            list->addObject(*pool[static_cast<std::size_t>(random()) % 6]);
        for (long i = random() % 8; i > 0; --i)
            objects->addObject(*pool[static_cast<std::size_t>(random()) % 6]);
        const auto expected = NSMutableIndexSet::indexSet();
        NSUInteger start = 0;
        for (NSObject& object : *objects) {
            const NSUInteger k = list->indexOfObjectIdenticalTo_inRange(object, {start, list->count() - start});
            if (k != static_cast<NSUInteger>(NSNotFound))
                expected->addIndex(start = k);
        }
        EXPECT_EQ(indexesOfOrderedObjectsIdenticalTo_allowsNotFound(list, *objects, true)->isEqual(expected.get()),
                  true);
    }
}

TEST(NSArrayAdditions, DeepMutableCopyCopiesWhatHasAMutableForm) {
    const auto number = NSNumber::numberWithInt(5);
    const auto source = NSArray::of(NSArray::of(1), u"s", number);
    const auto copy = deepMutableCopy(source);
    EXPECT_EQ(copy, source);
    to<NSMutableArray>(copy->objectAtIndex(0))->addObject(*number);
    to<NSMutableString>(copy->objectAtIndex(1))->appendString(u"!"_ns);
    EXPECT_EQ(&(*copy)[2], number.get());
    EXPECT_EQ(source, NSArray::of(NSArray::of(1), u"s", 5));
    EXPECT_EQ(copy, NSArray::of(NSArray::of(1, 5), u"s!", 5));
}

TEST(NSArrayAdditions, DeepMutableCopyObeysAHostsOwnOperation) {
    Lookalike::classObject().addMethod("deepMutableCopy"_sel, [](Lookalike&) -> id { return u"copied"_ns; });
    EXPECT_EQ(deepMutableCopy(NSArray::of(NSArray::of(Lookalike::make()))), NSArray::of(NSArray::of(u"copied")));
}

TEST(NSArrayAdditions, DeepMutableCopyNeedsNoStackForDepth) {
    Ref<NSArray> nest = NSArray::array();
    for (int i = 0; i < 1'000'000; ++i)
        nest = i % 2 ? NSArray::of(nest) : NSArray::of(NSDictionary::dictionaryWithObject_forKey(*nest, *u"k"_ns));
    const auto copy = deepMutableCopy(nest);
    EXPECT_EQ(copy, nest);
}

TEST(NSArrayAdditions, AreSentAsMessages) {
    const auto list = NSMutableArray::of(2, 1);
    EXPECT_EQ(list->performSelector("reversedArray"_sel), NSArray::of(1, 2));
    EXPECT_EQ(list->performSelector_withObject("differenceWithArray:"_sel, NSArray::of(1, 3).get()), NSArray::of(3));
    EXPECT_EQ(send<NSInteger>(*list, "indexOfObject:usingComparator:startingAtIndex:"_sel, *NSNumber::numberWithInt(2),
                              compare, NSInteger{0}),
              0);
}
