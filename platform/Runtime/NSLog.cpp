#include <ToviFoundationKit/Runtime/NSLog.h>

#include <cerrno>
#include <chrono>
#include <ctime>
#include <memory>
#include <mutex>
#include <utility>

#include <unistd.h>

namespace tovi {

namespace {

/// Kept for as long as the process lives: objects that go at its very end may still log.
struct Log {
    std::mutex lock;
    std::shared_ptr<const LogSink> sink = std::make_shared<const LogSink>();

    static Log& shared() {
        static Log& log = *new Log;
        return log;
    }
    std::shared_ptr<const LogSink> exchange(std::shared_ptr<const LogSink> next) {
        const std::lock_guard guard(lock);
        return std::exchange(sink, std::move(next));
    }
    std::shared_ptr<const LogSink> current() {
        const std::lock_guard guard(lock);
        return sink;
    }
};

void writeAll(int file, std::string_view bytes) {
    while (!bytes.empty()) {
        const ssize_t written = ::write(file, bytes.data(), bytes.size());
        if (written < 0 && errno != EINTR)
            return;
        bytes.remove_prefix(written < 0 ? 0 : static_cast<std::size_t>(written));
    }
}

void writeLine(const NSString& message) {
    const auto now = std::chrono::system_clock::now().time_since_epoch();
    const auto milliseconds = std::chrono::duration_cast<std::chrono::milliseconds>(now).count();
    const auto seconds = static_cast<std::time_t>(milliseconds / 1000);
    std::tm t{};
    localtime_r(&seconds, &t);
    const Ref<NSString> line = NSString::stringWithFormat(
        u"%04d-%02d-%02d %02d:%02d:%02d.%03d %s[%d:%d] %@\n", t.tm_year + 1900, t.tm_mon + 1, t.tm_mday, t.tm_hour,
        t.tm_min, t.tm_sec, milliseconds % 1000, program_invocation_short_name, getpid(), gettid(), message);
    writeAll(STDERR_FILENO, line->UTF8String());
}

}  // namespace

LogSink setLogSink(LogSink sink) { return *Log::shared().exchange(std::make_shared<const LogSink>(std::move(sink))); }

void NSLog_arguments(std::u16string_view format, FormatArguments arguments) {
    const Ref<NSString> message = NSString::stringWithFormat_arguments(format, arguments);
    const std::shared_ptr<const LogSink> sink = Log::shared().current();
    *sink ? (*sink)(message) : writeLine(message);
}

}  // namespace tovi
