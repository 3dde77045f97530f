#pragma once

#include <ToviFoundationKit/Runtime/Class.h>
#include <ToviFoundationKit/Runtime/FormatArgument.h>

namespace tovi {

/// What happens when the library is used in a way that it must not be. Every thread has a current handler; without one
/// of its own the default handler answers, which logs "*** Assertion failure in -[Class method:], file:line" and raises
/// NSInternalInconsistencyException with the formatted description.
///
/// A handler of a host's own overrides the two operations. It may return: the operation that failed then goes on.
class TOVI_EXPORT NSAssertionHandler : public NSObject {
    TOVI_DECLARE_CLASS(NSAssertionHandler)

public:
    /// The calling thread's handler.
    static Ref<NSAssertionHandler> currentHandler();
    /// Gives the calling thread another handler (nil: the default one) and answers the one it had, nil for the default.
    static RefPtr<NSAssertionHandler> setCurrentHandler(NSAssertionHandler* handler);

    /// A failure in an operation of an object, or of a class when the object is one.
    virtual void handleFailureInMethod_object_file_lineNumber_description(Selector method, const NSObject* object,
                                                                          const char* file, NSInteger line,
                                                                          std::u16string_view format,
                                                                          FormatArguments arguments);
    /// A failure in a plain function.
    virtual void handleFailureInFunction_file_lineNumber_description(std::u16string_view function, const char* file,
                                                                     NSInteger line, std::u16string_view format,
                                                                     FormatArguments arguments);

    /// The same with the format's arguments written out.
    template <class... A> void failInMethod(Selector method, const NSObject* object, const char* file, NSInteger line,
                                            std::u16string_view format, const A&... arguments) {
        handleFailureInMethod_object_file_lineNumber_description(
            method, object, file, line, format, FormatArgumentList<sizeof...(A)>{FormatArgument(arguments)...});
    }

protected:
    NSAssertionHandler() noexcept = default;
};

/// Gives the calling thread another handler for as long as it lives.
class TOVI_EXPORT ScopedAssertionHandler {
public:
    explicit ScopedAssertionHandler(NSAssertionHandler& handler)
        : previous_(NSAssertionHandler::setCurrentHandler(&handler)) {}
    ~ScopedAssertionHandler() { NSAssertionHandler::setCurrentHandler(previous_); }
    ScopedAssertionHandler(const ScopedAssertionHandler&) = delete;
    ScopedAssertionHandler& operator=(const ScopedAssertionHandler&) = delete;

private:
    RefPtr<NSAssertionHandler> previous_;
};

}  // namespace tovi
