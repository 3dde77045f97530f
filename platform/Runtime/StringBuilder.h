#pragma once

#include <cstddef>
#include <string_view>

#include <ToviFoundationKit/Runtime/NSString.h>

namespace tovi {

/// Collects a text piece by piece and ends as one immutable string, without copying a long one. Grows geometrically;
/// short texts need no memory but the string's own. What is appended may be a part of `view()`.
class TOVI_EXPORT StringBuilder {
public:
    StringBuilder() noexcept {}
    ~StringBuilder();
    StringBuilder(const StringBuilder&) = delete;
    StringBuilder& operator=(const StringBuilder&) = delete;

    StringBuilder& append(char16_t unit) {
        *extend(1) = unit;
        return *this;
    }
    StringBuilder& append(std::u16string_view units);
    StringBuilder& append(const NSString& string) { return append(string.view()); }
    StringBuilder& append(NSUInteger count, char16_t unit);
    StringBuilder& appendCodePoint(char32_t codePoint);  ///< U+FFFD for what is beyond U+10FFFF
    StringBuilder& appendASCII(std::string_view characters);
    /// Bytes that are not UTF-8 become U+FFFD, one for each maximal ill-formed subsequence.
    StringBuilder& appendUTF8(std::string_view bytes);

    /// Makes room for so many units more.
    void reserve(NSUInteger count) {
        if (count > capacity_ - length_) [[unlikely]]
            grow(count);
    }
    /// Appends so many units, to be written by the caller at once.
    char16_t* extend(NSUInteger count) {
        reserve(count);
        char16_t* const end = units_ + length_;
        length_ += count;
        return end;
    }
    /// Puts so many of the unit before the one at the index.
    StringBuilder& insert(NSUInteger index, NSUInteger count, char16_t unit);
    /// Takes units away from the end.
    void truncate(NSUInteger length) noexcept { length_ = length; }

    NSUInteger length() const noexcept { return length_; }
    std::u16string_view view() const noexcept { return {units_, length_}; }

    /// The text so far; the builder is empty afterwards.
    Ref<NSString> string();

private:
    static constexpr NSUInteger inlineCapacity = 120;

    void grow(NSUInteger count);
    bool isInline() const noexcept { return units_ == inline_; }
    void reset() noexcept;

    char16_t* units_ = inline_;
    NSUInteger length_ = 0;
    NSUInteger capacity_ = inlineCapacity;
    char16_t inline_[inlineCapacity];
};

}  // namespace tovi
