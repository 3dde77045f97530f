#include <gtest/gtest.h>

#include <ToviFoundationKit/ToviFoundationKit.h>

#include <support/Expect.h>

#include <limits>

using namespace tovi;

namespace {

using Callback = NSInteger (*)(NSInteger);
NSInteger doubled(NSInteger value) { return 2 * value; }

/// Answers what it is given, in every type that a message carries.
class Echo final : public NSObject {
    TOVI_CLASS(Echo, NSObject)

public:
    static Ref<Echo> make() { return adopt(*new Echo); }

    bool truth(bool v) { return v; }
    std::int8_t tiny(std::int8_t v) { return v; }
    std::uint32_t word(std::uint32_t v) { return v; }
    NSInteger integer(NSInteger v) { return v; }
    NSUInteger natural(NSUInteger v) { return v; }
    float single(float v) { return v; }
    double real(double v) { return v; }
    NSComparisonResult order(NSComparisonResult v) { return v; }
    Selector selector(Selector v) { return v; }
    NSRange range(NSRange v) { return v; }
    NSPoint point(NSPoint v) { return v; }
    NSRect rect(NSRect v) { return v; }
    NSInteger call(Callback f, NSInteger v) { return f(v); }
    void* pointer(void* v) { return v; }
    id object(NSObject* v) { return v; }
    Ref<NSNumber> number(const NSNumber& v) { return share(v); }
    RefPtr<NSString> text(NSString* v) { return v; }
    void nothing() {}
    NSInteger digits(NSInteger a, NSInteger b, NSInteger c) { return a * 100 + b * 10 + c; }
};

const Additions<Echo> additions{
    instance<&Echo::truth>("truth:"),       instance<&Echo::tiny>("tiny:"),
    instance<&Echo::word>("word:"),         instance<&Echo::integer>("integer:"),
    instance<&Echo::natural>("natural:"),   instance<&Echo::single>("single:"),
    instance<&Echo::real>("real:"),         instance<&Echo::order>("order:"),
    instance<&Echo::selector>("selector:"), instance<&Echo::range>("range:"),
    instance<&Echo::point>("point:"),       instance<&Echo::rect>("rect:"),
    instance<&Echo::call>("call:with:"),    instance<&Echo::pointer>("pointer:"),
    instance<&Echo::object>("object:"),     instance<&Echo::number>("setNumber:"),
    instance<&Echo::text>("text:"),         instance<&Echo::nothing>("nothing"),
    instance<&Echo::digits>("digits:b:c:"),
};

const Ref<Echo> echo = Echo::make();

/// What performSelector makes of an object for a parameter of another type, and of the result.
std::string performed(Selector selector, NSObject* argument) {
    const id result = echo->performSelector_withObject(selector, argument);
    return result ? result->description()->UTF8String() : "nil";
}

}  // namespace

TEST(Message, TypedSendsKeepTheirValues) {
    EXPECT_EQ(send<bool>(echo, "truth:"_sel, true), true);
    EXPECT_EQ(send<int>(echo, "tiny:"_sel, -7), -7);
    EXPECT_EQ(send<NSUInteger>(echo, "natural:"_sel, std::numeric_limits<NSUInteger>::max()), 18446744073709551615U);
    EXPECT_EQ(send<double>(echo, "real:"_sel, 2.5), 2.5);
    EXPECT_EQ(send<NSComparisonResult>(echo, "order:"_sel, NSOrderedDescending), NSOrderedDescending);
    EXPECT_EQ(send<Selector>(echo, "selector:"_sel, "a:"_sel), "a:"_sel);
    EXPECT_EQ(send<NSRange>(echo, "range:"_sel, NSRange{3, 4}), (NSRange{3, 4}));
    EXPECT_EQ(send<NSRect>(echo, "rect:"_sel, NSRect{{1, 2}, {3, 4}}), (NSRect{{1, 2}, {3, 4}}));
    EXPECT_EQ(send<NSInteger>(echo, "call:with:"_sel, doubled, 21), 42);
    int target = 0;
    EXPECT_EQ(send<void*>(echo, "pointer:"_sel, static_cast<void*>(&target)), &target);
    EXPECT_FALSE(send(echo, "object:"_sel, nullptr));
    EXPECT_FALSE(send(echo, "nothing"_sel));
    const Ref<NSString> text = u"text"_ns;
    for (const id& same : {send(echo, "text:"_sel, text), send(echo, "object:"_sel, *text),
                           send(echo, "text:"_sel, RefPtr<NSString>(text))})
        EXPECT_EQ(same.get(), text.get());
}

TEST(Message, ConvertsBetweenNumbersObjectsAndStructures) {
    EXPECT_EQ(send<double>(echo, "integer:"_sel, 7.9), 7.0);
    EXPECT_EQ(send<double>(echo, "natural:"_sel, 18446744073709551615.0), 18446744073709551616.0);
    EXPECT_EQ(send<bool>(echo, "real:"_sel, 0.5), true);
    EXPECT_EQ(send<NSInteger>(echo, "tiny:"_sel, 1e9), 127);
    EXPECT_EQ(send<NSInteger>(echo, "setNumber:"_sel, 12), 12);
    const struct {
        Selector selector;
        Ref<NSObject> argument;
        std::string result;
    } rows[] = {
        {"truth:"_sel, box(2), "1"},
        {"tiny:"_sel, box(300), "44"},
        {"word:"_sel, box(-1), "4294967295"},
        {"natural:"_sel, box(-1), "18446744073709551615"},
        {"integer:"_sel, box(-2.9), "-2"},
        {"single:"_sel, box(0.1), "0.1"},
        {"real:"_sel, box(true), "1"},
        {"range:"_sel, box(NSRange{1, 2}), "NSRange: {1, 2}"},
        {"point:"_sel, box(NSPoint{1, 2.5}), "NSPoint: {1, 2.5}"},
        {"selector:"_sel, box(u"compare:"), "compare:"},
        {"object:"_sel, box(5), "5"},
    };
    for (const auto& row : rows)
        EXPECT_EQ(performed(row.selector, row.argument.get()), row.result) << row.selector;
    EXPECT_EQ(performed("object:"_sel, nullptr), "nil");
}

TEST(Message, BoxedResultsKeepTheirTypes) {
    const auto typeOf = [](const id& result) { return std::string(to<NSValue>(result)->objCType()); };
    EXPECT_EQ(typeOf(send(echo, "truth:"_sel, true)), "c");
    EXPECT_EQ(typeOf(send(echo, "word:"_sel, 1)), "I");
    EXPECT_EQ(typeOf(send(echo, "single:"_sel, 1)), "f");
    EXPECT_EQ(typeOf(send(echo, "order:"_sel, 1)), "q");
    EXPECT_EQ(typeOf(send(echo, "range:"_sel, NSRange{})), "{_NSRange=QQ}");
}

TEST(Message, IgnoresSurplusArgumentsAndRaisesForMissingOnes) {
    EXPECT_EQ(send<NSInteger>(echo, "integer:"_sel, 5, 6, 7), 5);
    EXPECT_FALSE(echo->performSelector_withObject("nothing"_sel, box(u"surplus").get()));
    EXPECT_EQ(*echo->performSelector_withObject_withObject_withObject("digits:b:c:"_sel, box(1).get(), box(2).get(),
                                                                      box(3).get()),
              *box(123));
    EXPECT_RAISES(send(echo, "digits:b:c:"_sel, 1, 2), NSInvalidArgumentException,
                  "*** -[Echo digits:b:c:]: 3 arguments needed, 2 given");
    EXPECT_RAISES(echo->performSelector("object:"_sel), NSInvalidArgumentException, "1 argument needed, 0 given");
}

TEST(Message, WrongArgumentsRaiseWithTheirNames) {
    const auto raises = [](Selector selector, NSObject* argument, const char* text) {
        EXPECT_RAISES(echo->performSelector_withObject(selector, argument), NSInvalidArgumentException, text);
    };
    raises("unknown:"_sel, nullptr, "-[Echo unknown:]: unrecognized selector sent to instance 0x");
    raises("setNumber:"_sel, nullptr, "*** -[Echo setNumber:]: number cannot be nil");
    raises("setNumber:"_sel, box(u"one").get(),
           "*** -[Echo setNumber:]: number must be of class NSNumber, not NSString");
    raises("integer:"_sel, nullptr, "*** -[Echo integer:]: argument cannot be nil");
    raises("integer:"_sel, box(u"one").get(), "*** -[Echo integer:]: argument must be of type q, not NSString");
    raises("range:"_sel, box(NSPoint{}).get(), "argument must be of type {_NSRange=QQ}, not NSValue");
    raises("pointer:"_sel, box(u"one").get(), "argument must be of type ^v, not NSString");
    EXPECT_RAISES(send(echo, "pointer:"_sel, static_cast<void*>(nullptr)), NSInvalidArgumentException,
                  "type ^v cannot be an object");
    EXPECT_RAISES(send<NSInteger>(echo, "object:"_sel, echo), NSInvalidArgumentException,
                  "cannot be converted to type q");
    EXPECT_RAISES(send(Echo::classObject(), "object:"_sel, echo), NSInvalidArgumentException,
                  "+[Echo object:]: unrecognized selector sent to class 0x");
    EXPECT_RAISES(send(echo, Selector()), NSInvalidArgumentException, "unrecognized selector");
}

TEST(MessageSite, FollowsTheReceiversClass) {
    MessageSite length("length"_sel);
    EXPECT_EQ(length.send<NSUInteger>(*u"four"_ns), 4U);
    EXPECT_EQ(length.send<NSUInteger>(*NSData::data()), 0U);
    EXPECT_EQ(length.send<NSUInteger>(*NSMutableString::string()), 0U);
    EXPECT_RAISES(length.send(*box(1)), NSInvalidArgumentException, "-[NSNumber length]: unrecognized selector");
    EXPECT_EQ(length.send<NSUInteger>(*u"four"_ns), 4U);
}
