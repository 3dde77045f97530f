#pragma once

#include <exception>
#include <memory>
#include <string>
#include <string_view>

#include <ToviFoundationKit/Runtime/NSString.h>

namespace tovi {

class NSDictionary;

/// A programming error or a broken agreement: a name to tell kinds apart, a reason for people, and perhaps more. Thrown
/// by value; copies share their strings and never throw.
class TOVI_EXPORT NSException : public std::exception {
public:
    NSException(const NSString& name, RefPtr<NSString> reason, RefPtr<NSDictionary> userInfo = nullptr);
    NSException(const NSException&) noexcept;
    NSException& operator=(const NSException&) noexcept;
    ~NSException() override;

    /// Throws an exception of that name, its reason formatted.
    template <class... A>
    [[noreturn]] static void raise(std::u16string_view name, std::u16string_view format, const A&... arguments) {
        raise_format_arguments(name, format, FormatArgumentList<sizeof...(A)>{FormatArgument(arguments)...});
    }
    [[noreturn]] static void raise_format_arguments(std::u16string_view name, std::u16string_view format,
                                                    FormatArguments arguments);

    Ref<NSString> name() const;
    RefPtr<NSString> reason() const;
    RefPtr<NSDictionary> userInfo() const;
    const char* what() const noexcept override;  ///< "name: reason" in UTF-8

private:
    struct Content;
    std::shared_ptr<const Content> content_;
};

inline constexpr std::u16string_view NSInvalidArgumentException = u"NSInvalidArgumentException";
inline constexpr std::u16string_view NSRangeException = u"NSRangeException";
inline constexpr std::u16string_view NSGenericException = u"NSGenericException";
inline constexpr std::u16string_view NSInternalInconsistencyException = u"NSInternalInconsistencyException";
inline constexpr std::u16string_view NSUndefinedKeyException = u"NSUnknownKeyException";
inline constexpr std::u16string_view NSMallocException = u"NSMallocException";
inline constexpr std::u16string_view NSInvalidUnarchiveOperationException = u"NSInvalidUnarchiveOperationException";

}  // namespace tovi
