#include <ToviFoundationKit/Foundation/NSPortMessage.h>

#include <ToviFoundationKit/Foundation/NSPort.h>
#include <ToviFoundationKit/Runtime/Additions.h>

namespace tovi {

TOVI_DEFINE_CLASS(NSPortMessage, NSObject)

NSPortMessage::NSPortMessage(NSPort* sendPort, NSPort* receivePort, const NSArray* components)
    : sendPort_(sendPort), receivePort_(receivePort), components_(const_cast<NSArray*>(components)) {}

Ref<NSPortMessage> NSPortMessage::initWithSendPort_receivePort_components(NSPort* sendPort, NSPort* receivePort,
                                                                          const NSArray* components) {
    return adopt(*new NSPortMessage(sendPort, receivePort, components));
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
