#include <ToviFoundationKit/Foundation/Localizations_p.h>

#include <algorithm>
#include <string>
#include <string_view>
#include <tuple>
#include <utility>

#include <ToviFoundationKit/Foundation/PreferredLanguages.h>

namespace tovi {

namespace {

namespace fs = std::filesystem;

/// Tags are compared in lower case with hyphens: folders are named in either fashion.
std::string normalized(std::string tag) {
    for (char& each : tag)
        each = each == '_' ? '-' : each >= 'A' && each <= 'Z' ? static_cast<char>(each + ('a' - 'A')) : each;
    return tag;
}

std::string_view language(std::string_view tag) { return tag.substr(0, tag.find('-')); }

/// The place of a tag among those of the user: by its language, then by whether it is a tag of theirs to the letter.
std::pair<std::size_t, std::size_t> rank(const std::string& tag, const std::vector<std::string>& preferred) {
    const auto place = [&](auto found) { return static_cast<std::size_t>(found - preferred.begin()); };
    return {place(std::ranges::find(preferred, language(tag), language)), place(std::ranges::find(preferred, tag))};
}

}  // namespace

std::vector<fs::path> localizationsIn(const fs::path& directory) {
    std::vector<std::string> preferred = preferredLanguages();
    std::ranges::transform(preferred, preferred.begin(), normalized);
    preferred.emplace_back("en");

    std::vector<std::tuple<std::pair<std::size_t, std::size_t>, fs::path>> ranked;
    std::error_code failure;
    for (fs::directory_iterator entry(directory, failure), end; !failure && entry != end; entry.increment(failure))
        if (entry->path().extension() == ".lproj")
            ranked.emplace_back(rank(normalized(entry->path().stem()), preferred), entry->path());
    std::ranges::sort(ranked);

    std::vector<fs::path> folders;
    for (auto& [order, folder] : ranked)
        folders.push_back(std::move(folder));
    return folders;
}

}  // namespace tovi
