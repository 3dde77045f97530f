#include <ToviFoundationKit/Extensions/NSDictionary-QVLAdditions.h>

#include <ToviFoundationKit/Extensions/DeepMutableCopy_p.h>
#include <ToviFoundationKit/Foundation/NSNull.h>
#include <ToviFoundationKit/Runtime/Additions.h>
#include <ToviFoundationKit/Runtime/Cast.h>
#include <ToviFoundationKit/Runtime/Message.h>
#include <ToviFoundationKit/Runtime/NSAssertionHandler.h>

namespace tovi {
inline namespace QVLAdditions {

Ref<NSMutableArray> objectsForKeysIgnoringNotFound(const NSDictionary& receiver, const NSArray& keys) {
    const Ref<NSNull> null = NSNull::null();
    Ref<NSMutableArray> result = NSMutableArray::array();
    for (NSObject& key : keys)
        if (NSObject* const value = receiver.find(key); value && !identical(value, null.get()))
            result->addObject(*value);
    return result;
}

namespace {

const NSArray& listFrom(NSObject& value) {
    if (const auto* list = as<NSArray>(&value))
        return *list;
    detail::raiseUnrecognizedSelector(value, "objectAtIndex:"_sel);
}

}  // namespace

Ref<NSMutableDictionary> invertKeysAndObjects(const NSDictionary& receiver) {
    Ref<NSMutableDictionary> result = NSMutableDictionary::dictionary();
    for (const auto& [key, value] : receiver) {
        const Ref<NSObject> heldKey(key);  // what is asked below is the elements' own code
        for (NSObject& element : listFrom(value)) {
            const Ref<NSObject> held(element);
            if (NSObject* const keys = result->find(held))
                static_cast<NSMutableArray&>(*keys).addObject(*heldKey);
            else
                result->setObject_forKey(NSMutableArray::of(heldKey), held);
        }
    }
    return result;
}

namespace {

Ref<NSArray> ordered(const NSArray& list) { return list.sortedArrayUsingSelector("compare:"_sel); }

}  // namespace

Ref<NSArray> allOrderedKeys(const NSDictionary& receiver) { return ordered(receiver.allKeys()); }
Ref<NSArray> allOrderedValues(const NSDictionary& receiver) { return ordered(receiver.allValues()); }

Ref<NSSet> allKeysSet(const NSDictionary& receiver) { return NSSet::setWithArray(receiver.allKeys()); }
Ref<NSSet> allValuesSet(const NSDictionary& receiver) { return NSSet::setWithArray(receiver.allValues()); }

bool hasKey(const NSDictionary& receiver, const NSObject& key) {
    NSAssertionHandler::currentHandler()->failInMethod("hasKey:"_sel, &receiver,
                                                       "Extensions.subproj/NSDictionary-QVLAdditions", 73,
                                                       u"%@,%@ worst method ever! this is a DICTIONARY, key retrieving "
                                                       u"is O(log(n)), this method change it to O(n) !!! "
                                                       u"You should never use it!");
    return receiver.allKeys()->containsObject(key);
}

Ref<NSMutableDictionary> deepMutableCopy(const NSDictionary& receiver) {
    const id copy = send(*share(receiver), "deepMutableCopy"_sel);
    return to<NSMutableDictionary>(copy);
}

namespace {

const Additions<NSDictionary> additions{
    instance<&objectsForKeysIgnoringNotFound>("objectsForKeysIgnoringNotFound:"),
    instance<&invertKeysAndObjects>("invertKeysAndObjects"),
    instance<&allOrderedKeys>("allOrderedKeys"),
    instance<&allOrderedValues>("allOrderedValues"),
    instance<&allKeysSet>("allKeysSet"),
    instance<&allValuesSet>("allValuesSet"),
    instance<&hasKey>("hasKey:"),
    instance<&deepMutableCopyOfDictionary>("deepMutableCopy"),
};

}  // namespace

}  // namespace QVLAdditions
}  // namespace tovi
