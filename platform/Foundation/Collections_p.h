#pragma once

#include <cstdint>

#include <ToviFoundationKit/Foundation/Composite_p.h>
#include <ToviFoundationKit/Foundation/NSMutableArray.h>
#include <ToviFoundationKit/Foundation/NSMutableDictionary.h>
#include <ToviFoundationKit/Foundation/NSMutableSet.h>
#include <ToviFoundationKit/Runtime/NSNumber.h>

namespace tovi::detail {

/// The platform's own collections, which equality, hash and description follow without recursion, and composites, which
/// the first two follow. A host's subclass is asked as any other object is.
enum class CollectionKind : std::uint8_t { None, Array, Dictionary, Set, Composite };

inline CollectionKind kindOf(const NSObject& object) noexcept {
    const Class* const exact = &object.isa();
    if (exact == &NSArray::classObject() || exact == &NSMutableArray::classObject())
        return CollectionKind::Array;
    if (exact == &NSDictionary::classObject() || exact == &NSMutableDictionary::classObject())
        return CollectionKind::Dictionary;
    if (exact == &NSSet::classObject() || exact == &NSMutableSet::classObject())
        return CollectionKind::Set;
    return CollectionKind::None;
}

/// The same, with composites that leave the operation to their parts.
inline CollectionKind kindOf(const NSObject& object, Class::ByParts operation) noexcept {
    const CollectionKind kind = kindOf(object);
    return kind == CollectionKind::None && compositeFor(object, operation) ? CollectionKind::Composite : kind;
}

/// Keeps an object alive whose own code runs and may let go of it. Texts and numbers run none.
class Held {
public:
    explicit Held(const NSObject& object) {
        const Class* const exact = &object.isa();
        if (exact != &NSString::classObject() && exact != &NSMutableString::classObject() &&
            exact != &NSNumber::classObject())
            object_ = share(object);
    }

private:
    id object_;
};

/// The insides of collections.
struct CollectionAccess {
    static NSUInteger count(const NSArray& array) noexcept { return array.count_; }
    static NSObject& object(const NSArray& array, NSUInteger index) noexcept { return *array.objects_[index]; }
    static const auto& table(const NSDictionary& dictionary) noexcept { return dictionary.table_; }
    static const auto& table(const NSSet& set) noexcept { return set.table_; }

    // For objects that come to be before what they contain.
    static Ref<NSArray> newList(NSUInteger capacity) { return NSArray::allocate(capacity); }
    static Ref<NSDictionary> newDictionary() { return adopt(*new NSDictionary); }
    static Ref<NSSet> newSet() { return adopt(*new NSSet); }
    static auto& table(NSDictionary& dictionary) noexcept { return dictionary.table_; }
    static auto& table(NSSet& set) noexcept { return set.table_; }
    /// Only when there is room.
    static void append(NSArray& array, NSObject* object) noexcept { array.append(&object, 1); }
    static void removeAll(NSArray& array) noexcept {
        while (array.count_)
            array.objects_[--array.count_]->release();
    }
};

bool equalLists(const NSArray& a, const NSArray& b);
bool equalDictionaries(const NSDictionary& a, const NSDictionary& b);
bool equalSets(const NSSet& a, const NSSet& b);
bool equalParts(const Composite& a, const Composite& b);
NSUInteger hashOfCollection(const NSObject& collection, CollectionKind kind);
Ref<NSString> descriptionOfCollection(const NSObject& collection, CollectionKind kind);

}  // namespace tovi::detail
