#pragma once

#include <ToviFoundationKit/Runtime/NSString.h>

namespace tovi {

/// A name that the library gives to something, such as a mode or a notification. It goes wherever a string, or one that
/// may be nil, is asked for, and is the same object each time.
template <detail::Literal text> struct ConstantString {
    operator NSString&() const { return *string(); }
    operator NSString*() const { return string().get(); }
    operator Ref<NSString>() const { return string(); }
    constexpr operator std::u16string_view() const noexcept { return text.view(); }
    friend bool operator==(const NSString& string, ConstantString) { return string == text.view(); }

private:
    static Ref<NSString> string() { return literals::operator""_ns<text>(); }
};

}  // namespace tovi
