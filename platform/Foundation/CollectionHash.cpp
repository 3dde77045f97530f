#include <optional>
#include <vector>

#include <ToviFoundationKit/Foundation/Collections_p.h>

namespace tovi::detail {

namespace {

constexpr NSUInteger factor = 0x9E3779B97F4A7C15U;

constexpr NSUInteger scattered(NSUInteger bits) noexcept {
    bits = (bits ^ bits >> 32) * 0xD6E8FEB86659FD93U;
    return bits ^ bits >> 32;
}

// The table knows the hashes of a set's elements, so a set never needs a look into nested collections.
NSUInteger hashOfSet(const NSSet& set) noexcept {
    NSUInteger sum = set.count();
    CollectionAccess::table(set).index().forEachBatch([&sum](const HashIndex::Slot* slots, std::size_t count) {
        for (std::size_t i = 0; i < count; ++i)
            sum += scattered(HashIndex::hash(slots[i]) * factor);
        return true;
    });
    return scattered(sum);
}

/// The hash of a list, a dictionary or a composite, as far as it has come.
class Hashing {
public:
    Hashing(const NSObject& collection, CollectionKind kind) noexcept : collection_(share(collection)), kind_(kind) {}

    /// Goes on until a nested one is reached, which is answered; its hash is to be given to `take`.
    const NSObject* nextNested() {
        while (const NSObject* const object = current()) {
            const CollectionKind kind = kindOf(*object, Class::ByParts::Hash);
            if (kind != CollectionKind::None && kind != CollectionKind::Set)
                return object;
            const Held hold(*object);
            take(object->hash());
        }
        return nullptr;
    }

    void take(NSUInteger hash) noexcept {
        if (kind_ == CollectionKind::Array)
            sum_ = scattered(sum_ * factor + hash);
        else if (kind_ == CollectionKind::Composite)
            sum_ ^= hash;
        else
            sum_ += scattered((hash + keyHash()) * factor + keyHash());
        ++position_;
        ++count_;
    }

    NSUInteger result() const noexcept { return kind_ == CollectionKind::Composite ? sum_ : scattered(sum_ + count_); }

private:
    const auto& table() const noexcept {
        return CollectionAccess::table(static_cast<const NSDictionary&>(*collection_));
    }
    NSUInteger keyHash() const noexcept { return HashIndex::hash(table().index()[position_]); }

    const NSObject* current() noexcept {
        if (kind_ == CollectionKind::Array) {
            const auto& array = static_cast<const NSArray&>(*collection_);
            return position_ < array.count() ? &CollectionAccess::object(array, position_) : nullptr;
        }
        if (kind_ == CollectionKind::Composite) {
            const auto& composite = static_cast<const Composite&>(*collection_);
            if (position_ == 0 && !CompositeAccess::data(composite))
                ++position_;
            return position_ == 0   ? CompositeAccess::data(composite)
                   : position_ == 1 ? CompositeAccess::children(composite)
                                    : nullptr;
        }
        const HashIndex& index = table().index();
        while (position_ < index.size() && !index[position_])
            ++position_;
        return position_ < index.size() ? table().entryAt({position_}).value : nullptr;
    }

    Ref<NSObject> collection_;
    CollectionKind kind_;
    std::size_t position_ = 0;  ///< the element of a list, the slot of a dictionary's index, a composite's part
    std::size_t count_ = 0;
    NSUInteger sum_ = 0;
};

}  // namespace

// The collections around the one being hashed are kept in a vector, not on the stack.
NSUInteger hashOfCollection(const NSObject& collection, CollectionKind kind) {
    if (kind == CollectionKind::Set)
        return hashOfSet(static_cast<const NSSet&>(collection));
    std::vector<Hashing> outer;
    Hashing at(collection, kind);
    for (;;) {
        if (const NSObject* const nested = at.nextNested()) {
            Hashing next(*nested, kindOf(*nested, Class::ByParts::Hash));
            outer.push_back(std::move(at));
            at = std::move(next);
        } else if (outer.empty()) {
            return at.result();
        } else {
            const NSUInteger hash = at.result();
            at = std::move(outer.back());
            outer.pop_back();
            at.take(hash);
        }
    }
}

}  // namespace tovi::detail
