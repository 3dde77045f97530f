#pragma once

#include <ToviFoundationKit/ToviFoundationKit.h>

namespace digest {

/// The text of format=flowed (RFC 3676) with each paragraph on one line; quoted ones begin with ">" and a blank. Where
/// `deletesSpace` holds, the blank at which a line was broken goes away.
tovi::Ref<tovi::NSString> unflowed(const tovi::NSString& text, bool deletesSpace);

}  // namespace digest
