#pragma once

#include <atomic>
#include <cstring>
#include <span>
#include <string>
#include <string_view>

#include <ToviFoundationKit/Runtime/Class.h>
#include <ToviFoundationKit/Runtime/FormatArgument.h>

namespace tovi {

class NSData;
class NSMutableString;
enum NSStringEncoding : NSUInteger;
class StringBuilder;

namespace detail {
inline bool sameUnits(std::u16string_view a, std::u16string_view b) noexcept {
    return a.size() == b.size() && (a.empty() || std::memcmp(a.data(), b.data(), a.size() * sizeof(char16_t)) == 0);
}
}  // namespace detail

/// How a search compares; combine with |.
enum NSStringCompareOptions : NSUInteger {
    NSCaseInsensitiveSearch = 1,
    NSLiteralSearch = 2,    ///< code unit by code unit; otherwise canonically equivalent text is equal (UAX #15)
    NSBackwardsSearch = 4,  ///< the last match of the range
    NSAnchoredSearch = 8,   ///< only at the start of the range (with backwards: at its end)
    NSDiacriticInsensitiveSearch = 128  ///< accents and other nonspacing marks do not count; never literally
};
constexpr NSStringCompareOptions operator|(NSStringCompareOptions a, NSStringCompareOptions b) noexcept {
    return static_cast<NSStringCompareOptions>(static_cast<NSUInteger>(a) | static_cast<NSUInteger>(b));
}

/// Text: a run of UTF-16 code units. Indexes, lengths and ranges count code units; lone surrogates are kept as they
/// are. The immutable form keeps its units inside the object. Ranges outside the text raise NSRangeException.
class TOVI_EXPORT NSString : public NSObject {
    TOVI_DECLARE_CLASS(NSString)

public:
    static Ref<NSString> string();  ///< the empty string
    static Ref<NSString> stringWithString(const NSString& other);
    static Ref<NSString> stringWithCharacters(std::u16string_view units);
    /// Text from UTF-8; bytes that are not UTF-8 become U+FFFD, one for each maximal ill-formed subsequence.
    static Ref<NSString> fromUTF8(std::string_view bytes);
    /// Text from UTF-8, or nil when the bytes are not well-formed UTF-8.
    static RefPtr<NSString> stringWithUTF8String(std::string_view bytes);
    /// Text from bytes in the encoding (NSStringEncoding.h), or nil when they are not valid in it or the encoding is
    /// not known.
    static RefPtr<NSString> initWithData_encoding(const NSData& data, NSStringEncoding encoding);
    /// Text from bytes, whatever they are: each sequence that is not valid in the encoding becomes U+FFFD. An encoding
    /// that is not known is read as ASCII. `replaced` is given the number of U+FFFD that were put in.
    static Ref<NSString> fromBytes(std::span<const std::byte> bytes, NSStringEncoding encoding,
                                   NSUInteger* replaced = nullptr);
    /// Formats as NSFormat.h says.
    template <class... A> static Ref<NSString> stringWithFormat(std::u16string_view format, const A&... arguments);
    static Ref<NSString> stringWithFormat_arguments(std::u16string_view format, FormatArguments arguments);

    NSUInteger length() const noexcept { return length_; }
    unichar characterAtIndex(NSUInteger index) const;
    /// The units themselves: valid while the string lives and is not changed.
    std::u16string_view view() const noexcept { return {units_, length_}; }
    operator std::u16string_view() const noexcept { return view(); }

    Ref<NSString> substringFromIndex(NSUInteger index) const;
    Ref<NSString> substringToIndex(NSUInteger index) const;
    Ref<NSString> substringWithRange(NSRange range) const;
    Ref<NSString> stringByAppendingString(const NSString& suffix) const;
    template <class... A>
    Ref<NSString> stringByAppendingFormat(std::u16string_view format, const A&... arguments) const;

    /// True when the text begins (ends) with the other, canonically equivalent text included; true for the empty
    /// string.
    bool hasPrefix(const NSString& prefix) const;
    bool hasSuffix(const NSString& suffix) const;
    /// The first match, or {NSNotFound, 0}; the empty string is never found. A non-literal match covers whole
    /// characters: a base letter is not found where a combining mark follows it, in the range or behind it. Linear
    /// time.
    NSRange rangeOfString(const NSString& searched) const;
    NSRange rangeOfString_options(const NSString& searched, NSStringCompareOptions options) const;
    NSRange rangeOfString_options_range(const NSString& searched, NSStringCompareOptions options, NSRange range) const;

    /// Code unit for code unit.
    bool isEqualToString(const NSString& other) const noexcept { return detail::sameUnits(view(), other.view()); }
    /// The order of the texts: by code point of their canonical decompositions, without locale; with
    /// NSCaseInsensitiveSearch by full case folding; with NSLiteralSearch by code unit.
    NSComparisonResult compare(const NSString& other) const;
    NSComparisonResult compare_options(const NSString& other, NSStringCompareOptions options) const;
    NSComparisonResult caseInsensitiveCompare(const NSString& other) const;

    Ref<NSString> uppercaseString() const;  ///< full case mapping of Unicode, without locale
    Ref<NSString> lowercaseString() const;
    Ref<NSString> capitalizedString() const;  ///< the first letter of each word in title case, the others in lower case
    /// Without the white space (Unicode White_Space) and line ends at both ends.
    Ref<NSString> stringByTrimmingWhitespace() const;

    /// The text's bytes in the encoding, led by a byte-order mark where NSStringEncoding.h says so; nil when they would
    /// not read as the same text, or the encoding is not known.
    RefPtr<NSData> dataUsingEncoding(NSStringEncoding encoding) const;
    /// The same; with loss allowed, nil for unknown encodings only: characters that the encoding lacks become the
    /// nearest in ASCII where there is one (accents fall off, quotation marks and dashes become plain), otherwise a
    /// question mark, or U+FFFD in an encoding of Unicode.
    RefPtr<NSData> dataUsingEncoding_allowLossyConversion(NSStringEncoding encoding, bool lossy) const;
    /// Whether `dataUsingEncoding` gives bytes; makes none.
    bool canBeConvertedToEncoding(NSStringEncoding encoding) const;
    /// The number of bytes in the encoding, without a byte-order mark; 0 when the text cannot be converted.
    NSUInteger lengthOfBytesUsingEncoding(NSStringEncoding encoding) const;
    /// The first of ASCII, Latin 1, UTF-8 and UTF-16 (10) that takes the text without loss in the fewest bytes, marks
    /// included. UTF-16 takes every text.
    NSStringEncoding smallestEncoding() const;
    NSStringEncoding fastestEncoding() const;  ///< in which no character is converted: UTF-16 (10)
    static std::span<const NSStringEncoding> availableStringEncodings() noexcept;

    std::string UTF8String() const;  ///< lone surrogates become U+FFFD
    int intValue() const;            ///< the leading decimal number after white space, clamped; 0 without one
    NSInteger integerValue() const;
    double doubleValue() const;  ///< the leading number in C notation, whatever the process's locale; 0 without one
    bool boolValue() const;      ///< white space, sign and zeros skipped: true at Y, y, T, t or 1 to 9

    bool isEqual(const NSObject* other) const override;
    NSUInteger hash() const override;
    Ref<NSString> description() const override;  ///< the text itself
    Ref<NSObject> copy() const override;
    Ref<NSObject> mutableCopy() const override;  ///< an NSMutableString

    static void* operator new(std::size_t size);
    static void operator delete(void* memory);

protected:
    NSString() noexcept : NSString(u"", 0) {}
    NSString(const char16_t* units, NSUInteger length) noexcept : units_(units), length_(length) {}

    static std::uint32_t hashOf(std::u16string_view units) noexcept;
    /// These raise NSRangeException in the name of the operation. An index may be the length.
    void checkIndex(NSUInteger index, const char* operation) const;
    void checkRange(NSRange range, const char* operation) const;

    mutable std::atomic<std::uint32_t> hash_{0};  ///< 0 until asked for
    const char16_t* units_;
    NSUInteger length_;

private:
    friend class StringBuilder;
};

/// Text that can be changed. Not for several threads at once. A copy of an immutable string shares its units, as does
/// what setString and replacing leave, until the next change.
class TOVI_EXPORT NSMutableString final : public NSString {
    TOVI_DECLARE_CLASS(NSMutableString)

public:
    static Ref<NSMutableString> string();
    static Ref<NSMutableString> stringWithString(const NSString& other);
    static Ref<NSMutableString> stringWithCapacity(NSUInteger capacity);
    ~NSMutableString() override;

    void appendString(const NSString& suffix);
    void appendCharacters(std::u16string_view units);
    template <class... A> void appendFormat(std::u16string_view format, const A&... arguments);
    void insertString_atIndex(const NSString& inserted, NSUInteger index);
    void deleteCharactersInRange(NSRange range);
    void replaceCharactersInRange_withString(NSRange range, const NSString& replacement);
    void replaceCharactersInRange_withCharacters(NSRange range, std::u16string_view replacement);
    /// Replaces every match in the range, one after the other from the end where the search begins, in linear time;
    /// answers how many there were. An anchored search matches once.
    NSUInteger replaceOccurrencesOfString_withString_options_range(const NSString& searched,
                                                                   const NSString& replacement,
                                                                   NSStringCompareOptions options, NSRange range);
    void setString(const NSString& other);

    NSUInteger hash() const override;
    Ref<NSObject> copy() const override;

private:
    NSMutableString() noexcept = default;
    void reserve(NSUInteger capacity);
    void splice(NSRange range, std::u16string_view replacement);

    const NSString* source() const noexcept { return store_ & 1 ? nullptr : reinterpret_cast<const NSString*>(store_); }
    NSUInteger capacity() const noexcept { return store_ & 1 ? store_ >> 1 : 0; }
    void own(const char16_t* units, std::uintptr_t store) noexcept;
    void shareUnits(const NSString& source);

    /// The immutable string whose units these are, or null; or, with the lowest bit set, how many units fit into memory
    /// of our own.
    std::uintptr_t store_ = 0;
};

inline bool operator==(const NSString& a, const NSString& b) noexcept { return a.isEqualToString(b); }
inline bool operator==(const NSString& a, std::u16string_view b) noexcept { return detail::sameUnits(a, b); }

template <class... A> Ref<NSString> NSString::stringWithFormat(std::u16string_view format, const A&... arguments) {
    const FormatArgumentList<sizeof...(A)> list{FormatArgument(arguments)...};
    return stringWithFormat_arguments(format, list);
}

template <class... A>
Ref<NSString> NSString::stringByAppendingFormat(std::u16string_view format, const A&... arguments) const {
    return stringByAppendingString(stringWithFormat(format, arguments...));
}

template <class... A> void NSMutableString::appendFormat(std::u16string_view format, const A&... arguments) {
    appendString(stringWithFormat(format, arguments...));
}

inline namespace literals {
/// u"text"_ns: one immortal string for each text, made when first reached.
template <detail::Literal text> Ref<NSString> operator""_ns() {
    static NSString& string = *NSString::stringWithCharacters(text.view()).leak();
    return string;
}
}  // namespace literals

}  // namespace tovi
