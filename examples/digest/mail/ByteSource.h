#pragma once

#include <cstddef>
#include <cstdint>
#include <span>
#include <stdexcept>
#include <string>
#include <string_view>

namespace digest {

/// A mailbox cannot be read, or not further. The text says why, and where; it does not name the file.
struct MailboxError : std::runtime_error {
    using std::runtime_error::runtime_error;
};

/// Where bytes come from.
class ByteSource {
public:
    virtual ~ByteSource() = default;

    /// Fills the front of the buffer, as far as bytes are at hand; answers how many, 0 at the end. Throws MailboxError.
    virtual std::size_t read(std::span<char> buffer) = 0;
};

/// A file, or standard input under the name "-".
class FileSource final : public ByteSource {
public:
    /// Throws MailboxError when the file cannot be opened or is a directory.
    explicit FileSource(const std::string& path);
    ~FileSource() override;
    FileSource(const FileSource&) = delete;
    FileSource& operator=(const FileSource&) = delete;

    std::size_t read(std::span<char> buffer) override;

    /// The size of the file in bytes; 0 where it has none beforehand, as a pipe.
    std::uint64_t size() const noexcept { return size_; }

private:
    int descriptor_;
    std::uint64_t size_ = 0;
    std::uint64_t position_ = 0;
};

/// Bytes that somebody else keeps, handed out in blocks of at most the given size.
class MemorySource final : public ByteSource {
public:
    explicit MemorySource(std::string_view bytes, std::size_t blockSize = SIZE_MAX) noexcept
        : rest_(bytes), blockSize_(blockSize) {}

    std::size_t read(std::span<char> buffer) override;

private:
    std::string_view rest_;
    std::size_t blockSize_;
};

}  // namespace digest
