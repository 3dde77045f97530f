#pragma once

#include <cstdint>

#include <ToviFoundationKit/Foundation/NSMutableArray.h>
#include <ToviFoundationKit/Foundation/NSMutableDictionary.h>
#include <ToviFoundationKit/Foundation/NSMutableSet.h>

namespace tovi::detail {

/// The platform's own collections, which equality, hash and description follow without recursion. A host's subclass is
/// asked as any other object is.
enum class CollectionKind : std::uint8_t { None, Array, Dictionary, Set };

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

/// The insides of collections.
struct CollectionAccess {
    static NSUInteger count(const NSArray& array) noexcept { return array.count_; }
    static NSObject& object(const NSArray& array, NSUInteger index) noexcept { return *array.objects_[index]; }
    static const auto& table(const NSDictionary& dictionary) noexcept { return dictionary.table_; }
    static const auto& table(const NSSet& set) noexcept { return set.table_; }
};

bool equalLists(const NSArray& a, const NSArray& b);
bool equalDictionaries(const NSDictionary& a, const NSDictionary& b);
bool equalSets(const NSSet& a, const NSSet& b);
NSUInteger hashOfCollection(const NSObject& collection, CollectionKind kind);
Ref<NSString> descriptionOfCollection(const NSObject& collection, CollectionKind kind);

}  // namespace tovi::detail
