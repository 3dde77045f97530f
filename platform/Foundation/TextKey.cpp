#include <ToviFoundationKit/Foundation/TextKey_p.h>

#include <algorithm>
#include <memory>
#include <utility>

#include <unicode/uchar.h>
#include <unicode/unorm2.h>
#include <unicode/uset.h>
#include <unicode/ustring.h>

#include <ToviFoundationKit/Runtime/Unicode_p.h>

namespace tovi::detail {

namespace {

constexpr char32_t firstSyllable = 0xAC00, lastSyllable = 0xD7A3;

const UNormalizer2& nfc() {
    UErrorCode error = U_ZERO_ERROR;
    static const UNormalizer2* const normalizer = unorm2_getNFCInstance(&error);
    return *normalizer;
}

/// Calls `use` with each code point of a text.
template <class Use> void forEachCodePoint(std::u16string_view text, Use use) {
    for (std::size_t i = 0; i < text.size(); ++i) {
        const bool pair = isLead(text[i]) && i + 1 < text.size() && isTrail(text[i + 1]);
        use(pair ? combined(text[i], text[i + 1]) : text[i]);
        i += pair;
    }
}

void appendDecomposed(std::u32string& out, char32_t codePoint) {
    char16_t units[64];
    UErrorCode error = U_ZERO_ERROR;
    const int count = unorm2_getDecomposition(&nfc(), static_cast<UChar32>(codePoint), units, 64, &error);
    if (count <= 0 || U_FAILURE(error))
        out += codePoint;
    else
        forEachCodePoint({units, static_cast<std::size_t>(count)}, [&out](char32_t c) { out += c; });
}

void appendFolded(std::u32string& out, char32_t codePoint) {
    char16_t given[2] = {static_cast<char16_t>(codePoint)};
    const int length = codePoint < 0x10000 ? 1 : 2;
    if (length == 2) {
        given[0] = leadOf(codePoint);
        given[1] = trailOf(codePoint);
    }
    char16_t units[16];
    UErrorCode error = U_ZERO_ERROR;
    const int count = u_strFoldCase(units, 16, given, length, U_FOLD_CASE_DEFAULT, &error);
    forEachCodePoint({units, static_cast<std::size_t>(count)}, [&out](char32_t c) { out += c; });
}

/// Puts every run of combining marks into the canonical order.
void reorder(std::u32string& decomposed) {
    const auto combiningClass = [](char32_t c) { return u_getCombiningClass(static_cast<UChar32>(c)); };
    for (auto start = decomposed.begin(); start != decomposed.end();) {
        const auto end = std::find_if(start, decomposed.end(), [&](char32_t c) { return combiningClass(c) == 0; });
        std::stable_sort(start, end, [&](char32_t a, char32_t b) { return combiningClass(a) < combiningClass(b); });
        start = end == decomposed.end() ? end : end + 1;
    }
}

/// A base letter begins a character; a combining mark does not, nor what composes with the letter before it.
bool combinesBackwards(char32_t codePoint) {
    const auto c = static_cast<UChar32>(codePoint);
    return (U_GET_GC_MASK(c) & U_GC_M_MASK) || !unorm2_hasBoundaryBefore(&nfc(), c);
}

/// Keeps what was made by the thread that was first.
template <class T> const T& published(std::atomic<const T*>& place, std::unique_ptr<const T> made) {
    const T* expected = nullptr;
    if (place.compare_exchange_strong(expected, made.get(), std::memory_order_acq_rel))
        return *made.release();
    return *expected;
}

constinit KeyTable tables[] = {KeyTable(Sameness::Canonical), KeyTable(Sameness::CanonicalCaseless),
                               KeyTable(Sameness::LiteralCaseless), KeyTable(Sameness::Markless),
                               KeyTable(Sameness::MarklessCaseless)};

}  // namespace

/// The code points with keys other than themselves, without the Hangul syllables, sorted by the beginnings of the keys.
struct KeyTable::Index {
    struct Line {
        char32_t begin, codePoint;
        bool operator<(const Line& other) const { return begin < other.begin; }
    };
    std::vector<Line> lines;

    explicit Index(const KeyTable& table) {
        constexpr std::u16string_view pattern = u"[[:NFD_QC=No:][:Changes_When_Casefolded=Yes:]]";
        UErrorCode error = U_ZERO_ERROR;
        const std::unique_ptr<USet, decltype(&uset_close)> set(
            uset_openPattern(pattern.data(), static_cast<int>(pattern.size()), &error), &uset_close);
        uset_removeRange(set.get(), firstSyllable, lastSyllable);
        for (int i = 0; i < uset_getItemCount(set.get()); ++i) {
            UChar32 start = 0, end = 0;
            if (uset_getItem(set.get(), i, &start, &end, nullptr, 0, &error) == 0)
                for (UChar32 c = start; c <= end; ++c)
                    add(table, static_cast<char32_t>(c));
        }
        std::sort(lines.begin(), lines.end());
    }

    void add(const KeyTable& table, char32_t codePoint) {
        if (const char32_t begin = table.key(codePoint)[0]; begin != codePoint)
            lines.push_back({begin, codePoint});
    }
};

const KeyTable& KeyTable::of(Sameness sameness) { return tables[static_cast<std::size_t>(sameness)]; }

std::u32string KeyTable::key(char32_t codePoint) const {
    const char16_t units[] = {codePoint > 0xFFFF ? leadOf(codePoint) : static_cast<char16_t>(codePoint),
                              trailOf(codePoint)};
    return key({units, codePoint > 0xFFFF ? 2U : 1U});
}

std::u32string KeyTable::key(std::u16string_view character) const {
    const bool canonical = sameness_ != Sameness::LiteralCaseless;
    std::u32string plain;
    forEachCodePoint(character, [&](char32_t c) { canonical ? appendDecomposed(plain, c) : plain.push_back(c); });
    if (canonical)
        reorder(plain);
    if (sameness_ >= Sameness::Markless)
        std::erase_if(plain, [](char32_t c) { return u_charType(static_cast<UChar32>(c)) == U_NON_SPACING_MARK; });
    if (sameness_ == Sameness::Canonical || sameness_ == Sameness::Markless)
        return plain;
    std::u32string folded;
    for (const char32_t c : plain)
        appendFolded(folded, c);
    return folded;
}

KeyTable::Entry KeyTable::makeEntry(char32_t codePoint) const {
    if (isSurrogate(codePoint))
        return {codePoint};
    const std::u32string k = key(codePoint);
    if (sameness_ != Sameness::LiteralCaseless && combinesBackwards(codePoint))
        return {extendsCharacter, k.size() == 1 && k[0] <= 0xFFFF ? static_cast<char16_t>(k[0]) : u'\0'};
    if (k.size() > 3 || std::any_of(k.begin() + 1, k.end(), [](char32_t c) { return c > 0xFFFF; }))
        return {tooLong};
    const auto at = [&k](std::size_t i) { return i < k.size() ? static_cast<char16_t>(k[i]) : u'\0'; };
    return {k[0], at(1), at(2)};
}

const KeyTable::Block& KeyTable::makeBlock(char32_t number) const {
    auto made = std::make_unique<Block>();
    for (char32_t i = 0; i < 256; ++i)
        made->entries[i] = makeEntry(number << 8 | i);
    return published<Block>(blocks_[number], std::move(made));
}

const KeyTable::Index& KeyTable::index() const {
    const Index* const made = index_.load(std::memory_order_acquire);
    return made ? *made : published<Index>(index_, std::make_unique<Index>(*this));
}

std::vector<char32_t> KeyTable::codePointsWithKey(char32_t begin) const {
    std::vector<char32_t> result;
    if (key(begin)[0] == begin)
        result.push_back(begin);
    const auto& lines = index().lines;
    const auto [from, to] = std::equal_range(lines.begin(), lines.end(), Index::Line{begin, 0});
    for (auto line = from; line != to; ++line)
        result.push_back(line->codePoint);
    return result;
}

char32_t CharacterReader::codePointAt(std::size_t position) const noexcept {
    const char16_t unit = text_[position];
    if (isLead(unit) && position + 1 < text_.size() && isTrail(text_[position + 1]))
        return combined(unit, text_[position + 1]);
    if (isTrail(unit) && position > 0 && isLead(text_[position - 1]))
        return KeyTable::extendsCharacter;
    return unit;
}

std::u32string_view CharacterReader::longKey(std::size_t start, std::size_t& position) {
    while (!isBoundary(position))
        ++position;
    const char32_t codePoint = codePointAt(start);
    const std::size_t size = codePoint > 0xFFFF ? 2 : 1;
    KeyTable::Entry entry = table_.entry(codePoint);
    if (entry.first < KeyTable::tooLong) {
        if (position - start == size)
            return shortKey(entry);
        // One mark cannot be out of order.
        if (position - start == size + 1 && !entry.second && (entry.second = entryAt(start + size).second))
            return shortKey(entry);
    }
    long_ = table_.key(text_.substr(start, position - start));
    return long_;
}

std::u32string_view CharacterReader::previous(std::size_t& position) {
    do
        --position;
    while (!isBoundary(position));
    std::size_t end = position;
    return next(end);
}

}  // namespace tovi::detail
