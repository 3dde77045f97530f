#pragma once

#include <string>
#include <vector>

#include <ToviFoundationKit/Runtime/Export.h>

namespace tovi {

/// The one place that is asked for the user's languages: tags as "de-AT" and "de", the best first, each once.
///
/// They come from LANGUAGE, a list with colons between, then from the message locale: the first of LC_ALL, LC_MESSAGES
/// and LANG that is set. There are none in the locales C and POSIX, or without a locale.
TOVI_EXPORT std::vector<std::string> preferredLanguages();

/// Puts other languages in their place, in all threads, for as long as it lives. Ends in the reverse order of
/// beginning.
class TOVI_EXPORT ScopedPreferredLanguages {
public:
    explicit ScopedPreferredLanguages(std::vector<std::string> tags);
    ~ScopedPreferredLanguages();
    ScopedPreferredLanguages(const ScopedPreferredLanguages&) = delete;
    ScopedPreferredLanguages& operator=(const ScopedPreferredLanguages&) = delete;

private:
    friend std::vector<std::string> preferredLanguages();

    std::vector<std::string> tags_;
    const ScopedPreferredLanguages* previous_;
};

}  // namespace tovi
