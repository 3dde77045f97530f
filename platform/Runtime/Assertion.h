#pragma once

#include <ToviFoundationKit/Runtime/Export.h>

namespace tovi {

/// Reports a programming error that nothing can be saved from: writes "Assertion failed: (expression), function F, file
/// U, line N." to standard error and aborts. For code that may not throw; the rest reports to NSAssertionHandler.
[[noreturn]] TOVI_EXPORT void assertionFailed(const char* function, const char* unit, int line, const char* expression);

}  // namespace tovi
