#include <ToviFoundationKit/Foundation/NSMutableDictionary.h>

#include <ToviFoundationKit/Runtime/Additions.h>

namespace tovi {

TOVI_DEFINE_CLASS(NSMutableDictionary, NSDictionary)

Ref<NSMutableDictionary> NSMutableDictionary::dictionary() { return adopt(*new NSMutableDictionary); }

Ref<NSMutableDictionary> NSMutableDictionary::dictionaryWithCapacity(NSUInteger capacity) {
    Ref<NSMutableDictionary> result = dictionary();
    result->reserve(capacity);
    return result;
}

Ref<NSMutableDictionary> NSMutableDictionary::dictionaryWithDictionary(const NSDictionary& other) {
    return adopt(*new NSMutableDictionary(other.table_));
}

Ref<NSMutableDictionary> NSMutableDictionary::dictionaryWithObjects_forKeys(const NSArray& objects,
                                                                            const NSArray& keys) {
    Ref<NSMutableDictionary> result = dictionary();
    result->setAll(objects, keys);
    return result;
}

Ref<NSMutableDictionary> NSMutableDictionary::of(std::initializer_list<NSKeyValuePair> pairs) {
    Ref<NSMutableDictionary> result = dictionary();
    result->setAll(pairs);
    return result;
}

void NSMutableDictionary::setObject_forKey(NSObject& object, NSObject& key) {
    ++mutations_;
    set(object, key);
}

void NSMutableDictionary::removeObjectForKey(const NSObject& key) {
    const auto slot = table_.find(key);
    if (!slot)
        return;
    ++mutations_;
    const detail::DictionaryEntry removed = table_.remove(slot);
    removed.key->release();
    removed.value->release();
}

void NSMutableDictionary::removeObjectsForKeys(const NSArray& keys) {
    for (NSObject& key : keys)
        removeObjectForKey(key);
}

void NSMutableDictionary::removeAllObjects() {
    ++mutations_;
    Table removed;
    table_.swap(removed);
}

void NSMutableDictionary::addEntriesFromDictionary(const NSDictionary& other) {
    if (&other == this)
        return;
    ++mutations_;
    for (const auto [key, value] : other)
        set(value, key);
}

void NSMutableDictionary::setDictionary(const NSDictionary& other) {
    Table replaced = other.table_;
    ++mutations_;
    table_.swap(replaced);
}

void NSMutableDictionary::setValue_forKey(NSObject* value, const NSString& key) {
    if (value)
        setObject_forKey(*value, share(key));
    else
        removeObjectForKey(key);
}

void NSMutableDictionary::reserve(NSUInteger capacity) {
    ++mutations_;
    table_.reserve(capacity);
}

Ref<NSObject> NSMutableDictionary::copy() const {
    if (!count())
        return NSDictionary::dictionary();
    return adopt(*new NSDictionary(table_));
}

namespace {

const Additions<NSMutableDictionary> additions{
    classLevel<&NSMutableDictionary::dictionary>("dictionary"),
    classLevel<&NSMutableDictionary::dictionaryWithCapacity>("dictionaryWithCapacity:"),
    classLevel<&NSMutableDictionary::dictionaryWithDictionary>("dictionaryWithDictionary:"),
    classLevel<&NSMutableDictionary::dictionaryWithObjects_forKeys>("dictionaryWithObjects:forKeys:"),
    instance<&NSMutableDictionary::setObject_forKey>("setObject:forKey:"),
    instance<&NSMutableDictionary::removeObjectForKey>("removeObjectForKey:"),
    instance<&NSMutableDictionary::removeObjectsForKeys>("removeObjectsForKeys:"),
    instance<&NSMutableDictionary::removeAllObjects>("removeAllObjects"),
    instance<&NSMutableDictionary::addEntriesFromDictionary>("addEntriesFromDictionary:"),
    instance<&NSMutableDictionary::setDictionary>("setDictionary:"),
    instance<&NSMutableDictionary::setValue_forKey>("setValue:forKey:"),
};

}  // namespace

}  // namespace tovi
