#pragma once

#include <memory>
#include <optional>
#include <string>
#include <unordered_map>
#include <vector>

#include <ToviFoundationKit/Foundation/DateSymbols_p.h>
#include <ToviFoundationKit/Foundation/IcuDateFormat_p.h>
#include <ToviFoundationKit/Foundation/TimeZoneRules_p.h>

namespace tovi::detail {

struct DateFormatSettings {
    std::string locale;  ///< with the calendar to be used, where that is not the locale's own
    std::u16string zone;
    const TimeZoneRules* rules;
    std::optional<WeekRule> weeks;          ///< in place of the locale's
    std::optional<std::u16string> pattern;  ///< in place of the styles
    IcuDateFormat::Styles styles;
    bool lenient;
};

/// A date pattern as a row of steps: texts, numbers and names, which it prints itself, and fields that it leaves to
/// ICU. Reading is ICU's all along. Not for several threads at once.
class CompiledDateFormat {
public:
    explicit CompiledDateFormat(DateFormatSettings settings);

    std::u16string_view pattern() const noexcept { return pattern_; }
    /// False, and nothing printed, when the pattern has a letter that means nothing.
    bool append(StringBuilder& out, const Moment& moment);
    /// Seconds since 2001.
    std::optional<NSTimeInterval> read(std::u16string_view text);

private:
    struct Step {
        char letter;          ///< 0 for a text
        int count;            ///< how often the letter stands there; the length of the text
        std::uint32_t start;  ///< of the text in texts_
    };
    /// A field that ICU prints, and answers of its by the beginning of the stretch for which they hold.
    struct IcuField {
        std::unique_ptr<IcuDateFormat> format;
        std::unordered_map<NSInteger, std::u16string> answers;
    };
    struct Fields;

    void compile();
    void addText(char16_t unit);
    bool addField(char16_t letter, std::size_t count);
    std::size_t widthOfPlainNumbers() const;
    std::optional<NSTimeInterval> readPlainNumbers(std::u16string_view text) const;
    void print(StringBuilder& out, const Step& step, const Fields& fields);
    void printYear(StringBuilder& out, const Step& step, NSInteger year, const Fields& fields);
    void printByIcu(StringBuilder& out, const Step& step, const Fields& fields);
    void printZone(StringBuilder& out, const Step& step, const Fields& fields);
    IcuField& icuField(const Step& step);
    IcuDateFormat& whole();

    DateFormatSettings settings_;
    std::shared_ptr<const DateSymbols> symbols_;
    std::u16string pattern_;
    bool spoilt_ = false;
    bool byIcu_ = false;  ///< ICU prints it all
    std::vector<Step> steps_;
    std::u16string texts_;
    std::size_t plainWidth_ = 0;       ///< of a text that is read without ICU
    std::vector<IcuField> icuFields_;  ///< by the index of the step; empty until one is needed
    std::unique_ptr<IcuDateFormat> whole_;
};

}  // namespace tovi::detail
