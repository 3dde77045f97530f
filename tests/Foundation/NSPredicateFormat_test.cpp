#include <gtest/gtest.h>

#include <ToviFoundationKit/ToviFoundationKit.h>

#include <support/Expect.h>

using namespace tovi;

namespace {

std::string described(std::u16string_view format) {
    return NSPredicate::predicateWithFormat(format)->predicateFormat()->UTF8String();
}

}  // namespace

TEST(NSPredicateFormat, IsWrittenInOneWay) {
    const std::pair<std::u16string_view, const char*> rows[] = {
        {u"a=1and b<>2", "a == 1 AND b != 2"},
        {u"(a == 1 AND b == 2) AND c == 3", "(a == 1 AND b == 2) AND c == 3"},
        {u"(a == 1) OR ((b == 2) AND (NOT (c == 3)))", "a == 1 OR (b == 2 AND NOT c == 3)"},
        {u"!(a == 1 || b == 2)", "NOT (a == 1 OR b == 2)"},
        {u"none a.b = 'x'", "NOT ANY a.b == \"x\""},
        {u"all a.b in[dc] {'x', \"y\"}", "ALL a.b IN[cd] {\"x\", \"y\"}"},
        {u"SELF.a.#in.size == #self", "a.in.size == #self"},
        {u"#first.last == $x.y[FIRST].z", "#first.last == $x.y[FIRST].z"},
        {u"a == 'say \"\\\\o\\\"\\n\\x01\\u00E9'", "a == \"say \\\"\\\\o\\\"\\n\\u0001\u00E9\""},
        {u"a == 5.0 AND b == 1e400 AND c == -0.25", "a == 5.0 AND b == 1e999 AND c == -0.25"},
        {u"a == CAST(5,\"NSDate\")", "a == CAST(5.000000, \"NSDate\")"},
        {u"a == CAST(-0.1234567, 'NSDate')", "a == CAST(-0.1234567, \"NSDate\")"},
        {u"a == CAST(b, 'NSDate')", "a == CAST(b, \"NSDate\")"},
        {u"a + b * c - d ** 2 ** 3 == -(e) / 2", "(a + (b * c)) - (d ** (2 ** 3)) == (-1 * e) / 2"},
        {u"a - -1 %% 2 == b[0][LAST]['k'][SIZE]", "a - modulus:by:(-1, 2) == b[0][LAST][\"k\"][SIZE]"},
        {u"(a + b).c == (5).d AND ({1}).e == sqrt(2).f", "(a + b).c == (5).d AND ({1}).e == sqrt(2).f"},
        {u"a union b minus {1} == c", "(a UNION b) MINUS {1} == c"},
        {u"ternary(a == 1 OR b == 2, yes, {}) == nil", "TERNARY(a == 1 OR b == 2, 1, {}) == NIL"},
        {u"function(a.b, 'c:', 1, d) == now()", "FUNCTION(a.b, \"c:\", 1, d) == now()"},
        {u"FUNCTION(a, 'valueForKeyPath:', 'b.c') == FUNCTION(SELF, 'valueForKeyPath:', 'b c')",
         "(a).b.c == FUNCTION(SELF, \"valueForKeyPath:\", \"b c\")"},
        {u"CAST('nan', 'NSNumber') == cast('1', 'NSNumber')",
         "CAST(\"nan\", \"NSNumber\") == CAST(\"1\", \"NSNumber\")"},
        {u"subquery(a, $x, $x.b == $y).@count > 0", "SUBQUERY(a, $x, $x.b == $y).@count > 0"},
        {u"@count == bitwiseAnd:with:(1, 2)", "@count == bitwiseAnd:with:(1, 2)"},
        {u"random() < random:(2)", "random() < random(2)"},
    };
    for (const auto& [given, written] : rows) {
        EXPECT_EQ(described(given), written);
        EXPECT_EQ(NSPredicate::predicateWithFormat(given),
                  NSPredicate::predicateWithFormat(*NSString::fromUTF8(written)));
    }
}

TEST(NSPredicateFormat, TakesArguments) {
    const auto date = NSDate::dateWithTimeIntervalSinceReferenceDate(-3600);
    const auto predicate = NSPredicate::predicateWithFormat(u"%K == %@ AND a > %@ AND b IN %@ AND c == '%@' AND d == "
                                                            u"%d AND e == %llu AND f == %5.2lf AND g == %s AND %K < %c "
                                                            u"AND h %% 2 == %@ AND i == %@ AND j == %x",
                                                            u"x.y", u"\"", date, NSArray::of(1, u"z"), -5, ~0ULL, 0.5,
                                                            "text", u"first name", u'c', nullptr, 2.5f, 255, u"more");
    const char* const written =
        "x.y == \"\\\"\" AND a > CAST(-3600.000000, \"NSDate\") AND b IN {1, \"z\"} AND c == \"%@\" AND d == -5 AND "
        "e == 18446744073709551615 AND f == 0.5 AND g == \"text\" AND FUNCTION(SELF, \"valueForKeyPath:\", \"first "
        "name\") "
        "< \"c\" AND modulus:by:(h, 2) == NIL AND i == 2.5 AND j == 255";
    EXPECT_EQ(predicate->predicateFormat()->UTF8String(), written);
    EXPECT_EQ(NSPredicate::predicateWithFormat(*NSString::fromUTF8(written)), predicate);

    EXPECT_EQ(NSPredicate::predicateWithFormat_argumentArray(u"%K == %d AND %@ == %@",
                                                             NSArray::of(u"a", 2.9, NSNull::null(), true).get()),
              NSPredicate::predicateWithFormat(u"a == 2 AND nil == TRUE"));
    EXPECT_EQ(*NSPredicate::predicateWithFormat(u"%@ AND %@ > 1", NSPredicate::predicateWithValue(true),
                                                NSExpression::expressionWithFormat(u"a + 1"))
                   ->description(),
              u"TRUEPREDICATE AND a + 1 > 1");
    EXPECT_RAISES(NSPredicate::predicateWithFormat(u"a == %@ OR b == %@", 1), NSInvalidArgumentException,
                  "there is no argument for the conversion at 16");
    EXPECT_RAISES(NSPredicate::predicateWithFormat(u"a == %d", u"5"), NSInvalidArgumentException,
                  "there is no number to be had from the argument at 5");
}

TEST(NSPredicateFormat, ErrorsNameThePlace) {
    const std::pair<std::u16string_view, const char*> rows[] = {
        {u"", "Unable to parse the format string \"\": an expression is expected at 0"},
        {u"a ==", "an expression is expected at 4"},
        {u"a", "a condition is expected at 0"},
        {u"a == 1 AND b", "a condition is expected at 11"},
        {u"a == b == c", "an expression is expected at 0"},
        {u"a == (b == c)", "an expression is expected at 6"},
        {u"a 1", "an operator is expected at 2"},
        {u"a == 12abc", "an operator is expected at 7"},
        {u"(a == 1", "a closing parenthesis or bracket is expected at 7"},
        {u"a == 1)", "an operator or the end is expected at 6"},
        {u"a == {1, 2)", "another closing sign is expected at 10"},
        {u"a == {1,}", "an expression is expected at 8"},
        {u"a == ()", "an expression is expected at 6"},
        {u"a == {1, b == 2}", "a list of expressions is expected at 5"},
        {u"a == 'x", "a text with its closing quotation mark is expected at 5"},
        {u"a == 'x\\", "a character behind the backslash is expected at 8"},
        {u"a == '\\xG1'", "a hexadecimal digit is expected at 8"},
        {u"a == 0x", "a digit is expected at 7"},
        {u"a == 0x1FFFFFFFFFFFFFFFF", "a number of at most 64 bits is expected at 7"},
        {u"a ==[x] 1", "one of the letters c, d, n, l is expected at 5"},
        {u"a == $", "the name of a variable is expected at 5"},
        {u"a. == 1", "a key is expected at 3"},
        {u"a == %y", "a conversion is expected at 6"},
        {u"a == nothing(1)", "a function that is known is expected at 5"},
        {u"a == sqrt(1, 2)", "another number of arguments is expected at 5"},
        {u"a == TERNARY(1, 2, 3)", "a condition with two expressions is expected at 5"},
        {u"a == SUBQUERY(b, x, c == 1)", "a collection, a variable and a condition is expected at 5"},
        {u"a == FUNCTION(b)", "a receiver and the name of an operation is expected at 5"},
        {u"a b:c: 1", "an operator is expected at 2"},
        {u"a == add:to: 1", "an opening parenthesis is expected at 12"},
        {u"ANY (a == 1 OR b == 1)", "a comparison is expected at 5"},
        {u"a == [1]", "one of the letters c, d, n, l is expected at 6"},
        {u"a == 1 & b == 1", "an operator is expected at 7"},
        {u"a == \U0001F600 \U0001F600", "an operator is expected at 8"},
    };
    for (const auto& [format, expected] : rows)
        EXPECT_RAISES(NSPredicate::predicateWithFormat(format), NSInvalidArgumentException, expected);
    EXPECT_RAISES(NSExpression::expressionWithFormat(u"a == 1"), NSInvalidArgumentException, "an expression");
}

TEST(NSPredicateFormat, EqualityFollowsTheMeaningOfJunctions) {
    const auto a = NSPredicate::predicateWithFormat(u"a == 1"), b = NSPredicate::predicateWithFormat(u"b == 1");
    const auto both = NSCompoundPredicate::andPredicateWithSubpredicates(NSArray::of(a, b));
    const auto only = NSCompoundPredicate::orPredicateWithSubpredicates(NSArray::of(a));
    const auto none = NSCompoundPredicate::orPredicateWithSubpredicates(NSArray::array());
    EXPECT_EQ(both, NSPredicate::predicateWithFormat(u"a == 1 AND b == 1"));
    EXPECT_NE(both, NSPredicate::predicateWithFormat(u"b == 1 AND a == 1"));
    EXPECT_NE(both, NSCompoundPredicate::orPredicateWithSubpredicates(NSArray::of(a, b)));
    EXPECT_EQ(only, a);
    EXPECT_EQ(only->hash(), a->hash());
    EXPECT_EQ(none, NSPredicate::predicateWithValue(false));
    EXPECT_EQ(*NSCompoundPredicate::andPredicateWithSubpredicates(NSArray::of(both, none))->description(),
              u"(a == 1 AND b == 1) AND FALSEPREDICATE");
    EXPECT_EQ(*NSCompoundPredicate::notPredicateWithSubpredicate(both)->description(), u"NOT (a == 1 AND b == 1)");
    EXPECT_NE(a, NSPredicate::predicateWithFormat(u"a ==[c] 1"));
    EXPECT_NE(a, NSPredicate::predicateWithFormat(u"ANY a == 1"));
    EXPECT_EQ(a, a->copy());
    EXPECT_RAISES(NSCompoundPredicate::initWithType_subpredicates(NSNotPredicateType, NSArray::of(a, b)),
                  NSInvalidArgumentException, "2 predicates");
}
