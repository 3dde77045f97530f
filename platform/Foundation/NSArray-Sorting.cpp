#include <bit>
#include <cmath>
#include <optional>

#include <ToviFoundationKit/Foundation/MergeSort_p.h>
#include <ToviFoundationKit/Foundation/NSArray.h>
#include <ToviFoundationKit/Runtime/Additions.h>
#include <ToviFoundationKit/Runtime/Message.h>

namespace tovi {

namespace {

/// An object with a number that orders it, so that most comparisons need not look at the object.
struct Keyed {
    std::uint64_t key;
    NSObject* object;
};
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

// The first eight units decide between texts that differ in them, as long as they are ASCII: these are the same in every
// normal form.
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

template <class After> bool sortKeyed(std::span<NSObject*> objects, Keys keys, After after) {
    if (!keys)
        return false;
    detail::mergeSort(std::span(*keys), after);
    std::transform(keys->begin(), keys->end(), objects.begin(), [](const Keyed& each) { return each.object; });
    return true;
}

bool sortNumbers(std::span<NSObject*> objects) {
    const auto after = [](const Keyed& a, const Keyed& b) { return a.key > b.key; };
    return sortKeyed(objects, keysOf(objects, integerKey), after) || sortKeyed(objects, keysOf(objects, realKey), after);
}

bool sortTexts(std::span<NSObject*> objects) {
    return sortKeyed(objects, keysOf(objects, textKey), [](const Keyed& a, const Keyed& b) {
        if (a.key != b.key)
            return a.key > b.key;
        return static_cast<const NSString*>(a.object)->compare(static_cast<const NSString&>(*b.object)) > 0;
    });
}

void sortBySelector(std::span<NSObject*> objects, Selector comparator) {
    if (answersWith<&NSNumber::compare, NSNumber>(comparator) && sortNumbers(objects))
        return;
    if (answersWith<&NSString::compare, NSString>(comparator) && sortTexts(objects))
        return;
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
