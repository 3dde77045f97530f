// Reads the input as a predicate. What can be read describes itself as an equal predicate, is archived as one, and
// gives an answer or an exception for a small graph of objects.

#include <cstdint>
#include <cstdio>
#include <cstdlib>

#include <ToviFoundationKit/ToviFoundationKit.h>

using namespace tovi;

namespace {

void require(bool condition, const char* what, const NSObject& about) {
    if (condition)
        return;
    std::fprintf(stderr, "%s: %s\n", what, about.description()->UTF8String().c_str());
    std::abort();
}

const NSDictionary& graph() {
    static const Ref<NSDictionary> root = [] {
        const auto list = NSArray::of(3, 1, 2.5, NSNumber::numberWithUnsignedInteger(~NSUInteger{0}));
        const auto inner =
            NSDictionary::of({{u"name", u"\u00C9a\u0301\u00DF"}, {u"list", list}, {u"k", NSNull::null()}});
        return NSDictionary::of({{u"name", u"Ann"},
                                 {u"size", 12},
                                 {u"date", NSDate::dateWithTimeIntervalSinceReferenceDate(86400)},
                                 {u"list", list},
                                 {u"tags", NSSet::of(u"a", u"B", u"c\u0327")},
                                 {u"a", NSArray::of(inner, inner)},
                                 {u"dict", inner}});
    }();
    return root;
}

std::size_t occurrences(std::u16string_view text, std::u16string_view word) {
    std::size_t count = 0;
    for (std::size_t at = 0; (at = text.find(word, at)) != text.npos; ++at)
        ++count;
    return count;
}

/// Whether asking may take long, or do what an operation of any name does.
bool isHarmless(const NSPredicate& predicate) {
    const Ref<NSString> format = predicate.predicateFormat()->uppercaseString();
    return occurrences(*format, u"SUBQUERY(") < 5 && !occurrences(*format, u"FUNCTION(") &&
           !occurrences(*format, u": ") && !occurrences(*format, u"DISTANCETOLOCATION");
}

void ask(const NSPredicate& predicate) {
    const auto variables = NSDictionary::of({{u"x", 2}, {u"v", graph()}});
    try {
        const bool answer = predicate.evaluateWithObject_substitutionVariables(&graph(), variables.get());
        const auto replaced = predicate.predicateWithSubstitutionVariables(variables);
        const bool isChanging =
            occurrences(*predicate.predicateFormat(), u"random") || occurrences(*predicate.predicateFormat(), u"now()");
        require(isChanging || replaced->evaluateWithObject(graph()) == answer, "replaced variables", predicate);
    } catch (const NSException&) {
    }
}

}  // namespace

extern "C" int LLVMFuzzerTestOneInput(const std::uint8_t* data, std::size_t size) {
    if (size > 4'000)
        return 0;
    const auto format = NSString::fromUTF8({reinterpret_cast<const char*>(data), size});
    RefPtr<NSPredicate> predicate;
    try {
        predicate = NSPredicate::predicateWithFormat(*format, u"Ann", -7, u"name", 2.5,
                                                     graph().objectForKey(*u"date"_ns), nullptr, u"list.@count", 1e-7);
    } catch (const NSException& raised) {
        require(raised.name() == NSInvalidArgumentException, "exception", format);
        return 0;
    }
    const auto again = NSPredicate::predicateWithFormat(*predicate->predicateFormat());
    require(again->isEqual(predicate.get()) && again->hash() == predicate->hash(), "read again", *predicate);
    require(again->description() == predicate->description(), "written again", *predicate);
    const auto archive = NSKeyedArchiver::archivedDataWithRootObject(*predicate);
    const id unarchived = NSKeyedUnarchiver::unarchiveObjectWithData(archive, nullptr);
    require(unarchived && unarchived->isEqual(predicate.get()), "unarchived", *predicate);
    if (isHarmless(*predicate))
        ask(*predicate);
    return 0;
}
