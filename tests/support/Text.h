#pragma once

#include <span>
#include <string_view>

#include <ToviFoundationKit/Foundation/NSData.h>
#include <ToviFoundationKit/Runtime/NSString.h>

inline tovi::Ref<tovi::NSString> text(std::u16string_view units) { return tovi::NSString::stringWithCharacters(units); }

inline tovi::Ref<tovi::NSData> made(std::string_view bytes) {
    return tovi::NSData::dataWithBytes(std::as_bytes(std::span(bytes)));
}

inline std::string_view view(const tovi::NSData& data) {
    return {reinterpret_cast<const char*>(data.bytes().data()), data.bytes().size()};
}
