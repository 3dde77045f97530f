#include <mail/ByteSource.h>

#include <fcntl.h>
#include <sys/stat.h>
#include <unistd.h>

#include <algorithm>
#include <cerrno>
#include <system_error>

namespace digest {

namespace {

std::string reasonOf(int error) { return std::generic_category().message(error); }

}  // namespace

FileSource::FileSource(const std::string& path)
    : descriptor_(path == "-" ? STDIN_FILENO : ::open(path.c_str(), O_RDONLY | O_CLOEXEC)) {
    struct stat status {};
    if (descriptor_ < 0 || ::fstat(descriptor_, &status) != 0)
        throw MailboxError(reasonOf(errno));
    if (S_ISDIR(status.st_mode)) {
        ::close(descriptor_);
        throw MailboxError("is a directory, not a mailbox file");
    }
    if (S_ISREG(status.st_mode))
        size_ = static_cast<std::uint64_t>(status.st_size);
}

FileSource::~FileSource() {
    if (descriptor_ != STDIN_FILENO)
        ::close(descriptor_);
}

std::size_t FileSource::read(std::span<char> buffer) {
    ssize_t count;
    do {
        count = ::read(descriptor_, buffer.data(), buffer.size());
    } while (count < 0 && errno == EINTR);
    if (count < 0)
        throw MailboxError("offset " + std::to_string(position_) + ": " + reasonOf(errno));
    position_ += static_cast<std::uint64_t>(count);
    return static_cast<std::size_t>(count);
}

std::size_t MemorySource::read(std::span<char> buffer) {
    const std::size_t count = std::min({buffer.size(), rest_.size(), blockSize_});
    std::copy_n(rest_.data(), count, buffer.data());
    rest_.remove_prefix(count);
    return count;
}

}  // namespace digest
