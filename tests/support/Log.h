#pragma once

#include <string>
#include <vector>

#include <ToviFoundationKit/Runtime/NSLog.h>

/// What is logged while it lives.
struct Log {
    std::vector<std::string> lines;
    tovi::LogSink before =
        tovi::setLogSink([this](const tovi::NSString& message) { lines.push_back(message.UTF8String()); });
    ~Log() { tovi::setLogSink(before); }
};
