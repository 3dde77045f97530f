#include <deque>
#include <random>

#include <gtest/gtest.h>

#include <ToviFoundationKit/ToviFoundationKit.h>

#include <support/Expect.h>

using namespace tovi;

static_assert(std::random_access_iterator<NSArray::Iterator>);
static_assert(std::forward_iterator<TypedView<NSString, NSArray>::Iterator>);

namespace {

Ref<NSNumber> number(int value) { return NSNumber::numberWithInt(value); }

std::vector<int> ints(const NSArray& array) {
    std::vector<int> result;
    for (NSNumber& each : array.each<NSNumber>())
        result.push_back(each.intValue());
    return result;
}

/// Looks into the list that it is in when it goes.
class Leaver : public NSObject {
    TOVI_CLASS(Leaver, NSObject)
public:
    static Ref<Leaver> leaving(NSMutableArray& list, std::vector<NSUInteger>& counts) {
        Ref<Leaver> result = adopt(*new Leaver);
        result->list_ = &list;
        result->counts_ = &counts;
        return result;
    }
    ~Leaver() override {
        counts_->push_back(list_->indexOfObjectIdenticalTo(*this) == NSNotFound ? list_->count() : 99);
    }

private:
    NSMutableArray* list_ = nullptr;
    std::vector<NSUInteger>* counts_ = nullptr;
};

}  // namespace

TEST(NSMutableArray, BehavesAsADequeUnderRandomChanges) {
    for (unsigned seed = 0; seed < 40; ++seed) {
        std::mt19937 random(seed);
        const auto list = NSMutableArray::array();
        std::deque<int> expected;
        const auto below = [&](std::size_t limit) { return limit ? random() % limit : 0; };
        const auto at = [&](std::size_t i) { return expected.begin() + static_cast<std::ptrdiff_t>(i); };
        for (int step = 0; step < 600; ++step) {
            const std::size_t i = below(expected.size() + 1), length = below(expected.size() - i + 1) % 9;
            const std::vector<int> block(below(12), step);
            // Each seed leans to other ends, so that the room before, behind and in the middle is used up in turn.
            switch ((random() % 11 + seed) % 13) {
                case 0:
                    list->addObject(number(step)), expected.push_back(step);
                    break;
                case 1:
                    list->insertObject_atIndex(number(step), 0), expected.push_front(step);
                    break;
                case 2:
                    list->insertObject_atIndex(number(step), i), expected.insert(at(i), step);
                    break;
                case 3:
                    list->addObjectsFromArray(NSArray::from(block)),
                        expected.insert(expected.end(), block.begin(), block.end());
                    break;
                case 4:
                    list->replaceObjectsInRange_withObjectsFromArray({i, length}, NSArray::from(block));
                    expected.erase(at(i), at(i + length));
                    expected.insert(at(i), block.begin(), block.end());
                    break;
                case 5:
                    list->removeObjectsInRange({i, length}), expected.erase(at(i), at(i + length));
                    break;
                case 6:
                    if (!expected.empty())
                        list->removeObjectAtIndex(0), expected.pop_front();
                    break;
                case 7:
                    if (!expected.empty())
                        list->removeLastObject(), expected.pop_back();
                    break;
                case 8:
                    list->removeObject(number(step / 2)), std::erase(expected, step / 2);
                    break;
                case 9:
                    if (i < expected.size())
                        list->exchangeObjectAtIndex_withObjectAtIndex(i, 0), std::swap(expected[i], expected[0]);
                    break;
                case 10:
                    list->removeObjectsAtIndexes(*NSIndexSet::indexSetWithIndexesInRange({i, length}));
                    expected.erase(at(i), at(i + length));
                    break;
                case 11:
                    list->reserve(expected.size() + 20);
                    break;
                case 12:
                    EXPECT_EQ(list->subarrayWithRange({i, length}), NSArray::from(std::vector(at(i), at(i + length))));
                    break;
            }
            ASSERT_EQ(ints(list), std::vector(expected.begin(), expected.end())) << "seed " << seed << " step " << step;
        }
    }
}

TEST(NSMutableArray, TakesItselfAsTheArgument) {
    const auto list = NSMutableArray::of(1, 2, 3);
    list->addObjectsFromArray(list);
    EXPECT_EQ(ints(list), (std::vector{1, 2, 3, 1, 2, 3}));
    list->replaceObjectsInRange_withObjectsFromArray({1, 4}, list);
    EXPECT_EQ(ints(list), (std::vector{1, 1, 2, 3, 1, 2, 3, 3}));
    list->setArray(list);
    EXPECT_EQ(list->count(), 8U);
}

TEST(NSMutableArray, HasLetGoOfAnObjectBeforeItIsDestroyed) {
    std::vector<NSUInteger> counts;
    const auto list = NSMutableArray::array();
    for (int i = 0; i < 6; ++i)
        list->addObject(Leaver::leaving(list, counts));
    list->removeObjectAtIndex(3);
    list->replaceObjectAtIndex_withObject(0, number(0));
    list->removeObjectsPassingTest([&](NSObject& each) { return &each == list->lastObject(); });
    list->removeObjectsInRange({0, 2});
    list->removeAllObjects();
    EXPECT_EQ(counts, (std::vector<NSUInteger>{5, 5, 4, 2, 0, 0}));
}

TEST(NSArray, RefusesIndexesOutsideWithTheBoundsInTheReason) {
    const auto list = NSArray::of(1, 2, 3);
    const auto changed = NSMutableArray::of(1);
    EXPECT_RAISES(list->objectAtIndex(5), NSRangeException,
                  "*** -[NSArray objectAtIndex:]: index 5 beyond bounds [0 .. 2]");
    EXPECT_RAISES(NSArray::array()->objectAtIndex(0), NSRangeException,
                  "objectAtIndex:]: index 0 beyond bounds for empty array");
    EXPECT_RAISES(list->subarrayWithRange({2, 2}), NSRangeException,
                  "-[NSArray subarrayWithRange:]: range {2, 2} extends beyond bounds [0 .. 2]");
    EXPECT_RAISES(list->subarrayWithRange({1, ~0UL}), NSRangeException, "range {1, 18446744073709551615}");
    EXPECT_RAISES(list->objectsAtIndexes(NSIndexSet::of({0, 3})), NSRangeException,
                  "-[NSArray objectsAtIndexes:]: index 3 beyond");
    EXPECT_RAISES(changed->insertObject_atIndex(list, 2), NSRangeException,
                  "-[NSMutableArray insertObject:atIndex:]: index 2 beyond bounds [0 .. 0]");
    EXPECT_RAISES(changed->exchangeObjectAtIndex_withObjectAtIndex(0, 1), NSRangeException,
                  "exchangeObjectAtIndex:withObjectAtIndex:]: index 1");
    EXPECT_RAISES(changed->removeObjectsAtIndexes(NSIndexSet::of({1})), NSRangeException,
                  "removeObjectsAtIndexes:]: index 1");
    EXPECT_RAISES(NSMutableArray::array()->removeLastObject(), NSRangeException,
                  "-[NSMutableArray removeLastObject]: index 0 beyond bounds for empty array");
    EXPECT_RAISES(changed->reserve(~0UL), NSMallocException, "18446744073709551615 objects");
    EXPECT_RAISES(send<void>(changed, "addObject:"_sel, nullptr), NSInvalidArgumentException,
                  "*** -[NSMutableArray addObject:]: object cannot be nil");
    EXPECT_RAISES(NSArray::of(1, id()), NSInvalidArgumentException, "");
    EXPECT_EQ(changed, NSArray::of(1));
}

TEST(NSMutableArray, CanBeImmutableAndThenIsAnNSArrayThatKnowsNoChange) {
    const auto list = NSMutableArray::immutableArrayWithArray(NSArray::of(1));
    EXPECT_EQ(&list->isa(), &NSArray::classObject());
    EXPECT_FALSE(list->respondsToSelector("addObject:"_sel));
    EXPECT_EQ(list->copy().get(), list.get());
    const auto refuses = [&](auto change, const std::string& selector) {
        EXPECT_RAISES(change(), NSInvalidArgumentException,
                      "-[NSArray " + selector + "]: unrecognized selector sent to instance 0x");
    };
    const auto one = number(1);
    refuses([&] { list->addObject(*one); }, "addObject:");
    refuses([&] { list->addObject(number(2)); }, "addObject:");
    refuses([&] { NSMutableArray::immutableArray()->insertObject_atIndex(one, 0); }, "insertObject:atIndex:");
    refuses([&] { list->removeLastObject(); }, "removeLastObject");
    refuses([&] { list->setArray(list); }, "setArray:");
    refuses([&] { list->sortUsingSelector("compare:"_sel); }, "sortUsingSelector:");
    EXPECT_EQ(list, NSArray::of(1));
}

TEST(NSArray, NoticesAChangeWhileItIsEnumerated) {
    const auto list = NSMutableArray::of(1, 2, 3, 4);
    const auto change = [&] { list->removeObjectAtIndex(0), list->reserve(100), list->addObject(number(5)); };
    const std::string mutated = "*** Collection <NSMutableArray: 0x";
    const auto changeAtEach = [&](auto&& range) {
        for ([[maybe_unused]] NSObject& each : range)
            change();
    };
    EXPECT_RAISES(changeAtEach(*list), NSGenericException, mutated);
    EXPECT_RAISES(changeAtEach(FastEnumeration(list)), NSGenericException, mutated);
    for (const bool reverse : {false, true}) {
        const auto enumerator = reverse ? list->reverseObjectEnumerator() : list->objectEnumerator();
        EXPECT_TRUE(enumerator->nextObject());
        change();
        EXPECT_RAISES(enumerator->nextObject(), NSGenericException, "was mutated while being enumerated.");
    }
    EXPECT_RAISES(list->removeObjectsPassingTest([&](NSObject&) { return change(), true; }), NSGenericException,
                  mutated);
}

TEST(NSArray, IsEnumeratedForwardsBackwardsAndByClass) {
    const auto list = NSArray::of(1, 2, 3);
    EXPECT_EQ(list->objectEnumerator()->allObjects(), list);
    EXPECT_EQ(list->reverseObjectEnumerator()->allObjects(), NSArray::of(3, 2, 1));
    const auto enumerator = list->objectEnumerator();
    enumerator->nextObject();
    int sum = 0;
    for (NSObject& each : FastEnumeration(enumerator))
        sum += static_cast<NSNumber&>(each).intValue();
    EXPECT_EQ(sum, 5);
    EXPECT_FALSE(enumerator->nextObject());
    for (NSString& each : NSArray::of(u"held by the view")->each<NSString>())
        EXPECT_EQ(each, u"held by the view"_ns);
    EXPECT_RAISES(ints(NSArray::of(1, u"two")), NSInvalidArgumentException, "");
    EXPECT_RAISES(FastEnumeration(*number(1)), NSInvalidArgumentException,
                  "-[NSNumber countByEnumeratingWithState:objects:count:]: unrecognized");
}

TEST(NSArray, FindsByEqualityAndByIdentity) {
    const auto b = NSMutableString::stringWithString(u"b"_ns);
    const auto list = NSArray::of(u"a", u"b", b, u"a");
    EXPECT_EQ(list->indexOfObject(b), 1U);
    EXPECT_EQ(list->indexOfObject_inRange(u"a"_ns, {1, 3}), 3U);
    EXPECT_EQ(list->indexOfObjectIdenticalTo(b), 2U);
    EXPECT_EQ(list->indexOfObjectIdenticalTo_inRange(b, {0, 2}), NSUInteger{NSNotFound});
    EXPECT_FALSE(list->containsObject(u"c"_ns));
}

TEST(NSArray, AsksItsElementsAndCollectsTheirAnswers) {
    const auto list = NSArray::of(u"a", u"bb");
    EXPECT_EQ(list->valueForKey(u"length"_ns), NSArray::of(1, 2));
    EXPECT_EQ(NSArray::of(list, NSDictionary::dictionary())->valueForKey(u"length"_ns),
              NSArray::of(NSArray::of(1, 2), NSNull::null()));
    EXPECT_EQ(list->componentsJoinedByString(u", "_ns), u"a, bb"_ns);
    EXPECT_EQ(NSArray::array()->componentsJoinedByString(u", "_ns), u""_ns);
    const auto parts = NSArray::of(NSMutableString::string(), NSMutableString::string());
    parts->makeObjectsPerformSelector_withObject("appendString:"_sel, u"x"_ns.get());
    EXPECT_EQ(parts, NSArray::of(u"x", u"x"));
    EXPECT_EQ(list->arrayByAddingObject(*number(1))->arrayByAddingObjectsFromArray(list),
              NSArray::of(u"a", u"bb", 1, u"a", u"bb"));
    EXPECT_EQ(NSArray::of(1, 2, 3)->objectsAtIndexes(NSIndexSet::of({0, 2})), NSArray::of(1, 3));
}

TEST(NSArray, CopiesKeepTheirContentWhateverBecomesOfTheOriginal) {
    const auto original = NSMutableArray::of(1, 2);
    const auto copy = original->copy();
    const auto changed = to<NSMutableArray>(original->mutableCopy());
    original->removeAllObjects();
    changed->addObject(number(3));
    EXPECT_EQ(copy, NSArray::of(1, 2));
    EXPECT_EQ(&copy->isa(), &NSArray::classObject());
    EXPECT_EQ(copy->copy().get(), copy.get());
    EXPECT_EQ(changed, NSArray::of(1, 2, 3));
    EXPECT_EQ(copy->hash(), NSMutableArray::of(1, 2)->hash());
    EXPECT_NE(copy->hash(), NSArray::of(2, 1)->hash());
}

TEST(NSArray, DescribesNestedCollectionsIndentedAndQuotesTextsThatAreNoWords) {
    EXPECT_EQ(NSArray::array()->description(), u"(\n)"_ns);
    EXPECT_EQ(NSArray::of(1, u"two", -3.5, u"", u"a b\"\n\u00e9")->description(),
              u"(\n    1,\n    two,\n    \"-3.5\",\n    \"\",\n    \"a b\\\"\\n\\U00e9\"\n)"_ns);
    const auto nested = NSArray::of(NSArray::of(1), NSDictionary::of({{u"k", NSArray::of(2, 3)}}), NSSet::of(4));
    EXPECT_EQ(nested->description(), u"(\n        (\n        1\n    ),\n        {\n        k =         (\n            "
                                     u"2,\n            3\n        );\n"
                                     u"    },\n        {(\n        4\n    )}\n)"_ns);
}
