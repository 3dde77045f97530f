#include <ToviFoundationKit/Foundation/NSPortMessage.h>

#include <ToviFoundationKit/Foundation/NSData.h>
#include <ToviFoundationKit/Foundation/NSPort.h>
#include <ToviFoundationKit/Runtime/Additions.h>

namespace tovi {

TOVI_DEFINE_CLASS(NSPortMessage, NSObject)

NSPortMessage::NSPortMessage(RefPtr<NSPort> sendPort, NSPort* receivePort, const NSArray* components,
                             const void* address)
    : sendPort_(std::move(sendPort)),
      receivePort_(receivePort),
      components_(const_cast<NSArray*>(components)),
      address_(address) {}

Ref<NSPortMessage> NSPortMessage::initWithSendPort_receivePort_components(NSPort* sendPort, NSPort* receivePort,
                                                                          const NSArray* components) {
    return adopt(*new NSPortMessage(sendPort, receivePort, components, nullptr));
}

Ref<NSPortMessage> NSPortMessage::initWithSendPort_receivePort_address(RefPtr<NSPort> sendPort, NSPort* receivePort,
                                                                       const void* address) {
    return adopt(*new NSPortMessage(std::move(sendPort), receivePort, nullptr, address));
}

RefPtr<NSArray> NSPortMessage::components() const {
    if (address_)
        return NSArray::arrayWithObject(NSData::dataWithBytes_length(&address_, sizeof address_));
    return components_;
}

bool NSPortMessage::sendBeforeDate(const NSDate& date) { return sendPort_ && sendPort_->enqueue(*this, date); }

namespace {

const Additions<NSPortMessage> additions{
    classLevel<&NSPortMessage::initWithSendPort_receivePort_components>("initWithSendPort:receivePort:components:"),
    instance<&NSPortMessage::sendPort>("sendPort"),
    instance<&NSPortMessage::receivePort>("receivePort"),
    instance<&NSPortMessage::components>("components"),
    instance<&NSPortMessage::sendBeforeDate>("sendBeforeDate:"),
};

}  // namespace

}  // namespace tovi
