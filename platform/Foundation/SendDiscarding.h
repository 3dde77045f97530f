#pragma once

#include <ToviFoundationKit/Runtime/Message.h>

namespace tovi::detail {

/// Sends a message with objects and drops its result: as quick when the operation answers nothing as when it answers an
/// object.
template <class... A> void sendDiscarding(NSObject& target, Selector selector, A*... arguments) {
    const Method& method = methodFor(target, selector);
    if (method.code == signatureCode<void, Sent<A>...>)
        sendResolved<void>(method, target, static_cast<NSObject*>(arguments)...);
    else
        sendResolved<id>(method, target, static_cast<NSObject*>(arguments)...);
}

}  // namespace tovi::detail
