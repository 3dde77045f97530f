#include <mail/LineReader.h>

#include <cstring>

namespace digest {

LineReader::LineReader(ByteSource& source, std::size_t limit)
    : source_(source), limit_(limit), buffer_(std::make_unique<char[]>(limit)) {}

bool LineReader::next() {
    line_ = {.text = {}, .number = line_.number + 1, .offset = line_.offset + line_.length};
    for (std::size_t scanned = 0;;) {
        const char* start = buffer_.get() + begin_;
        const std::size_t available = end_ - begin_;
        if (const void* feed = std::memchr(start + scanned, '\n', available - scanned))
            return take(static_cast<std::size_t>(static_cast<const char*>(feed) - start) + 1, true);
        if (available == limit_)
            return takeLong();
        scanned = available;
        if (!fill())
            return available > 0 && take(available, false);
    }
}

// Makes room behind the bytes that wait, and reads more of them.
bool LineReader::fill() {
    if (begin_ > 0) {
        std::memmove(buffer_.get(), buffer_.get() + begin_, end_ - begin_);
        end_ -= begin_;
        begin_ = 0;
    }
    const std::size_t count = source_.read({buffer_.get() + end_, limit_ - end_});
    end_ += count;
    return count > 0;
}

bool LineReader::take(std::size_t length, bool terminated) {
    std::string_view text(buffer_.get() + begin_, length);
    if (terminated)
        text.remove_suffix(1);
    if (text.ends_with('\r'))
        text.remove_suffix(1);
    if (line_.number == 1 && text.starts_with("\xEF\xBB\xBF"))
        text.remove_prefix(3);
    begin_ += length;
    line_.text = text;
    line_.length = length;
    line_.isTerminated = terminated;
    return true;
}

// The buffer is full of one line: keeps its beginning and skips the rest.
bool LineReader::takeLong() {
    cut_.assign(buffer_.get(), limit_);
    line_.text = cut_;
    line_.isCut = true;
    for (;;) {
        line_.length += end_ - begin_;
        begin_ = end_ = 0;
        if (!fill())
            return true;
        if (const void* feed = std::memchr(buffer_.get(), '\n', end_)) {
            begin_ = static_cast<std::size_t>(static_cast<const char*>(feed) - buffer_.get()) + 1;
            line_.length += begin_;
            line_.isTerminated = true;
            return true;
        }
    }
}

}  // namespace digest
