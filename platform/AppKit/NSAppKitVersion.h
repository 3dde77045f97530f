#pragma once

#include <ToviFoundationKit/Runtime/Export.h>

/// The version of the platform that the process runs on. It is new by default: later than any that needs older
/// additions.
///
/// A program stands for another platform by defining the symbol itself, in the executable:
///
///     extern "C" const double NSAppKitVersionNumber = 824.0;
///
/// The library then reads the program's value, from its own initialisation on.
extern "C" TOVI_EXPORT const double NSAppKitVersionNumber;

namespace tovi {

using ::NSAppKitVersionNumber;

/// The last platform release (with its updates) that lacks what the categories bundle brings.
inline constexpr double NSAppKitVersionNumber10_4 = 824.0;

}  // namespace tovi
