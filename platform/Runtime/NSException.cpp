#include <ToviFoundationKit/Runtime/NSException.h>

namespace tovi {

struct NSException::Content {
    Ref<NSString> name;
    RefPtr<NSString> reason;
    RefPtr<NSDictionary> userInfo;
    std::string what;
};

NSException::NSException(const NSString& name, RefPtr<NSString> reason, RefPtr<NSDictionary> userInfo) {
    std::string what = name.UTF8String();
    if (reason)
        what.append(": ").append(reason->UTF8String());
    // Copies, as either may be a mutable string.
    content_ = std::make_shared<const Content>(Content{
        NSString::stringWithString(name), reason ? RefPtr<NSString>(NSString::stringWithString(*reason)) : nullptr,
        std::move(userInfo), std::move(what)});
}

NSException::NSException(const NSException&) noexcept = default;
NSException& NSException::operator=(const NSException&) noexcept = default;
NSException::~NSException() = default;

void NSException::raise_format_arguments(std::u16string_view name, std::u16string_view format,
                                         FormatArguments arguments) {
    throw NSException(NSString::stringWithCharacters(name), NSString::stringWithFormat_arguments(format, arguments));
}

Ref<NSString> NSException::name() const { return content_->name; }
RefPtr<NSString> NSException::reason() const { return content_->reason; }
RefPtr<NSDictionary> NSException::userInfo() const { return content_->userInfo; }
const char* NSException::what() const noexcept { return content_->what.c_str(); }

}  // namespace tovi
