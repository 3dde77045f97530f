#include <cstdlib>

#include <unicode/ucal.h>

#include <ToviFoundationKit/Foundation/TimeZoneRules_p.h>

namespace tovi::detail {

namespace {

/// "Europe/Berlin" for ":Europe/Berlin" and "/usr/share/zoneinfo/posix/Europe/Berlin".
std::string_view zoneOfVariable(std::string_view value) {
    if (value.starts_with(':'))
        value.remove_prefix(1);
    constexpr std::string_view folder = "/zoneinfo/";
    if (const std::size_t at = value.find(folder); at != value.npos)
        value.remove_prefix(at + folder.size());
    for (const std::string_view flavour : {"posix/", "right/"})
        if (value.starts_with(flavour))
            value.remove_prefix(flavour.size());
    return value;
}

}  // namespace

std::u16string systemTimeZoneName() {
    if (const char* variable = std::getenv("TZ")) {
        const std::string_view zone = zoneOfVariable(variable);
        const std::u16string name(zone.begin(), zone.end());
        if (name.empty())
            return u"GMT";
        if (TimeZoneRules::named(name))
            return name;
    }
    // It also makes the best of a variable with rules written out, and of a localtime file without a name.
    UChar name[128];
    UErrorCode error = U_ZERO_ERROR;
    const int length = ucal_getHostTimeZone(name, 128, &error);
    return U_SUCCESS(error) && length <= 128 ? std::u16string(name, static_cast<std::size_t>(length)) : u"GMT";
}

}  // namespace tovi::detail
