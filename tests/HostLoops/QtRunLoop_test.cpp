#include <QCoreApplication>

#include <ToviFoundationKit/HostLoops/QtRunLoop.h>

#include "HostLoop.h"

namespace {

class QtHost {
public:
    QtHost() {
        served_.onException = [this](const std::exception&) { ++exceptions_; };
    }
    void run() { application_.exec(); }
    void quit() { application_.quit(); }
    int exceptions() const { return exceptions_; }

private:
    int count_ = 1;
    char name_[5] = "host";
    char* arguments_[2] = {name_, nullptr};
    QCoreApplication application_{count_, arguments_};
    tovi::QtRunLoop served_;
    int exceptions_ = 0;
};

}  // namespace

TEST(QtRunLoop, ServesMessagesNotificationsAndTimers) { expectToBeServed<QtHost>(); }
