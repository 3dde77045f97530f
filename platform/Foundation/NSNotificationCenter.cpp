#include <ToviFoundationKit/Foundation/NSNotificationCenter.h>

#include <exception>

#include <ToviFoundationKit/Foundation/ObserverTable_p.h>
#include <ToviFoundationKit/Foundation/SendDiscarding.h>
#include <ToviFoundationKit/Runtime/Additions.h>
#include <ToviFoundationKit/Runtime/NSException.h>

namespace tovi {

TOVI_DEFINE_CLASS(NSNotificationCenter, NSObject)

NSNotificationCenter::NSNotificationCenter() : table_(std::make_unique<detail::ObserverTable>()) {}

NSNotificationCenter::~NSNotificationCenter() = default;

// Never destroyed: threads announce their end until that of the process.
Ref<NSNotificationCenter> NSNotificationCenter::defaultCenter() {
    static NSNotificationCenter& center = *init().leak();
    return center;
}

Ref<NSNotificationCenter> NSNotificationCenter::init() { return adopt(*new NSNotificationCenter); }

void NSNotificationCenter::addObserver_selector_name_object(NSObject& observer, Selector selector, const NSString* name,
                                                            const NSObject* object) {
    if (!selector)
        NSException::raise(NSInvalidArgumentException,
                           u"*** -[NSNotificationCenter addObserver:selector:name:object:]: selector cannot be null");
    table_->add(observer, selector, nullptr, name, object);
}

Ref<NSObject> NSNotificationCenter::addObserverForName_object_usingBlock(const NSString* name, const NSObject* object,
                                                                         Block block) {
    const auto token = adopt(*new detail::ObserverBlock(std::move(block)));
    table_->add(token, Selector(), token, name, object);
    return token;
}

void NSNotificationCenter::removeObserver(const NSObject& observer) { table_->remove(observer, nullptr, nullptr); }

void NSNotificationCenter::removeObserver_name_object(const NSObject& observer, const NSString* name,
                                                      const NSObject* object) {
    table_->remove(observer, name, object);
}

namespace {

void tell(const detail::Registration& registration, NSNotification& notification) {
    if (registration.selector)
        detail::sendDiscarding(*registration.observer, registration.selector, &notification);
    else
        registration.block->block(notification);
}

}  // namespace

void NSNotificationCenter::postNotification(NSNotification& notification) {
    const Ref<NSNotification> held(notification);
    const Ref<NSNotificationCenter> self(*this);
    std::exception_ptr raised;
    detail::ObserverTable::Visit visit(*table_, *notification.name(), notification.object().get());
    while (const detail::Registration* const each = visit.next())
        try {
            tell(*each, notification);
        } catch (const std::exception&) {
            if (!raised)
                raised = std::current_exception();
        }
    if (raised)
        std::rethrow_exception(raised);
}

void NSNotificationCenter::postNotificationName_object(const NSString& name, NSObject* object) {
    postNotificationName_object_userInfo(name, object, nullptr);
}

void NSNotificationCenter::postNotificationName_object_userInfo(const NSString& name, NSObject* object,
                                                                const NSDictionary* userInfo) {
    postNotification(NSNotification::notificationWithName_object_userInfo(name, object, userInfo));
}

namespace {

const Additions<NSNotificationCenter> additions{
    classLevel<&NSNotificationCenter::defaultCenter>("defaultCenter"),
    instance<&NSNotificationCenter::addObserver_selector_name_object>("addObserver:selector:name:object:"),
    instance<&NSNotificationCenter::removeObserver>("removeObserver:"),
    instance<&NSNotificationCenter::removeObserver_name_object>("removeObserver:name:object:"),
    instance<&NSNotificationCenter::postNotification>("postNotification:"),
    instance<&NSNotificationCenter::postNotificationName_object>("postNotificationName:object:"),
    instance<&NSNotificationCenter::postNotificationName_object_userInfo>("postNotificationName:object:userInfo:"),
};

}  // namespace

}  // namespace tovi
