#include <gtest/gtest.h>

#include <ToviFoundationKit/ToviFoundationKit.h>

#include <support/Expect.h>

using namespace tovi;

namespace {

Ref<NSInvocation> invocation(NSObject& target, Selector selector) {
    const auto result = NSInvocation::invocationWithMethodSignature(*target.methodSignatureForSelector(selector));
    result->setTarget(&target);
    result->setSelector(selector);
    return result;
}

}  // namespace

TEST(NSMethodSignature, TellsTheTypesOfAnOperation) {
    const auto list = NSMutableArray::of(1, 2);
    const auto signature = list->methodSignatureForSelector("insertObject:atIndex:"_sel);
    ASSERT_TRUE(signature);
    EXPECT_EQ(signature->numberOfArguments(), 4U);
    EXPECT_STREQ(signature->methodReturnType(), "v");
    const char* const types[] = {"@", ":", "@", "Q"};
    for (NSUInteger i = 0; i < 4; ++i)
        EXPECT_STREQ(signature->getArgumentTypeAtIndex(i), types[i]);
    EXPECT_RAISES(signature->getArgumentTypeAtIndex(4), NSInvalidArgumentException, "index 4 beyond bounds [0 .. 3]");
    EXPECT_FALSE(list->methodSignatureForSelector("juggle:"_sel));

    const auto compare = box(1)->methodSignatureForSelector("compare:"_sel);
    EXPECT_EQ(compare, u"a"_ns->methodSignatureForSelector("compare:"_sel));
    EXPECT_EQ(compare->hash(), u"a"_ns->methodSignatureForSelector("compare:"_sel)->hash());
    EXPECT_NE(compare, signature);
}

TEST(NSInvocation, SendsItsMessageAsOftenAsAsked) {
    const auto list = NSMutableArray::of(u"b");
    const auto insert = invocation(list, "insertObject:atIndex:"_sel);
    {
        const auto held = NSMutableString::stringWithString(*u"a"_ns);
        insert->setArgument_atIndex(held, 2);
        EXPECT_EQ(held->retainCount(), 2U);
    }
    insert->setArgument_atIndex(0, 3);
    insert->invoke();
    insert->setArgument_atIndex(box(2), 3);  // a number as an object
    insert->invoke();
    EXPECT_EQ(list->componentsJoinedByString(*u","_ns)->UTF8String(), "a,b,a");
    EXPECT_FALSE(insert->returnValue<id>());
}

TEST(NSInvocation, KeepsTheResultUntilTheNextOne) {
    const auto compare = invocation(*box(1), "compare:"_sel);
    compare->setArgument_atIndex(*box(2), 2);
    compare->invoke();
    EXPECT_EQ(compare->returnValue<NSInteger>(), -1);
    EXPECT_EQ(*compare->returnValue<id>(), *box(-1));
    compare->invokeWithTarget(box(3).get());
    EXPECT_EQ(compare->returnValue<NSComparisonResult>(), NSOrderedDescending);
    compare->setTarget(nullptr);
    compare->invoke();
    EXPECT_EQ(compare->returnValue<NSInteger>(), 0);
    EXPECT_FALSE(compare->returnValue<id>());
}

TEST(NSInvocation, PositionsZeroAndOneAreTheReceiverAndTheSelector) {
    const auto any = invocation(*u"x"_ns, "length"_sel);
    EXPECT_EQ(any->valueAtIndex(0).object().get(), u"x"_ns.get());
    EXPECT_EQ(any->valueAtIndex(1).raw<Selector>(), "length"_sel);
    any->setArgument_atIndex(u"abc"_ns, 0);
    any->setArgument_atIndex(u"uppercaseString"_ns, 1);
    any->invoke();
    EXPECT_EQ(*any->returnValue<id>(), *u"ABC"_ns);
    EXPECT_RAISES(any->setArgument_atIndex(1, 2), NSInvalidArgumentException, "index 2 beyond bounds [0 .. 1]");
}

TEST(NSInvocation, ArgumentsThatDoNotFitRaise) {
    const auto compare = invocation(*box(1), "compare:"_sel);
    EXPECT_RAISES(compare->invoke(), NSInvalidArgumentException, "-[NSNumber compare:]: argument cannot be nil");
    compare->setSelector("juggle:"_sel);
    EXPECT_RAISES(compare->invoke(), NSInvalidArgumentException, "-[NSNumber juggle:]: unrecognized selector");
    compare->setSelector("stringValue"_sel);
    EXPECT_RAISES(compare->invoke(), NSInvalidArgumentException, "stringValue of NSNumber takes 0 arguments, not 1");
    const auto index = invocation(NSArray::array(), "objectAtIndex:"_sel);
    EXPECT_RAISES(index->setArgument_atIndex(u"one"_ns, 2), NSInvalidArgumentException,
                  "one cannot be converted to type Q");
}
