#pragma once

#include <mail/RawMessage.h>

namespace digest {

/// The first paragraph of a message on one line, quotations left out; empty where the body is anything but plain text
/// that needs no decoding.
std::string openingOf(const RawMessage& message);

}  // namespace digest
