#pragma once

#include <ToviFoundationKit/Runtime/Export.h>

/// The version of the platform's Foundation that the process runs on. It is new by default: later than any that lacks
/// an operation.
///
/// A program stands for another platform by defining the symbol itself, in the executable:
///
///     extern "C" const double NSFoundationVersionNumber = 567.0;
extern "C" TOVI_EXPORT const double NSFoundationVersionNumber;

namespace tovi {

using ::NSFoundationVersionNumber;

/// The last platform release that does not perform operations on other threads by itself.
inline constexpr double NSFoundationVersionNumber10_4 = 567.0;

}  // namespace tovi
