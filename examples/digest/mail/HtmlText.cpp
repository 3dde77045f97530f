#include <mail/HtmlText.h>

#include <algorithm>
#include <array>
#include <optional>

using namespace tovi;

namespace digest {

namespace {

constexpr char16_t lowered(char16_t c) { return c >= u'A' && c <= u'Z' ? static_cast<char16_t>(c + 32) : c; }
constexpr bool isLetter(char16_t c) { return lowered(c) >= u'a' && lowered(c) <= u'z'; }
constexpr bool isDigit(char16_t c) { return c >= u'0' && c <= u'9'; }

bool isOneOf(std::u16string_view name, std::span<const std::u16string_view> names) {
    return std::ranges::find(names, name) != names.end();
}

/// An HTML tag, from its "<" on.
struct Tag {
    std::u16string name;  // in small letters
    bool closes = false;
    std::size_t end = 0;  // behind the ">"
};

// Where the tag ends whose name ends at the place: at the first ">" that is not in quotes. Quotes that are not closed
// before the next "<" are none.
std::size_t endOfTag(std::u16string_view html, std::size_t place) {
    std::size_t quoted = html.npos;  // a ">" in quotes
    for (char16_t quote = 0; place < html.size() && html[place] != u'<'; ++place) {
        const char16_t c = html[place];
        if (c == u'>' && !quote)
            return place + 1;
        if (c == u'>')
            quoted = std::min(quoted, place);
        else if (quote ? c == quote : (c == u'"' || c == u'\'') && html[place - 1] == u'=')
            quote = quote ? 0 : c;
    }
    return quoted == html.npos ? quoted : quoted + 1;
}

std::optional<Tag> tagAt(std::u16string_view html, std::size_t place) {
    constexpr std::size_t longestName = 40;
    Tag tag;
    tag.closes = html.substr(place).starts_with(u"</");
    std::size_t i = place + (tag.closes ? 2 : 1);
    if (i >= html.size() || !isLetter(html[i]))
        return std::nullopt;
    for (; i < html.size() && tag.name.size() < longestName && (isLetter(html[i]) || isDigit(html[i])); ++i)
        tag.name += lowered(html[i]);
    tag.end = endOfTag(html, i);
    return tag.end == html.npos ? std::nullopt : std::optional(std::move(tag));
}

/// Writes a page anew with nothing in it but text, character references and plain tags.
class HtmlCleaner {
public:
    explicit HtmlCleaner(std::u16string_view html) : html_(html) {}

    Ref<NSString> clean() {
        while (place_ < html_.size()) {
            const std::size_t end = std::min(html_.find_first_of(u"<&\n\t", place_), html_.size());
            result_.append(html_.substr(place_, end - place_));
            place_ = end;
            if (end == html_.size())
                break;
            if (html_[end] == u'<')
                readBracket();
            else if (html_[end] == u'&')
                readReference();
            else
                readSpace();
        }
        return result_.string();
    }

private:
    void readSpace() { result_.append(preformatted_ > 0 ? html_[place_] : u' '), ++place_; }

    void readBracket() {
        const std::u16string_view rest = html_.substr(place_);
        if (rest.starts_with(u"<!--")) {
            skipOver(u"-->", comment);
        } else if (rest.starts_with(u"<!") || rest.starts_with(u"<?")) {
            skipOver(u">", declaration);
        } else if (const auto tag = tagAt(html_, place_)) {
            place_ = tag->end;
            addTag(*tag);
            if (!tag->closes)
                skipContentOf(tag->name);
        } else {
            keepBracket();
        }
    }

    void keepBracket() {
        result_.append(u"&lt;");
        ++place_;
    }

    // What is not closed is text.
    enum Skipped { comment, declaration, script, style, title, head, skippedCount };
    void skipOver(std::u16string_view end, Skipped skipped) {
        const std::size_t found = isUnclosed_[skipped] ? html_.npos : html_.find(end, place_ + 2);
        isUnclosed_[skipped] = found == html_.npos;
        if (isUnclosed_[skipped])
            keepBracket();
        else
            place_ = found + end.size();
    }

    void skipContentOf(const std::u16string& name) {
        static constexpr std::array<std::u16string_view, 4> names{u"script", u"style", u"title", u"head"};
        const auto found = std::ranges::find(names, name);
        if (found == names.end())
            return;
        bool& isUnclosed = isUnclosed_[script + static_cast<std::size_t>(found - names.begin())];
        for (std::size_t place = place_; !isUnclosed; ++place) {
            place = html_.find(u"</", place);
            isUnclosed = place == html_.npos;
            if (isUnclosed)
                break;
            if (const auto tag = tagAt(html_, place); tag && tag->name == name) {
                place_ = tag->end;
                break;
            }
        }
    }

    void addTag(const Tag& tag) {
        static constexpr std::array<std::u16string_view, 12> paragraphs{
            u"p", u"h1", u"h2", u"h3", u"h4", u"h5", u"h6", u"ul", u"ol", u"table", u"blockquote", u"pre"};
        static constexpr std::array<std::u16string_view, 10> lines{u"br", u"div", u"tr",     u"li", u"dt",
                                                                   u"dd", u"hr",  u"center", u"dl", u"address"};
        const bool isParagraph = isOneOf(tag.name, paragraphs);
        if (tag.name == u"pre")
            preformatted_ = tag.closes ? preformatted_ - (preformatted_ > 0) : preformatted_ + 1;
        if (isParagraph || isOneOf(tag.name, lines))
            result_.append(isParagraph ? u"\n\n" : u"\n");
        result_.append(tag.closes ? u"</" : u"<").append(tag.name).append(u'>');
    }

    // References beyond the 16 bits that the library's decoder makes of them are replaced here.
    void readReference() {
        const std::u16string_view rest = html_.substr(place_, 12);
        const bool isHex = rest.starts_with(u"&#x") || rest.starts_with(u"&#X");
        const std::size_t end = rest.find(u';');
        std::uint32_t number = 0;
        if (rest.starts_with(u"&#") && end != rest.npos)
            for (const char16_t digit : rest.substr(isHex ? 3 : 2, end - (isHex ? 3 : 2))) {
                const int value = digitValue(digit, isHex);
                number = value < 0 || number > 0x10FFFF ? 0xFFFFFFFF : number * (isHex ? 16 : 10) + unsigned(value);
            }
        if (number > 0xFFFF && number <= 0x10FFFF) {
            result_.appendCodePoint(number);
            place_ += end + 1;
        } else {
            result_.append(u'&');
            ++place_;
        }
    }

    static int digitValue(char16_t digit, bool isHex) {
        if (isDigit(digit))
            return digit - u'0';
        const char16_t small = lowered(digit);
        return isHex && small >= u'a' && small <= u'f' ? small - u'a' + 10 : -1;
    }

    const std::u16string_view html_;
    std::size_t place_ = 0;
    StringBuilder result_;
    std::size_t preformatted_ = 0;
    std::array<bool, skippedCount> isUnclosed_{};
};

}  // namespace

Ref<NSString> plainTextOfHTML(const NSString& html) {
    const auto clean = HtmlCleaner(html).clean();
    const bool hasTags = clean->view().find(u'<') != std::u16string_view::npos;
    return stringByDecodingXMLEntities(hasTags ? flattenHTML_trimWhiteSpace(clean, true) : clean);
}

}  // namespace digest
