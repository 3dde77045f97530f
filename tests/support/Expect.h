#pragma once

#include <string>
#include <string_view>

#include <gtest/gtest.h>

#include <ToviFoundationKit/Runtime/NSException.h>

/// What tells of an operation, "*** -[", is the whole reason; anything else is a part of it.
inline bool isReason(std::string_view text, std::string_view reason) {
    return text.starts_with("*** -[") ? text == reason : reason.find(text) != reason.npos;
}

/// Expects an NSException of that name with the text as its reason.
#define EXPECT_RAISES(statement, expectedName, text)                                                \
    try {                                                                                           \
        (void)(statement);                                                                          \
        ADD_FAILURE() << #statement " raised nothing";                                              \
    } catch (const ::tovi::NSException& raised) {                                                   \
        EXPECT_EQ(*raised.name(), expectedName);                                                    \
        const std::string reason = raised.reason() ? raised.reason()->UTF8String() : "(no reason)"; \
        EXPECT_TRUE(isReason(text, reason)) << reason;                                              \
    }
