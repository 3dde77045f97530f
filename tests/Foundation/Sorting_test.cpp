#include <algorithm>
#include <cmath>
#include <limits>
#include <random>
#include <stdexcept>

#include <gtest/gtest.h>

#include <ToviFoundationKit/ToviFoundationKit.h>

#include <support/Expect.h>

using namespace tovi;

namespace {

const Selector compare = "compare:"_sel;

using Objects = std::vector<NSObject*>;

Objects objects(const NSArray& array) {
    Objects result;
    for (NSObject& each : array)
        result.push_back(&each);
    return result;
}

/// The order that an insertion of one after the other gives: stable, and in no way clever.
template <class T> Objects inserted(const NSArray& array) {
    Objects result;
    for (NSObject& each : array) {
        const auto behind = [&](NSObject* other) { return static_cast<T*>(other)->compare(static_cast<T&>(each)) > 0; };
        result.insert(std::find_if(result.begin(), result.end(), behind), &each);
    }
    return result;
}

Ref<NSNumber> randomNumber(std::mt19937& random, int kinds) {
    const int value = static_cast<int>(random() % 60) - 30;
    switch (random() % static_cast<unsigned>(kinds)) {
        case 0:
            return NSNumber::numberWithInt(value);
        case 1:
            return NSNumber::numberWithLongLong(value * (std::numeric_limits<long long>::max() / 30));
        case 2:
            return NSNumber::numberWithUnsignedChar(static_cast<unsigned char>(value));
        case 3:
            return NSNumber::numberWithUnsignedLongLong(static_cast<unsigned long long>(value));
        case 4:
            return NSNumber::numberWithFloat(static_cast<float>(value) / 4);
        default:
            return NSNumber::numberWithDouble(value == 7 ? NAN : value == 8 ? INFINITY : value == 9 ? -0.0 : value);
    }
}

Ref<NSString> randomText(std::mt19937& random, std::u16string_view alphabet) {
    std::u16string text;
    for (auto length = random() % 12; length; --length)
        text += random() % 3 ? u'a' : alphabet[random() % alphabet.size()];
    return NSString::stringWithCharacters(text);
}

}  // namespace

TEST(Sorting, NumbersOfAnyTypesAreInTheOrderOfCompareAndStable) {
    std::mt19937 random(1);
    for (int round = 0; round < 120; ++round) {
        const auto list = NSMutableArray::array();
        for (auto count = random() % (round % 3 ? 70 : 700); count; --count)
            list->addObject(round % 7 == 6 ? NSNumber::numberWithDouble(randomNumber(random, 6)->doubleValue())
                                           : randomNumber(random, round % 7 + 1));
        EXPECT_EQ(objects(list->sortedArrayUsingSelector(compare)), inserted<NSNumber>(list)) << round;
    }
}

TEST(Sorting, TextsAreInTheOrderOfCompareAndStable) {
    std::mt19937 random(2);
    for (const std::u16string_view alphabet :
         {u"ab", u"aB1 \u0000", u"\u00e9\u0301e\u00df", u"\x7f\xff\xfffd\xd83d\xde00"}) {
        for (int round = 0; round < 30; ++round) {
            const auto list = NSMutableArray::array();
            for (auto count = random() % (round % 3 ? 70 : 700); count; --count)
                list->addObject(randomText(random, alphabet));
            EXPECT_EQ(objects(list->sortedArrayUsingSelector(compare)), inserted<NSString>(list)) << round;
        }
    }
}

TEST(Sorting, TakesAnyCallableAndSortsInPlace) {
    const auto list = NSMutableArray::of(u"ccc", u"b", u"dd", u"a", u"ee");
    const auto byLength = [](NSObject& a, NSObject& b) {
        return static_cast<NSInteger>(static_cast<NSString&>(a).length()) -
               static_cast<NSInteger>(static_cast<NSString&>(b).length());
    };
    EXPECT_EQ(list->sortedArrayUsing(byLength), NSArray::of(u"b", u"a", u"dd", u"ee", u"ccc"));
    list->sortUsingFunction_context(
        [](NSObject& a, NSObject& b, void* sign) { return *static_cast<int*>(sign) * send<NSInteger>(a, compare, b); },
        std::array{-1}.data());
    EXPECT_EQ(list, NSArray::of(u"ee", u"dd", u"ccc", u"b", u"a"));
    list->sortUsingSelector(compare);
    EXPECT_EQ(list, NSArray::of(u"a", u"b", u"ccc", u"dd", u"ee"));
}

TEST(Sorting, AnInconsistentComparisonLosesNothing) {
    std::mt19937 random(3);
    for (int round = 0; round < 300; ++round) {
        const auto list = NSMutableArray::array();
        for (auto count = random() % 200; count; --count)
            list->addObject(NSNumber::numberWithInt(static_cast<int>(count)));
        Objects before = objects(list);
        list->sortUsing([&](NSObject&, NSObject&) { return static_cast<NSInteger>(random() % 3) - 1; });
        Objects after = objects(list);
        std::sort(before.begin(), before.end());
        std::sort(after.begin(), after.end());
        ASSERT_EQ(before, after);
    }
}

TEST(Sorting, AComparisonThatFailsLeavesTheListAsItWas) {
    const auto list = NSMutableArray::of(5, 3, 9, 1, 7, 2, 8, 4, 6, 0);
    const auto before = list->copy();
    for (int allowed = 0; allowed < 20; ++allowed) {
        const auto fail = [left = allowed](NSObject& a, NSObject& b) mutable {
            return left-- ? send<NSInteger>(a, compare, b) : throw std::runtime_error("no more");
        };
        EXPECT_THROW(list->sortUsing(fail), std::runtime_error);
        EXPECT_EQ(list, before);
    }
    const auto change = [&](NSObject& a, NSObject&) { return list->removeObjectIdenticalTo(a), NSOrderedDescending; };
    EXPECT_RAISES(list->sortUsing(change), NSGenericException, "was mutated while being enumerated.");
    EXPECT_RAISES(NSArray::of(1, u"two")->sortedArrayUsingSelector("length"_sel), NSInvalidArgumentException,
                  "-[NSNumber length]: unrecognized selector");
    EXPECT_EQ(NSArray::of(1)->sortedArrayUsingSelector("unknown:"_sel), NSArray::of(1));
}

TEST(Sorting, AHostsOwnCompareIsUsed) {
    NSNumber::classObject().addMethod(compare, [](NSNumber& a, NSNumber& b) { return b.compare(a); });
    EXPECT_EQ(NSArray::of(1, 3, 2)->sortedArrayUsingSelector(compare), NSArray::of(3, 2, 1));
    const Additions<NSNumber> restored{instance<&NSNumber::compare>("compare:")};
    EXPECT_EQ(NSArray::of(1, 3, 2)->sortedArrayUsingSelector(compare), NSArray::of(1, 2, 3));
}
