#pragma once

#include <cstddef>
#include <span>
#include <string>
#include <vector>

namespace tovi {

// Whole files. Each answers 0 or the errno of what failed.

int readFile(const std::string& path, std::vector<std::byte>& content);
/// Writes over the file where it is.
int overwriteFile(const std::string& path, std::span<const std::byte> content);
/// Writes a file beside it, which takes the place of the old one when it is safely on the disk.
int replaceFile(const std::string& path, std::span<const std::byte> content);

}  // namespace tovi
