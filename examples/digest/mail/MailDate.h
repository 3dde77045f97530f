#pragma once

#include <cstdint>
#include <optional>
#include <string_view>

namespace digest {

/// A moment as a message tells it.
struct MailDate {
    std::int64_t secondsSince1970 = 0;  ///< GMT
    int minutesEast = 0;                ///< of Greenwich, where the sender's clock stood
    bool zoneIsKnown = false;           ///< false: without a zone, or with one that says nothing, read as GMT

    friend bool operator==(const MailDate&, const MailDate&) = default;
};

/// Reads the Date field of RFC 5322 with its obsolete forms: comments, zones by name (letters of the military zones and
/// other unknown names say nothing), years of two digits (50 to 99 mean 19xx) and three (added to 1900). The order of
/// `ctime` with the year last, full names, a missing weekday and missing seconds are understood too. The weekday is not
/// checked. Nothing when a part is missing, doubled or impossible, and for years outside 1900 to 9999.
std::optional<MailDate> parseMailDate(std::string_view text);

/// 1 for "Jan", "january" and the like, to 12; 0 where the word does not begin as a month.
unsigned monthOf(std::string_view word) noexcept;

}  // namespace digest
