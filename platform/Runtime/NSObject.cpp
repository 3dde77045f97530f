#include <ToviFoundationKit/Runtime/NSObject.h>

#include <cstdlib>
#include <new>

#include <ToviFoundationKit/Runtime/Additions.h>
#include <ToviFoundationKit/Runtime/Message.h>
#include <ToviFoundationKit/Runtime/NSInvocation.h>
#include <ToviFoundationKit/Runtime/NSString.h>

namespace tovi {

constinit detail::ImmortalClass NSObject::class_{
    Class::Recipe{"NSObject", nullptr, []() -> NSObject* { return nullptr; }, [] { return 0U; }}};

namespace {

const ClassRegistrar rootRegistrar{NSObject::classObject()};
const ClassRegistrar metaclassRegistrar{Class::classObject()};

/// The objects whose count fell to zero while deeper destructions were going on; the outermost one deals with them.
/// Plain data, so that it works until the very end of its thread.
struct Condemned {
    unsigned depth;
    std::size_t count;
    std::size_t capacity;
    const NSObject** objects;

    void push(const NSObject* object) {
        if (count == capacity) {
            capacity = capacity ? capacity * 2 : 64;
            void* grown = std::realloc(objects, capacity * sizeof *objects);
            if (!grown)
                std::abort();
            objects = static_cast<const NSObject**>(grown);
        }
        objects[count++] = object;
    }

    void forget() {
        std::free(objects);
        objects = nullptr;
        capacity = 0;
    }
};

// At a fixed place in each thread's memory: destroying is too frequent for a call that finds it.
[[gnu::tls_model("initial-exec")]] thread_local constinit Condemned condemned{};
constexpr unsigned deepestDestruction = 32;

}  // namespace

void NSObject::destroy() const noexcept {
    count_.store(dying, std::memory_order_relaxed);
    const unsigned depth = condemned.depth;
    if (depth == deepestDestruction) [[unlikely]]
        return condemned.push(this);
    condemned.depth = depth + 1;
    delete this;
    condemned.depth = depth;
    if (!depth && condemned.capacity) [[unlikely]]
        destroyCondemned();
}

void NSObject::destroyCondemned() noexcept {
    ++condemned.depth;
    while (condemned.count)
        delete condemned.objects[--condemned.count];
    condemned.forget();
    --condemned.depth;
}

NSUInteger NSObject::retainCount() const noexcept {
    return count_.load(std::memory_order_relaxed) & ~(notAdopted | dying);
}

Class& NSObject::classObject() noexcept { return class_.value; }
Class& NSObject::isa() const noexcept { return class_.value; }
const DispatchTable& NSObject::dispatchTable() const noexcept { return class_.value.instanceMethods(); }

bool NSObject::isEqual(const NSObject* other) const { return this == other; }

NSUInteger NSObject::hash() const { return reinterpret_cast<std::uintptr_t>(this) >> 4; }

Ref<NSString> NSObject::description() const {
    return NSString::stringWithFormat(u"<%@: %p>", isa(), static_cast<const void*>(this));
}

Ref<NSObject> NSObject::copy() const { detail::raiseUnrecognizedSelector(*this, "copyWithZone:"_sel); }
Ref<NSObject> NSObject::mutableCopy() const { detail::raiseUnrecognizedSelector(*this, "mutableCopyWithZone:"_sel); }

bool NSObject::isKindOfClass(const Class& ancestor) const noexcept { return isa().isSubclassOfClass(ancestor); }
bool NSObject::isMemberOfClass(const Class& exact) const noexcept { return &isa() == &exact; }
bool NSObject::conformsTo(Protocol protocol) const noexcept { return isa().conformsTo(protocol); }
bool NSObject::respondsToSelector(Selector selector) const noexcept { return dispatchTable().find(selector); }

RefPtr<NSMethodSignature> NSObject::methodSignatureForSelector(Selector selector) const {
    const Method* method = dispatchTable().find(selector);
    return method ? RefPtr<NSMethodSignature>(NSMethodSignature::forMethod(*method)) : nullptr;
}

id NSObject::performSelector(Selector selector) { return send(*this, selector); }

id NSObject::performSelector_withObject(Selector selector, NSObject* first) { return send(*this, selector, first); }

id NSObject::performSelector_withObject_withObject(Selector selector, NSObject* first, NSObject* second) {
    return send(*this, selector, first, second);
}

id NSObject::performSelector_withObject_withObject_withObject(Selector selector, NSObject* first, NSObject* second,
                                                              NSObject* third) {
    return send(*this, selector, first, second, third);
}

namespace {

Ref<NSString> className(const NSObject& receiver) { return NSString::fromUTF8(receiver.isa().name()); }
RefPtr<Class> superclass(const NSObject& receiver) { return receiver.isa().superclass(); }
Ref<Class> classOf(const NSObject& receiver) { return receiver.isa(); }

// A class asked for its class or its superclass speaks of itself as one, not of what it is an instance of.
Ref<Class> classItself(Class& receiver) { return receiver; }
RefPtr<Class> superclassOfClass(Class& receiver) { return receiver.superclass(); }

const Additions<NSObject> additions{
    instance<&classOf>("class"),
    instance<&superclass>("superclass"),
    classReceiver<&classItself>("class"),
    classReceiver<&superclassOfClass>("superclass"),
    classReceiver<&Class::makeInstance>("new"),
    classReceiver<&Class::isSubclassOfClass>("isSubclassOfClass:"),
    classReceiver<&Class::instancesRespondToSelector>("instancesRespondToSelector:"),
    instance<&className>("className"),
    instance<&NSObject::isEqual>("isEqual:"),
    instance<&NSObject::hash>("hash"),
    instance<&NSObject::description>("description"),
    instance<&NSObject::copy>("copy"),
    instance<&NSObject::mutableCopy>("mutableCopy"),
    instance<static_cast<bool (NSObject::*)(const Class&) const noexcept>(&NSObject::isKindOfClass)>("isKindOfClass:"),
    instance<&NSObject::respondsToSelector>("respondsToSelector:"),
    instance<&NSObject::performSelector>("performSelector:"),
    instance<&NSObject::performSelector_withObject>("performSelector:withObject:"),
    instance<&NSObject::performSelector_withObject_withObject>("performSelector:withObject:withObject:"),
    instance<&NSObject::valueForKey>("valueForKey:"),
    instance<&NSObject::valueForKeyPath>("valueForKeyPath:"),
};

}  // namespace

}  // namespace tovi
