#pragma once

#include <exception>

#include <ToviFoundationKit/Runtime/NSObject.h>

namespace tovi {

/// Takes a tree apart that is being built from outside data when an exception ends that.
template <class Node> class Unfinished {
public:
    explicit Unfinished(Node& root) noexcept : root_(root), exceptions_(std::uncaught_exceptions()) {}
    ~Unfinished() {
        if (std::uncaught_exceptions() <= exceptions_)
            return;
        try {
            root_->takeApart();
        } catch (...) {  // would only hide what went wrong first
        }
    }
    Unfinished(const Unfinished&) = delete;
    Unfinished& operator=(const Unfinished&) = delete;

private:
    const Ref<Node> root_;
    const int exceptions_;
};

}  // namespace tovi
