#pragma once

#include <cstdlib>
#include <filesystem>
#include <fstream>
#include <iterator>
#include <string>
#include <string_view>

#include <ToviFoundationKit/Runtime/NSString.h>

/// A new directory that is removed, with what is in it, at the end.
class TemporaryDirectory {
public:
    TemporaryDirectory() {
        std::string name = std::filesystem::temp_directory_path() / "tovi-test-XXXXXX";
        path_ = std::filesystem::canonical(mkdtemp(name.data()));
    }
    ~TemporaryDirectory() {
        std::error_code ignored;
        std::filesystem::remove_all(path_, ignored);
    }
    TemporaryDirectory(const TemporaryDirectory&) = delete;
    TemporaryDirectory& operator=(const TemporaryDirectory&) = delete;

    const std::filesystem::path& path() const noexcept { return path_; }
    tovi::Ref<tovi::NSString> text(const std::filesystem::path& name = "") const {
        return tovi::NSString::fromUTF8((name.empty() ? path_ : path_ / name).native());
    }

    /// Writes a file and the directories that lead to it.
    void write(const std::filesystem::path& name, std::string_view content) const {
        std::filesystem::create_directories((path_ / name).parent_path());
        std::ofstream(path_ / name, std::ios::binary) << content;
    }
    std::string read(const std::filesystem::path& name) const {
        std::ifstream file(path_ / name, std::ios::binary);
        return {std::istreambuf_iterator<char>(file), {}};
    }

private:
    std::filesystem::path path_;
};
