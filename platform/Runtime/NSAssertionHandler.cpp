#include <ToviFoundationKit/Runtime/NSAssertionHandler.h>

#include <string>
#include <utility>

#include <ToviFoundationKit/Runtime/Message_p.h>
#include <ToviFoundationKit/Runtime/NSException.h>
#include <ToviFoundationKit/Runtime/NSLog.h>

namespace tovi {

TOVI_DEFINE_CLASS(NSAssertionHandler, NSObject)

namespace {

/// Nulled when the thread ends: failures in even later thread-local destructors are the default handler's.
struct Current {
    RefPtr<NSAssertionHandler> handler;
    ~Current() { handler = nullptr; }
};

thread_local Current current;

void logAndRaise(FormatArgument place, const char* file, NSInteger line, std::u16string_view format,
                 FormatArguments arguments) {
    NSLog(u"*** Assertion failure in %s, %s:%ld", place, file, line);
    NSException::raise_format_arguments(NSInternalInconsistencyException, format, arguments);
}

}  // namespace

Ref<NSAssertionHandler> NSAssertionHandler::currentHandler() {
    static NSAssertionHandler& standard = *adopt(*new NSAssertionHandler).leak();
    return current.handler ? *current.handler : standard;
}

RefPtr<NSAssertionHandler> NSAssertionHandler::setCurrentHandler(NSAssertionHandler* handler) {
    return std::exchange(current.handler, handler);
}

void NSAssertionHandler::handleFailureInMethod_object_file_lineNumber_description(Selector method,
                                                                                  const NSObject* object,
                                                                                  const char* file, NSInteger line,
                                                                                  std::u16string_view format,
                                                                                  FormatArguments arguments) {
    const std::string place = object ? detail::operationName(*object, method) : std::string(method.name());
    logAndRaise(place, file, line, format, arguments);
}

void NSAssertionHandler::handleFailureInFunction_file_lineNumber_description(std::u16string_view function,
                                                                             const char* file, NSInteger line,
                                                                             std::u16string_view format,
                                                                             FormatArguments arguments) {
    logAndRaise(function, file, line, format, arguments);
}

}  // namespace tovi
