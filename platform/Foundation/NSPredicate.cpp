#include <ToviFoundationKit/Foundation/NSPredicate.h>

#include <ToviFoundationKit/Foundation/NSCoder.h>
#include <ToviFoundationKit/Foundation/NSDictionary.h>
#include <ToviFoundationKit/Foundation/PlainPredicates_p.h>
#include <ToviFoundationKit/Foundation/PredicateEvaluator_p.h>
#include <ToviFoundationKit/Foundation/PredicateParser_p.h>
#include <ToviFoundationKit/Runtime/Additions.h>

namespace tovi {

TOVI_DEFINE_CLASS(NSPredicate, NSObject)

Ref<NSPredicate> NSPredicate::predicateWithFormat_arguments(std::u16string_view format, FormatArguments arguments) {
    return detail::PredicateParser(format, arguments).predicate();
}

Ref<NSPredicate> NSPredicate::predicateWithFormat_argumentArray(std::u16string_view format, const NSArray* arguments) {
    return predicateWithFormat_arguments(format, detail::formatArguments(arguments));
}

Ref<NSPredicate> NSPredicate::predicateWithValue(bool value) { return NSTruthPredicate::of(value); }
Ref<NSPredicate> NSPredicate::predicateWithBlock(Block block) { return NSBlockPredicate::withBlock(std::move(block)); }

bool NSPredicate::evaluateWithObject_substitutionVariables(const NSObject* object,
                                                           const NSDictionary* variables) const {
    return detail::PredicateLease(*this)->test(object, variables);
}

Ref<NSPredicate> NSPredicate::predicateWithSubstitutionVariables(const NSDictionary& variables) const {
    return static_cast<NSPredicate&>(*withVariables(variables));
}

namespace {

Ref<NSPredicate> withFormat(const NSString& format, const NSArray* arguments) {
    return NSPredicate::predicateWithFormat_argumentArray(format, arguments);
}

const Additions<NSPredicate> additions{
    classLevel<&withFormat>("predicateWithFormat:argumentArray:"),
    classLevel<&NSPredicate::predicateWithValue>("predicateWithValue:"),
    instance<static_cast<bool (NSPredicate::*)(const NSObject*) const>(&NSPredicate::evaluateWithObject)>(
        "evaluateWithObject:"),
    instance<&NSPredicate::evaluateWithObject_substitutionVariables>("evaluateWithObject:substitutionVariables:"),
    instance<&NSPredicate::predicateWithSubstitutionVariables>("predicateWithSubstitutionVariables:"),
    instance<&NSPredicate::predicateFormat>("predicateFormat"),
    instance<&NSPredicate::encodeWithCoder>("encodeWithCoder:"),
    instance<&NSPredicate::initWithCoder>("initWithCoder:"),
    instance<&NSPredicate::breakReferenceCycles>("breakReferenceCycles"),
};

}  // namespace

}  // namespace tovi
