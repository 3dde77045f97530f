#pragma once

#include <concepts>
#include <string>
#include <string_view>

#include <ToviFoundationKit/Runtime/NSNumber.h>
#include <ToviFoundationKit/Runtime/NSString.h>

namespace tovi {

// box(value): a C++ value as an object, as in NSArray::of(1, u"two", 3.0). Numbers become NSNumber of their own type,
// texts NSString (the 8-bit ones are UTF-8), structures NSValue; objects stay as they are. A null RefPtr raises
// NSInvalidArgumentException; nullptr and bare pointers do not compile.

namespace detail {
template <class T> concept CharacterUnit =
    std::same_as<T, char16_t> || std::same_as<T, char32_t> || std::same_as<T, char8_t> || std::same_as<T, wchar_t>;
}  // namespace detail

void box(std::nullptr_t) = delete;

template <std::integral T>
    requires(!detail::CharacterUnit<T>)
Ref<NSNumber> box(T value) { return detail::boxInteger(detail::encodingOf<T>(), static_cast<std::int64_t>(value)); }
template <class T>
    requires std::is_enum_v<T> Ref<NSNumber> box(T value) { return box(static_cast<std::underlying_type_t<T>>(value)); }
inline Ref<NSNumber> box(float value) { return NSNumber::numberWithFloat(value); }
inline Ref<NSNumber> box(double value) { return NSNumber::numberWithDouble(value); }

inline Ref<NSString> box(std::u16string_view text) { return NSString::stringWithCharacters(text); }
inline Ref<NSString> box(const char16_t* text) { return NSString::stringWithCharacters(text); }
inline Ref<NSString> box(const std::u16string& text) { return NSString::stringWithCharacters(text); }
inline Ref<NSString> box(std::string_view text) { return NSString::fromUTF8(text); }
inline Ref<NSString> box(const char* text) { return NSString::fromUTF8(text); }
inline Ref<NSString> box(const std::string& text) { return NSString::fromUTF8(text); }

inline Ref<NSValue> box(NSPoint point) { return NSValue::valueWithPoint(point); }
inline Ref<NSValue> box(NSSize size) { return NSValue::valueWithSize(size); }
inline Ref<NSValue> box(NSRect rect) { return NSValue::valueWithRect(rect); }
inline Ref<NSValue> box(NSRange range) { return NSValue::valueWithRange(range); }

template <std::derived_from<NSObject> T> Ref<T> box(const T& object) { return share(object); }
template <class T> Ref<T> box(Ref<T> object) { return object; }
template <class T> Ref<T> box(const RefPtr<T>& object) { return object.ref(); }

}  // namespace tovi
