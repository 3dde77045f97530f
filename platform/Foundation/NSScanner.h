#pragma once

#include <ToviFoundationKit/Foundation/NSCharacterSet.h>

namespace tovi {

/// Reads a text from left to right. Each scan first skips the characters to be skipped (white space and line ends,
/// unless set otherwise); where what it looks for does not follow, it answers false and stays where it was. Texts are
/// compared unit for unit. Keeps a copy of the text. Not for several threads at once.
class TOVI_EXPORT NSScanner final : public NSObject {
    TOVI_DECLARE_CLASS(NSScanner)

public:
    static Ref<NSScanner> scannerWithString(const NSString& string);

    Ref<NSString> string() const { return string_; }
    NSUInteger scanLocation() const noexcept { return location_; }
    void setScanLocation(NSUInteger location);  ///< raises NSRangeException behind the end
    RefPtr<NSCharacterSet> charactersToBeSkipped() const { return skipped_; }
    void setCharactersToBeSkipped(NSCharacterSet* characters) { skipped_ = characters; }  ///< nil skips nothing
    bool caseSensitive() const noexcept { return caseSensitive_; }                        ///< false at first
    void setCaseSensitive(bool caseSensitive) noexcept { caseSensitive_ = caseSensitive; }
    bool isAtEnd() const;  ///< true when only characters to be skipped are left

    // What was scanned is put into `result`, where there is one. The empty text is found nowhere.

    bool scanString_intoString(const NSString& wanted, RefPtr<NSString>* result = nullptr);
    /// The text before the next occurrence, or to the end; false when it is empty.
    bool scanUpToString_intoString(const NSString& stop, RefPtr<NSString>* result = nullptr);
    bool scanCharactersFromSet_intoString(const NSCharacterSet& wanted, RefPtr<NSString>* result = nullptr);
    /// The text before the next character of the set, or to the end; false when it is empty.
    bool scanUpToCharactersFromSet_intoString(const NSCharacterSet& stops, RefPtr<NSString>* result = nullptr);

    // Numbers take all the digits that follow; a value beyond the type's limits becomes the limit. `value` may be null.

    bool scanInt(int* value);
    bool scanInteger(NSInteger* value);
    bool scanHexInt(unsigned* value);  ///< digits in either case, with 0x or 0X in front or without
    bool scanHexLongLong(unsigned long long* value);
    bool scanDouble(double* value);  ///< in decimal C notation, whatever the process's locale

private:
    explicit NSScanner(const NSString& string);
    std::u16string_view rest(NSUInteger from) const { return string_->view().substr(from); }
    NSUInteger start() const;
    NSUInteger endOfRun(const NSCharacterSet& set, NSUInteger from, bool ofMembers) const;
    bool take(NSUInteger from, NSUInteger to, RefPtr<NSString>* result);
    template <auto scan, class Value> bool scanNumber(Value& value);

    Ref<NSString> string_;
    RefPtr<NSCharacterSet> skipped_;
    NSUInteger location_ = 0;
    bool caseSensitive_ = false;
};

}  // namespace tovi
