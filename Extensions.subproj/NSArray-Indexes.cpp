#include <ToviFoundationKit/Extensions/NSArray-QVLAdditions.h>

#include <vector>

#include <ToviFoundationKit/Extensions/ElementTable_p.h>
#include <ToviFoundationKit/Foundation/FastEnumeration.h>

namespace tovi {
inline namespace QVLAdditions {

namespace {

constexpr std::uint32_t none = std::numeric_limits<std::uint32_t>::max();

/// Calls `use(object, its first index in the table)` for each object of a collection, until it answers false; answers
/// that.
template <class Match, class Use>
bool lookUpEach(const ElementTable<Match>& table, const NSObject& collection, Use use) {
    if (const auto* const list = as<NSArray>(&collection))
        return table.lookUpEach(share(*list), use);
    for (NSObject& object : FastEnumeration(collection)) {
        const Ref<NSObject> held(object);
        if (!use(object, table.first(object)))
            return false;
    }
    return true;
}

/// Indexes below a limit, gathered in any order.
class IndexBits {
public:
    explicit IndexBits(NSUInteger limit) : words_(limit / 64 + 1) {}
    void add(NSUInteger index) noexcept { words_[index / 64] |= std::uint64_t{1} << index % 64; }
    bool contains(NSUInteger index) const noexcept { return words_[index / 64] >> index % 64 & 1; }
    Ref<NSMutableIndexSet> indexSet() const { return NSMutableIndexSet::indexSetWithBits(words_); }

private:
    std::vector<std::uint64_t> words_;
};

}  // namespace

Ref<NSMutableArray> differenceWithArray(const NSArray& receiver, const NSArray& other) {
    Ref<NSMutableArray> result = NSMutableArray::array();
    lookUpEach(ElementTable<ByEquality>(receiver), other, [&](NSObject& object, std::uint32_t index) {
        if (index == none)
            result->addObject(object);
        return true;
    });
    return result;
}

Ref<NSMutableIndexSet> indexesOfObjects(const NSArray& receiver, const NSObject& collection) {
    const ElementTable<ByEquality> table(receiver);
    IndexBits indexes(receiver.count());
    lookUpEach(table, collection, [&](const NSObject&, std::uint32_t index) {
        for (; index != none && !indexes.contains(index); index = table.next(index))
            indexes.add(index);
        return true;
    });
    return indexes.indexSet();
}

namespace {

template <class Match>
RefPtr<NSMutableIndexSet> firstIndexes(const NSArray& list, const NSObject& collection, bool allowsNotFound) {
    IndexBits indexes(list.count());
    const auto take = [&](const NSObject&, std::uint32_t index) {
        if (index == none)
            return allowsNotFound;
        indexes.add(index);
        return true;
    };
    if (!lookUpEach(ElementTable<Match>(list), collection, take))
        return nullptr;
    return indexes.indexSet();
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

namespace {

/// Finds occurrences of elements from a start on that only moves up, so each element's are walked through once.
class OrderedOccurrences {
public:
    OrderedOccurrences(const ElementTable<ByIdentity>& table, NSUInteger count)
        : table_(table), reached_(table.hasMatches() ? count : 0, none) {}

    /// The first occurrence not before the start, of the element whose first one of all is given; else `none`.
    std::uint32_t find(std::uint32_t first, std::uint32_t start) {
        if (first == none || first >= start || reached_.empty())
            return first == none || first < start ? none : first;
        std::uint32_t index = reached_[first] == none ? first : reached_[first];
        while (index < start && table_.next(index) != none)
            index = table_.next(index);
        reached_[first] = index;
        return index < start ? none : index;
    }

private:
    const ElementTable<ByIdentity>& table_;
    std::vector<std::uint32_t> reached_;  ///< under an element's first index, the one that the walk has come to
};

}  // namespace

RefPtr<NSMutableIndexSet> indexesOfOrderedObjectsIdenticalTo_allowsNotFound(const NSArray& receiver,
                                                                            const NSObject& collection,
                                                                            bool allowsNotFound) {
    const ElementTable<ByIdentity> table(receiver);
    OrderedOccurrences occurrences(table, receiver.count());
    IndexBits indexes(receiver.count());
    std::uint32_t start = 0;
    const auto take = [&](const NSObject&, std::uint32_t first) {
        const std::uint32_t index = occurrences.find(first, start);
        if (index == none)
            return allowsNotFound;
        indexes.add(start = index);
        return true;
    };
    if (!lookUpEach(table, collection, take))
        return nullptr;
    return indexes.indexSet();
}

}  // namespace QVLAdditions
}  // namespace tovi
