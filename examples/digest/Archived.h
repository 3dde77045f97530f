#pragma once

#include <ToviFoundationKit/ToviFoundationKit.h>

namespace digest {

/// What came back from an archive, and how large that was.
struct Archived {
    tovi::Ref<tovi::NSObject> object;
    tovi::NSUInteger bytes;
};

/// Archives an object and reads it back. Throws std::runtime_error, with `what` as the name of the object, when that
/// fails or what came back is not equal to it.
Archived archivedAndReadBack(const tovi::NSObject& object, std::string_view what);

}  // namespace digest
