#pragma once

#include <optional>
#include <string_view>
#include <vector>

#include <ToviFoundationKit/Foundation/TextKey_p.h>
#include <ToviFoundationKit/Runtime/NSString.h>
#include <ToviFoundationKit/Runtime/UnitSearch_p.h>

namespace tovi::detail {

/// A text to be searched for, prepared once for any number of searches. Each takes linear time. It refers to the text
/// that was given and does not copy it.
class TextSearch {
public:
    TextSearch(std::u16string_view searched, NSStringCompareOptions options);

    /// The match in the range, which lies inside the text; {NSNotFound, 0} without one. Characters that reach across an
    /// end of the range are not matched.
    NSRange find(std::u16string_view text, NSRange range);

private:
    bool has(NSStringCompareOptions option) const noexcept { return options_ & option; }
    NSRange findLiterally(std::u16string_view text, std::u16string_view searched) const;
    std::optional<NSRange> findInSimple(std::u16string_view text) const;
    void prepare();
    NSRange findAnchored(CharacterReader& reader, NSRange range) const;
    NSRange findForwards(std::u16string_view text, CharacterReader& reader, NSRange range);
    NSRange findBackwards(CharacterReader& reader, NSRange range);
    template <class Iterator> std::size_t match(Iterator from, Iterator to, std::size_t edge);

    // The filter: units that can begin a match, and those that can come next.
    void prepareFilter();
    std::u32string_view head(std::size_t position) const;
    template <class Use> bool forEachBeginning(std::size_t position, Use use) const;
    bool addSecond(char32_t codePoint, const std::u32string& key);

    /// What is known of the key's first units, and, in turn, of the units read last.
    struct Place {
        std::size_t retry = 0;  ///< how many units still match when no more than these do
        std::size_t edge = 0;   ///< where the unit's character began; npos for what is not its first
    };

    std::u16string_view searched_;
    NSStringCompareOptions options_;
    const KeyTable* table_ = nullptr;  ///< null where code units are compared
    std::u32string key_;               ///< reversed for a search backwards
    std::vector<Place> places_;
    std::size_t oldest_ = 0;  ///< the place whose edge was set first
    std::size_t matched_ = 0;
    bool filterPrepared_ = false;
    UnitSet first_, second_;
};

/// What makes texts the same for these options; nothing where code units are compared.
std::optional<Sameness> samenessFor(NSStringCompareOptions options) noexcept;

/// The order of two texts by their keys.
NSComparisonResult compareKeys(std::u16string_view a, std::u16string_view b, const KeyTable& table);

}  // namespace tovi::detail
