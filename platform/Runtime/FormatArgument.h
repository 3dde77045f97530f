#pragma once

#include <array>
#include <concepts>
#include <cstddef>
#include <cstdint>
#include <span>
#include <string>
#include <string_view>

#include <ToviFoundationKit/Runtime/NSObject.h>

namespace tovi {

/// One argument of a format, with the type that it was given; a conversion of another type converts it. See NSFormat.h.
class FormatArgument {
public:
    enum class Type : std::uint8_t { Signed, Unsigned, Real, Object, Text8, Text16, Character, Pointer };

    template <std::integral T> FormatArgument(T value) noexcept : size_(sizeof(T)) {
        if constexpr (std::same_as<T, char16_t> || std::same_as<T, char32_t>) {
            type_ = Type::Character;
            integer_ = static_cast<std::int64_t>(value);
        } else {
            type_ = std::is_signed_v<T> || std::same_as<T, bool> ? Type::Signed : Type::Unsigned;
            integer_ = static_cast<std::int64_t>(value);
        }
    }
    template <class T>
        requires std::is_enum_v<T> FormatArgument(T value)
    noexcept : FormatArgument(static_cast<std::underlying_type_t<T>>(value)) {}
    FormatArgument(double value) noexcept : type_(Type::Real), real_(value) {}
    FormatArgument(const NSObject& object) noexcept : type_(Type::Object), object_(&object) {}
    FormatArgument(const NSObject* object) noexcept : type_(Type::Object), object_(object) {}
    FormatArgument(std::nullptr_t) noexcept : type_(Type::Object), object_(nullptr) {}
    template <class T> FormatArgument(const Ref<T>& object) noexcept : type_(Type::Object), object_(object.get()) {}
    template <class T> FormatArgument(const RefPtr<T>& object) noexcept : type_(Type::Object), object_(object.get()) {}
    FormatArgument(std::string_view text) noexcept : type_(Type::Text8), text8_(text) {}  ///< UTF-8
    FormatArgument(const char* text) noexcept : FormatArgument(std::string_view(text ? text : "(null)")) {}
    FormatArgument(const std::string& text) noexcept : FormatArgument(std::string_view(text)) {}
    FormatArgument(std::u16string_view text) noexcept : type_(Type::Text16), text16_(text) {}
    FormatArgument(const char16_t* text) noexcept : FormatArgument(std::u16string_view(text ? text : u"(null)")) {}
    FormatArgument(Selector selector) noexcept : FormatArgument(selector.name()) {}
    FormatArgument(const void* pointer) noexcept : type_(Type::Pointer), pointer_(pointer) {}

    Type type() const noexcept { return type_; }
    std::size_t size() const noexcept { return size_; }  ///< bytes of the integer type given
    std::int64_t integer() const noexcept { return integer_; }
    double real() const noexcept { return real_; }
    const NSObject* object() const noexcept { return object_; }
    std::string_view text8() const noexcept { return text8_; }
    std::u16string_view text16() const noexcept { return text16_; }
    const void* pointer() const noexcept { return pointer_; }

private:
    Type type_;
    std::uint8_t size_ = 8;
    union {
        std::int64_t integer_;
        double real_;
        const NSObject* object_;
        std::string_view text8_;
        std::u16string_view text16_;
        const void* pointer_;
    };
};

using FormatArguments = std::span<const FormatArgument>;
template <std::size_t n> using FormatArgumentList = std::array<FormatArgument, n>;

}  // namespace tovi
