#pragma once

#include <span>
#include <string_view>
#include <vector>

#include <ToviFoundationKit/Runtime/NSString.h>

namespace tovi::detail {

/// The keys of a path, "boss.name".
std::vector<Ref<NSString>> keysOfPath(std::u16string_view path);

/// Follows keys one by one; nil as soon as a value on the way is nil. A key that begins with "@" is an operator where
/// the value is a list or a set: see NSArray.h.
id valueForKeys(NSObject& object, std::span<const Ref<NSString>> keys);

}  // namespace tovi::detail
