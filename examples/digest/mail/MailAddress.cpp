#include <mail/MailAddress.h>

#include <algorithm>

#include <mail/EncodedWord.h>
#include <mail/HeaderText.h>

namespace digest {

namespace {

// What is between "<" and ">", a route ("@relay:") left out.
std::string takeBracketed(std::string_view& text) {
    const std::size_t end = text.find('>');
    std::string_view inside = text.substr(1, end == text.npos ? end : end - 1);
    text.remove_prefix(end == text.npos ? text.size() : end + 1);
    if (inside.starts_with('@') && inside.find(':') != inside.npos)
        inside.remove_prefix(inside.find(':') + 1);
    return collapsedText(inside);
}

// Words without brackets: an address, "ada at example.org", or only a name.
MailAddress fromBareWords(std::string words, std::string comment) {
    if (const std::size_t at = words.find(" at "); at != words.npos && words.find(' ', at + 4) == words.npos)
        words.replace(at, 4, "@");
    if (words.find('@') != words.npos && words.find(' ') == words.npos)
        return {std::move(comment), std::move(words)};
    return {words.empty() ? std::move(comment) : std::move(words), {}};
}

}  // namespace

MailAddress parseMailAddress(std::string_view field) {
    std::string words, comment;
    while (!field.empty() && field.front() != ',' && field.front() != ';') {
        if (const std::size_t length = encodedWordLength(field)) {
            words += field.substr(0, length);
            field.remove_prefix(length);
        } else if (field.front() == '"') {
            words += takeQuoted(field);
        } else if (field.front() == '(') {
            comment = collapsedText(takeComment(field));
            words += ' ';
        } else if (field.front() == '<') {
            std::string address = takeBracketed(field);
            words = collapsedText(words);
            return {words.empty() ? std::move(comment) : std::move(words), std::move(address)};
        } else {
            words += field.front();
            field.remove_prefix(1);
        }
    }
    return fromBareWords(collapsedText(words), std::move(comment));
}

std::vector<std::string> parseMessageIDs(std::string_view field) {
    std::vector<std::string> ids;
    while (skipCommentsAndSpace(field)) {
        if (field.front() != '<') {
            field.remove_prefix(1);
            continue;
        }
        const std::size_t end = std::min(field.find('>'), field.size());
        std::string id(field.substr(1, end - 1));
        std::erase_if(id, isSpace);
        if (!id.empty())
            ids.push_back(std::move(id));
        field.remove_prefix(std::min(end + 1, field.size()));
    }
    return ids;
}

}  // namespace digest
