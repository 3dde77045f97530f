#pragma once

#include <ToviFoundationKit/Foundation/NSEnumerator.h>

namespace tovi::detail {

/// Enumerates what FastEnumeration does: the objects of a list or a set, the keys of a dictionary.
Ref<NSEnumerator> enumeratorOver(const NSObject& collection);

}  // namespace tovi::detail
