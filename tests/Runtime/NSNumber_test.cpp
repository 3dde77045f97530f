#include <gtest/gtest.h>

#include <ToviFoundationKit/ToviFoundationKit.h>

#include <support/Expect.h>

#include <limits>

using namespace tovi;

namespace {

constexpr double infinity = std::numeric_limits<double>::infinity();
constexpr double nan = std::numeric_limits<double>::quiet_NaN();
constexpr NSInteger smallest = std::numeric_limits<NSInteger>::min();
constexpr NSInteger largest = std::numeric_limits<NSInteger>::max();
constexpr NSUInteger largestUnsigned = std::numeric_limits<NSUInteger>::max();

}  // namespace

TEST(NSNumber, KeepsTheTypeItWasMadeWith) {
    const auto types = [](std::initializer_list<Ref<NSNumber>> numbers) {
        std::string text;
        for (const NSNumber& each : numbers)
            text += each.objCType();
        return text;
    };
    EXPECT_EQ(types({NSNumber::numberWithBool(true), NSNumber::numberWithChar(1), NSNumber::numberWithShort(1),
                     NSNumber::numberWithInt(1), NSNumber::numberWithLong(1), NSNumber::numberWithLongLong(1),
                     NSNumber::numberWithInteger(1), NSNumber::numberWithFloat(1), NSNumber::numberWithDouble(1)}),
              "ccsilqqfd");
    EXPECT_EQ(types({NSNumber::numberWithUnsignedChar(1), NSNumber::numberWithUnsignedShort(1),
                     NSNumber::numberWithUnsignedInt(1), NSNumber::numberWithUnsignedLong(1),
                     NSNumber::numberWithUnsignedLongLong(1), NSNumber::numberWithUnsignedInteger(1)}),
              "CSILQQ");
    EXPECT_EQ(types({box(1), box(1L), box(1ULL), box('a'), box(false), box(1.0F), box(NSOrderedSame)}), "iqQccfq");
    EXPECT_TRUE(box(1)->isKindOfClass(NSValue::classObject()));
    EXPECT_EQ(*send(NSNumber::classObject(), "numberWithShort:"_sel, 70000), *box(4464));
}

TEST(NSNumber, ConvertsAsCDoesAndClampsRealNumbers) {
    const auto minusOne = box(-1);
    EXPECT_EQ(minusOne->unsignedCharValue(), 255);
    EXPECT_EQ(minusOne->unsignedIntegerValue(), largestUnsigned);
    EXPECT_EQ(box(largestUnsigned)->integerValue(), -1);
    EXPECT_EQ(box(largestUnsigned)->doubleValue(), 18446744073709551616.0);
    EXPECT_EQ(box(70000)->shortValue(), 4464);
    const struct {
        double value;
        signed char c;
        unsigned char uc;
        NSInteger q;
        NSUInteger uq;
        bool truth;
    } rows[] = {
        {-0.9, 0, 0, 0, 0, true},
        {-128.9, -128, 0, -128, 0, true},
        {127.9, 127, 127, 127, 127, true},
        {300.5, 127, 255, 300, 300, true},
        {9223372036854775807.0, 127, 255, largest, 9223372036854775808U, true},
        {1e300, 127, 255, largest, largestUnsigned, true},
        {-infinity, -128, 0, smallest, 0, true},
        {nan, 0, 0, 0, 0, true},
        {-0.0, 0, 0, 0, 0, false},
    };
    for (const auto& row : rows) {
        const auto number = box(row.value);
        EXPECT_EQ(number->charValue(), row.c) << row.value;
        EXPECT_EQ(number->unsignedCharValue(), row.uc) << row.value;
        EXPECT_EQ(number->integerValue(), row.q) << row.value;
        EXPECT_EQ(number->unsignedIntegerValue(), row.uq) << row.value;
        EXPECT_EQ(number->boolValue(), row.truth) << row.value;
    }
    EXPECT_EQ(box(1e300)->floatValue(), std::numeric_limits<float>::infinity());
}

TEST(NSNumber, ComparesExactlyAcrossTypes) {
    // In ascending order; the numbers of one row are the same.
    const std::vector<std::vector<Ref<NSNumber>>> rows = {
        {box(nan), box(std::numeric_limits<float>::quiet_NaN())},
        {box(-infinity)},
        {box(-9223372036854777856.0)},
        {box(smallest), box(-9223372036854775808.0)},
        {box(smallest + 1)},
        {box(-2)},
        {box(-1.5)},
        {box(-1), box(-1.0F), NSNumber::numberWithChar(-1)},
        {box(-0.5)},
        {box(0), box(-0.0), box(0U), box(false)},
        {box(5e-324)},
        {box(1), box(true), box(1.0), NSNumber::numberWithUnsignedLong(1)},
        {box(3.5), box(3.5F)},
        {box(9007199254740992), box(9007199254740992.0)},
        {box(9007199254740993)},
        {box(largest)},
        {box(9223372036854775808U), box(9223372036854775808.0)},
        {box(9223372036854775809U)},
        {box(largestUnsigned)},
        {box(18446744073709551616.0)},
        {box(infinity)},
    };
    for (std::size_t i = 0; i < rows.size(); ++i)
        for (std::size_t j = 0; j < rows.size(); ++j)
            for (const auto& a : rows[i])
                for (const auto& b : rows[j]) {
                    const NSInteger expected = i < j ? -1 : i > j;
                    EXPECT_EQ(send<NSInteger>(a, "compare:"_sel, b), expected) << a << " " << b;
                    EXPECT_EQ(a->isEqual(b.get()), expected == 0) << a << " " << b;
                    EXPECT_TRUE(expected != 0 || a->hash() == b->hash()) << a << " " << b;
                }
    EXPECT_FALSE(box(1)->isEqual(u"1"_ns.get()));
    EXPECT_FALSE(box(1)->isEqual(nullptr));
}

TEST(NSNumber, IsWrittenWithTheFewestDigitsThatReadBack) {
    const std::pair<Ref<NSNumber>, std::u16string_view> rows[] = {
        {box(-7), u"-7"},
        {box(largestUnsigned), u"18446744073709551615"},
        {box(smallest), u"-9223372036854775808"},
        {box(true), u"1"},
        {box('a'), u"97"},
        {box(3.5), u"3.5"},
        {box(3.0), u"3"},
        {box(0.1), u"0.1"},
        {box(0.1F), u"0.1"},
        {box(0.1 + 0.2), u"0.30000000000000004"},
        {box(1e16), u"10000000000000000"},
        {box(1e17), u"1e+17"},
        {box(-2.5e-5), u"-2.5e-05"},
        {box(0.0001), u"0.0001"},
        {box(-0.0), u"-0"},
        {box(1.7976931348623157e308), u"1.7976931348623157e+308"},
        {box(16777216.0F), u"16777216"},
        {box(infinity), u"inf"},
        {box(nan), u"nan"},
        {box(-nan), u"nan"},
    };
    for (const auto& [number, text] : rows) {
        EXPECT_EQ(*number->stringValue(), text);
        EXPECT_EQ(*number->description(), text);
    }
}

TEST(NSValue, HoldsAStructure) {
    EXPECT_EQ(box(NSSize{1, 2})->sizeValue(), (NSSize{1, 2}));
    EXPECT_EQ(box(NSRect{{1, 2}, {3, 4}})->rectValue(), (NSRect{{1, 2}, {3, 4}}));
    EXPECT_EQ(box(NSRangeNotFound)->rangeValue(), NSRangeNotFound);
    EXPECT_EQ(*box(NSPoint{-0.0, 2}), *box(NSPoint{0.0, 2}));
    EXPECT_EQ(box(NSPoint{-0.0, 2})->hash(), box(NSPoint{0.0, 2})->hash());
    EXPECT_NE(box(NSPoint{1, 2}), box(NSSize{1, 2}));
    EXPECT_EQ(*box(NSRect{{0, 0.5}, {3, 4}})->description(), u"NSRect: {{0, 0.5}, {3, 4}}");
    EXPECT_EQ(*box(NSRangeNotFound)->description(), u"NSRange: {9223372036854775807, 0}");
    EXPECT_RAISES(box(NSPoint{})->rangeValue(), NSInvalidArgumentException,
                  "{CGPoint=dd} cannot be converted to type {_NSRange=QQ}");
    EXPECT_RAISES(box(1)->pointValue(), NSInvalidArgumentException, "type i cannot be converted to type {CGPoint=dd}");
}

TEST(Box, LeavesObjectsAsTheyAreAndMakesStringsOfText) {
    const auto text = u"x"_ns;
    EXPECT_EQ(box(text).get(), text.get());
    EXPECT_EQ(box(*text).get(), text.get());
    EXPECT_EQ(box(RefPtr<NSString>(text)).get(), text.get());
    EXPECT_RAISES(box(RefPtr<NSString>()), NSInvalidArgumentException, "nil");
    EXPECT_EQ(*box("\xC3\xA9"), *box(u"\u00E9"));
    EXPECT_EQ(*box(std::string("a")), *box(std::u16string(u"a")));
}
