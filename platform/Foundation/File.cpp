#include <ToviFoundationKit/Foundation/File_p.h>

#include <fcntl.h>
#include <sys/stat.h>
#include <unistd.h>

#include <algorithm>
#include <atomic>
#include <cerrno>
#include <cstdio>
#include <filesystem>
#include <new>
#include <stdexcept>
#include <utility>

namespace tovi {

namespace {

class Descriptor {
public:
    Descriptor() noexcept = default;
    Descriptor(const std::string& path, int flags, mode_t mode = 0) noexcept { open(path, flags, mode); }
    ~Descriptor() { close(); }
    Descriptor(const Descriptor&) = delete;
    Descriptor& operator=(const Descriptor&) = delete;

    void open(const std::string& path, int flags, mode_t mode = 0) noexcept {
        number_ = ::open(path.c_str(), flags | O_CLOEXEC, mode);
    }
    bool isOpen() const noexcept { return number_ >= 0; }
    int number() const noexcept { return number_; }
    /// Answers the errno: some file systems report a failed write only here.
    int close() noexcept { return isOpen() && ::close(std::exchange(number_, -1)) ? errno : 0; }

private:
    int number_ = -1;
};

/// For the system a path ends at the first NUL: one with more behind it would lead to another file.
bool isPath(const std::string& path) noexcept { return path.find('\0') == path.npos; }

int readAll(int descriptor, std::vector<std::byte>& content, std::size_t expected) {
    content.resize(expected + 1);
    std::size_t length = 0;
    while (const ssize_t got = read(descriptor, content.data() + length, content.size() - length)) {
        if (got < 0 && errno != EINTR)
            return errno;
        length += static_cast<std::size_t>(std::max<ssize_t>(got, 0));
        if (length == content.size())
            content.resize(length * 2);
    }
    content.resize(length);
    return 0;
}

int writeAll(int descriptor, std::span<const std::byte> content) noexcept {
    while (!content.empty()) {
        const ssize_t written = write(descriptor, content.data(), content.size());
        if (written < 0 && errno != EINTR)
            return errno;
        content = content.subspan(static_cast<std::size_t>(std::max<ssize_t>(written, 0)));
    }
    return 0;
}

/// A new file in a directory, which is removed again unless it takes the place of another.
class FileBeside {
public:
    FileBeside(const std::string& directory, mode_t mode) {
        // A name may be taken by what a killed process of the same number left behind.
        do {
            path_ = directory + uniqueName();
            file_.open(path_, O_WRONLY | O_CREAT | O_EXCL, mode);
        } while (!file_.isOpen() && errno == EEXIST);
    }
    ~FileBeside() {
        if (file_.isOpen() || closed_)
            unlink(path_.c_str());
    }

    int error() const noexcept { return file_.isOpen() ? 0 : errno; }

    int write(std::span<const std::byte> content) {
        if (const int failure = writeAll(file_.number(), content))
            return failure;
        return fsync(file_.number()) ? errno : 0;
    }

    int keepMode(mode_t mode) { return fchmod(file_.number(), mode) ? errno : 0; }

    int replace(const std::string& target) {
        closed_ = true;
        if (const int failure = file_.close())
            return failure;
        if (std::rename(path_.c_str(), target.c_str()))
            return errno;
        closed_ = false;
        return 0;
    }

private:
    static std::string uniqueName() {
        static std::atomic<unsigned> count{0};
        return ".tovi-" + std::to_string(getpid()) + "-" + std::to_string(count++);
    }

    std::string path_;
    Descriptor file_;
    bool closed_ = false;
};

}  // namespace

int readFile(const std::string& path, std::vector<std::byte>& content) try {
    if (!isPath(path))
        return ENOENT;
    const Descriptor file(path, O_RDONLY);
    struct stat status {};
    if (!file.isOpen() || fstat(file.number(), &status))
        return errno;
    return readAll(file.number(), content, static_cast<std::size_t>(status.st_size));
} catch (const std::bad_alloc&) {
    return ENOMEM;
} catch (const std::length_error&) {
    return EFBIG;
}

int overwriteFile(const std::string& path, std::span<const std::byte> content) {
    if (!isPath(path))
        return ENOENT;
    Descriptor file(path, O_WRONLY | O_CREAT | O_TRUNC, 0666);
    if (!file.isOpen())
        return errno;
    const int failure = writeAll(file.number(), content);
    return failure ? failure : file.close();
}

int replaceFile(const std::string& path, std::span<const std::byte> content) {
    if (!isPath(path))
        return ENOENT;
    struct stat status {};
    const bool exists = !stat(path.c_str(), &status);
    if (exists && !S_ISREG(status.st_mode))
        return overwriteFile(path, content);
    std::error_code unresolved;
    const std::filesystem::path resolved = std::filesystem::canonical(path, unresolved);
    const std::filesystem::path target = unresolved ? std::filesystem::path(path) : resolved;
    const std::string directory = target.has_parent_path() ? target.parent_path().string() + "/" : "./";

    FileBeside file(directory, exists ? 0600 : 0666);
    int failure = file.error();
    if (!failure && exists)
        failure = file.keepMode(status.st_mode & 07777);
    if (!failure)
        failure = file.write(content);
    if (!failure)
        failure = file.replace(target);
    if (!failure) {
        // The new name is safe when the directory is; a file system without that is none to give up on.
        const Descriptor entries(directory, O_RDONLY | O_DIRECTORY);
        if (entries.isOpen())
            fsync(entries.number());
    }
    return failure;
}

}  // namespace tovi
