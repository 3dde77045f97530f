// Character references, beside the same scanned step by step; and what was encoded decodes to itself.

#include <ToviFoundationKit/ToviFoundationKit.h>

#include "Support.h"

using namespace tovi;

namespace {

/// What is behind "&#".
void scanNumeric(NSScanner& scanner, NSMutableString& out) {
    const bool hexadecimal = scanner.scanString_intoString(u"x"_ns);
    int number = 0;
    unsigned hexadecimalNumber = 0;
    if (hexadecimal ? scanner.scanHexInt(&hexadecimalNumber) : scanner.scanInt(&number)) {
        const auto unit = static_cast<char16_t>(hexadecimal ? hexadecimalNumber : static_cast<unsigned>(number));
        out.appendCharacters({&unit, 1});
        scanner.scanString_intoString(u";"_ns);
        return;
    }
    RefPtr<NSString> rest = u""_ns;
    scanner.scanUpToCharactersFromSet_intoString(NSCharacterSet::characterSetWithCharactersInString(u" \t\n\r;"_ns),
                                                 &rest);
    out.appendFormat(u"&#%@%@", hexadecimal ? u"x"_ns : u""_ns, rest);
}

/// What is behind "&": a name that alone is known, or nothing.
void scanName(NSScanner& scanner, NSMutableString& out) {
    const std::u16string_view rest = scanner.string()->view().substr(scanner.scanLocation());
    const std::size_t length = rest.substr(0, 9).find(u';');
    if (length != rest.npos) {
        const auto name = NSString::stringWithCharacters(rest.substr(0, length + 1));
        const auto reference = u"&"_ns->stringByAppendingString(name);
        const auto decoded = stringByDecodingXMLEntities(reference);
        if (length && rest[0] != u'&' && rest[0] != u'#' && decoded->length() == 1) {
            out.appendString(decoded);
            scanner.scanString_intoString(name);
            return;
        }
    }
    out.appendString(u"&"_ns);
}

Ref<NSString> decodedStepByStep(const NSString& text) {
    const auto out = NSMutableString::string();
    const auto scanner = NSScanner::scannerWithString(text);
    scanner->setCharactersToBeSkipped(nullptr);
    scanner->setCaseSensitive(true);
    while (!scanner->isAtEnd()) {
        RefPtr<NSString> run;
        if (scanner->scanUpToString_intoString(u"&"_ns, &run))
            out->appendString(*run);
        if (scanner->scanString_intoString(u"&#"_ns))
            scanNumeric(scanner, out);
        else if (scanner->scanString_intoString(u"&"_ns))
            scanName(scanner, out);
    }
    return NSString::stringWithString(out);
}

}  // namespace

extern "C" int LLVMFuzzerTestOneInput(const std::uint8_t* data, std::size_t size) {
    if (size > 4'000)
        return 0;
    std::u16string units;
    for (std::size_t i = 0; i < size; ++i)
        units += data[i] == 0xFF && i + 2 < size ? static_cast<char16_t>(data[i + 1] << 8 | data[i + 2]) : data[i];
    const auto text = NSString::stringWithCharacters(units);
    require(stringByDecodingXMLEntities(text) == decodedStepByStep(text), "decoded");
    require(stringByDecodingXMLEntities(stringByEncodingXMLEntities(text)) == text, "encoded and decoded");
    return 0;
}
