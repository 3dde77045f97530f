#include <ToviFoundationKit/Foundation/NSNotification.h>

#include <ToviFoundationKit/Runtime/Additions.h>
#include <ToviFoundationKit/Runtime/Cast.h>

namespace tovi {

TOVI_DEFINE_CLASS(NSNotification, NSObject)

NSNotification::NSNotification(const NSString& name, NSObject* object, const NSDictionary* userInfo)
    : name_(to<NSString>(name.copy())), object_(object), userInfo_(const_cast<NSDictionary*>(userInfo)) {}

Ref<NSNotification> NSNotification::notificationWithName_object(const NSString& name, NSObject* object) {
    return notificationWithName_object_userInfo(name, object, nullptr);
}

Ref<NSNotification> NSNotification::notificationWithName_object_userInfo(const NSString& name, NSObject* object,
                                                                         const NSDictionary* userInfo) {
    return adopt(*new NSNotification(name, object, userInfo));
}

Ref<NSString> NSNotification::description() const {
    const auto text = NSString::stringWithFormat(u"<NSNotification: %p>{name = %@; object = %@",
                                                 static_cast<const void*>(this), name_, object_);
    return userInfo_ ? text->stringByAppendingFormat(u"; userInfo = %@}", userInfo_)
                     : text->stringByAppendingString(u"}"_ns);
}

namespace {

const Additions<NSNotification> additions{
    classLevel<&NSNotification::notificationWithName_object>("notificationWithName:object:"),
    classLevel<&NSNotification::notificationWithName_object_userInfo>("notificationWithName:object:userInfo:"),
    instance<&NSNotification::name>("name"),
    instance<&NSNotification::object>("object"),
    instance<&NSNotification::userInfo>("userInfo"),
};

}  // namespace

}  // namespace tovi
