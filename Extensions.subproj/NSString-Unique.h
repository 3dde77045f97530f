#pragma once

#include <ToviFoundationKit/Runtime/NSString.h>

namespace tovi {
inline namespace QVLAdditions {

/// A universally unique identifier, new with each call: 36 characters, as CFUUIDCreateString writes it.
TOVI_EXPORT Ref<NSString> newUniqueString();
TOVI_EXPORT Ref<NSString> uniqueString();  ///< the same

/// The text converted to UTF-16 and back, which changes nothing in it; nil for nil.
TOVI_EXPORT RefPtr<NSString> unicodeStringWithString(const NSString* text);

}  // namespace QVLAdditions
}  // namespace tovi
