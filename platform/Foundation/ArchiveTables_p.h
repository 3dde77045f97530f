#pragma once

#include <unordered_map>

#include <ToviFoundationKit/Foundation/ArchiveContent_p.h>
#include <ToviFoundationKit/Foundation/Collections_p.h>

namespace tovi::detail {

/// Fills the dictionaries and sets of an archive, each after those that its own keys contain. (A set's elements are
/// meant when keys are spoken of.)
///
/// Whoever made the archive may have wanted hashing to take forever. So what it costs to hash a key, and to compare it,
/// is known before: everything in it counts, parts that occur several times as often. (The hashes of keys in keys are
/// at hand, though.) The costs of all keys together are limited. A key that contains itself has none and is refused.
class ArchiveTables {
public:
    explicit ArchiveTables(ArchiveContent& content);

    /// Those whose keys contain nothing of a host's.
    void fillBeforeHosts() { fillAll(false); }
    /// The others, when the hosts' objects are complete.
    void fillAfterHosts() { fillAll(true); }

private:
    struct Measure {
        NSUInteger hashing = 0;
        NSUInteger comparing = 0;
        bool hasHosts = false;
        bool isUnderWay = false;
    };
    struct Part {
        const NSObject* object;
        bool isKey;
    };
    /// An object whose contents are being measured; those not seen yet are the last ones of `waiting_`.
    struct Visit {
        Part part;
        ArchiveRecord* unfilled;
        std::size_t waitingBefore;
        bool onlyKeys;
        Measure measure;
    };

    void fillAll(bool hostsAreComplete);
    void settle(ArchiveRecord& record);
    bool haveOnlyPlainKeys(const ArchiveRecord& record) const;
    void measureKeys(ArchiveRecord& record);
    void visit(Part part, ArchiveRecord* unfilled, bool onlyKeys);
    void leave();
    void pushContents(const NSObject& object, const ArchiveRecord* unfilled, bool onlyKeys);
    bool isComposite(const NSObject& object) const;
    bool isPlain(const NSObject& object) const;
    Measure plainMeasure(const NSObject& object) const;
    static void include(Measure& whole, const Measure& part, bool isKey);
    Measure measureOf(const NSObject& key) const;
    ArchiveRecord* unfilledRecord(const NSObject& object);

    void fill(ArchiveRecord& record);
    template <class Table> void addEntries(ArchiveRecord& record, Table& table);
    void charge(const ArchiveRecord& record, NSUInteger& left, NSUInteger cost) const;

    ArchiveContent& content_;
    std::vector<ArchiveRecord*> unfilled_;
    std::unordered_map<const NSObject*, ArchiveRecord*> recordsByObject_;  ///< of `unfilled_`; made when needed
    std::unordered_map<const NSObject*, Measure> measures_;
    std::vector<Visit> visits_;
    std::vector<Part> waiting_;
    bool hostsAreComplete_ = false;
    NSUInteger hashingLeft_;
    NSUInteger comparingLeft_;
};

}  // namespace tovi::detail
