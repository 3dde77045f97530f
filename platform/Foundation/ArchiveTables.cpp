#include <ToviFoundationKit/Foundation/ArchiveTables_p.h>

#include <algorithm>

#include <ToviFoundationKit/Foundation/NSIndexSet.h>

namespace tovi::detail {

namespace {

constexpr NSUInteger highestCost = NSUInteger(1) << 62;  // two of them can be added

NSUInteger longestRun(const HashIndex& index) noexcept {
    NSUInteger longest = 1, run = 1;
    for (std::size_t i = 1; i < index.size(); ++i) {
        run = index[i] && index.holds(i - 1, HashIndex::hash(index[i])) ? run + 1 : 1;
        longest = std::max(longest, run);
    }
    return longest;
}

/// How many entries of a table may have to be compared with one of another table.
NSUInteger mostCandidates(const NSObject& object) noexcept {
    switch (kindOf(object)) {
        case CollectionKind::Dictionary:
            return longestRun(CollectionAccess::table(static_cast<const NSDictionary&>(object)).index());
        case CollectionKind::Set:
            return longestRun(CollectionAccess::table(static_cast<const NSSet&>(object)).index());
        default:
            return 1;
    }
}

}  // namespace

ArchiveTables::ArchiveTables(ArchiveContent& content)
    : content_(content),
      hashingLeft_((NSUInteger(1) << 20) + 16 * content.bytes.size()),
      comparingLeft_((NSUInteger(1) << 26) + 16 * content.bytes.size()) {
    for (ArchiveRecord& each : content.records)
        if ((each.isDictionary() || each.isSet()) && ArchiveReferences(content, each).left())
            unfilled_.push_back(&each);
}

void ArchiveTables::fillAll(bool hostsAreComplete) {
    hostsAreComplete_ = hostsAreComplete;
    measures_.clear();
    for (ArchiveRecord* const each : unfilled_)
        if (!each->isFilled)
            settle(*each);
    std::erase_if(unfilled_, [](const ArchiveRecord* each) { return each->isFilled; });
}

// --- Measuring -------------------------------------------------------------------------------------------------------

// Most tables have plain keys, and nothing to be remembered about them.
void ArchiveTables::settle(ArchiveRecord& record) {
    if (haveOnlyPlainKeys(record))
        fill(record);
    else
        measureKeys(record);
}

bool ArchiveTables::haveOnlyPlainKeys(const ArchiveRecord& record) const {
    ArchiveReferences references(content_, record);
    while (const NSUInteger key = references.next()) {
        const NSObject& object = content_.objectAt(key);
        if (!isPlain(object) || plainMeasure(object).hasHosts)
            return false;
        if (record.isDictionary())
            references.next();
    }
    return true;
}

void ArchiveTables::measureKeys(ArchiveRecord& record) {
    visit({record.object.get(), true}, &record, true);
    while (!visits_.empty()) {
        if (waiting_.size() == visits_.back().waitingBefore) {
            leave();
            continue;
        }
        const NSObject& next = *waiting_.back().object;
        const bool isKey = waiting_.back().isKey;
        waiting_.pop_back();
        if (isPlain(next)) {
            include(visits_.back().measure, plainMeasure(next), isKey);
            continue;
        }
        const auto found = measures_.find(&next);
        if (found == measures_.end())
            visit({&next, isKey}, unfilledRecord(next), false);
        else if (found->second.isUnderWay)
            content_.fail(record, ArchiveErrorDamaged, u"a key contains itself"_ns);
        else
            include(visits_.back().measure, found->second, isKey);
    }
}

void ArchiveTables::visit(Part part, ArchiveRecord* unfilled, bool onlyKeys) {
    measures_[part.object].isUnderWay = true;
    visits_.push_back({part, unfilled, waiting_.size(), onlyKeys, {1, 1, false, false}});
    pushContents(*part.object, unfilled, onlyKeys);
}

void ArchiveTables::leave() {
    Visit left = visits_.back();
    visits_.pop_back();
    if (left.unfilled && !left.measure.hasHosts)
        fill(*left.unfilled);
    const NSUInteger candidates = mostCandidates(*left.part.object);
    left.measure.comparing =
        left.measure.comparing < highestCost / candidates ? left.measure.comparing * candidates : highestCost;
    if (left.onlyKeys)
        measures_.erase(left.part.object);
    else
        measures_[left.part.object] = left.measure;
    if (!visits_.empty())
        include(visits_.back().measure, left.measure, left.part.isKey);
}

void ArchiveTables::pushContents(const NSObject& object, const ArchiveRecord* unfilled, bool onlyKeys) {
    if (unfilled) {
        ArchiveReferences references(content_, *unfilled);
        while (const NSUInteger reference = references.next()) {
            waiting_.push_back({&content_.objectAt(reference), true});
            if (!unfilled->isDictionary())
                continue;
            const NSUInteger value = references.next();
            if (!onlyKeys)
                waiting_.push_back({&content_.objectAt(value), false});
        }
        return;
    }
    const auto pushIfPresent = [this](const NSObject* part) {
        if (part)
            waiting_.push_back({part, false});
    };
    switch (kindOf(object)) {
        case CollectionKind::Array:
            for (const NSObject& each : static_cast<const NSArray&>(object))
                waiting_.push_back({&each, false});
            break;
        case CollectionKind::Set:
            for (const NSObject& each : static_cast<const NSSet&>(object))
                waiting_.push_back({&each, true});
            break;
        case CollectionKind::Dictionary:
            for (const auto [key, value] : static_cast<const NSDictionary&>(object))
                waiting_.insert(waiting_.end(), {Part{&key, true}, Part{&value, false}});
            break;
        default:
            pushIfPresent(CompositeAccess::data(static_cast<const Composite&>(object)));
            pushIfPresent(CompositeAccess::children(static_cast<const Composite&>(object)));
    }
}

// A composite of which only a part of the operations follows its own parts is counted in full.
bool ArchiveTables::isComposite(const NSObject& object) const {
    return compositeFor(object, Class::ByParts::Hash) || compositeFor(object, Class::ByParts::Equality) ||
           compositeFor(object, Class::ByParts::Copy);
}

/// Whether the object does not consist of others, as far as is known yet.
bool ArchiveTables::isPlain(const NSObject& object) const {
    return kindOf(object) == CollectionKind::None && !(hostsAreComplete_ && isComposite(object));
}

// Hashing goes over what these contain, several bytes at a time.
ArchiveTables::Measure ArchiveTables::plainMeasure(const NSObject& object) const {
    const auto costing = [](NSUInteger cost) { return Measure{cost, cost, false, false}; };
    switch (archiveTag(object.isa())) {
        case 't':
        case 'T':
            return costing(1 + static_cast<const NSString&>(object).length() / 8);
        case 'b':
        case 'B':
            return costing(1 + static_cast<const NSData&>(object).length() / 8);
        case 'x':
        case 'X':
            return costing(1 + static_cast<const NSIndexSet&>(object).ranges().size());
        case 'o':
            return {1, 1, !hostsAreComplete_, false};
        default:
            return costing(1);
    }
}

void ArchiveTables::include(Measure& whole, const Measure& part, bool isKey) {
    whole.hashing = std::min(whole.hashing + (isKey ? 1 : part.hashing), highestCost);
    whole.comparing = std::min(whole.comparing + part.comparing, highestCost);
    whole.hasHosts |= part.hasHosts;
}

ArchiveTables::Measure ArchiveTables::measureOf(const NSObject& key) const {
    return isPlain(key) ? plainMeasure(key) : measures_.at(&key);
}

ArchiveRecord* ArchiveTables::unfilledRecord(const NSObject& object) {
    if (recordsByObject_.empty())
        for (ArchiveRecord* const each : unfilled_)
            recordsByObject_.emplace(each->object.get(), each);
    const auto found = recordsByObject_.find(&object);
    return found == recordsByObject_.end() || found->second->isFilled ? nullptr : found->second;
}

// --- Filling ---------------------------------------------------------------------------------------------------------

void ArchiveTables::fill(ArchiveRecord& record) {
    record.isFilled = true;
    content_.guarded(record, [&] {
        if (record.isDictionary())
            addEntries(record, CollectionAccess::table(static_cast<NSDictionary&>(*record.object)));
        else
            addEntries(record, CollectionAccess::table(static_cast<NSSet&>(*record.object)));
    });
}

template <class Table> void ArchiveTables::addEntries(ArchiveRecord& record, Table& table) {
    constexpr bool hasValues = std::is_same_v<Table, HashTable<DictionaryEntry>>;
    ArchiveReferences references(content_, record);
    table.reserve(references.left() / (hasValues ? 2 : 1));
    while (const NSUInteger reference = references.next()) {
        NSObject& key = content_.objectAt(reference);
        const Measure cost = measureOf(key);
        charge(record, hashingLeft_, cost.hashing);
        const std::uint32_t hash = Table::hashOf(key);
        for (std::size_t i = table.index().find(hash); table.index().holds(i, hash); ++i)
            charge(record, comparingLeft_, cost.comparing);
        const bool isThere = static_cast<bool>(table.find(key, hash));
        if constexpr (hasValues) {
            if (isThere)
                content_.fail(record, ArchiveErrorDamaged, u"two keys are equal"_ns);
            NSObject& value = content_.objectAt(references.next());
            Ref<NSObject> copiedKey = key.copy();
            table.add({copiedKey.get(), &value}, hash);
            static_cast<void>(copiedKey.leak());
            value.retain();
        } else if (!isThere) {
            table.add({&key}, hash);
            key.retain();
        }
    }
}

void ArchiveTables::charge(const ArchiveRecord& record, NSUInteger& left, NSUInteger cost) const {
    if (cost > left)
        content_.fail(record, ArchiveErrorDamaged, u"the keys take too long to hash or to compare"_ns);
    left -= cost;
}

}  // namespace tovi::detail
