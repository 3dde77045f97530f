#include <ToviFoundationKit/Extensions/NSArray-QVLAdditions.h>

#include <vector>

#include <ToviFoundationKit/Extensions/ElementTable_p.h>
#include <ToviFoundationKit/Foundation/FastEnumeration.h>

namespace tovi {
inline namespace QVLAdditions {

Ref<NSMutableArray> differenceWithArray(const NSArray& receiver, const NSArray& other) {
    const ElementTable<ByEquality> present(receiver);
    Ref<NSMutableArray> result = NSMutableArray::array();
    for (NSObject& object : other) {
        const Ref<NSObject> held(object);
        if (!present.contains(object))
            result->addObject(*held);
    }
    return result;
}

Ref<NSMutableIndexSet> indexesOfObjects(const NSArray& receiver, const NSObject& collection) {
    using Table = ElementTable<ByEquality>;
    const Table table(receiver);
    std::vector<bool> reported(receiver.count());
    Ref<NSMutableIndexSet> indexes = NSMutableIndexSet::indexSet();
    for (NSObject& object : FastEnumeration(collection)) {
        std::uint32_t index = table.first(object);
        if (index == Table::none || reported[index])
            continue;
        reported[index] = true;
        for (; index != Table::none; index = table.next(index))
            indexes->addIndex(index);
    }
    return indexes;
}

namespace {

template <class Match>
RefPtr<NSMutableIndexSet> firstIndexes(const NSArray& list, const NSObject& collection, bool allowsNotFound) {
    const ElementTable<Match> table(list);
    Ref<NSMutableIndexSet> indexes = NSMutableIndexSet::indexSet();
    for (NSObject& object : FastEnumeration(collection)) {
        const std::uint32_t index = table.first(object);
        if (index != ElementTable<Match>::none)
            indexes->addIndex(index);
        else if (!allowsNotFound)
            return nullptr;
    }
    return indexes;
}

}  // namespace

RefPtr<NSMutableIndexSet> indexesOfObjects_allowsNotFound(const NSArray& receiver, const NSObject& collection,
                                                          bool allowsNotFound) {
    return firstIndexes<ByEquality>(receiver, collection, allowsNotFound);
}

RefPtr<NSMutableIndexSet> indexesOfObjectsIdenticalTo_allowsNotFound(const NSArray& receiver,
                                                                     const NSObject& collection, bool allowsNotFound) {
    return firstIndexes<ByIdentity>(receiver, collection, allowsNotFound);
}

RefPtr<NSMutableIndexSet> indexesOfOrderedObjectsIdenticalTo_allowsNotFound(const NSArray& receiver,
                                                                            const NSObject& collection,
                                                                            bool allowsNotFound) {
    using Table = ElementTable<ByIdentity>;
    const Table table(receiver);
    // The start only moves up, so each object's occurrences are walked through once: `reached` holds, under the index
    // of the first one, the one that the walk has come to.
    std::vector<std::uint32_t> reached(receiver.count(), Table::none);
    Ref<NSMutableIndexSet> indexes = NSMutableIndexSet::indexSet();
    std::uint32_t start = 0;
    for (NSObject& object : FastEnumeration(collection)) {
        const std::uint32_t first = table.first(object);
        std::uint32_t index = first;
        if (first != Table::none) {
            index = reached[first] == Table::none ? first : reached[first];
            while (index < start && table.next(index) != Table::none)
                index = table.next(index);
            reached[first] = index;
        }
        if (index != Table::none && index >= start)
            indexes->addIndex(start = index);
        else if (!allowsNotFound)
            return nullptr;
    }
    return indexes;
}

}  // namespace QVLAdditions
}  // namespace tovi
