#pragma once

#include <ToviFoundationKit/Runtime/Export.h>

/// The library's initialisation routine. The dynamic loader runs it when the library is loaded, after every class and
/// operation has been registered; a further call does nothing.
///
/// On a platform of version 824 or older (see NSAppKitVersion.h) it loads the bundle
/// ToviFoundationKitCategoriesBundle10_4 from the library's resources. A bundle that is missing or cannot be loaded is
/// logged; nothing tries again.
extern "C" TOVI_EXPORT void ToviFoundationKitInitialize();

namespace tovi {

using ::ToviFoundationKitInitialize;

}  // namespace tovi
