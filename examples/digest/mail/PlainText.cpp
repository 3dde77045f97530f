#include <mail/PlainText.h>

#include <algorithm>

#include <mail/HeaderText.h>

namespace digest {

namespace {

constexpr std::size_t enough = 240;  // bytes: more than a line of a terminal shows

std::string_view takeLine(std::string_view& text) {
    const std::size_t end = std::min(text.find('\n'), text.size());
    const std::string_view line = text.substr(0, end);
    text.remove_prefix(std::min(end + 1, text.size()));
    return line;
}

bool isPlainText(const RawMessage& message) {
    const std::string type = loweredText(message.field("Content-Type").value_or("text/plain"));
    const std::string encoding =
        collapsedText(loweredText(message.field("Content-Transfer-Encoding").value_or("7bit")));
    const bool isUnicode =
        type.find("charset") == type.npos || type.find("utf-8") != type.npos || type.find("ascii") != type.npos;
    return collapsedText(type).starts_with("text/plain") && isUnicode && encoding != "base64" &&
           encoding != "quoted-printable";
}

// A quoted line, or the line that introduces a quotation: "On Monday Ada wrote:".
bool isQuotation(std::string_view line) { return line.starts_with('>') || line.ends_with("wrote:"); }

// At most `enough` bytes, not ending in the middle of a UTF-8 sequence.
std::string cutToCharacters(std::string text) {
    std::size_t end = std::min(text.size(), enough);
    while (end > 0 && end < text.size() && (text[end] & 0xC0) == 0x80)
        --end;
    text.resize(end);
    return text;
}

}  // namespace

std::string openingOf(const RawMessage& message) {
    std::string opening;
    if (!isPlainText(message))
        return opening;
    for (std::string_view rest = message.body; !rest.empty() && opening.size() < enough;) {
        const std::string_view line = takeLine(rest);
        const bool isText = line.find_first_not_of(" \t\r") != line.npos && !isQuotation(line);
        if (isText)
            opening.append(line) += ' ';
        else if (!opening.empty())
            break;
    }
    return cutToCharacters(collapsedText(opening));
}

}  // namespace digest
