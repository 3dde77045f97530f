#pragma once

#include <ToviFoundationKit/Foundation/NSArray.h>
#include <ToviFoundationKit/Foundation/NSDate.h>

namespace tovi {

class NSPort;

/// What travels through a port: a list of components, data objects as a rule, which stay in the process. The receiver
/// gets the message itself.
class TOVI_EXPORT NSPortMessage final : public NSObject {
    TOVI_DECLARE_CLASS(NSPortMessage)

public:
    /// A message to the first port; an answer, if there is one, goes to the second.
    static Ref<NSPortMessage> initWithSendPort_receivePort_components(NSPort* sendPort, NSPort* receivePort,
                                                                      const NSArray* components);
    /// A message with one component: the eight bytes of an address, not null, in the machine's order.
    static Ref<NSPortMessage> initWithSendPort_receivePort_address(RefPtr<NSPort> sendPort, NSPort* receivePort,
                                                                   const void* address);

    RefPtr<NSPort> sendPort() const { return sendPort_; }
    RefPtr<NSPort> receivePort() const { return receivePort_; }
    RefPtr<NSArray> components() const;
    /// What the message was made with, if that was an address; else nil.
    const void* address() const noexcept { return address_; }

    /// Puts the message into its port's queue and answers true. While the queue is full it waits until the date, by
    /// Clock; a port with room takes messages also when the date is past. False when there was no room until then, when
    /// the port is invalid or becomes it meanwhile, and when there is no port.
    [[nodiscard]] bool sendBeforeDate(const NSDate& date);

private:
    NSPortMessage(RefPtr<NSPort> sendPort, NSPort* receivePort, const NSArray* components, const void* address);

    RefPtr<NSPort> sendPort_;
    RefPtr<NSPort> receivePort_;
    RefPtr<NSArray> components_;
    const void* const address_;  ///< stands for its component, which is made when asked for
};

}  // namespace tovi
