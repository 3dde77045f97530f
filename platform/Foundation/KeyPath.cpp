#include <ToviFoundationKit/Foundation/KeyPath_p.h>

#include <ToviFoundationKit/Foundation/NSMutableArray.h>
#include <ToviFoundationKit/Foundation/NSMutableSet.h>
#include <ToviFoundationKit/Foundation/NumberMath_p.h>
#include <ToviFoundationKit/Runtime/NSException.h>

namespace tovi {

namespace detail {

namespace {

// Operators: what each makes of a list or set.

Ref<NSNumber> countOf(const NSObject& collection) {
    const auto* list = as<NSArray>(&collection);
    return box(list ? list->count() : static_cast<const NSSet&>(collection).count());
}

/// A collection of the receiver's kind.
Ref<NSObject> ofSameKind(const NSObject& receiver, const NSArray& objects) {
    if (as<NSArray>(&receiver))
        return share(objects);
    return NSSet::setWithArray(objects);
}

Ref<NSArray> presentObjects(const NSObject& collection) {
    Ref<NSMutableArray> result = NSMutableArray::array();
    for (NSObject& each : FastEnumeration(collection))
        if (!isNull(&each))
            result->addObject(each);
    return result;
}

Ref<NSArray> presentObjectsOfAll(const NSObject& collections) {
    Ref<NSMutableArray> result = NSMutableArray::array();
    for (NSObject& each : FastEnumeration(collections))
        if (!isNull(&each))
            result->addObjectsFromArray(presentObjects(each));
    return result;
}

Ref<NSArray> distinct(const NSArray& objects) { return NSSet::setWithArray(objects)->allObjects(); }

struct Operator {
    std::u16string_view name;
    id (*apply)(const NSObject& collection);
};

constexpr Operator operators[] = {
    {u"@count", [](const NSObject& c) -> id { return countOf(c); }},
    {u"@sum", [](const NSObject& c) -> id { return sumOf(c); }},
    {u"@avg", [](const NSObject& c) -> id { return averageOf(c); }},
    {u"@min", [](const NSObject& c) { return extremeOf(c, -1); }},
    {u"@max", [](const NSObject& c) { return extremeOf(c, 1); }},
    {u"@unionOfObjects", [](const NSObject& c) -> id { return ofSameKind(c, presentObjects(c)); }},
    {u"@distinctUnionOfObjects", [](const NSObject& c) -> id { return ofSameKind(c, distinct(presentObjects(c))); }},
    {u"@unionOfArrays", [](const NSObject& c) -> id { return ofSameKind(c, presentObjectsOfAll(c)); }},
    {u"@distinctUnionOfArrays",
     [](const NSObject& c) -> id { return ofSameKind(c, distinct(presentObjectsOfAll(c))); }},
    {u"@distinctUnionOfSets", [](const NSObject& c) -> id { return NSSet::setWithArray(presentObjectsOfAll(c)); }},
};

const Operator& operatorNamed(const NSObject& receiver, const NSString& name) {
    for (const Operator& each : operators)
        if (name == each.name)
            return each;
    NSException::raise(NSUndefinedKeyException,
                       u"[<%@ %p> valueForKeyPath:]: this class does not implement the operation %@.", receiver.isa(),
                       static_cast<const void*>(&receiver), name);
}

bool isListOrSet(const NSObject& object) { return as<NSArray>(&object) || as<NSSet>(&object); }

}  // namespace

std::vector<Ref<NSString>> keysOfPath(std::u16string_view path) {
    std::vector<Ref<NSString>> keys;
    for (std::size_t dot = 0; dot != path.npos; path.remove_prefix(dot + 1)) {
        dot = path.find(u'.');
        keys.push_back(NSString::stringWithCharacters(path.substr(0, dot)));
        if (dot == path.npos)
            break;
    }
    return keys;
}

// An operator's turn comes when the rest of the path is known.
id valueForKeys(NSObject& object, std::span<const Ref<NSString>> keys) {
    std::vector<const Operator*> waiting;
    id value = object;
    for (const Ref<NSString>& key : keys) {
        if (!value)
            return nullptr;
        if (key->view().starts_with(u'@') && isListOrSet(*value)) {
            const Operator& found = operatorNamed(*value, key);
            if (&found == &operators[0])
                value = found.apply(*value);
            else
                waiting.push_back(&found);
        } else if (*key != u"self") {
            value = value->valueForKey(key);
        }
    }
    for (; value && !waiting.empty(); waiting.pop_back())
        value = waiting.back()->apply(*value);
    return value;
}

}  // namespace detail

id NSArray::valueForKeyPath(const NSString& path) { return detail::valueForKeys(*this, detail::keysOfPath(path)); }
id NSSet::valueForKeyPath(const NSString& path) { return detail::valueForKeys(*this, detail::keysOfPath(path)); }

}  // namespace tovi
