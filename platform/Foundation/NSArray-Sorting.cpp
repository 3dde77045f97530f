#include <bit>
#include <cmath>
#include <optional>

#include <ToviFoundationKit/Foundation/KeySort_p.h>
#include <ToviFoundationKit/Foundation/NSMutableArray.h>
#include <ToviFoundationKit/Runtime/Additions.h>
#include <ToviFoundationKit/Runtime/Message.h>
#include <ToviFoundationKit/Runtime/NSException.h>

namespace tovi {

namespace {

/// What is sorted: an object, or an object with another one that stands for it.
struct Substitute {
    NSObject* key;
    NSObject* object;
};
NSObject* keyIn(NSObject* object) noexcept { return object; }
NSObject* keyIn(const Substitute& item) noexcept { return item.key; }

template <class Item> using Keys = std::optional<std::vector<detail::Keyed<Item>>>;

/// True where objects of the class answer the selector with the given operation, which nobody has replaced.
template <auto operation, class T> bool answersWith(Selector selector) {
    const Method* const method = T::classObject().instanceMethods().find(selector);
    return method && method->direct == instance<operation>("").method.direct;
}

/// The keys of items that `keyOf` all answers a key for.
template <class Item, class KeyOf> Keys<Item> keysOf(std::span<Item> items, KeyOf keyOf) {
    std::vector<detail::Keyed<Item>> keys;
    keys.reserve(items.size());
    for (const Item& each : items) {
        const std::optional<std::uint64_t> key = keyOf(*keyIn(each));
        if (!key)
            return std::nullopt;
        keys.push_back({*key, each});
    }
    return keys;
}

constexpr std::uint64_t signBit = std::uint64_t(1) << 63;

std::optional<std::uint64_t> integerKey(const NSObject& object) {
    if (&object.isa() != &NSNumber::classObject())
        return std::nullopt;
    const auto& number = static_cast<const NSNumber&>(object);
    const char type = *number.objCType();
    const NSInteger value = number.integerValue();
    const bool wraps = value < 0 && (type == 'Q' || type == 'L');
    if (wraps || type == 'd' || type == 'f')
        return std::nullopt;
    return static_cast<std::uint64_t>(value) ^ signBit;
}

// NaN comes first, and the two zeros are the same.
std::optional<std::uint64_t> realKey(const NSObject& object) {
    if (&object.isa() != &NSNumber::classObject())
        return std::nullopt;
    const auto& number = static_cast<const NSNumber&>(object);
    const char type = *number.objCType();
    if (type != 'd' && type != 'f')
        return std::nullopt;
    const double value = number.doubleValue() + 0.0;
    if (std::isnan(value))
        return 0;
    const auto bits = std::bit_cast<std::uint64_t>(value);
    return bits & signBit ? ~bits : bits | signBit;
}

// The first eight units decide between texts that differ in them, as long as they are ASCII: these are the same in
// every normal form.
std::optional<std::uint64_t> textKey(const NSObject& object) {
    if (&object.isa() != &NSString::classObject() && &object.isa() != &NSMutableString::classObject())
        return std::nullopt;
    const std::u16string_view text = static_cast<const NSString&>(object).view();
    std::uint64_t key = 0;
    for (std::size_t i = 0; i < 8; ++i) {
        const char16_t unit = i < text.size() ? text[i] : u'\0';
        if (unit > 0x7F)
            return std::nullopt;
        key = key << 8 | unit;
    }
    return key;
}

template <class Item> void takeOrder(std::span<Item> items, const std::vector<detail::Keyed<Item>>& keys) {
    std::transform(keys.begin(), keys.end(), items.begin(), [](const auto& each) { return each.item; });
}

template <class Item> bool sortNumbers(std::span<Item> items) {
    Keys<Item> keys = keysOf(items, integerKey);
    if (!keys)
        keys = keysOf(items, realKey);
    if (!keys)
        return false;
    detail::sortByKeys(*keys);
    takeOrder(items, *keys);
    return true;
}

template <class Item> bool sortTexts(std::span<Item> items) {
    Keys<Item> keys = keysOf(items, textKey);
    if (!keys)
        return false;
    detail::sortByKeys(*keys);
    detail::sortWithinKeys(*keys, [](const Item& a, const Item& b) {
        return static_cast<const NSString&>(*keyIn(a)).compare(static_cast<const NSString&>(*keyIn(b))) > 0;
    });
    takeOrder(items, *keys);
    return true;
}

using Comparison = detail::DirectEntry<NSInteger, NSObject*>;

/// The operation of keys that are all of one class, where it takes an object and answers an integer.
template <class Item> const Method* commonMethod(std::span<Item> items, Selector comparator) {
    const DispatchTable& table = keyIn(items[0])->dispatchTable();
    const Method* const method = table.find(comparator);
    const bool fits = method && method->code == detail::signatureCode<NSInteger, NSObject*>;
    const auto isOther = [&](const Item& each) { return &keyIn(each)->dispatchTable() != &table; };
    return fits && std::none_of(items.begin(), items.end(), isOther) ? method : nullptr;
}

template <class Item> void sortBySelector(std::span<Item> items, Selector comparator) {
    if (answersWith<&NSNumber::compare, NSNumber>(comparator) && sortNumbers(items))
        return;
    if (answersWith<&NSString::compare, NSString>(comparator) && sortTexts(items))
        return;
    if (const Method* const method = commonMethod(items, comparator))
        return detail::mergeSort(
            items, [method, compare = reinterpret_cast<Comparison>(method->direct)](const Item& a, const Item& b) {
                return compare(*method, *keyIn(a), keyIn(b)) > 0;
            });
    detail::mergeSort(items, [site = MessageSite(comparator)](const Item& a, const Item& b) mutable {
        return site.template send<NSInteger>(*keyIn(a), keyIn(b)) > 0;
    });
}

// A message to nil answers 0, that is, that the two are the same.
void sortWithNilKeys(std::span<Substitute> items, Selector comparator) {
    detail::mergeSort(items, [site = MessageSite(comparator)](const Substitute& a, const Substitute& b) mutable {
        return a.key && site.send<NSInteger>(*a.key, b.key) > 0;
    });
}

}  // namespace

// The copy that is answered keeps the objects alive, whatever a comparison does to this list.
template <class Sort> Ref<NSArray> NSArray::sortedCopy(Sort sort) const {
    const Ref<NSArray> copy = arrayWithObjects(objects_, count_);
    if (count_ < 2)
        return copy;
    std::vector<NSObject*> order(objects_, objects_ + count_);
    sort(std::span(order));
    std::copy(order.begin(), order.end(), copy->objects_);
    return copy;
}

Ref<NSArray> NSArray::sortedArrayUsingSelector(Selector comparator) const {
    return sortedCopy([comparator](std::span<NSObject*> objects) { sortBySelector(objects, comparator); });
}

Ref<NSArray> NSArray::sortedArrayUsingFunction_context(NSSortFunction compare, void* context) const {
    return sortedCopy([=](std::span<NSObject*> objects) {
        detail::mergeSort(objects, [=](NSObject* a, NSObject* b) { return compare(*a, *b, context) > 0; });
    });
}

// Descending, stable too: what was last comes first, is sorted, and changes places once more.
void NSMutableArray::sortUsingKeys(std::span<const id> keys, Selector comparator, bool descending) {
    willChange("sortUsingSelector:");
    if (keys.size() != count_)
        NSException::raise(NSInvalidArgumentException, u"%lu keys for %lu objects", keys.size(), count_);
    if (count_ < 2)
        return;
    const std::uint32_t before = mutations_;
    std::vector<Substitute> items;
    items.reserve(count_);
    for (NSUInteger i = 0; i < count_; ++i)
        items.push_back({keys[i].get(), objects_[i]});
    const auto turn = [&] { return descending ? std::reverse(items.begin(), items.end()) : void(); };
    turn();
    if (std::all_of(keys.begin(), keys.end(), [](const id& each) { return static_cast<bool>(each); }))
        sortBySelector(std::span(items), comparator);
    else
        sortWithNilKeys(items, comparator);
    turn();
    if (mutations_ != before)
        detail::raiseMutatedWhileEnumerated(*this);
    std::transform(items.begin(), items.end(), objects_, [](const Substitute& each) { return each.object; });
    ++mutations_;
}

}  // namespace tovi
