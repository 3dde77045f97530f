#include <random>

#include <gtest/gtest.h>

#include <ToviFoundationKit/ToviFoundationKit.h>

#include <support/Expect.h>

using namespace tovi;

static_assert(std::forward_iterator<NSDictionary::Iterator>);

namespace {

/// A key of few hashes, so that searches and removals meet crowded slots.
class Crowded : public NSObject {
    TOVI_CLASS(Crowded, NSObject)
public:
    static Ref<Crowded> with(unsigned value) {
        Ref<Crowded> result = adopt(*new Crowded);
        result->value_ = value;
        return result;
    }
    bool isEqual(const NSObject* other) const override {
        const auto* const crowded = as<Crowded>(other);
        return crowded && crowded->value_ == value_;
    }
    NSUInteger hash() const override { return value_ % 7; }
    Ref<NSObject> copy() const override { return share(*this); }
    unsigned value() const { return value_; }

private:
    unsigned value_ = 0;
};

using Pairs = std::vector<std::pair<unsigned, int>>;

Pairs pairs(const NSDictionary& dictionary) {
    Pairs result;
    for (const auto [key, value] : dictionary)
        result.emplace_back(static_cast<Crowded&>(key).value(), static_cast<NSNumber&>(value).intValue());
    return result;
}

}  // namespace

TEST(NSMutableDictionary, KeepsTheOrderOfAdditionUnderRandomChanges) {
    for (unsigned seed = 0; seed < 20; ++seed) {
        std::mt19937 random(seed);
        const auto dictionary = NSMutableDictionary::dictionary();
        Pairs expected;
        const auto find = [&](unsigned key) {
            return std::find_if(expected.begin(), expected.end(), [key](auto& each) { return each.first == key; });
        };
        const auto set = [&](unsigned key, int value) {
            if (const auto found = find(key); found != expected.end())
                found->second = value;
            else
                expected.emplace_back(key, value);
        };
        const unsigned keys = 4U << seed % 7;
        for (int step = 0; step < 1500; ++step) {
            const unsigned key = static_cast<unsigned>(random()) % keys;
            const auto found = find(key);
            id value = dictionary->objectForKey(Crowded::with(key));
            ASSERT_EQ(value, found == expected.end() ? id() : id(NSNumber::numberWithInt(found->second)));
            if (step / 300 % 2 ? random() % 4 == 0 : random() % 4 != 0)
                dictionary->setObject_forKey(NSNumber::numberWithInt(step), Crowded::with(key)), set(key, step);
            else if (dictionary->removeObjectForKey(Crowded::with(key)); found != expected.end())
                expected.erase(found);
            if (step % 100 == 99) {
                const auto copy = to<NSMutableDictionary>(dictionary->mutableCopy());
                EXPECT_EQ(copy, dictionary);
                EXPECT_EQ(copy->hash(), dictionary->hash());
                copy->setObject_forKey(NSNull::null(), Crowded::with(key));
                EXPECT_NE(copy, dictionary);
            }
            ASSERT_EQ(pairs(dictionary), expected) << "seed " << seed << " step " << step;
        }
        while (dictionary->count())
            dictionary->removeObjectForKey((*dictionary->begin()).key);
        EXPECT_EQ(dictionary, NSDictionary::dictionary());
    }
}

TEST(NSDictionary, AnswersKeysAndValuesInTheOrderOfAddition) {
    const auto dictionary = NSDictionary::of({{u"b", 2}, {u"a", 1}, {u"c", 2}, {u"b", 3}});
    EXPECT_EQ(dictionary->allKeys(), NSArray::of(u"b", u"a", u"c"));
    EXPECT_EQ(dictionary->allValues(), NSArray::of(3, 1, 2));
    EXPECT_EQ(dictionary->keyEnumerator()->allObjects(), dictionary->allKeys());
    EXPECT_EQ(dictionary->objectEnumerator()->allObjects(), dictionary->allValues());
    EXPECT_EQ(dictionary->allKeysForObject(NSNumber::numberWithDouble(2)), NSArray::of(u"c"));
    EXPECT_EQ(dictionary->objectsForKeys_notFoundMarker(NSArray::of(u"a", u"z", u"b"), NSNull::null()),
              NSArray::of(1, NSNull::null(), 3));
    EXPECT_EQ(dictionary->valueForKey(u"a"_ns), NSNumber::numberWithInt(1));
    EXPECT_FALSE(dictionary->valueForKey(u"z"_ns));
    EXPECT_EQ(dictionary->description(), u"{\n    b = 3;\n    a = 1;\n    c = 2;\n}"_ns);
    EXPECT_EQ(NSDictionary::of({{u"a key", NSNull::null()}})->description(), u"{\n    \"a key\" = \"<null>\";\n}"_ns);
}

TEST(NSDictionary, EqualityKnowsNeitherOrderNorMutability) {
    const auto a = NSDictionary::of({{u"x", NSArray::of(1)}, {u"y", 2}});
    const auto b = NSMutableDictionary::of({{u"y", 2.0}, {u"x", NSMutableArray::of(1)}});
    EXPECT_EQ(a, b);
    EXPECT_EQ(a->hash(), b->hash());
    b->setObject_forKey(NSNumber::numberWithInt(3), u"y"_ns);
    EXPECT_NE(a, b);
    EXPECT_NE(a->hash(), b->hash());
    EXPECT_NE(NSDictionary::of({{u"x", 1}, {u"y", 2}})->hash(), NSDictionary::of({{u"x", 2}, {u"y", 1}})->hash());
    EXPECT_FALSE(a->isEqual(nullptr));
    EXPECT_NE(Ref<NSObject>(NSDictionary::dictionary()), Ref<NSObject>(NSArray::array()));
}

TEST(NSMutableDictionary, CopiesKeysAndKeepsTheFirstOfEqualOnes) {
    const auto dictionary = NSMutableDictionary::dictionary();
    const auto key = NSMutableString::stringWithString(u"a"_ns);
    dictionary->setObject_forKey(NSNumber::numberWithInt(1), key);
    key->appendString(u"b"_ns);
    EXPECT_EQ(dictionary->objectForKey(u"a"_ns), NSNumber::numberWithInt(1));
    EXPECT_FALSE(dictionary->objectForKey(key));
    EXPECT_RAISES(dictionary->setObject_forKey(key, *dictionary->keyEnumerator()), NSInvalidArgumentException,
                  "copyWithZone:]: unrecognized selector");
    EXPECT_RAISES(send<void>(dictionary, "setObject:forKey:"_sel, key, nullptr), NSInvalidArgumentException,
                  "*** -[NSMutableDictionary setObject:forKey:]: key cannot be nil");
    EXPECT_RAISES(NSDictionary::dictionaryWithObjects_forKeys(NSArray::of(1), NSArray::of(1, 2)),
                  NSInvalidArgumentException, "count of objects (1) differs from count of keys (2)");
    EXPECT_EQ(dictionary->count(), 1U);
}

TEST(NSMutableDictionary, NoticesAChangeWhileItIsEnumerated) {
    const auto dictionary = NSMutableDictionary::of({{u"a", 1}, {u"b", 2}});
    EXPECT_RAISES(
        [&] {
            for (const auto [key, value] : *dictionary)
                dictionary->removeObjectForKey(key);
        }(),
        NSGenericException, "*** Collection <NSMutableDictionary: 0x");
    const auto keys = dictionary->keyEnumerator(), values = dictionary->objectEnumerator();
    dictionary->removeAllObjects();
    EXPECT_RAISES(values->nextObject(), NSGenericException, "was mutated");
    EXPECT_RAISES(keys->nextObject(), NSGenericException, "was mutated");
}

TEST(NSMutableDictionary, TakesOverOtherDictionaries) {
    const auto dictionary = NSMutableDictionary::of({{u"a", 1}, {u"b", 2}});
    dictionary->addEntriesFromDictionary(NSDictionary::of({{u"b", 3}, {u"c", 4}}));
    dictionary->addEntriesFromDictionary(dictionary);
    EXPECT_EQ(dictionary, NSDictionary::of({{u"a", 1}, {u"b", 3}, {u"c", 4}}));
    dictionary->removeObjectsForKeys(NSArray::of(u"a", u"z"));
    dictionary->setValue_forKey(nullptr, u"b"_ns);
    EXPECT_EQ(dictionary, NSDictionary::of({{u"c", 4}}));
    dictionary->setDictionary(dictionary);
    EXPECT_EQ(dictionary->copy(), NSDictionary::of({{u"c", 4}}));
}
