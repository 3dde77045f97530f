#pragma once

#include <ToviFoundationKit/ToviFoundationKit.h>

/// Writes down the last failure of an assertion, and lets the operation go on.
class RecordingHandler : public tovi::NSAssertionHandler {
    TOVI_CLASS(RecordingHandler, tovi::NSAssertionHandler)

public:
    static tovi::Ref<RecordingHandler> make() { return tovi::adopt(*new RecordingHandler); }

    void handleFailureInMethod_object_file_lineNumber_description(tovi::Selector method, const tovi::NSObject* object,
                                                                  const char* file, tovi::NSInteger line,
                                                                  std::u16string_view format,
                                                                  tovi::FormatArguments arguments) override {
        report = tovi::NSString::stringWithFormat(u"%s %@ %s:%ld %@", method, object, file, line,
                                                  tovi::NSString::stringWithFormat_arguments(format, arguments));
    }

    tovi::Ref<tovi::NSString> report = tovi::NSString::string();
};
