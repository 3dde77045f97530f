// String tables: anything may be thrown at the parser. What it understood is written in the plainest way and must be
// understood alike; what it refused must have a place inside the file.

#include <cstdio>
#include <string>

#include <ToviFoundationKit/Foundation/NSError.h>
#include <ToviFoundationKit/Foundation/StringsFile.h>

#include "Support.h"

using namespace tovi;

namespace {

void appendQuoted(std::u16string& file, const NSObject& object) {
    file += u'"';
    for (const char16_t unit : static_cast<const NSString&>(object).view()) {
        file += u"\\U";
        for (int shift = 12; shift >= 0; shift -= 4)
            file += u"0123456789abcdef"[unit >> shift & 15];
    }
    file += u'"';
}

std::u16string written(const NSDictionary& strings) {
    std::u16string file = u"\uFEFF";
    for (const auto& [key, value] : strings) {
        appendQuoted(file, key);
        file += u'=';
        appendQuoted(file, value);
        file += u';';
    }
    return file;
}

}  // namespace

extern "C" int LLVMFuzzerTestOneInput(const std::uint8_t* data, std::size_t size) {
    RefPtr<NSError> error;
    const auto strings = stringsFromBytes(std::as_bytes(std::span(data, size)), &error);
    require(!strings == static_cast<bool>(error));
    if (strings) {
        const std::u16string file = written(*strings);
        const auto again = stringsFromBytes(std::as_bytes(std::span(file)));
        require(again && *again == *strings);
    } else {
        unsigned long line = 0, column = 0;
        require(std::sscanf(error->localizedDescription()->UTF8String().c_str(), "line %lu, column %lu: ", &line,
                            &column) == 2);
        require(line >= 1 && line <= size + 1 && column >= 1 && column <= size + 1);
    }
    return 0;
}
