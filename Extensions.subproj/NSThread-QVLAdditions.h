#pragma once

#include <ToviFoundationKit/Runtime/Export.h>

namespace tovi {
inline namespace QVLAdditions {

/// True when the calling thread is the process's main thread, as the operating system sees it. Class-level on NSThread.
TOVI_EXPORT bool inMainThread();

}  // namespace QVLAdditions
}  // namespace tovi
