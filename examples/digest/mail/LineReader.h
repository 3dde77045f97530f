#pragma once

#include <memory>

#include <mail/ByteSource.h>

namespace digest {

/// One line of a file. The text is valid until the next one is read.
struct Line {
    std::string_view text;      ///< without LF or CR LF; only the beginning of a line that is longer than the limit
    std::uint64_t number = 0;   ///< counted from 1
    std::uint64_t offset = 0;   ///< of its first byte
    std::uint64_t length = 0;   ///< bytes in the file, the line's end included
    bool isCut = false;         ///< the line is longer than the text
    bool isTerminated = false;  ///< false for a last line that ends with the file
};

/// Splits a source into lines; a byte order mark before the first one is left out. The memory it needs is twice the
/// limit, whatever the lines are.
class LineReader {
public:
    static constexpr std::size_t defaultLimit = 256 * 1024;

    explicit LineReader(ByteSource& source, std::size_t limit = defaultLimit);

    /// Goes to the next line; false at the end of the source. Throws what the source throws.
    bool next();

    const Line& line() const noexcept { return line_; }

private:
    bool fill();
    bool take(std::size_t length, bool terminated);
    bool takeLong();

    ByteSource& source_;
    const std::size_t limit_;
    std::unique_ptr<char[]> buffer_;
    std::size_t begin_ = 0;  // the bytes of the buffer that are not yet handed out
    std::size_t end_ = 0;
    std::string cut_;
    Line line_;
};

}  // namespace digest
