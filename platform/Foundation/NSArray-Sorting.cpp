#include <bit>
#include <cmath>
#include <optional>

#include <ToviFoundationKit/Foundation/KeySort_p.h>
#include <ToviFoundationKit/Foundation/NSArray.h>
#include <ToviFoundationKit/Runtime/Additions.h>
#include <ToviFoundationKit/Runtime/Message.h>

namespace tovi {

namespace {

using detail::Keyed;
using Keys = std::optional<std::vector<Keyed>>;

/// True where objects of the class answer the selector with the given operation, which nobody has replaced.
template <auto operation, class T> bool answersWith(Selector selector) {
    const Method* const method = T::classObject().instanceMethods().find(selector);
    return method && method->direct == instance<operation>("").method.direct;
}

/// The keys of objects that `keyOf` all answers a key for.
template <class KeyOf> Keys keysOf(std::span<NSObject* const> objects, KeyOf keyOf) {
    std::vector<Keyed> keys;
    keys.reserve(objects.size());
    for (NSObject* const each : objects) {
        const std::optional<std::uint64_t> key = keyOf(*each);
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

void takeOrder(std::span<NSObject*> objects, const std::vector<Keyed>& keys) {
    std::transform(keys.begin(), keys.end(), objects.begin(), [](const Keyed& each) { return each.object; });
}

bool sortNumbers(std::span<NSObject*> objects) {
    Keys keys = keysOf(objects, integerKey);
    if (!keys)
        keys = keysOf(objects, realKey);
    if (!keys)
        return false;
    detail::sortByKeys(*keys);
    takeOrder(objects, *keys);
    return true;
}

bool sortTexts(std::span<NSObject*> objects) {
    Keys keys = keysOf(objects, textKey);
    if (!keys)
        return false;
    detail::sortByKeys(*keys);
    detail::sortWithinKeys(*keys, [](const NSObject& a, const NSObject& b) {
        return static_cast<const NSString&>(a).compare(static_cast<const NSString&>(b)) > 0;
    });
    takeOrder(objects, *keys);
    return true;
}

using Comparison = detail::DirectEntry<NSInteger, NSObject*>;

/// The operation of objects that are all of one class, where it takes an object and answers an integer.
const Method* commonMethod(std::span<NSObject* const> objects, Selector comparator) {
    const DispatchTable& table = objects[0]->dispatchTable();
    const Method* const method = table.find(comparator);
    const bool fits = method && method->code == detail::signatureCode<NSInteger, NSObject*>;
    const auto isOther = [&](const NSObject* each) { return &each->dispatchTable() != &table; };
    return fits && std::none_of(objects.begin(), objects.end(), isOther) ? method : nullptr;
}

void sortBySelector(std::span<NSObject*> objects, Selector comparator) {
    if (answersWith<&NSNumber::compare, NSNumber>(comparator) && sortNumbers(objects))
        return;
    if (answersWith<&NSString::compare, NSString>(comparator) && sortTexts(objects))
        return;
    if (const Method* const method = commonMethod(objects, comparator))
        return detail::mergeSort(objects, [method, compare = reinterpret_cast<Comparison>(method->direct)](
                                              NSObject* a, NSObject* b) { return compare(*method, *a, b) > 0; });
    detail::mergeSort(objects, [site = MessageSite(comparator)](NSObject* a, NSObject* b) mutable {
        return site.send<NSInteger>(*a, *b) > 0;
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

}  // namespace tovi
