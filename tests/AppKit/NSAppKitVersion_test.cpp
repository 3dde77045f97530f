#include <gtest/gtest.h>

#include <ToviFoundationKit/ToviFoundationKit.h>

TEST(NSAppKitVersion, IsNewWhereTheProgramDoesNotSay) {
    EXPECT_GT(NSAppKitVersionNumber, tovi::NSAppKitVersionNumber10_4);
    EXPECT_EQ(&NSAppKitVersionNumber, &tovi::NSAppKitVersionNumber);
}
