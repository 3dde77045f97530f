#include <sys/wait.h>
#include <unistd.h>

#include <gtest/gtest.h>

#include <ToviFoundationKit/ToviFoundationKit.h>

#include <support/Expect.h>

#include <thread>

using namespace tovi;

namespace {
class Account : public NSObject {
    TOVI_CLASS(Account, NSObject)
};
class SavingsAccount : public Account {
    TOVI_CLASS(SavingsAccount, Account)
};
}  // namespace

TEST(NSObjectSingleton, IsNilUnlessAClassBringsItsOwn) {
    EXPECT_EQ(sharedInstance(NSArray::classObject()), nullptr);
    EXPECT_EQ(sharedInstance<Account>(), nullptr);
    static const id shared = Account::classObject().makeInstance();
    Account::classObject().addClassMethod("sharedInstance"_sel, [] { return shared; });
    EXPECT_EQ(sharedInstance<Account>().get(), shared.get());
    EXPECT_EQ(SavingsAccount::classObject().performSelector("sharedInstance"_sel).get(), shared.get());
    EXPECT_RAISES(sharedInstance<SavingsAccount>(), NSInvalidArgumentException,
                  "+[SavingsAccount sharedInstance]: answered a Account");
    EXPECT_EQ(sharedInstance(NSString::classObject()), nullptr);
}

TEST(NSThreadAdditions, OnlyTheMainThreadIsTheMainThread) {
    EXPECT_TRUE(inMainThread());
    EXPECT_TRUE(send<bool>(NSThread::classObject(), "inMainThread"_sel));
    bool elsewhere = true;
    int forked = -1;
    std::thread([&] {
        elsewhere = inMainThread();
        if (const pid_t child = fork())
            waitpid(child, &forked, 0);
        else
            _exit(!inMainThread());
    }).join();
    EXPECT_FALSE(elsewhere);
    EXPECT_EQ(forked, 0);
}
