#pragma once

#include <memory>
#include <optional>
#include <string>
#include <string_view>

#include <ToviFoundationKit/Foundation/CivilTime_p.h>
#include <ToviFoundationKit/Runtime/StringBuilder.h>

namespace tovi::detail {

/// One of ICU's date formats: a locale, a zone, and a pattern or two styles (0, none, to 4, full). Milliseconds are
/// counted from 1970. Not for several threads at once.
class IcuDateFormat {
public:
    struct Styles {
        int date;
        int time;
    };

    IcuDateFormat(const std::string& locale, std::u16string_view zone, std::u16string_view pattern);
    IcuDateFormat(const std::string& locale, std::u16string_view zone, Styles styles);
    ~IcuDateFormat();
    IcuDateFormat(const IcuDateFormat&) = delete;
    IcuDateFormat& operator=(const IcuDateFormat&) = delete;

    void setWeeks(WeekRule rule);
    std::u16string pattern() const;
    /// Whether it writes some of its numbers in another manner than the locale's, as Roman ones.
    bool hasOwnNumbers() const;
    void append(StringBuilder& out, double milliseconds) const;

    struct Reading {
        bool lenient;
        bool fractions;       ///< whether the pattern has fractions of a second
        double defaults;      ///< the moment of the fields that the text does not tell
        double centuryStart;  ///< the first moment of the hundred years that two digits stand for
    };
    /// The milliseconds of the moment that the text tells, if it does. With fractions, a text of more than 34 digits
    /// does not.
    std::optional<double> read(std::u16string_view text, const Reading& how) const;

private:
    struct Handle;
    std::unique_ptr<Handle> handle_;
};

}  // namespace tovi::detail
