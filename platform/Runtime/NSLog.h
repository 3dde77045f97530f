#pragma once

#include <functional>
#include <string_view>

#include <ToviFoundationKit/Runtime/FormatArgument.h>
#include <ToviFoundationKit/Runtime/NSString.h>

namespace tovi {

/// Takes a message of the log. Called on the thread that logs, without any lock held: perhaps on several at once.
using LogSink = std::function<void(const NSString& message)>;

/// Sends the messages that follow, of every thread, to the sink; answers the one before. An empty sink stands for the
/// default: one line on standard error, written by one call,
///
///     2026-11-22 21:40:00.123 program[pid:thread] message
TOVI_EXPORT LogSink setLogSink(LogSink sink);

TOVI_EXPORT void NSLog_arguments(std::u16string_view format, FormatArguments arguments);

/// Logs a message, formatted as NSFormat.h says.
template <class... A> void NSLog(std::u16string_view format, const A&... arguments) {
    const FormatArgumentList<sizeof...(A)> list{FormatArgument(arguments)...};
    NSLog_arguments(format, list);
}

}  // namespace tovi
