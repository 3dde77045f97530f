#pragma once

#include <pthread.h>

#include <functional>

#include <gtest/gtest.h>

/// Runs a function on a stack of 256 KiB, on which no recursion to the depth of the tests' data fits.
inline void onSmallStack(std::function<void()> function) {
    pthread_attr_t attributes;
    pthread_attr_init(&attributes);
    pthread_attr_setstacksize(&attributes, 256 * 1024);
    pthread_t thread;
    const auto run = [](void* argument) -> void* {
        return (*static_cast<std::function<void()>*>(argument))(), nullptr;
    };
    ASSERT_EQ(pthread_create(&thread, &attributes, run, &function), 0);
    pthread_join(thread, nullptr);
    pthread_attr_destroy(&attributes);
}
