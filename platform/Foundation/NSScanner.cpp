#include <ToviFoundationKit/Foundation/NSScanner.h>

#include <algorithm>
#include <limits>

#include <ToviFoundationKit/Runtime/Additions.h>
#include <ToviFoundationKit/Runtime/NSException.h>
#include <ToviFoundationKit/Runtime/NumberText_p.h>
#include <ToviFoundationKit/Runtime/Unicode_p.h>

namespace tovi {

TOVI_DEFINE_CLASS(NSScanner, NSObject)

NSScanner::NSScanner(const NSString& string)
    : string_(NSString::stringWithString(string)), skipped_(NSCharacterSet::whitespaceAndNewlineCharacterSet()) {}

Ref<NSScanner> NSScanner::scannerWithString(const NSString& string) { return adopt(*new NSScanner(string)); }

void NSScanner::setScanLocation(NSUInteger location) {
    if (location > string_->length())
        NSException::raise(NSRangeException,
                           u"*** -[NSScanner setScanLocation:]: Index %llu out of bounds; string length %llu", location,
                           string_->length());
    location_ = location;
}

/// Where the run of members (or of others) that starts there ends.
NSUInteger NSScanner::endOfRun(const NSCharacterSet& set, NSUInteger from, bool ofMembers) const {
    const std::u16string_view text = *string_;
    while (from < text.size()) {
        const bool isPair = detail::isLead(text[from]) && from + 1 < text.size() && detail::isTrail(text[from + 1]);
        const char32_t codePoint = isPair ? detail::combined(text[from], text[from + 1]) : text[from];
        if (set.longCharacterIsMember(codePoint) != ofMembers)
            break;
        from += isPair ? 2 : 1;
    }
    return from;
}

NSUInteger NSScanner::start() const { return skipped_ ? endOfRun(*skipped_, location_, true) : location_; }

bool NSScanner::isAtEnd() const { return start() == string_->length(); }

bool NSScanner::take(NSUInteger from, NSUInteger to, RefPtr<NSString>* result) {
    if (from == to)
        return false;
    location_ = to;
    if (result)
        *result = string_->substringWithRange({from, to - from});
    return true;
}

namespace {

NSStringCompareOptions optionsOf(const NSScanner& scanner) {
    return scanner.caseSensitive() ? NSLiteralSearch : NSLiteralSearch | NSCaseInsensitiveSearch;
}

}  // namespace

bool NSScanner::scanString_intoString(const NSString& wanted, RefPtr<NSString>* result) {
    const NSUInteger from = start();
    const NSRange range{from, string_->length() - from};
    const NSRange found = string_->rangeOfString_options_range(wanted, optionsOf(*this) | NSAnchoredSearch, range);
    return found.wasFound() && take(from, found.end(), result);
}

bool NSScanner::scanUpToString_intoString(const NSString& stop, RefPtr<NSString>* result) {
    const NSUInteger from = start();
    const NSRange found =
        string_->rangeOfString_options_range(stop, optionsOf(*this), {from, string_->length() - from});
    return take(from, found.wasFound() ? found.location : string_->length(), result);
}

bool NSScanner::scanCharactersFromSet_intoString(const NSCharacterSet& wanted, RefPtr<NSString>* result) {
    const NSUInteger from = start();
    return take(from, endOfRun(wanted, from, true), result);
}

bool NSScanner::scanUpToCharactersFromSet_intoString(const NSCharacterSet& stops, RefPtr<NSString>* result) {
    const NSUInteger from = start();
    return take(from, endOfRun(stops, from, false), result);
}

template <auto scan, class Value> bool NSScanner::scanNumber(Value& value) {
    const NSUInteger from = start();
    const std::size_t length = scan(rest(from), value);
    return take(from, from + length, nullptr);
}

bool NSScanner::scanInteger(NSInteger* value) {
    NSInteger scanned = 0;
    const bool found = scanNumber<&detail::scanInteger>(scanned);
    if (found && value)
        *value = scanned;
    return found;
}

bool NSScanner::scanInt(int* value) {
    NSInteger scanned = 0;
    const bool found = scanInteger(&scanned);
    using Limits = std::numeric_limits<int>;
    if (found && value)
        *value = static_cast<int>(std::clamp<NSInteger>(scanned, Limits::min(), Limits::max()));
    return found;
}

bool NSScanner::scanHexLongLong(unsigned long long* value) {
    NSUInteger scanned = 0;
    const bool found = scanNumber<&detail::scanHexadecimal>(scanned);
    if (found && value)
        *value = scanned;
    return found;
}

bool NSScanner::scanHexInt(unsigned* value) {
    unsigned long long scanned = 0;
    const bool found = scanHexLongLong(&scanned);
    if (found && value)
        *value = static_cast<unsigned>(std::min<unsigned long long>(scanned, std::numeric_limits<unsigned>::max()));
    return found;
}

bool NSScanner::scanDouble(double* value) {
    double scanned = 0;
    const bool found = scanNumber<&detail::scanReal>(scanned);
    if (found && value)
        *value = scanned;
    return found;
}

namespace {

const Additions<NSScanner> additions{
    classLevel<&NSScanner::scannerWithString>("scannerWithString:"),
    instance<&NSScanner::string>("string"),
    instance<&NSScanner::scanLocation>("scanLocation"),
    instance<&NSScanner::setScanLocation>("setScanLocation:"),
    instance<&NSScanner::charactersToBeSkipped>("charactersToBeSkipped"),
    instance<&NSScanner::setCharactersToBeSkipped>("setCharactersToBeSkipped:"),
    instance<&NSScanner::caseSensitive>("caseSensitive"),
    instance<&NSScanner::setCaseSensitive>("setCaseSensitive:"),
    instance<&NSScanner::isAtEnd>("isAtEnd"),
};

}  // namespace

}  // namespace tovi
