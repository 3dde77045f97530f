#include <ToviFoundationKit/Foundation/NSError.h>

#include <system_error>

#include <ToviFoundationKit/Runtime/Additions.h>
#include <ToviFoundationKit/Runtime/Cast.h>

namespace tovi {

TOVI_DEFINE_CLASS(NSError, NSObject)

NSError::NSError(const NSString& domain, NSInteger code, const NSDictionary* userInfo)
    : domain_(NSString::stringWithString(domain)),
      code_(code),
      userInfo_(userInfo ? NSDictionary::dictionaryWithDictionary(*userInfo) : NSDictionary::dictionary()) {}

Ref<NSError> NSError::errorWithDomain_code_userInfo(const NSString& domain, NSInteger code,
                                                    const NSDictionary* userInfo) {
    return adopt(*new NSError(domain, code, userInfo));
}

Ref<NSError> NSError::errorWithDomain_code_description(const NSString& domain, NSInteger code,
                                                       const NSString& description) {
    return adopt(*new NSError(domain, code, &*NSDictionary::of({{NSLocalizedDescriptionKey, description}})));
}

Ref<NSError> NSError::errorWithErrno_subject(int number, const NSString& subject) {
    const std::string text = std::generic_category().message(number);
    return errorWithDomain_code_description(*NSString::stringWithCharacters(NSPOSIXErrorDomain), number,
                                            *NSString::stringWithFormat(u"%@: %s", subject, text));
}

Ref<NSString> NSError::localizedDescription() const {
    if (const auto* text = as<NSString>(userInfo_->find(box(NSLocalizedDescriptionKey))))
        return share(*text);
    return NSString::stringWithFormat(u"The operation could not be completed (%@ error %ld).", domain_, code_);
}

bool NSError::isEqual(const NSObject* other) const {
    const auto* error = as<NSError>(other);
    return error && code_ == error->code_ && *domain_ == *error->domain_ && *userInfo_ == *error->userInfo_;
}

NSUInteger NSError::hash() const { return domain_->hash() ^ static_cast<NSUInteger>(code_); }

Ref<NSString> NSError::description() const {
    return NSString::stringWithFormat(u"Error Domain=%@ Code=%ld \"%@\"", domain_, code_, localizedDescription());
}

Ref<NSObject> NSError::copy() const { return share(*this); }

namespace {

const Additions<NSError> additions{
    classLevel<&NSError::errorWithDomain_code_userInfo>("errorWithDomain:code:userInfo:"),
    instance<&NSError::domain>("domain"),
    instance<&NSError::code>("code"),
    instance<&NSError::userInfo>("userInfo"),
    instance<&NSError::localizedDescription>("localizedDescription"),
};

}  // namespace

}  // namespace tovi
