#include <gtest/gtest.h>

#include <ToviFoundationKit/ToviFoundationKit.h>

#include <support/Expect.h>
#include <support/RecordingHandler.h>
#include <support/Threads.h>

using namespace tovi;

namespace {

Ref<NSMutableDictionary> dictionary(std::initializer_list<std::pair<std::u16string_view, Ref<NSObject>>> entries) {
    Ref<NSMutableDictionary> result = NSMutableDictionary::dictionary();
    for (const auto& [key, value] : entries)
        result->setObject_forKey(value, NSString::stringWithCharacters(key));
    return result;
}

class Counter : public NSObject {
    TOVI_CLASS(Counter, NSObject)
public:
    int locked = 0, unlocked = 0;
};

}  // namespace

TEST(NSDictionaryAdditions, KeysWithoutValueAndNullValuesAreLeftOut) {
    const auto receiver = dictionary({{u"a", box(1)}, {u"b", box(2)}, {u"n", NSNull::null()}});
    EXPECT_EQ(objectsForKeysIgnoringNotFound(receiver, NSArray::of(u"b", u"z", u"n", u"a", u"b")),
              NSArray::of(2, 1, 2));
}

TEST(NSDictionaryAdditions, InvertingCollectsTheKeysOfEachElement) {
    const auto receiver = dictionary({{u"k1", NSArray::of(u"x", u"y", u"x")}, {u"k2", NSArray::of(u"y")}});
    EXPECT_EQ(invertKeysAndObjects(receiver),
              dictionary({{u"x", NSArray::of(u"k1", u"k1")}, {u"y", NSArray::of(u"k1", u"k2")}}));
    EXPECT_RAISES(invertKeysAndObjects(dictionary({{u"k", box(1)}})), NSInvalidArgumentException,
                  "unrecognized selector");
}

TEST(NSDictionaryAdditions, OrderedKeysAndValuesFollowTheirOwnCompare) {
    const auto receiver = dictionary({{u"b", box(1)}, {u"a", box(2.5)}, {u"c", box(1)}});
    EXPECT_EQ(allOrderedKeys(receiver), NSArray::of(u"a", u"b", u"c"));
    EXPECT_EQ(allOrderedValues(receiver), NSArray::of(1, 1, 2.5));
    EXPECT_EQ(allKeysSet(receiver), NSSet::setWithArray(NSArray::of(u"a", u"b", u"c")));
    EXPECT_EQ(allValuesSet(receiver)->count(), 2U);
    EXPECT_RAISES(allOrderedValues(dictionary({{u"a", NSArray::array()}, {u"b", NSArray::array()}})),
                  NSInvalidArgumentException, "-[NSArray compare:]: unrecognized selector");
}

TEST(NSDictionaryAdditions, HasKeyComplainsEveryTimeAndAnswersOnlyAForgivingHandler) {
    const auto receiver = dictionary({{u"a", box(1)}});
    EXPECT_RAISES(
        hasKey(receiver, *u"a"_ns), NSInternalInconsistencyException,
        "%@,%@ worst method ever! this is a DICTIONARY, key retrieving is O(log(n)), this method change it to "
        "O(n) !!! You should never use it!");

    const auto forgiving = RecordingHandler::make();
    const ScopedAssertionHandler scope(*forgiving);
    EXPECT_TRUE(hasKey(receiver, *u"a"_ns));
    EXPECT_FALSE(hasKey(receiver, *u"b"_ns));
    EXPECT_TRUE(
        forgiving->report->hasPrefix(u"hasKey: {\n    a = 1;\n} Extensions.subproj/NSDictionary-QVLAdditions:73 "_ns))
        << forgiving->report;
}

TEST(NSDictionaryAdditions, DeepMutableCopySharesWhatHasNoMutableForm) {
    const auto five = NSNumber::numberWithInt(5);
    const auto source = dictionary({{u"a", NSArray::of(1)}, {u"b", five}, {u"d", dictionary({{u"t", u"text"_ns}})}});
    const auto copy = deepMutableCopy(source);
    EXPECT_EQ(copy, source);
    EXPECT_EQ(copy->objectForKey(u"b"_ns).get(), five.get());
    to<NSMutableArray>(copy->objectForKey(u"a"_ns))->removeAllObjects();
    to<NSMutableString>(to<NSDictionary>(copy->objectForKey(u"d"_ns))->objectForKey(u"t"_ns))->appendString(u"!"_ns);
    EXPECT_EQ(source, dictionary({{u"a", NSArray::of(1)}, {u"b", five}, {u"d", dictionary({{u"t", u"text"_ns}})}}));
}

TEST(NSMutableDictionaryThreadSafety, TakesTheLockOnceForEachOperation) {
    Counter::classObject().addMethod("lock"_sel, [](Counter& self) { ++self.locked; });
    Counter::classObject().addMethod("unlock"_sel, [](Counter& self) { ++self.unlocked; });
    const Ref<Counter> lock = to<Counter>(Counter::classObject().makeInstance());
    const auto receiver = NSMutableDictionary::dictionary();
    threadSafeSetObject_forKey_usingLock(receiver, *u"v"_ns, *u"k"_ns, *lock);
    EXPECT_EQ(threadSafeObjectForKey_usingLock(receiver, *u"k"_ns, *lock), u"v"_ns);
    threadSafeRemoveObjectForKey_usingLock(receiver, *u"k"_ns, *lock);
    EXPECT_EQ(threadSafeObjectForKey_usingLock(receiver, *u"k"_ns, *lock), nullptr);
    EXPECT_EQ(lock->locked, 4);
    EXPECT_EQ(lock->unlocked, 4);
    EXPECT_RAISES(threadSafeSetObject_forKey_usingLock(receiver, *u"v"_ns, *lock, *lock), NSInvalidArgumentException,
                  "copyWithZone:");
    EXPECT_EQ(lock->unlocked, 5);
    EXPECT_RAISES(threadSafeObjectForKey_usingLock(receiver, *u"k"_ns, *u"no lock"_ns), NSInvalidArgumentException,
                  "unrecognized selector");
}

TEST(NSMutableDictionaryThreadSafety, ManyThreadsShareADictionary) {
    const auto receiver = NSMutableDictionary::dictionary();
    const auto lock = NSLock::init();
    onThreads(4, [&](int t) {
        for (int i = 0; i < 2000; ++i) {
            const auto key = NSNumber::numberWithInt(i % 16);
            threadSafeSetObject_forKey_usingLock(receiver, *NSNumber::numberWithInt(t), *key, *lock);
            if (const id value = threadSafeObjectForKey_usingLock(receiver, *key, *lock)) {
                EXPECT_LT(to<NSNumber>(value)->intValue(), 4);
            }
            if (i % 3 == 0)
                threadSafeRemoveObjectForKey_usingLock(receiver, *key, *lock);
        }
    });
    EXPECT_LE(receiver->count(), 16U);
}
