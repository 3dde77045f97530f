#pragma once

#include <iterator>
#include <span>
#include <sstream>
#include <string>
#include <string_view>
#include <vector>

#include <ToviFoundationKit/Foundation/NSData.h>
#include <ToviFoundationKit/Runtime/NSString.h>

inline tovi::Ref<tovi::NSString> text(std::u16string_view units) { return tovi::NSString::stringWithCharacters(units); }

inline tovi::Ref<tovi::NSData> made(std::string_view bytes) {
    return tovi::NSData::dataWithBytes(std::as_bytes(std::span(bytes)));
}

inline std::string_view view(const tovi::NSData& data) {
    return {reinterpret_cast<const char*>(data.bytes().data()), data.bytes().size()};
}

inline std::string repeated(std::string_view text, int count) {
    std::string result;
    while (count--)
        result += text;
    return result;
}

/// The words of a text, with blanks in between.
inline std::vector<std::string> words(const std::string& text) {
    std::istringstream in(text);
    return {std::istream_iterator<std::string>(in), {}};
}
