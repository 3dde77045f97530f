#pragma once

#include <string>

#include <gtest/gtest.h>

#include <ToviFoundationKit/Runtime/NSException.h>

/// Expects an NSException of that name whose reason contains the text.
#define EXPECT_RAISES(statement, expectedName, text)                                                \
    try {                                                                                           \
        (void)(statement);                                                                          \
        ADD_FAILURE() << #statement " raised nothing";                                              \
    } catch (const ::tovi::NSException& raised) {                                                   \
        EXPECT_EQ(*raised.name(), expectedName);                                                    \
        const std::string reason = raised.reason() ? raised.reason()->UTF8String() : "(no reason)"; \
        EXPECT_NE(reason.find(text), std::string::npos) << reason;                                  \
    }
