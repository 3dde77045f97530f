#include <ToviFoundationKit/Foundation/PreferredLanguages.h>

#include <algorithm>
#include <cstdlib>
#include <mutex>
#include <string_view>
#include <utility>

namespace tovi {

namespace {

constinit std::mutex lock;
constinit const ScopedPreferredLanguages* replacement = nullptr;

std::string_view variable(const char* name) {
    const char* value = std::getenv(name);
    return value ? value : "";
}

std::string_view localeName() {
    for (const char* name : {"LC_ALL", "LC_MESSAGES", "LANG"})
        if (const std::string_view value = variable(name); !value.empty())
            return value;
    return "";
}

void add(std::vector<std::string>& tags, std::string tag) {
    if (!tag.empty() && std::ranges::find(tags, tag) == tags.end())
        tags.push_back(std::move(tag));
}

/// "de_AT.UTF-8@euro" gives de-AT and de.
void addLocale(std::vector<std::string>& tags, std::string_view locale) {
    std::string tag(locale.substr(0, locale.find_first_of(".@")));
    if (tag == "C" || tag == "POSIX")
        return;
    std::ranges::replace(tag, '_', '-');
    add(tags, tag);
    add(tags, tag.substr(0, tag.find('-')));
}

std::vector<std::string> languagesOfEnvironment() {
    std::vector<std::string> tags;
    const std::string_view locale = localeName();
    std::vector<std::string> ofLocale;
    addLocale(ofLocale, locale);
    if (ofLocale.empty())
        return tags;
    for (std::string_view list = variable("LANGUAGE"); !list.empty();) {
        const std::size_t colon = std::min(list.find(':'), list.size());
        addLocale(tags, list.substr(0, colon));
        list.remove_prefix(std::min(colon + 1, list.size()));
    }
    for (std::string& tag : ofLocale)
        add(tags, std::move(tag));
    return tags;
}

}  // namespace

std::vector<std::string> preferredLanguages() {
    const std::lock_guard guard(lock);
    return replacement ? replacement->tags_ : languagesOfEnvironment();
}

ScopedPreferredLanguages::ScopedPreferredLanguages(std::vector<std::string> tags) : tags_(std::move(tags)) {
    const std::lock_guard guard(lock);
    previous_ = std::exchange(replacement, this);
}

ScopedPreferredLanguages::~ScopedPreferredLanguages() {
    const std::lock_guard guard(lock);
    replacement = previous_;
}

}  // namespace tovi
