#pragma once

#include <string>
#include <string_view>
#include <vector>

namespace digest {

/// One person of a From field.
struct MailAddress {
    std::string name;     ///< as it is written, quotes and their backslashes removed; may be empty
    std::string address;  ///< may be empty

    friend bool operator==(const MailAddress&, const MailAddress&) = default;
};

/// The first person of an address list: "Ada <ada@example.org>", "ada@example.org (Ada)", "ada@example.org", or
/// "ada at example.org (Ada)" as list archives write it. Brackets and quotes that are not closed end with the text;
/// what cannot be an address becomes the name.
MailAddress parseMailAddress(std::string_view field);

/// The message ids of a References or In-Reply-To field, in order, without their brackets. Other words are skipped.
std::vector<std::string> parseMessageIDs(std::string_view field);

}  // namespace digest
