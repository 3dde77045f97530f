#pragma once

#include <filesystem>
#include <vector>

namespace tovi {

/// The folders of resources in one language ("de.lproj", "pt_BR.lproj") in a directory, the best for the user first:
/// those in a preferred language, then English, then any other by name.
std::vector<std::filesystem::path> localizationsIn(const std::filesystem::path& directory);

}  // namespace tovi
