#pragma once

#include <filesystem>

#include <ToviFoundationKit/Runtime/NSString.h>

namespace tovi {

/// The path as a text; bytes in it that are not UTF-8 become U+FFFD.
inline Ref<NSString> stringWithPath(const std::filesystem::path& path) { return NSString::fromUTF8(path.native()); }

/// The text, in UTF-8, as a path.
inline std::filesystem::path filesystemPath(const NSString& string) { return string.UTF8String(); }

}  // namespace tovi
