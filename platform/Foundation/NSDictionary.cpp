#include <ToviFoundationKit/Foundation/NSDictionary.h>

#include <ToviFoundationKit/Foundation/Collections_p.h>
#include <ToviFoundationKit/Foundation/Enumerators_p.h>
#include <ToviFoundationKit/Foundation/NSMutableDictionary.h>
#include <ToviFoundationKit/Runtime/Additions.h>
#include <ToviFoundationKit/Runtime/NSException.h>

namespace tovi {

TOVI_DEFINE_CLASS(NSDictionary, NSObject)

Ref<NSDictionary> NSDictionary::dictionary() {
    static NSDictionary& empty = *adopt(*new NSDictionary).leak();
    return empty;
}

Ref<NSDictionary> NSDictionary::dictionaryWithObject_forKey(NSObject& object, NSObject& key) {
    Ref<NSDictionary> result = adopt(*new NSDictionary);
    result->set(object, key);
    return result;
}

Ref<NSDictionary> NSDictionary::dictionaryWithDictionary(const NSDictionary& other) {
    return static_cast<NSDictionary&>(*other.copy());
}

Ref<NSDictionary> NSDictionary::dictionaryWithObjects_forKeys(const NSArray& objects, const NSArray& keys) {
    Ref<NSDictionary> result = adopt(*new NSDictionary);
    result->setAll(objects, keys);
    return result;
}

Ref<NSDictionary> NSDictionary::of(std::initializer_list<NSKeyValuePair> pairs) {
    Ref<NSDictionary> result = adopt(*new NSDictionary);
    result->setAll(pairs);
    return result;
}

void NSDictionary::set(NSObject& object, NSObject& key) {
    const std::uint32_t hash = Table::hashOf(key);
    if (const auto slot = table_.find(key, hash)) {
        NSObject* const replaced = std::exchange(table_.entryAt(slot).value, detail::retained(&object));
        replaced->release();
        return;
    }
    Ref<NSObject> copiedKey = key.copy();
    table_.add({copiedKey.get(), &object}, hash);
    static_cast<void>(copiedKey.leak());
    object.retain();
}

void NSDictionary::setAll(std::initializer_list<NSKeyValuePair> pairs) {
    table_.reserve(pairs.size());
    for (const NSKeyValuePair& pair : pairs)
        set(pair.value, pair.key);
}

void NSDictionary::setAll(const NSArray& objects, const NSArray& keys) {
    if (objects.count() != keys.count())
        NSException::raise(
            NSInvalidArgumentException,
            u"*** +[%s dictionaryWithObjects:forKeys:]: count of objects (%lu) differs from count of keys (%lu)",
            isa().name(), objects.count(), keys.count());
    table_.reserve(keys.count());
    for (NSUInteger i = 0; i < keys.count(); ++i)
        set(objects[i], keys[i]);
}

NSObject* NSDictionary::find(const NSObject& key) const {
    const auto slot = table_.find(key);
    return slot ? table_.entryAt(slot).value : nullptr;
}

Ref<NSArray> NSDictionary::objectsForKeys_notFoundMarker(const NSArray& keys, NSObject& marker) const {
    std::vector<Ref<NSObject>> objects;
    objects.reserve(keys.count());
    for (NSObject& key : keys) {
        NSObject* const found = find(key);
        objects.emplace_back(found ? *found : marker);
    }
    return NSArray::arrayTakingObjects(objects);
}

bool NSDictionary::isEqualToDictionary(const NSDictionary& other) const {
    return detail::equalDictionaries(*this, other);
}

Ref<NSArray> NSDictionary::allKeys() const {
    std::vector<Ref<NSObject>> keys;
    keys.reserve(count());
    for (const Entry each : *this)
        keys.emplace_back(each.key);
    return NSArray::arrayTakingObjects(keys);
}

Ref<NSArray> NSDictionary::allKeysForObject(const NSObject& object) const {
    std::vector<Ref<NSObject>> keys;
    for (const Entry each : *this)
        if (&each.value == &object || object.isEqual(&each.value))
            keys.emplace_back(each.key);
    return NSArray::arrayTakingObjects(keys);
}

Ref<NSArray> NSDictionary::allValues() const {
    std::vector<Ref<NSObject>> values;
    values.reserve(count());
    for (const Entry each : *this)
        values.emplace_back(each.value);
    return NSArray::arrayTakingObjects(values);
}

namespace {

class ValueEnumerator final : public NSEnumerator {
public:
    explicit ValueEnumerator(const NSDictionary& dictionary)
        : dictionary_(share(dictionary)), position_(dictionary.begin()), end_(dictionary.end()) {}

    id nextObject() override {
        if (position_ == end_)
            return nullptr;
        const id value = (*position_).value;
        ++position_;
        return value;
    }

private:
    Ref<NSDictionary> dictionary_;
    NSDictionary::Iterator position_;
    NSDictionary::Iterator end_;
};

}  // namespace

Ref<NSEnumerator> NSDictionary::keyEnumerator() const { return detail::enumeratorOver(*this); }
Ref<NSEnumerator> NSDictionary::objectEnumerator() const { return adopt(*new ValueEnumerator(*this)); }

bool NSDictionary::isEqual(const NSObject* other) const {
    if (this == other)
        return true;
    const auto* const dictionary = as<NSDictionary>(other);
    return dictionary && isEqualToDictionary(*dictionary);
}

NSUInteger NSDictionary::hash() const { return detail::hashOfCollection(*this, detail::CollectionKind::Dictionary); }

Ref<NSString> NSDictionary::description() const {
    return detail::descriptionOfCollection(*this, detail::CollectionKind::Dictionary);
}

Ref<NSObject> NSDictionary::copy() const { return share(*this); }
Ref<NSObject> NSDictionary::mutableCopy() const { return NSMutableDictionary::dictionaryWithDictionary(*this); }
id NSDictionary::valueForKey(const NSString& key) {
    if (NSObject* const value = find(key))
        return value;
    const bool isOwn = key.view().starts_with(u'@') && isa().accessorForKey(key.substringFromIndex(1));
    return isOwn ? NSObject::valueForKey(key.substringFromIndex(1)) : nullptr;
}

namespace {

const Additions<NSDictionary> additions{
    classLevel<&NSDictionary::dictionary>("dictionary"),
    classLevel<&NSDictionary::dictionaryWithObject_forKey>("dictionaryWithObject:forKey:"),
    classLevel<&NSDictionary::dictionaryWithDictionary>("dictionaryWithDictionary:"),
    classLevel<&NSDictionary::dictionaryWithObjects_forKeys>("dictionaryWithObjects:forKeys:"),
    instance<&NSDictionary::count>("count"),
    instance<&NSDictionary::objectForKey>("objectForKey:"),
    instance<&NSDictionary::objectsForKeys_notFoundMarker>("objectsForKeys:notFoundMarker:"),
    instance<&NSDictionary::isEqualToDictionary>("isEqualToDictionary:"),
    instance<&NSDictionary::allKeys>("allKeys"),
    instance<&NSDictionary::allKeysForObject>("allKeysForObject:"),
    instance<&NSDictionary::allValues>("allValues"),
    instance<&NSDictionary::keyEnumerator>("keyEnumerator"),
    instance<&NSDictionary::objectEnumerator>("objectEnumerator"),
};

}  // namespace

}  // namespace tovi
