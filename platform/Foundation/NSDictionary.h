#pragma once

#include <initializer_list>

#include <ToviFoundationKit/Foundation/HashTable.h>
#include <ToviFoundationKit/Foundation/NSArray.h>

namespace tovi {

/// A key and a value as a list of them is written: `{u"width", 3}`. Objects are taken as they are, others boxed.
struct NSKeyValuePair {
    template <class K, class V> NSKeyValuePair(const K& k, const V& v) : key(box(k)), value(box(v)) {}
    Ref<NSObject> key;
    Ref<NSObject> value;
};

/// Values under keys. Keys are compared by equality and copied when they are added; a key without copies raises
/// NSInvalidArgumentException. Everything that enumerates keys or values does so in the order in which the keys were
/// first added; a value that is replaced keeps its place. What NSArray says about depth holds here too.
class TOVI_EXPORT NSDictionary : public NSObject {
    TOVI_DECLARE_CLASS(NSDictionary)

public:
    struct Entry {
        NSObject& key;
        NSObject& value;
    };
    class Iterator;

    static Ref<NSDictionary> dictionary();
    static Ref<NSDictionary> dictionaryWithObject_forKey(NSObject& object, NSObject& key);
    static Ref<NSDictionary> dictionaryWithDictionary(const NSDictionary& other);
    /// Of equal keys the last one's value counts. Raises NSInvalidArgumentException when the lists differ in length.
    static Ref<NSDictionary> dictionaryWithObjects_forKeys(const NSArray& objects, const NSArray& keys);
    /// `NSDictionary::of({{u"width", 3}, {u"name", u"plan"}})`
    static Ref<NSDictionary> of(std::initializer_list<NSKeyValuePair> pairs);

    NSUInteger count() const noexcept { return table_.count(); }
    id objectForKey(const NSObject& key) const { return find(key); }
    /// Borrowed: valid as long as the dictionary holds it; null when there is none.
    NSObject* find(const NSObject& key) const;
    /// The values for the keys in their order, the marker where a key has none.
    Ref<NSArray> objectsForKeys_notFoundMarker(const NSArray& keys, NSObject& marker) const;
    bool isEqualToDictionary(const NSDictionary& other) const;

    Ref<NSArray> allKeys() const;
    Ref<NSArray> allKeysForObject(const NSObject& object) const;  ///< the keys of equal values
    Ref<NSArray> allValues() const;
    Ref<NSEnumerator> keyEnumerator() const;
    Ref<NSEnumerator> objectEnumerator() const;
    /// `for (auto [key, value] : *dictionary)`. Changing the dictionary meanwhile raises NSGenericException.
    Iterator begin() const noexcept;
    Iterator end() const noexcept;

    bool isEqual(const NSObject* other) const override;
    NSUInteger hash() const override;
    /// "{\n    key = value;\n}", as NSArray's.
    Ref<NSString> description() const override;
    Ref<NSObject> copy() const override;
    Ref<NSObject> mutableCopy() const override;  ///< an NSMutableDictionary
    /// The value for the key; nil when there is none. Without one, `@count` and the like are read from the dictionary
    /// itself.
    id valueForKey(const NSString& key) override;

protected:
    using Table = detail::HashTable<detail::DictionaryEntry>;
    NSDictionary() noexcept = default;
    explicit NSDictionary(Table table) noexcept : table_(std::move(table)) {}
    ~NSDictionary() override = default;

    void set(NSObject& object, NSObject& key);
    void setAll(std::initializer_list<NSKeyValuePair> pairs);
    void setAll(const NSArray& objects, const NSArray& keys);

    std::uint32_t mutations_ = 0;
    Table table_;

private:
    friend class FastEnumeration;
    friend class NSMutableDictionary;
    friend struct detail::CollectionAccess;
};

/// A forward iterator over the entries.
class NSDictionary::Iterator {
public:
    using iterator_category = std::input_iterator_tag;
    using iterator_concept = std::forward_iterator_tag;
    using value_type = Entry;
    using difference_type = std::ptrdiff_t;
    using reference = Entry;

    Iterator() noexcept = default;
    Entry operator*() const {
        check();
        return {*position_->key, *position_->value};
    }
    Iterator& operator++() {
        check();
        ++position_;
        skipHoles();
        return *this;
    }
    Iterator operator++(int) {
        const Iterator before = *this;
        ++*this;
        return before;
    }
    friend bool operator==(Iterator a, Iterator b) noexcept { return a.position_ == b.position_; }

private:
    friend class NSDictionary;
    Iterator(const NSDictionary& dictionary, const detail::DictionaryEntry* position) noexcept
        : position_(position), dictionary_(&dictionary), expected_(dictionary.mutations_) {
        skipHoles();
    }
    void check() const {
        if (dictionary_->mutations_ != expected_) [[unlikely]]
            detail::raiseMutatedWhileEnumerated(*dictionary_);
    }
    void skipHoles() noexcept {
        while (position_ != dictionary_->table_.end() && !position_->key)
            ++position_;
    }

    const detail::DictionaryEntry* position_ = nullptr;
    const NSDictionary* dictionary_ = nullptr;
    std::uint32_t expected_ = 0;
};

inline NSDictionary::Iterator NSDictionary::begin() const noexcept { return {*this, table_.begin()}; }
inline NSDictionary::Iterator NSDictionary::end() const noexcept { return {*this, table_.end()}; }

}  // namespace tovi
