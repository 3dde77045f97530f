#include <ToviFoundationKit/Foundation/NSExpression.h>

#include <gtest/gtest.h>

#include <ToviFoundationKit/ToviFoundationKit.h>

#include <support/Expect.h>
#include <support/Letter.h>

using namespace tovi;

namespace {

id valueOf(std::u16string_view format, const NSObject* object = nullptr, const NSDictionary* variables = nullptr) {
    return NSExpression::expressionWithFormat(format)->expressionValueWithObject_context(object, variables);
}

struct Row {
    std::u16string_view format;
    const char* value;
};

void expectValues(std::initializer_list<Row> rows, const NSObject* object = nullptr) {
    for (const Row& row : rows) {
        SCOPED_TRACE(NSString::stringWithCharacters(row.format)->UTF8String());
        try {
            const id value = valueOf(row.format, object);
            EXPECT_EQ(value ? value->description()->UTF8String() : "nil", row.value);
        } catch (const NSException& raised) {
            ADD_FAILURE() << raised.what();
        }
    }
}

}  // namespace

TEST(NSExpression, ReckonsWithIntegersAsLongAsTheyFit) {
    expectValues({
        {u"1 + 2 * 3", "7"},
        {u"10 - 4 - 3", "3"},
        {u"2 ** 3 ** 2", "512"},
        {u"-2 ** 2", "4"},
        {u"7 / 2", "3"},
        {u"-7 / 2.0", "-3.5"},
        {u"7 %% 4 + 7.5 %% 2", "4.5"},
        {u"1 / 0", "inf"},
        {u"0 / 0", "nan"},
        {u"9223372036854775807 + 1", "9.223372036854776e+18"},
        {u"-9223372036854775808 / -1", "9.223372036854776e+18"},
        {u"3 ** -1", "0.3333333333333333"},
        {u"10 ** 18", "1000000000000000000"},
        {u"10 ** 19", "1e+19"},
        {u"abs(-5) + abs(-0.5)", "5.5"},
        {u"ceiling(1.2) + floor(-1.2) + trunc(-1.7)", "-1"},
        {u"floor(9007199254740993)", "9007199254740993"},
        {u"sqrt(16) + log(1000) + ln(exp(2))", "9"},
        {u"bitwiseAnd:with:(12, 10) + bitwiseOr:with:(12, 10) + bitwiseXor:with:(12, 10)", "28"},
        {u"leftshift:by:(1, 4) + rightshift:by:(16, 2) + leftshift:by:(1, 64)", "20"},
        {u"onesComplement(5) + not:(0)", "-5"},
    });
}

TEST(NSExpression, ReckonsWithLists) {
    expectValues({
        {u"sum({1, 2, 3.5})", "6.5"},
        {u"sum:(1, 2)", "3"},
        {u"count({1, nil, 3}) + count:(1, 2)", "5"},
        {u"average({1, 2, nil})", "1.5"},
        {u"average({})", "0"},
        {u"min({3, 1, 2}) + max:(3, 9)", "10"},
        {u"max({'a', 'c', 'b'})", "c"},
        {u"median({5, 1, 9, 3})", "4"},
        {u"median({5, 1, 9})", "5"},
        {u"mode({1, 2, 2, 3, 3})", "(\n    2,\n    3\n)"},
        {u"stddev({2, 4, 4, 4, 5, 5, 7, 9})", "2"},
        {u"{1, {2}}[1][0] + {4, 5}[LAST] + {4, 5}[FIRST] + {4, 5}[SIZE]", "13"},
        {u"{}[LAST]", "nil"},
        {u"({1, 2} UNION {2, 3}).@count", "3"},
        {u"({1, 2} INTERSECT {2, 3}).@count", "1"},
        {u"({1, 2} MINUS {2, 3}).@sum.self", "1"},
        {u"SUBQUERY({1, 2, 3}, $x, SUBQUERY({2, 3, 4}, $y, $y == $x).@count == 1)[FIRST]", "2"},
        {u"SUBQUERY({1, 2}, $x, SUBQUERY({5}, $x, $x == 5).@count == $x).@count", "1"},
    });
    EXPECT_RAISES(valueOf(u"max({1, 'a'})"), NSInvalidArgumentException, "NSNumber");
    EXPECT_RAISES(valueOf(u"{1}[-1]"), NSInvalidArgumentException, "index -1");
}

TEST(NSExpression, AsksObjects) {
    const auto letter = Letter::make(u"Ann", 12, 1000, NSArray::of(Letter::make(u"Bob", 7, 3000)));
    expectValues(
        {
            {u"uppercase(sender)", "ANN"},
            {u"lowercase('ÀB')", "àb"},
            {u"FUNCTION(SELF, 'quoted:', '*')", "*Ann*"},
            {u"FUNCTION(answers[0].sender, 'hasPrefix:', 'B')", "1"},
            {u"FUNCTION(nil, 'quoted:', '*')", "nil"},
            {u"TERNARY(size > 10, 'large', 'small')", "large"},
            {u"TERNARY(size < 10, answers, TERNARY(read == 1, 'read', 2))", "read"},
            {u"{sender, note, size}", "(\n    Ann,\n    \"<null>\",\n    12\n)"},
            {u"CAST('12.5', 'NSNumber') + 1", "13.5"},
            {u"CAST(size, 'NSString')", "12"},
            {u"CAST(CAST(date, 'NSNumber') + 500, 'NSDate')", "2001-01-01 00:25:00 +0000"},
            {u"answers.@max.size + SELF.size", "19"},
            {u"noindex(sender)", "Ann"},
        },
        letter.get());
}

TEST(NSExpression, RandomNumbersAndTheTimeAreTakenAnew) {
    for (int i = 0; i < 100; ++i) {
        EXPECT_TRUE(NSPredicate::predicateWithFormat(
                        u"random() BETWEEN {0, 1} AND randomn(3) IN {0, 1, 2} AND random(1) == random:(1)")
                        ->evaluateWithObject(nullptr));
    }
    EXPECT_TRUE(as<NSDate>(valueOf(u"now()").get()));
}

TEST(NSExpression, TellsWhatItIsMadeOf) {
    const auto sum = NSExpression::expressionWithFormat(u"a.b + 1");
    EXPECT_EQ(sum->expressionType(), NSFunctionExpressionType);
    EXPECT_EQ(*sum->function(), u"add:to:");
    EXPECT_EQ(*to<NSExpression>(sum->arguments()->firstObject())->keyPath(), u"a.b");
    EXPECT_EQ(*to<NSExpression>(sum->arguments()->lastObject())->constantValue(), *box(1));
    const auto subquery = NSExpression::expressionWithFormat(u"SUBQUERY(a, $x, $x == 1)");
    EXPECT_EQ(*subquery->variable(), u"x");
    EXPECT_EQ(*subquery->predicate()->description(), u"$x == 1");
    EXPECT_EQ(*subquery->collection()->description(), u"a");
    const auto path = NSExpression::expressionWithFormat(u"$x.y.z");
    EXPECT_EQ(*path->operand(), *NSExpression::expressionForVariable(u"x"_ns));
    EXPECT_FALSE(NSExpression::expressionForKeyPath(u"a"_ns)->operand());
    EXPECT_RAISES(path->function(), NSInvalidArgumentException, "$x.y.z has none");

    const auto one = NSExpression::expressionForConstantValue(box(1).get());
    EXPECT_EQ(NSExpression::expressionForAggregate(NSArray::of(one, one))->expressionType(),
              NSConstantValueExpressionType);
    EXPECT_EQ(NSExpression::expressionForMinusSet_with(path, one),
              NSExpression::expressionWithFormat(u"$x.y.z MINUS 1"));
    EXPECT_RAISES(NSExpression::expressionForFunction_arguments(u"sqrt:"_ns, NSArray::of(one, one)),
                  NSInvalidArgumentException, "does not take 2 arguments");
    EXPECT_RAISES(NSExpression::expressionForFunction_arguments(u"fly:"_ns, NSArray::of(one)),
                  NSInvalidArgumentException, "no function fly:");
}

TEST(KeyPaths, OperatorsTakeWhatTheRestOfThePathGives) {
    const auto list = NSArray::of(Letter::make(u"b", 5), Letter::make(u"a", 7), Letter::make(u"b", 12));
    const auto nested =
        NSDictionary::of({{u"letters", list}, {u"lists", NSArray::of(NSArray::of(1, 2), NSArray::of(2))}});
    const std::pair<std::u16string_view, Ref<NSObject>> rows[] = {
        {u"letters.@count", box(3)},
        {u"letters.size.@sum", box(24)},
        {u"letters.@sum.size", box(24)},
        {u"letters.@avg.size", box(8)},
        {u"letters.@min.sender", box(u"a")},
        {u"letters.@max.sender.length", box(1)},
        {u"letters.@unionOfObjects.note", NSArray::array()},
        {u"letters.@distinctUnionOfObjects.sender", NSArray::of(u"b", u"a")},
        {u"lists.@unionOfArrays.self", NSArray::of(1, 2, 2)},
        {u"lists.@distinctUnionOfArrays", NSArray::of(1, 2)},
        {u"@count", box(2)},
    };
    for (const auto& [path, value] : rows)
        EXPECT_EQ(*nested->valueForKeyPath(box(path)), *value) << box(path);
    EXPECT_EQ(*NSSet::of(1, 2, 3)->valueForKeyPath(u"@sum.self"_ns), *box(6));
    EXPECT_FALSE(list->valueForKeyPath(u"@max.note"_ns));
    EXPECT_RAISES(list->valueForKeyPath(u"@most.size"_ns), NSUndefinedKeyException, "operation @most");
    EXPECT_RAISES(list->valueForKeyPath(u"@sum.sender"_ns), NSInvalidArgumentException, "is no number");
}
