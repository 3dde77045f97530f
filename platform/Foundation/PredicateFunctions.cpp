#include <ToviFoundationKit/Foundation/PredicateFunctions_p.h>

#include <algorithm>
#include <cmath>
#include <limits>
#include <random>
#include <vector>

#include <ToviFoundationKit/Foundation/NSDate.h>
#include <ToviFoundationKit/Foundation/NSDictionary.h>
#include <ToviFoundationKit/Foundation/NSMutableArray.h>
#include <ToviFoundationKit/Foundation/NSMutableSet.h>
#include <ToviFoundationKit/Foundation/NumberMath_p.h>
#include <ToviFoundationKit/Runtime/Message.h>
#include <ToviFoundationKit/Runtime/NSException.h>

namespace tovi::detail {

namespace {

using Arguments = std::span<const id>;

const NSNumber& numberAt(Arguments arguments, std::size_t i) { return numberIn(*arguments[i]); }
double real(Arguments arguments) { return numberAt(arguments, 0).doubleValue(); }
NSInteger integerAt(Arguments arguments, std::size_t i) { return numberAt(arguments, i).integerValue(); }

const NSString& textIn(const NSObject& object) {
    if (const auto* text = as<NSString>(&object))
        return *text;
    NSException::raise(NSInvalidArgumentException, u"%@ is no text", object);
}

// --- Of lists --------------------------------------------------------------------------------------------------------

bool isCollection(const NSObject* object) {
    return object && (as<NSArray>(object) || as<NSSet>(object) || as<NSDictionary>(object));
}

/// What the arguments list: the objects of a single collection, else they themselves.
Ref<NSObject> listed(Arguments arguments) {
    if (arguments.size() == 1 && isCollection(arguments[0]))
        return arguments[0].ref();
    Ref<NSMutableArray> list = NSMutableArray::array();
    for (const id& each : arguments)
        if (each)
            list->addObject(*each);
    return list;
}

std::vector<double> numbers(Arguments arguments) {
    std::vector<double> result;
    for (const NSObject& each : FastEnumeration(listed(arguments)))
        if (!isNull(&each))
            result.push_back(numberIn(each).doubleValue());
    return result;
}

id countOf(Arguments arguments) {
    NSUInteger count = 0;
    for ([[maybe_unused]] const NSObject& each : FastEnumeration(listed(arguments)))
        ++count;
    return box(count);
}

id median(Arguments arguments) {
    std::vector<double> sorted = numbers(arguments);
    if (sorted.empty())
        return nullptr;
    const auto middle = sorted.begin() + static_cast<std::ptrdiff_t>(sorted.size() / 2);
    std::nth_element(sorted.begin(), middle, sorted.end());
    const double upper = *middle;
    return box(sorted.size() % 2 ? upper : (*std::max_element(sorted.begin(), middle) + upper) / 2);
}

id modes(Arguments arguments) {
    std::vector<double> sorted = numbers(arguments);
    std::erase_if(sorted, [](double each) { return std::isnan(each); });
    std::sort(sorted.begin(), sorted.end());
    std::vector<double> result;
    std::ptrdiff_t most = 0;
    for (auto start = sorted.begin(); start != sorted.end();) {
        const auto end = std::upper_bound(start, sorted.end(), *start);
        if (end - start > most)
            result.clear();
        most = std::max(most, end - start);
        if (end - start == most)
            result.push_back(*start);
        start = end;
    }
    return NSArray::from(result);
}

id standardDeviation(Arguments arguments) {
    const std::vector<double> values = numbers(arguments);
    if (values.empty())
        return nullptr;
    const auto count = static_cast<double>(values.size());
    double total = 0, squares = 0;
    for (const double each : values)
        total += each;
    for (const double each : values)
        squares += (each - total / count) * (each - total / count);
    return box(std::sqrt(squares / count));
}

// --- Of numbers ------------------------------------------------------------------------------------------------------

/// A whole number stays one of its type.
template <double (*function)(double)> id rounded(Arguments arguments) {
    return isReal(numberAt(arguments, 0)) ? id(box(function(real(arguments)))) : arguments[0];
}

template <double (*function)(double)> id realFunction(Arguments arguments) { return box(function(real(arguments))); }

template <Ref<NSNumber> (*function)(const NSNumber&, const NSNumber&)> id arithmetic(Arguments arguments) {
    return function(numberAt(arguments, 0), numberAt(arguments, 1));
}

NSInteger shifted(NSInteger value, NSInteger left) {
    constexpr NSInteger bits = std::numeric_limits<NSUInteger>::digits;
    if (left <= -bits || left >= bits)
        return 0;
    const auto unsignedValue = static_cast<NSUInteger>(value);
    return static_cast<NSInteger>(left < 0 ? unsignedValue >> -left : unsignedValue << left);
}

std::mt19937_64& generator() {
    thread_local std::mt19937_64 engine{std::random_device{}()};
    return engine;
}

id randomBelow(Arguments arguments) {
    const NSInteger limit = std::max<NSInteger>(integerAt(arguments, 0), 1);
    return box(std::uniform_int_distribution<NSInteger>(0, limit - 1)(generator()));
}

// --- Of objects ------------------------------------------------------------------------------------------------------

double realIn(const NSObject& object) {
    if (const auto* text = as<NSString>(&object))
        return *text == u"nan" ? std::nan("") : text->doubleValue();
    if (const auto* date = as<NSDate>(&object))
        return date->timeIntervalSinceReferenceDate();
    return numberIn(object).doubleValue();
}

id cast(Arguments arguments) {
    NSObject& object = *arguments[0];
    const NSString& type = textIn(*arguments[1]);
    if (type == u"NSDate")
        return as<NSDate>(&object) ? id(object) : NSDate::dateWithTimeIntervalSinceReferenceDate(realIn(object));
    if (type == u"NSNumber")
        return as<NSNumber>(&object) ? id(object) : box(realIn(object));
    if (type == u"NSString")
        return object.description();
    NSException::raise(NSInvalidArgumentException, u"there is no cast to %@", type);
}

const NSArray& listIn(NSObject& object) {
    if (const auto* list = as<NSArray>(&object))
        return *list;
    NSException::raise(NSInvalidArgumentException, u"%@ is no list", object);
}

id indexed(Arguments arguments) {
    if (const auto* dictionary = as<NSDictionary>(arguments[0].get()))
        return dictionary->objectForKey(*arguments[1]);
    const NSArray& list = listIn(*arguments[0]);
    const NSInteger index = integerAt(arguments, 1);
    if (index < 0 || static_cast<NSUInteger>(index) >= list.count())
        NSException::raise(NSInvalidArgumentException, u"index %ld is beyond a list of %lu", index, list.count());
    return list.objectAtIndex(static_cast<NSUInteger>(index));
}

id distance(Arguments arguments) { return send<id>(*arguments[0], "distanceFromLocation:"_sel, arguments[1]); }

// --- All of them -----------------------------------------------------------------------------------------------------

using Form = PredicateFunction::Form;
constexpr unsigned any = PredicateFunction::any;

constexpr PredicateFunction functions[] = {
    {u"add:to:", 2, false, arithmetic<sum>, Form::Infix, u" + "},
    {u"from:subtract:", 2, false, arithmetic<difference>, Form::Infix, u" - "},
    {u"multiply:by:", 2, false, arithmetic<product>, Form::Infix, u" * "},
    {u"divide:by:", 2, false, arithmetic<quotient>, Form::Infix, u" / "},
    {u"raise:toPower:", 2, false, arithmetic<power>, Form::Infix, u" ** "},
    {u"modulus:by:", 2, false, arithmetic<remainder>},
    {u"castObject:toType:", 2, false, cast, Form::Cast},
    {u"objectFrom:withIndex:", 2, false, indexed, Form::Index},
    {u"firstObject:", 1, false, [](Arguments a) { return listIn(*a[0]).firstObject(); }, Form::Symbol, u"FIRST"},
    {u"lastObject:", 1, false, [](Arguments a) { return listIn(*a[0]).lastObject(); }, Form::Symbol, u"LAST"},
    {u"size:", 1, false, [](Arguments a) -> id { return countOf(a); }, Form::Symbol, u"SIZE"},
    {u"sum:", any, true, [](Arguments a) -> id { return sumOf(listed(a)); }},
    {u"count:", any, true, countOf},
    {u"min:", any, true, [](Arguments a) { return extremeOf(listed(a), -1); }},
    {u"max:", any, true, [](Arguments a) { return extremeOf(listed(a), 1); }},
    {u"average:", any, true, [](Arguments a) -> id { return averageOf(listed(a)); }},
    {u"median:", any, true, median},
    {u"mode:", any, true, modes},
    {u"stddev:", any, true, standardDeviation},
    {u"sqrt:", 1, false, realFunction<std::sqrt>},
    {u"log:", 1, false, realFunction<std::log10>},
    {u"ln:", 1, false, realFunction<std::log>},
    {u"exp:", 1, false, realFunction<std::exp>},
    {u"ceiling:", 1, false, rounded<std::ceil>},
    {u"floor:", 1, false, rounded<std::floor>},
    {u"trunc:", 1, false, rounded<std::trunc>},
    {u"abs:", 1, false, [](Arguments a) -> id { return magnitude(numberAt(a, 0)); }},
    {u"bitwiseAnd:with:", 2, false, [](Arguments a) -> id { return box(integerAt(a, 0) & integerAt(a, 1)); }},
    {u"bitwiseOr:with:", 2, false, [](Arguments a) -> id { return box(integerAt(a, 0) | integerAt(a, 1)); }},
    {u"bitwiseXor:with:", 2, false, [](Arguments a) -> id { return box(integerAt(a, 0) ^ integerAt(a, 1)); }},
    {u"leftshift:by:", 2, false, [](Arguments a) -> id { return box(shifted(integerAt(a, 0), integerAt(a, 1))); }},
    {u"rightshift:by:", 2, false, [](Arguments a) -> id { return box(shifted(integerAt(a, 0), -integerAt(a, 1))); }},
    {u"onesComplement:", 1, false, [](Arguments a) -> id { return box(~integerAt(a, 0)); }},
    {u"not:", 1, false, [](Arguments a) -> id { return box(!numberAt(a, 0).boolValue()); }},
    {u"uppercase:", 1, false, [](Arguments a) -> id { return textIn(*a[0]).uppercaseString(); }},
    {u"lowercase:", 1, false, [](Arguments a) -> id { return textIn(*a[0]).lowercaseString(); }},
    {u"noindex:", 1, false, [](Arguments a) { return a[0]; }},
    {u"random", 0, false, [](Arguments) -> id { return box(std::uniform_real_distribution<double>()(generator())); }},
    {u"random:", 1, false, randomBelow},
    {u"randomn:", 1, false, randomBelow},
    {u"now", 0, false, [](Arguments) -> id { return NSDate::date(); }},
    {u"distanceToLocation:fromLocation:", 2, false, distance},
};

}  // namespace

const PredicateFunction* PredicateFunction::named(std::u16string_view name, std::size_t arguments) noexcept {
    const PredicateFunction* found = nullptr;
    for (const PredicateFunction& each : functions) {
        const bool hasOnlyColon = each.argumentCount == 1 || each.argumentCount == any;
        const bool isNamed = each.name == name || (hasOnlyColon && each.name.substr(0, each.name.size() - 1) == name);
        if (isNamed && (!found || each.takes(arguments)))
            found = &each;
    }
    return found;
}

const PredicateFunction* PredicateFunction::written(Form form, std::u16string_view symbol) noexcept {
    const auto* const found = std::find_if(std::begin(functions), std::end(functions), [=](const auto& each) {
        return each.form == form && each.symbol == symbol;
    });
    return found == std::end(functions) ? nullptr : found;
}

id PredicateFunction::call(std::span<const id> arguments) const {
    const bool hasNil = std::any_of(arguments.begin(), arguments.end(), [](const id& each) { return isNull(each); });
    return hasNil && !takesNil ? id() : apply(arguments);
}

// --- Sets ------------------------------------------------------------------------------------------------------------

namespace {

Ref<NSMutableSet> setFrom(const NSObject& object) {
    Ref<NSMutableSet> result = NSMutableSet::set();
    if (const auto* dictionary = as<NSDictionary>(&object)) {
        result->addObjectsFromArray(dictionary->allValues());
    } else {
        for (NSObject& each : FastEnumeration(object))
            result->addObject(each);
    }
    return result;
}

}  // namespace

Ref<NSObject> unionOf(const NSObject& left, const NSObject& right) {
    const Ref<NSMutableSet> result = setFrom(left);
    result->unionSet(setFrom(right));
    return result;
}

Ref<NSObject> intersectionOf(const NSObject& left, const NSObject& right) {
    const Ref<NSMutableSet> result = setFrom(left);
    result->intersectSet(setFrom(right));
    return result;
}

Ref<NSObject> differenceOf(const NSObject& left, const NSObject& right) {
    const Ref<NSMutableSet> result = setFrom(left);
    result->minusSet(setFrom(right));
    return result;
}

id perform(NSObject* receiver, const NSString& selector, std::span<const id> arguments) {
    if (!receiver)
        return nullptr;
    const Selector known = Selector::existing(selector.UTF8String());
    if (!known)
        NSException::raise(NSInvalidArgumentException, u"-[%@ %@]: unrecognized selector sent to instance %p",
                           receiver->isa(), selector, static_cast<const void*>(receiver));
    const std::vector<MessageValue> values(arguments.begin(), arguments.end());
    return sendConverting(methodFor(*receiver, known), *receiver, values.data(), values.size()).boxed();
}

}  // namespace tovi::detail
