// Formatted texts of mail: whatever comes in, the HTML has known elements only, closed within one another, and no
// character of plain text is lost.

#include <algorithm>
#include <cstring>
#include <string>
#include <vector>

#include <ToviFoundationKit/Mail/MailText.h>
#include <ToviFoundationKit/ToviFoundationKit.h>

#include "Support.h"

using namespace tovi;

namespace {

constexpr std::string_view pairs[] = {"b", "i", "u", "tt", "font", "p", "blockquote", "address", "span"};
constexpr std::string_view singles[] = {"br", "hr"};

bool isOneOf(std::string_view name, std::span<const std::string_view> names) {
    return std::ranges::find(names, name) != names.end();
}

bool isHarmless(char c) {
    return (c >= 'a' && c <= 'z') || (c >= 'A' && c <= 'Z') || (c >= '0' && c <= '9') || std::strchr(" =\",#:;+-", c);
}

/// Goes through HTML, and collects its text without blanks and line ends.
std::string textOf(std::string_view html) {
    std::vector<std::string_view> open;
    std::string text;
    while (!html.empty()) {
        if (html.front() == '<') {
            const std::size_t end = html.find('>');
            require(end != html.npos);
            std::string_view tag = html.substr(1, end - 1);
            html.remove_prefix(end + 1);
            const bool closes = tag.starts_with('/');
            tag.remove_prefix(closes);
            const std::string_view name = tag.substr(0, tag.find(' '));
            require(std::ranges::all_of(tag, isHarmless) && std::ranges::count(tag, '"') % 2 == 0);
            if (closes) {
                require(!open.empty() && open.back() == tag);
                open.pop_back();
            } else if (!isOneOf(name, singles)) {
                require(isOneOf(name, pairs));
                open.push_back(name);
            }
        } else if (html.front() == '&') {
            const std::string_view name = html.substr(1, html.find(';') - 1);
            require(name == "amp" || name == "lt" || name == "gt" || name == "nbsp");
            text += name == "amp" ? "&" : name == "lt" ? "<" : name == "gt" ? ">" : "";
            html.remove_prefix(name.size() + 2);
        } else {
            if (!std::strchr(" \r\n", html.front()))
                text += html.front();
            html.remove_prefix(1);
        }
    }
    require(open.empty());
    return text;
}

Ref<NSString> textFrom(const std::uint8_t* data, std::size_t size, bool isUTF8) {
    if (isUTF8)
        return NSString::fromUTF8({reinterpret_cast<const char*>(data), size});
    std::u16string units(size / 2, u'\0');
    std::memcpy(units.data(), data, units.size() * sizeof(char16_t));
    return NSString::stringWithCharacters(units);
}

// What must be in the HTML when there are no commands.
std::string plainTextOf(const NSString& text) {
    std::string plain;
    for (const char c : text.UTF8String()) {
        if (c == '\0')
            plain += "\uFFFD";
        else if (!std::strchr(" \r\n", c))
            plain += c;
    }
    return plain;
}

}  // namespace

extern "C" int LLVMFuzzerTestOneInput(const std::uint8_t* data, std::size_t size) {
    if (size == 0)
        return 0;
    const bool isRichText = data[0] & 1, isUTF8 = !(data[0] & 2);
    const auto text = textFrom(data + 1, size - 1, isUTF8);
    const auto html = isRichText ? htmlStringFromMimeRichTextString(text) : htmlStringFromMimeEnrichedString(text);
    const std::string shown = textOf(html->UTF8String());
    if (text->view().find(u'<') == std::u16string_view::npos)
        require(shown == plainTextOf(text));
    const auto kept =
        isRichText ? qvlHtmlStringFromMimeRichTextString(text) : qvlHtmlStringFromMimeEnrichedString(text);
    require(kept->view().find(u'\n') == std::u16string_view::npos);
    return 0;
}
