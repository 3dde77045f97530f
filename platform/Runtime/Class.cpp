#include <ToviFoundationKit/Runtime/Class.h>

#include <mutex>
#include <string>

#include <ToviFoundationKit/Runtime/Cast.h>
#include <ToviFoundationKit/Runtime/NSException.h>
#include <ToviFoundationKit/Runtime/NSString.h>

namespace tovi {

/// Every class of the process. Constant-initialised: classes register themselves before `main`.
struct ClassRegistry {
    static constinit std::mutex lock;  ///< also taken while operations are added and look-ups are cached
    static constinit Class* first;

    static void forgetLookups() noexcept {
        for (Class* each = first; each; each = each->nextRegistered_)
            each->forgetLookups();
    }

    static Class* find(std::string_view name) noexcept {
        Class* each = first;
        while (each && each->name() != name)
            each = each->nextRegistered_;
        return each;
    }

    static void add(Class& added) noexcept {
        for (Class* each = first; each; each = each->nextRegistered_)
            if (each == &added)
                return;
        // Other files may have added to it and asked it before.
        added.forgetLookups();
        added.nextRegistered_ = first;
        first = &added;
    }
};

constinit std::mutex ClassRegistry::lock;
constinit Class* ClassRegistry::first = nullptr;

constinit detail::ImmortalClass Class::class_{
    Class::Recipe{"Class", &NSObject::class_.value, []() -> NSObject* { return nullptr; }, [] { return 0U; }}};

Class& Class::classObject() noexcept { return class_.value; }

ClassRegistrar::ClassRegistrar(Class& registered) {
    const std::lock_guard lock(ClassRegistry::lock);
    ClassRegistry::add(registered);
}

Class* Class::named(std::string_view name) {
    const std::lock_guard lock(ClassRegistry::lock);
    return ClassRegistry::find(name);
}

void DispatchTable::add(Selector selector, Method method) {
    method.selector = selector;
    const std::lock_guard lock(ClassRegistry::lock);
    own_ = new Own{method, own_};
    ClassRegistry::forgetLookups();
}

const Method* DispatchTable::findUncached(Selector selector) const noexcept {
    const std::lock_guard lock(ClassRegistry::lock);
    return findLocked(selector);
}

const Method* DispatchTable::findLocked(Selector selector) const noexcept {
    if (!selector)
        return nullptr;
    if (const auto* entry = cache_.find(selector, selector.hash()))
        return entry->value;
    const Method* found = nullptr;
    for (const DispatchTable* table = this; table && !found; table = table->parent_)
        for (const Own* own = table->own_; own && !found; own = own->next)
            if (own->method.selector == selector)
                found = &own->method;
    cache_.insert({selector}, found);
    return found;
}

void Class::forgetLookups() noexcept {
    instanceMethods_.cache_.clear();
    classMethods_.cache_.clear();
    accessors_.clear();
}

std::size_t Class::AccessorTraits::hash(Key key) { return key->hash(); }

bool Class::AccessorTraits::equal(Key key, const NSString& probe) noexcept {
    return key == &probe || key->isEqualToString(probe);
}

const Method* Class::accessorForKey(const NSString& key) const {
    if (const auto* entry = accessors_.find(key, key.hash())) [[likely]]
        return entry->value;
    return findAccessor(key);
}

const Method* Class::findAccessor(const NSString& key) const {
    const std::string name = key.UTF8String();
    std::string capitalized = name;
    if (!name.empty() && name[0] >= 'a' && name[0] <= 'z')
        capitalized[0] = static_cast<char>(name[0] - 'a' + 'A');
    const std::lock_guard lock(ClassRegistry::lock);
    if (const auto* entry = accessors_.find(key, key.hash()))
        return entry->value;
    for (const std::string& candidate : {"get" + capitalized, name, "is" + capitalized}) {
        const Method* method = instanceMethods_.findLocked(Selector::existing(candidate));
        if (method && method->argumentCount == 0 && *method->encodings[0] != 'v') {
            accessors_.insert(NSString::stringWithCharacters(key.view()).leak(), method);
            return method;
        }
    }
    return nullptr;
}

bool Class::isSubclassOfClass(const Class& ancestor) const noexcept {
    const Class* each = this;
    while (each && each != &ancestor)
        each = each->superclass();
    return each;
}

unsigned Class::findTraits() const noexcept {
    constexpr unsigned known = 1U << 31;
    traits_.store(recipe_.protocols() | known, std::memory_order_relaxed);
    return traits_.load(std::memory_order_relaxed);
}

id Class::makeInstance() const {
    NSObject* made = recipe_.makeInstance();
    return made ? id(adopt(*made)) : id();
}

Ref<NSString> Class::description() const { return NSString::fromUTF8(name()); }

void Class::raiseWrongReceiver(Selector selector, const Class& receiver) const {
    NSException::raise(NSInvalidArgumentException, u"operation %s of %@ cannot be added to %@", selector.name(),
                       receiver, *this);
}

namespace detail {

void raiseWrongClass(const NSObject* object, const Class& expected) {
    if (!object)
        NSException::raise(NSInvalidArgumentException, u"nil where a %@ is needed", expected);
    NSException::raise(NSInvalidArgumentException, u"a %@ where a %@ is needed", object->isa(), expected);
}

}  // namespace detail

}  // namespace tovi
