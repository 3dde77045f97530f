#pragma once

#include <memory>

#include <ToviFoundationKit/Runtime/NSString.h>

namespace tovi {

/// A set of Unicode code points. Immutable; the standard sets are made once. Two sets are equal when they have the same
/// members.
class TOVI_EXPORT NSCharacterSet final : public NSObject {
    TOVI_DECLARE_CLASS(NSCharacterSet)

public:
    /// The code points of the text; a lone surrogate is one of them.
    static Ref<NSCharacterSet> characterSetWithCharactersInString(const NSString& characters);
    /// The code points from the location on. Raises NSInvalidArgumentException when the range reaches beyond U+10FFFF.
    static Ref<NSCharacterSet> characterSetWithRange(NSRange range);
    static Ref<NSCharacterSet> whitespaceCharacterSet();  ///< general category Zs, and the tabulator
    static Ref<NSCharacterSet> newlineCharacterSet();     ///< U+000A to U+000D, U+0085, U+2028, U+2029
    static Ref<NSCharacterSet> whitespaceAndNewlineCharacterSet();
    static Ref<NSCharacterSet> decimalDigitCharacterSet();  ///< general category Nd
    static Ref<NSCharacterSet> letterCharacterSet();        ///< general categories L and M
    static Ref<NSCharacterSet> alphanumericCharacterSet();  ///< general categories L, M and N
    ~NSCharacterSet() override;

    Ref<NSCharacterSet> invertedSet() const;
    bool characterIsMember(unichar character) const noexcept;
    bool longCharacterIsMember(char32_t codePoint) const noexcept;

    bool isEqual(const NSObject* other) const override;
    NSUInteger hash() const override;
    Ref<NSString> description() const override;  ///< as a pattern of UTS #18: "[a-z]"
    Ref<NSObject> copy() const override;

private:
    struct Members;
    explicit NSCharacterSet(Members&& members);
    static Ref<NSCharacterSet> withPattern(std::u16string_view pattern);

    std::unique_ptr<const Members> members_;
};

}  // namespace tovi
