#include <algorithm>
#include <vector>

#include <ToviFoundationKit/Foundation/Collections_p.h>
#include <ToviFoundationKit/Runtime/StringBuilder.h>

namespace tovi::detail {

namespace {

using namespace std::string_view_literals;

constexpr std::size_t indentation = 4;
constexpr std::size_t deepestIndentation =
    16;  // levels; deeper ones would make the text grow with the square of the depth

void appendIndentation(StringBuilder& text, std::size_t level) {
    text.append(std::min(level, deepestIndentation) * indentation, u' ');
}

constexpr bool isPlain(char16_t unit) noexcept {
    return (unit >= u'0' && unit <= u'9') || (unit >= u'A' && unit <= u'Z') || (unit >= u'a' && unit <= u'z');
}

void appendEscaped(StringBuilder& text, char16_t unit) {
    static constexpr std::u16string_view special = u"\"\\\n\t\r\a\b\f\v";
    static constexpr std::u16string_view letters = u"\"\\ntrabfv";
    if (const std::size_t found = special.find(unit); found != special.npos) {
        text.append(u'\\');
        text.append(letters[found]);
    } else if (unit >= u' ' && unit < 0x7F) {
        text.append(unit);
    } else {
        text.append(u"\\U");
        for (int shift = 12; shift >= 0; shift -= 4)
            text.append(u"0123456789abcdef"[unit >> shift & 0xF]);
    }
}

void appendWord(StringBuilder& text, std::u16string_view word) {
    if (!word.empty() && std::all_of(word.begin(), word.end(), isPlain)) {
        text.append(word);
        return;
    }
    text.append(u'"');
    for (const char16_t unit : word)
        appendEscaped(text, unit);
    text.append(u'"');
}

/// The description of one collection, as far as it has been written.
class Writing {
public:
    Writing(const NSObject& collection, CollectionKind kind, std::size_t level) noexcept
        : collection_(&collection), kind_(kind), level_(level) {}

    void open(StringBuilder& text) const {
        appendIndentation(text, level_);
        text.append(kind_ == CollectionKind::Array ? u"(\n"sv : kind_ == CollectionKind::Set ? u"{(\n"sv : u"{\n"sv);
    }

    /// Goes on until a nested collection is reached, which is answered; `wrote` is to be told when it has been written.
    const NSObject* nextNested(StringBuilder& text) {
        while (const NSObject* const object = current()) {
            if (!atValue_)
                begin(text);
            if (kindOf(*object) != CollectionKind::None)
                return object;
            appendWord(text, object->description()->view());
            wrote(text);
        }
        return nullptr;
    }

    void wrote(StringBuilder& text) {
        if (kind_ == CollectionKind::Dictionary && !atValue_) {
            text.append(u" = ");
            atValue_ = true;
            return;
        }
        if (kind_ == CollectionKind::Dictionary)
            text.append(u";\n");
        atValue_ = false;
        ++position_;
        first_ = false;
    }

    void close(StringBuilder& text) const {
        if (kind_ != CollectionKind::Dictionary && !first_)
            text.append(u'\n');
        appendIndentation(text, level_);
        text.append(kind_ == CollectionKind::Array ? u")"sv : kind_ == CollectionKind::Set ? u")}"sv : u"}"sv);
    }

    std::size_t level() const noexcept { return level_; }

private:
    void begin(StringBuilder& text) const {
        if (kind_ != CollectionKind::Dictionary && !first_)
            text.append(u",\n");
        appendIndentation(text, level_ + 1);
    }

    template <class Table> auto entryIn(const Table& table) noexcept {
        auto* entry = table.begin() + position_;
        for (; entry < table.end() && !entry->key; ++entry)
            ++position_;
        return entry < table.end() ? entry : nullptr;
    }

    const NSObject* current() noexcept {
        if (kind_ == CollectionKind::Array) {
            const auto& array = static_cast<const NSArray&>(*collection_);
            return position_ < array.count() ? &CollectionAccess::object(array, position_) : nullptr;
        }
        if (kind_ == CollectionKind::Set) {
            const auto* entry = entryIn(CollectionAccess::table(static_cast<const NSSet&>(*collection_)));
            return entry ? entry->key : nullptr;
        }
        const auto* entry = entryIn(CollectionAccess::table(static_cast<const NSDictionary&>(*collection_)));
        return !entry ? nullptr : atValue_ ? entry->value : entry->key;
    }

    const NSObject* collection_;
    CollectionKind kind_;
    bool atValue_ = false;  ///< of a dictionary: the key has been written
    bool first_ = true;
    std::size_t position_ = 0;  ///< of the element or entry
    std::size_t level_;
};

}  // namespace

// The collections around the one being written are kept in a vector, not on the stack.
Ref<NSString> descriptionOfCollection(const NSObject& collection, CollectionKind kind) {
    StringBuilder text;
    std::vector<Writing> outer;
    Writing at(collection, kind, 0);
    at.open(text);
    for (;;) {
        if (const NSObject* const nested = at.nextNested(text)) {
            outer.push_back(at);
            at = Writing(*nested, kindOf(*nested), at.level() + 1);
            at.open(text);
            continue;
        }
        at.close(text);
        if (outer.empty())
            return text.string();
        at = outer.back();
        outer.pop_back();
        at.wrote(text);
    }
}

}  // namespace tovi::detail
