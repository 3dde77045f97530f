#pragma once

#include <string>

#include <ToviFoundationKit/Runtime/NSObject.h>

namespace tovi::detail {

/// How messages to people name an operation: "-[NSArray count]", or "+[NSArray array]" where the receiver is a class.
std::string operationName(const NSObject& receiver, Selector selector);

}  // namespace tovi::detail
