#include <terminal/TextWidth.h>

#include <algorithm>
#include <clocale>
#include <cwchar>

namespace digest {

namespace {

constexpr char32_t replacement = 0xFFFD;
constexpr char16_t firstStrongIsolate = 0x2068, popIsolate = 0x2069;

/// Takes the C library's character table while it lives, whatever the user's locale.
class UnicodeTable {
public:
    UnicodeTable() : before_(::uselocale(unicode())) {}
    ~UnicodeTable() { ::uselocale(before_); }
    UnicodeTable(const UnicodeTable&) = delete;
    UnicodeTable& operator=(const UnicodeTable&) = delete;

    int columnsOf(char32_t character) const {
        if (character < 0x7F)
            return 1;
        if (character == firstStrongIsolate || character == popIsolate)
            return 0;
        const int columns = ::wcwidth(static_cast<wchar_t>(character));
        return columns < 0 ? 1 : columns;
    }

private:
    static locale_t unicode() {
        static const locale_t table = ::newlocale(LC_CTYPE_MASK, "C.UTF-8", nullptr);
        return table;  // null, where the system has none, changes nothing
    }
    locale_t before_;
};

// Takes one character off the front; a lone surrogate comes as U+FFFD.
char32_t takeCharacter(std::u16string_view& text) {
    const char16_t first = text.front();
    text.remove_prefix(1);
    if (first < 0xD800 || first > 0xDFFF)
        return first;
    if (first > 0xDBFF || text.empty() || text.front() < 0xDC00 || text.front() > 0xDFFF)
        return replacement;
    const char32_t character = 0x10000 + ((char32_t(first) & 0x3FF) << 10) + (char32_t(text.front()) & 0x3FF);
    text.remove_prefix(1);
    return character;
}

void append(std::u16string& text, char32_t character) {
    if (character < 0x10000) {
        text += static_cast<char16_t>(character);
    } else {
        text += static_cast<char16_t>(0xD800 + ((character - 0x10000) >> 10));
        text += static_cast<char16_t>(0xDC00 + (character & 0x3FF));
    }
}

bool isWhite(char32_t c) {
    return (c >= 9 && c <= 13) || c == ' ' || c == 0x85 || c == 0xA0 || (c >= 0x2000 && c <= 0x200A) || c == 0x2028 ||
           c == 0x2029 || c == 0x202F || c == 0x3000;
}

bool isControl(char32_t c) { return c < 0x20 || (c >= 0x7F && c < 0xA0); }

// Embeddings, overrides, isolates and marks of the writing direction.
bool turnsDirection(char32_t c) {
    return (c >= 0x202A && c <= 0x202E) || (c >= 0x2066 && c <= 0x2069) || c == 0x200E || c == 0x200F || c == 0x61C;
}

// The blocks of the scripts that are written from right to left.
bool isRightToLeft(char32_t c) {
    return (c >= 0x590 && c <= 0x8FF) || (c >= 0xFB1D && c <= 0xFDFF) || (c >= 0xFE70 && c <= 0xFEFC) ||
           (c >= 0x10800 && c <= 0x10FFF) || (c >= 0x1E800 && c <= 0x1EFFF);
}

}  // namespace

int columnsOf(std::u16string_view text) {
    const UnicodeTable table;
    int columns = 0;
    while (!text.empty())
        columns += table.columnsOf(takeCharacter(text));
    return columns;
}

std::u16string printable(std::u16string_view text) {
    std::u16string result;
    result.reserve(text.size());
    while (!text.empty()) {
        const char32_t character = takeCharacter(text);
        if (isWhite(character)) {
            if (!result.empty() && result.back() != ' ')
                result += u' ';
        } else if (!turnsDirection(character)) {
            append(result, isControl(character) ? replacement : character);
        }
    }
    if (result.ends_with(u' '))
        result.pop_back();
    return result;
}

std::u16string isolated(std::u16string_view text) {
    for (std::u16string_view rest = text; !rest.empty();)
        if (isRightToLeft(takeCharacter(rest)))
            return firstStrongIsolate + std::u16string(text) + popIsolate;
    return std::u16string(text);
}

std::u16string elided(std::u16string_view text, int columns) {
    const UnicodeTable table;
    std::u16string_view rest = text;
    std::size_t fits = 0;  // what may stay when "…" has to follow
    int used = 0;
    while (!rest.empty()) {
        used += table.columnsOf(takeCharacter(rest));
        if (used <= columns - 1)
            fits = text.size() - rest.size();
        if (used > columns)
            return columns > 0 ? std::u16string(text.substr(0, fits)) + u"…" : std::u16string();
    }
    return std::u16string(text);
}

std::vector<std::u16string> wrapped(std::u16string_view text, int columns) {
    std::vector<std::u16string> lines;
    for (int used = 0; !text.empty();) {
        const std::u16string word = elided(text.substr(0, text.find(u' ')), columns);
        text.remove_prefix(std::min(text.find(u' '), text.size() - 1) + 1);
        const int wordColumns = columnsOf(word);
        if (lines.empty() || used + 1 + wordColumns > columns) {
            lines.push_back(word);
            used = wordColumns;
        } else {
            lines.back() += u' ' + word;
            used += 1 + wordColumns;
        }
    }
    return lines;
}

std::u16string fitted(std::u16string_view text, int columns, Align align) {
    std::u16string result = elided(text, columns);
    const int missing = columns - columnsOf(result);
    if (missing > 0)
        result.insert(align == Align::left ? result.size() : 0, static_cast<std::size_t>(missing), u' ');
    return result;
}

}  // namespace digest
