#pragma once

#include <ToviFoundationKit/Foundation/NSMutableArray.h>
#include <ToviFoundationKit/Foundation/NSMutableDictionary.h>

namespace tovi {

// What the kit registers under `deepMutableCopy`. The C++ functions of that name send the selector, so that a class
// which brings its own is obeyed at the top as well as below.
Ref<NSMutableArray> deepMutableCopyOfArray(const NSArray& list);
Ref<NSMutableDictionary> deepMutableCopyOfDictionary(const NSDictionary& dictionary);

}  // namespace tovi
