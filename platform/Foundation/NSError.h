#pragma once

#include <ToviFoundationKit/Foundation/NSDictionary.h>

namespace tovi {

/// Why an operation failed that may fail: a domain, a code within it, and more in a dictionary. Operations that can
/// tell take an `RefPtr<NSError>*`, which they set when they fail and only then; it may be null. Immutable.
class TOVI_EXPORT NSError final : public NSObject {
    TOVI_DECLARE_CLASS(NSError)

public:
    static Ref<NSError> errorWithDomain_code_userInfo(const NSString& domain, NSInteger code,
                                                      const NSDictionary* userInfo);
    /// With that text as its description.
    static Ref<NSError> errorWithDomain_code_description(const NSString& domain, NSInteger code,
                                                         const NSString& description);
    /// A failed call of the operating system: NSPOSIXErrorDomain, and "subject: No such file or directory".
    static Ref<NSError> errorWithErrno_subject(int number, const NSString& subject);

    Ref<NSString> domain() const { return domain_; }
    NSInteger code() const noexcept { return code_; }
    Ref<NSDictionary> userInfo() const { return userInfo_; }  ///< empty where there was none
    /// The text under NSLocalizedDescriptionKey, else one made of domain and code.
    Ref<NSString> localizedDescription() const;

    bool isEqual(const NSObject* other) const override;
    NSUInteger hash() const override;
    Ref<NSString> description() const override;  ///< "Error Domain=D Code=2 "text""
    Ref<NSObject> copy() const override;         ///< the receiver

private:
    NSError(const NSString& domain, NSInteger code, const NSDictionary* userInfo);

    Ref<NSString> domain_;
    NSInteger code_;
    Ref<NSDictionary> userInfo_;
};

inline constexpr std::u16string_view NSLocalizedDescriptionKey = u"NSLocalizedDescription";
inline constexpr std::u16string_view NSPOSIXErrorDomain = u"NSPOSIXErrorDomain";

}  // namespace tovi
