#include <optional>
#include <vector>

#include <ToviFoundationKit/Foundation/Collections_p.h>

namespace tovi::detail {

namespace {

/// What a comparison knows of a pair of objects: whether they are equal, or, where that takes a look into two nested
/// collections, nothing yet.
using Verdict = std::optional<bool>;

Verdict verdictOn(const NSObject& a, const NSObject& b) {
    if (&a == &b)
        return true;
    const CollectionKind kind = kindOf(a, Class::ByParts::Equality);
    if (kind == CollectionKind::Composite)
        return b.isKindOfClass(a.isa()) ? Verdict() : false;
    if (kind != CollectionKind::None && kind == kindOf(b))
        return std::nullopt;
    const Held holdA(a), holdB(b);
    return a.isEqual(&b);
}

/// The comparison of two collections of one kind, as far as it has come.
struct Comparison {
    enum class Phase : std::uint8_t { Entry, Candidate, Key, Value };

    Ref<NSObject> a;
    Ref<NSObject> b;
    CollectionKind kind;
    Phase phase = Phase::Entry;
    std::size_t position = 0;  ///< the element of a list, the slot of a's index
    std::size_t probe = 0;     ///< the slot of b's index
};

/// Either the outcome of a comparison or a pair of nested collections to be compared first; the outcome of the last
/// such pair is that of the whole comparison.
struct Step {
    Verdict outcome;
    const NSObject* a = nullptr;
    const NSObject* b = nullptr;
    bool last = false;
};

Step continueLists(Comparison& at, const NSArray& a, const NSArray& b, Verdict verdict) {
    if (a.count() != b.count() || verdict == false)
        return {false};
    while (at.position < a.count() && at.position < b.count()) {
        const NSObject& x = CollectionAccess::object(a, at.position);
        const NSObject& y = CollectionAccess::object(b, at.position);
        ++at.position;
        verdict = verdictOn(x, y);
        if (!verdict)
            return {verdict, &x, &y, at.position == a.count()};
        if (!*verdict)
            return {false};
    }
    return {true};
}

bool isEmpty(const NSObject* children) {
    if (const auto* keyed = as<NSDictionary>(children))
        return !keyed->count();
    const auto* list = as<NSArray>(children);
    return !children || (list && !list->count());
}

Step continueComposites(Comparison& at, const Composite& a, const Composite& b, Verdict verdict) {
    if (at.phase == Comparison::Phase::Entry) {
        const NSObject* const x = CompositeAccess::data(a);
        const NSObject* const y = CompositeAccess::data(b);
        at.phase = Comparison::Phase::Value;
        verdict = x && y ? verdictOn(*x, *y) : false;
        if (!verdict)
            return {verdict, x, y};
    }
    if (!*verdict)
        return {false};
    const NSObject* const x = CompositeAccess::children(a);
    const NSObject* const y = CompositeAccess::children(b);
    if (isEmpty(x) || isEmpty(y))
        return {isEmpty(x) && isEmpty(y)};
    return {verdictOn(*x, *y), x, y, true};
}

Verdict verdictOnValues(const DictionaryEntry& a, const DictionaryEntry& b) { return verdictOn(*a.value, *b.value); }
Verdict verdictOnValues(const SetEntry&, const SetEntry&) { return true; }
Step nestedValues(const DictionaryEntry& a, const DictionaryEntry& b) { return {std::nullopt, a.value, b.value}; }
Step nestedValues(const SetEntry&, const SetEntry&) { return {}; }

// Every entry of one table must have its like in the other, which the hash in its slot leads to.
template <class Entry>
Step continueTables(Comparison& at, const HashTable<Entry>& a, const HashTable<Entry>& b, Verdict verdict) {
    using Phase = Comparison::Phase;
    if (a.count() != b.count())
        return {false};
    for (;;) {
        switch (at.phase) {
            case Phase::Entry:
                while (at.position < a.index().size() && !a.index()[at.position])
                    ++at.position;
                if (at.position >= a.index().size())
                    return {true};
                at.probe = b.index().find(HashIndex::hash(a.index()[at.position]));
                at.phase = Phase::Candidate;
                break;
            case Phase::Candidate: {
                if (!b.index().holds(at.probe, HashIndex::hash(a.index()[at.position])))
                    return {false};
                const NSObject* const x = a.entryAt({at.position}).key;
                const NSObject* const y = b.entryAt({at.probe}).key;
                at.phase = Phase::Key;
                verdict = verdictOn(*x, *y);
                if (!verdict)
                    return {verdict, x, y};
                break;
            }
            case Phase::Key:
                if (!*verdict) {
                    ++at.probe;
                    at.phase = Phase::Candidate;
                    break;
                }
                at.phase = Phase::Value;
                verdict = verdictOnValues(a.entryAt({at.position}), b.entryAt({at.probe}));
                if (!verdict)
                    return nestedValues(a.entryAt({at.position}), b.entryAt({at.probe}));
                break;
            case Phase::Value:
                if (!*verdict)
                    return {false};
                ++at.position;
                at.phase = Phase::Entry;
                break;
        }
    }
}

Step advance(Comparison& at, Verdict verdict) {
    switch (at.kind) {
        case CollectionKind::Array:
            return continueLists(at, static_cast<const NSArray&>(*at.a), static_cast<const NSArray&>(*at.b), verdict);
        case CollectionKind::Dictionary:
            return continueTables(at, CollectionAccess::table(static_cast<const NSDictionary&>(*at.a)),
                                  CollectionAccess::table(static_cast<const NSDictionary&>(*at.b)), verdict);
        case CollectionKind::Composite:
            return continueComposites(at, static_cast<const Composite&>(*at.a), static_cast<const Composite&>(*at.b),
                                      verdict);
        default:
            return continueTables(at, CollectionAccess::table(static_cast<const NSSet&>(*at.a)),
                                  CollectionAccess::table(static_cast<const NSSet&>(*at.b)), verdict);
    }
}

// The comparisons that wait for one of nested collections are kept in a vector, not on the stack.
bool equal(Comparison at) {
    std::vector<Comparison> waiting;
    Verdict verdict;
    for (;;) {
        const Step step = advance(at, verdict);
        verdict = step.outcome;
        if (!verdict) {
            Comparison next{share(*step.a), share(*step.b), kindOf(*step.a, Class::ByParts::Equality)};
            if (!step.last)
                waiting.push_back(std::move(at));
            at = std::move(next);
        } else if (waiting.empty()) {
            return *verdict;
        } else {
            at = std::move(waiting.back());
            waiting.pop_back();
        }
    }
}

}  // namespace

bool equalLists(const NSArray& a, const NSArray& b) {
    return &a == &b || equal({share(a), share(b), CollectionKind::Array});
}

bool equalDictionaries(const NSDictionary& a, const NSDictionary& b) {
    return &a == &b || equal({share(a), share(b), CollectionKind::Dictionary});
}

bool equalSets(const NSSet& a, const NSSet& b) { return &a == &b || equal({share(a), share(b), CollectionKind::Set}); }

bool equalParts(const Composite& a, const Composite& b) {
    return &a == &b || equal({share(a), share(b), CollectionKind::Composite});
}

}  // namespace tovi::detail
