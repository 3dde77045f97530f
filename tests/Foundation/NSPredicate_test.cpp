#include <atomic>

#include <gtest/gtest.h>

#include <ToviFoundationKit/ToviFoundationKit.h>

#include <support/ArchivedPerson.h>
#include <support/Expect.h>
#include <support/Letter.h>
#include <support/SmallStack.h>
#include <support/Threads.h>

using namespace tovi;

namespace {

Ref<NSPredicate> parsed(std::u16string_view format) { return NSPredicate::predicateWithFormat(format); }

/// From "Jörg Straße", of size 12, with two answers: from "ann" of size 5 and "Bob" of size 7.
Ref<Letter> letter() {
    return Letter::make(u"Jörg Straße", 12, 1000,
                        NSArray::of(Letter::make(u"ann", 5, 2000), Letter::make(u"Bob", 7, 3000)));
}

struct Row {
    std::u16string_view format;
    bool answer;
};

// What a predicate says of itself must be a predicate with the same answer.
void expectAnswers(std::initializer_list<Row> rows, NSObject& object) {
    for (const Row& row : rows) {
        SCOPED_TRACE(NSString::stringWithCharacters(row.format)->UTF8String());
        try {
            const auto predicate = parsed(row.format);
            EXPECT_EQ(predicate->evaluateWithObject(object), row.answer);
            const auto again = parsed(*predicate->predicateFormat());
            EXPECT_EQ(again, predicate) << predicate;
            EXPECT_EQ(again->hash(), predicate->hash());
            EXPECT_EQ(again->evaluateWithObject(object), row.answer);
        } catch (const NSException& raised) {
            ADD_FAILURE() << raised.what();
        }
    }
}

}  // namespace

TEST(NSPredicate, ComparesNumbersTextsAndDates) {
    expectAnswers(
        {
            {u"#size == 12", true},
            {u"#size != 12", false},
            {u"#size < 12", false},
            {u"#size <= 12 AND #size =< 12", true},
            {u"#size >= 13 OR #size => 13", false},
            {u"#size == '12'", false},
            {u"isRead == YES", true},
            {u"read == TRUE AND read == 1", true},
            {u"sender == \"J\\u00F6rg Stra\\xDFe\"", true},
            {u"sender > 'A' AND sender < 'K'", true},
            {u"date == CAST(1000, \"NSDate\")", true},
            {u"date < CAST(999.5, 'NSDate')", false},
            {u"date BETWEEN {CAST(1000, 'NSDate'), CAST(2000, 'NSDate')}", true},
            {u"#size BETWEEN {1, 11}", false},
            {u"#size BETWEEN {12, 12}", true},
            {u"9223372036854775807 < 18446744073709551615", true},
            {u"-9223372036854775808 < -9223372036854775807", true},
            {u"0xFF == 255 AND 0b101 == 5 AND 0o17 == 15 AND 1e3 == 1000 AND .5 == 0.5", true},
        },
        letter());
}

TEST(NSPredicate, NilIsEqualToNilAloneAndHasNoOrder) {
    expectAnswers(
        {
            {u"note == nil", true},
            {u"note == NULL", true},
            {u"note != nil", false},
            {u"sender == nil", false},
            {u"note != 0", true},
            {u"note < 1 OR note > 1 OR note <= nil", false},
            {u"note CONTAINS 'x'", false},
            {u"note LIKE '*'", false},
            {u"note BETWEEN {0, 1}", false},
            {u"note IN {1, nil}", true},
            {u"note IN {1, 2}", false},
            {u"note.anything.at.all == nil", true},
            {u"note + 1 == nil", true},
            {u"ANY note == 1", false},
            {u"ALL note == 1", true},
            {u"SUBQUERY(note, $x, $x == 1).@count == 0", true},
        },
        letter());
    const auto null = NSDictionary::of({{u"key", NSNull::null()}});
    EXPECT_TRUE(parsed(u"key == nil")->evaluateWithObject(*null));
    EXPECT_TRUE(parsed(u"self == nil")->evaluateWithObject(nullptr));
}

TEST(NSPredicate, ComparesTextsAsTheOptionsSay) {
    expectAnswers(
        {
            {u"sender CONTAINS 'rg S'", true},
            {u"sender CONTAINS 'jö'", false},
            {u"sender CONTAINS[c] 'STRASSE'", true},
            {u"sender CONTAINS[d] 'Jorg'", true},
            {u"sender CONTAINS[cd] 'jorg strasse'", true},
            {u"sender contains[DC] 'o\\u0301RG'", true},
            {u"sender CONTAINS 'o\\u0308'", true},
            {u"sender CONTAINS[n] 'o\\u0308'", false},
            {u"sender ==[cd] 'jorg STRASSE'", true},
            {u"sender ==[c] 'jorg strasse'", false},
            {u"sender <[c] 'k'", true},
            {u"sender BEGINSWITH 'Jör'", true},
            {u"sender ENDSWITH[cd] 'SSE'", true},
            {u"sender BEGINSWITH 'örg' OR sender ENDSWITH 'Stra'", false},
            {u"sender BEGINSWITH '' AND sender ENDSWITH ''", true},
            {u"sender CONTAINS ''", false},
            {u"'rg' IN sender", true},
            {u"'RG' IN[c] sender", true},
            {u"'jorg straße' IN[cd] {'Ann', sender}", true},
            {u"sender IN {'Ann', 'Jörg Straße'}", true},
            {u"tags CONTAINS 'urgent' AND tags CONTAINS 11", true},
            {u"tags CONTAINS[c] 'URGENT'", true},
            {u"tags CONTAINS 'nobody'", false},
            {u"'\u0301e' CONTAINS[d] 'e' AND 'e\u0301a' CONTAINS[d] 'EA'", false},
            {u"'e\u0301a' CONTAINS[cd] 'EA' AND '\u0301' ==[d] ''", true},
        },
        letter());
    // A long text is searched in another way.
    std::u16string text(5000, u'.');
    text += u"re\u0301sume\u0301";
    const auto body = NSString::stringWithCharacters(text);
    EXPECT_TRUE(parsed(u"SELF CONTAINS[cd] 'RESUME'")->evaluateWithObject(*body));
    EXPECT_FALSE(parsed(u"SELF CONTAINS[c] 'RESUME'")->evaluateWithObject(*body));
}

TEST(NSPredicate, LikeMatchesWholeCharacters) {
    const std::u16string many(300, u'a');
    expectAnswers(
        {
            {u"sender LIKE 'J'", false},
            {u"sender LIKE '*'", true},
            {u"sender LIKE 'J?rg Stra?e'", true},
            {u"sender LIKE 'J?rg Stra??e'", false},
            {u"sender LIKE[c] '*STRASSE'", true},
            {u"sender LIKE[cd] '*o*?tr*ss*'", true},
            {u"'' LIKE '*' AND '' LIKE ''", true},
            {u"'' LIKE '?'", false},
            {u"'a\u0308b' LIKE '?b'", true},
            {u"'\U0001F600!' LIKE '?!'", true},
            {u"'a*b' LIKE 'a\\\\*b'", true},
            {u"'axb' LIKE 'a\\\\*b'", false},
            {u"'abcabd' LIKE '*ab?'", true},
            {u"'aXbXc' LIKE 'a*b*c' AND 'mississippi' LIKE 'm*iss?p*i'", true},
            {u"'mississippi' LIKE 'm*issi?s'", false},
        },
        letter());
    // Patterns of several machine words, of few code points and of many.
    std::u16string alphabet;
    for (char16_t c = 0x4E00; c < 0x4E00 + 300; ++c)
        alphabet += c;
    const auto like = [](std::u16string_view text, std::u16string_view pattern) {
        return NSPredicate::predicateWithFormat(u"%@ LIKE %@", text, pattern)->evaluateWithObject(nullptr);
    };
    EXPECT_TRUE(like(many + u"b" + many, u"*" + many + u"?" + many));
    EXPECT_FALSE(like(many + u"b" + many, u"*" + many + u"a?" + many));
    EXPECT_TRUE(like(alphabet + many, u"*" + alphabet.substr(1) + u"*a"));
    EXPECT_FALSE(like(alphabet + many, alphabet.substr(0, 290) + u"a*"));
}

TEST(NSPredicate, MatchesARegularExpressionWholly) {
    expectAnswers(
        {
            {u"sender MATCHES '[A-Z].*'", true},
            {u"sender MATCHES 'J.rg'", false},
            {u"sender MATCHES[c] 'jörg\\\\s\\\\w+'", true},
            {u"sender MATCHES[d] 'Jorg .*'", true},
            {u"'' MATCHES 'a*'", true},
        },
        letter());
    EXPECT_RAISES(parsed(u"'a' MATCHES '('")->evaluateWithObject(nullptr), u"NSInvalidArgumentException",
                  "U_REGEX_MISMATCHED_PAREN");
    const std::u16string text(40, u'a');
    EXPECT_RAISES(NSPredicate::predicateWithFormat(u"%@ MATCHES '(a+)+b'", text)->evaluateWithObject(nullptr),
                  u"NSInvalidArgumentException", "U_REGEX_TIME_OUT");
}

TEST(NSPredicate, JoinsConditionsByTheirPrecedence) {
    expectAnswers(
        {
            {u"TRUEPREDICATE", true},
            {u"FALSEPREDICATE OR NOT FALSEPREDICATE", true},
            {u"NOT 1 == 1 AND 1 == 2", false},
            {u"1 == 1 OR 1 == 1 AND 1 == 2", true},
            {u"(1 == 1 OR 1 == 1) AND 1 == 2", false},
            {u"1 == 1 || !(2 == 2) && 3 == 4", true},
            {u"! ! ! 1 == 2", true},
            {u"not not sender == nil or (#size > 1 and (#size > 2))", true},
            // What decides is enough.
            {u"1 == 2 AND unknown == 1", false},
            {u"1 == 1 OR unknown == 1", true},
        },
        letter());
}

TEST(NSPredicate, ComparesEachElementOfACollection) {
    expectAnswers(
        {
            {u"ANY answers.#size > 6", true},
            {u"ALL answers.size >= 5", true},
            {u"ALL answers.size > 5", false},
            {u"NONE answers.size > 7 AND NOT SOME answers.size > 7", true},
            {u"NONE answers.size == 7", false},
            {u"ANY answers.sender BEGINSWITH[c] 'B'", true},
            {u"ANY {1, 2, 3} IN {3, 4}", true},
            {u"ALL {} == 1 AND NONE {} == 1 AND NOT ANY {} == 1", true},
            {u"NOT ANY answers.size == 5 OR answers.@count == 2", true},
        },
        letter());
    EXPECT_RAISES(parsed(u"ANY 5 == 5")->evaluateWithObject(nullptr), u"NSInvalidArgumentException", "list or a set");
}

TEST(NSPredicate, WhatCannotBeComparedRaises) {
    const struct {
        std::u16string_view format;
        std::u16string_view name;
        const char* text;
    } rows[] = {
        {u"1 < 'a'", NSInvalidArgumentException, "NSNumber"},
        {u"{1} < {2}", NSInvalidArgumentException, "unrecognized selector"},
        {u"1 CONTAINS 2", NSInvalidArgumentException, "value is not a collection"},
        {u"1 LIKE '1'", NSInvalidArgumentException, "isn't a string"},
        {u"1 BETWEEN {1}", NSInvalidArgumentException, "two bounds"},
        {u"$nobody == 1", NSInvalidArgumentException, "$nobody"},
        {u"nobody == 1", NSUndefinedKeyException, "nobody"},
        {u"sender + 1 == 2", NSInvalidArgumentException, "is no number"},
        {u"answers[2] == 1", NSInvalidArgumentException, "index 2 is beyond a list of 2"},
        {u"FUNCTION(SELF, 'noSuchOperationAnywhere') == 1", NSInvalidArgumentException, "noSuchOperationAnywhere"},
    };
    const auto object = letter();
    for (const auto& row : rows)
        EXPECT_RAISES(parsed(row.format)->evaluateWithObject(*object), row.name, row.text);
}

TEST(NSPredicate, BindsVariablesOrReplacesThem) {
    const auto predicate =
        parsed(u"#size > $least AND SUBQUERY(answers, $least, $least.size > 6).@count == $least - 9");
    const auto object = letter();
    const auto bound = [](int least) { return NSDictionary::of({{u"least", least}}); };
    EXPECT_TRUE(predicate->evaluateWithObject_substitutionVariables(object.get(), bound(10).get()));
    EXPECT_FALSE(predicate->evaluateWithObject_substitutionVariables(object.get(), bound(11).get()));
    const auto replaced = predicate->predicateWithSubstitutionVariables(bound(10));
    EXPECT_TRUE(replaced->evaluateWithObject(*object));
    EXPECT_EQ(*replaced->predicateFormat(),
              u"#size > 10 AND SUBQUERY(answers, $least, $least.size > 6).@count == 10 - 9");
    EXPECT_EQ(predicate->predicateWithSubstitutionVariables(NSDictionary::dictionary()).get(), predicate.get());
    const auto expression = NSDictionary::of({{u"least", NSExpression::expressionWithFormat(u"a * 2")}});
    EXPECT_EQ(*parsed(u"{1, $least} CONTAINS 2")->predicateWithSubstitutionVariables(expression)->description(),
              u"{1, a * 2} CONTAINS 2");
}

TEST(NSPredicate, SendsAComparisonOfTheHosts) {
    const auto object = letter();
    EXPECT_TRUE(parsed(u"SELF isLargerThan: 11")->evaluateWithObject(*object));
    const auto predicate = NSComparisonPredicate::initWithLeftExpression_rightExpression_customSelector(
        NSExpression::expressionForEvaluatedObject(), NSExpression::expressionForConstantValue(box(12).get()),
        "isLargerThan:"_sel);
    EXPECT_FALSE(predicate->evaluateWithObject(*object));
    EXPECT_EQ(parsed(*predicate->description()), predicate);
}

TEST(NSPredicate, AsksABlock) {
    const auto predicate = NSPredicate::predicateWithBlock([](NSObject* object, const NSDictionary* variables) {
        return object && variables && variables->find(*u"x"_ns)->isEqual(object);
    });
    const auto joined = NSPredicate::predicateWithFormat(u"NOT %@ OR FALSEPREDICATE", predicate);
    EXPECT_TRUE(joined->evaluateWithObject(*box(1)));
    EXPECT_FALSE(joined->evaluateWithObject_substitutionVariables(box(1).get(), NSDictionary::of({{u"x", 1}}).get()));
    EXPECT_NE(joined,
              NSPredicate::predicateWithFormat(u"NOT %@ OR FALSEPREDICATE",
                                               NSPredicate::predicateWithBlock([](auto, auto) { return true; })));
}

TEST(NSPredicate, FiltersCollections) {
    const auto predicate = parsed(u"SELF > 2 AND SELF != 4");
    const auto list = NSMutableArray::of(5, 1, 4, 3, 2);
    EXPECT_EQ(list->filteredArrayUsingPredicate(predicate), NSArray::of(5, 3));
    list->filterUsingPredicate(predicate);
    EXPECT_EQ(list, NSArray::of(5, 3));
    const auto set = NSMutableSet::of(5, 1, 4, 3, 2);
    EXPECT_EQ(set->filteredSetUsingPredicate(predicate), NSSet::of(3, 5));
    set->filterUsingPredicate(predicate);
    EXPECT_EQ(set, NSSet::of(3, 5));
    const auto changing = NSPredicate::predicateWithBlock([&](NSObject*, auto) {
        list->removeAllObjects();
        return true;
    });
    EXPECT_RAISES(list->filteredArrayUsingPredicate(changing), NSGenericException, "mutated");
}

// One that is being asked can be asked again, by itself and by other threads; what went wrong leaves nothing behind.
TEST(NSPredicate, CanBeAskedWithinItselfAndByManyThreads) {
    const NSPredicate* self = nullptr;
    const auto recursive = NSPredicate::predicateWithFormat(
        u"SELF <= 0 OR (SELF BETWEEN {0, 9} AND %@)", NSPredicate::predicateWithBlock([&](NSObject* object, auto) {
            const auto less = box(static_cast<NSNumber&>(*object).integerValue() - 1);
            return self->evaluateWithObject(*less);
        }));
    self = recursive.get();
    EXPECT_TRUE(recursive->evaluateWithObject(*box(9)));
    EXPECT_FALSE(recursive->evaluateWithObject(*box(10)));

    const auto shared = parsed(u"SUBQUERY(answers, $x, $x.sender CONTAINS[cd] 'ANN' AND $x.size + 1 == 6).@count == 1");
    EXPECT_RAISES(shared->evaluateWithObject(*Letter::make(u"", 0, 0, NSArray::of(1))), NSUndefinedKeyException,
                  "sender");
    std::atomic<int> right = 0;
    onThreads(4, [&](int) {
        const auto object = letter();
        for (int i = 0; i < 500; ++i)
            right += shared->evaluateWithObject(*object);
    });
    EXPECT_EQ(right, 2000);
}

TEST(NSPredicate, TravelsInArchives) {
    const auto predicate = NSPredicate::predicateWithFormat(
        u"NOT (ANY answers.size > %d OR sender LIKE[cd] 'a*') AND date < %@ AND TERNARY($a == 1, {1, b}, nil) == 3 AND "
        u"SUBQUERY(x, $y, TRUEPREDICATE)[0] == FUNCTION(SELF, 'quoted:', 'x') AND sum(a, b) - c.@max.d == 1",
        5, NSDate::dateWithTimeIntervalSinceReferenceDate(1.25));
    const auto nil = NSCompoundPredicate::andPredicateWithSubpredicates(NSArray::array());
    for (const ArchiveForm& form : archiveForms)
        for (const NSPredicate* each : {predicate.get(), static_cast<NSPredicate*>(nil.get())})
            EXPECT_EQ(*form.unarchive(form.archive(*each), nullptr), *each);
    EXPECT_RAISES(
        NSArchiver::archivedDataWithRootObject(NSPredicate::predicateWithBlock([](auto, auto) { return true; })),
        NSInvalidArgumentException, "NSBlockPredicate");
}

TEST(NSPredicate, AnyDepthIsParsedAskedDescribedComparedAndDestroyedOnASmallStack) {
    constexpr int depth = 100'000;
    const auto repeated = [](std::u16string_view part) {
        std::u16string text;
        for (int i = 0; i < depth; ++i)
            text += part;
        return text;
    };
    // "(#)" around a core.
    const auto nested = [&](std::u16string_view nesting, std::u16string_view core) {
        const std::size_t place = nesting.find(u'#');
        return repeated(nesting.substr(0, place)).append(core) + repeated(nesting.substr(place + 1));
    };
    onSmallStack([&] {
        for (const auto nesting : {u"(#)", u"NOT #", u"(1 == 2 OR #)", u"1 == 1 AND NOT (# OR 3 < 2)"}) {
            const auto predicate = parsed(nested(nesting, u"1 == 1"));
            EXPECT_TRUE(predicate->evaluateWithObject(nullptr));
            const auto again = parsed(*predicate->description());
            EXPECT_EQ(again, predicate);
            EXPECT_EQ(again->hash(), predicate->hash());
            EXPECT_EQ(predicate->predicateWithSubstitutionVariables(NSDictionary::of({{u"x", 1}})), predicate);
        }
        for (const auto nesting :
             {u"(1 + #)", u"- #", u"abs(#)", u"{#}", u"{1, #}", u"{a, #}", u"a[#]", u"TERNARY(1 == 1, #, 2)",
              u"SUBQUERY(#, $x, $x != 2)", u"FUNCTION(#, 'description')"}) {
            const auto predicate = parsed(nested(nesting, u"$v") + u" != nil");
            EXPECT_EQ(parsed(*predicate->description()), predicate);
            const auto replaced = predicate->predicateWithSubstitutionVariables(NSDictionary::of({{u"v", u"w"}}));
            EXPECT_GT(replaced->description()->length(), NSUInteger{depth});
        }
        const auto archived = parsed(nested(u"NOT #", u"1 == 1"));
        EXPECT_EQ(*NSUnarchiver::unarchiveObjectWithData(NSArchiver::archivedDataWithRootObject(*archived), nullptr),
                  *archived);
        EXPECT_TRUE(parsed(nested(u"{#}", u"") + u" != nil")->evaluateWithObject(nullptr));
        EXPECT_TRUE(parsed(nested(u"SUBQUERY(#, $x, $x == 3)", u"{3}") + u" == {3}")->evaluateWithObject(nullptr));
        EXPECT_TRUE(parsed(u"1 == 2" + repeated(u" OR 1 == 2") + u" OR 2 == 2")->evaluateWithObject(nullptr));
        Ref<NSPredicate> inner = parsed(u"a == 1");
        for (int i = 0; i < depth; ++i)
            inner = NSCompoundPredicate::andPredicateWithSubpredicates(NSArray::of(inner));
        EXPECT_EQ(inner, parsed(u"a == 1"));
        EXPECT_RAISES(parsed(repeated(u"(") + u"1 == 1"), NSInvalidArgumentException, "closing parenthesis");
    });
}
