#include <ToviFoundationKit/Foundation/NSExpression.h>

#include <algorithm>

#include <ToviFoundationKit/Foundation/KeyPath_p.h>
#include <ToviFoundationKit/Foundation/NSCoder.h>
#include <ToviFoundationKit/Foundation/NSDictionary.h>
#include <ToviFoundationKit/Foundation/NSNull.h>
#include <ToviFoundationKit/Foundation/NSPredicate.h>
#include <ToviFoundationKit/Foundation/NumberMath_p.h>
#include <ToviFoundationKit/Foundation/PredicateEvaluator_p.h>
#include <ToviFoundationKit/Foundation/PredicateFunctions_p.h>
#include <ToviFoundationKit/Foundation/PredicateParser_p.h>
#include <ToviFoundationKit/Runtime/Additions.h>
#include <ToviFoundationKit/Runtime/NSException.h>

namespace tovi {

TOVI_DEFINE_CLASS(NSExpression, NSObject)

using detail::PredicateFunction;

namespace {

bool isText(const NSObject* object, std::u16string_view text) {
    const auto* string = as<NSString>(object);
    return string && *string == text;
}

}  // namespace

// --- Making ----------------------------------------------------------------------------------------------------------

Ref<NSExpression> NSExpression::make(Type type, RefPtr<NSString> name, Parts parts) {
    const auto isConstant = [](const Ref<PredicateNode>& part) {
        const auto* const expression = as<NSExpression>(part.get());
        return expression && expression->type_ == NSConstantValueExpressionType;
    };
    if (type != NSAggregateExpressionType || !std::all_of(parts.begin(), parts.end(), isConstant))
        return adopt(*new NSExpression(type, std::move(name), std::move(parts)));
    std::vector<Ref<NSObject>> values;
    for (const Ref<PredicateNode>& each : parts) {
        const id& value = static_cast<NSExpression&>(*each).constant_;
        values.push_back(value ? value.ref() : Ref<NSObject>(NSNull::null()));
    }
    return expressionForConstantValue(NSArray::arrayTakingObjects(values).get());
}

Ref<NSExpression> NSExpression::makeFunction(const PredicateFunction& function, Parts arguments) {
    Ref<NSExpression> made = make(NSFunctionExpressionType, nullptr, std::move(arguments));
    made->function_ = &function;
    if (function.form == PredicateFunction::Form::Cast) {
        // Constants that are written as casts.
        const NSObject* const value = made->expression(0)->constant_;
        const NSObject* const type = made->expression(1)->constant_;
        if ((as<NSNumber>(value) && isText(type, u"NSDate")) || (isText(value, u"nan") && isText(type, u"NSNumber")))
            return expressionForConstantValue(made->expressionValueWithObject_context(nullptr, nullptr));
    }
    return made;
}

Ref<NSExpression> NSExpression::makeMessage(const NSString& name, Parts parts) {
    const auto& receiver = static_cast<NSExpression&>(*parts[0]);
    if (name == u"valueForKeyPath:" && parts.size() == 2)
        if (const auto* path = as<NSString>(static_cast<NSExpression&>(*parts[1]).constant_.get()))
            return makePath(share(receiver), *path);
    return make(NSFunctionExpressionType, share(name), std::move(parts));
}

Ref<NSExpression> NSExpression::makePath(RefPtr<NSExpression> operand, std::u16string_view path) {
    Parts parts;
    if (operand && operand->type_ != NSEvaluatedObjectExpressionType)
        parts.emplace_back(*operand);
    return make(NSKeyPathExpressionType, NSString::stringWithCharacters(path), std::move(parts));
}

Ref<NSExpression> NSExpression::expressionWithFormat_arguments(std::u16string_view format, FormatArguments arguments) {
    return detail::PredicateParser(format, arguments).expression();
}

Ref<NSExpression> NSExpression::expressionForConstantValue(NSObject* value) {
    Ref<NSExpression> made = adopt(*new NSExpression(NSConstantValueExpressionType, nullptr, {}));
    made->constant_ = detail::isNull(value) ? nullptr : value;
    return made;
}

Ref<NSExpression> NSExpression::expressionForEvaluatedObject() {
    return make(NSEvaluatedObjectExpressionType, nullptr, {});
}

Ref<NSExpression> NSExpression::expressionForVariable(const NSString& name) {
    return make(NSVariableExpressionType, NSString::stringWithString(name), {});
}

Ref<NSExpression> NSExpression::expressionForKeyPath(const NSString& keyPath) { return makePath(nullptr, keyPath); }

namespace {

/// The expressions of a list.
detail::PredicateNode& checked(NSObject& object) { return to<NSExpression>(&object); }

}  // namespace

Ref<NSExpression> NSExpression::expressionForFunction_arguments(const NSString& name, const NSArray& arguments) {
    Parts parts;
    for (NSObject& each : arguments)
        parts.emplace_back(checked(each));
    const PredicateFunction* const function = PredicateFunction::named(name, parts.size());
    if (!function)
        NSException::raise(NSInvalidArgumentException, u"there is no function %@", name);
    if (!function->takes(parts.size()))
        NSException::raise(NSInvalidArgumentException, u"the function %@ does not take %lu arguments", name,
                           parts.size());
    return makeFunction(*function, std::move(parts));
}

Ref<NSExpression> NSExpression::expressionForFunction_selectorName_arguments(NSExpression& operand,
                                                                             const NSString& name,
                                                                             const NSArray& arguments) {
    Parts parts{operand};
    for (NSObject& each : arguments)
        parts.emplace_back(checked(each));
    return makeMessage(NSString::stringWithString(name), std::move(parts));
}

Ref<NSExpression> NSExpression::expressionForAggregate(const NSArray& expressions) {
    Parts parts;
    for (NSObject& each : expressions)
        parts.emplace_back(checked(each));
    return make(NSAggregateExpressionType, nullptr, std::move(parts));
}

Ref<NSExpression> NSExpression::expressionForUnionSet_with(NSExpression& left, NSExpression& right) {
    return make(NSUnionSetExpressionType, nullptr, {left, right});
}

Ref<NSExpression> NSExpression::expressionForIntersectSet_with(NSExpression& left, NSExpression& right) {
    return make(NSIntersectSetExpressionType, nullptr, {left, right});
}

Ref<NSExpression> NSExpression::expressionForMinusSet_with(NSExpression& left, NSExpression& right) {
    return make(NSMinusSetExpressionType, nullptr, {left, right});
}

Ref<NSExpression> NSExpression::expressionForSubquery_usingIteratorVariable_predicate(NSExpression& collection,
                                                                                      const NSString& variable,
                                                                                      NSPredicate& predicate) {
    return make(NSSubqueryExpressionType, NSString::stringWithString(variable), {collection, predicate});
}

Ref<NSExpression> NSExpression::expressionForConditional_trueExpression_falseExpression(NSPredicate& predicate,
                                                                                        NSExpression& whenTrue,
                                                                                        NSExpression& whenFalse) {
    return make(NSConditionalExpressionType, nullptr, {predicate, whenTrue, whenFalse});
}

// --- Asking ----------------------------------------------------------------------------------------------------------

const NSExpression& NSExpression::expect(bool isSo, std::string_view what) const {
    if (!isSo)
        NSException::raise(NSInvalidArgumentException, u"*** -[NSExpression %s]: %@ has none", what, *this);
    return *this;
}

id NSExpression::constantValue() const {
    return expect(type_ == NSConstantValueExpressionType, "constantValue").constant_;
}

Ref<NSString> NSExpression::variable() const {
    return *expect(type_ == NSVariableExpressionType || type_ == NSSubqueryExpressionType, "variable").name_;
}

Ref<NSString> NSExpression::keyPath() const { return *expect(type_ == NSKeyPathExpressionType, "keyPath").name_; }

Ref<NSString> NSExpression::function() const {
    expect(type_ == NSFunctionExpressionType, "function");
    return function_ ? NSString::stringWithCharacters(function_->name) : name_.ref();
}

RefPtr<NSExpression> NSExpression::operand() const {
    expect(isMessage() || type_ == NSKeyPathExpressionType, "operand");
    return parts_.empty() ? RefPtr<NSExpression>() : expression(0);
}

Ref<NSArray> NSExpression::arguments() const {
    return expect(type_ == NSFunctionExpressionType, "arguments").listOfParts(isMessage());
}

id NSExpression::collection() const {
    if (type_ == NSSubqueryExpressionType)
        return expression(0);
    return expect(type_ == NSAggregateExpressionType, "collection").listOfParts();
}

Ref<NSExpression> NSExpression::leftExpression() const {
    return expect(type_ >= NSUnionSetExpressionType && type_ <= NSMinusSetExpressionType, "leftExpression")
        .expression(0);
}

Ref<NSExpression> NSExpression::rightExpression() const {
    return expect(type_ >= NSUnionSetExpressionType && type_ <= NSMinusSetExpressionType, "rightExpression")
        .expression(1);
}

Ref<NSPredicate> NSExpression::predicate() const {
    expect(type_ == NSSubqueryExpressionType || type_ == NSConditionalExpressionType, "predicate");
    return static_cast<NSPredicate&>(*parts_[type_ == NSSubqueryExpressionType]);
}

Ref<NSExpression> NSExpression::trueExpression() const {
    return expect(type_ == NSConditionalExpressionType, "trueExpression").expression(1);
}

Ref<NSExpression> NSExpression::falseExpression() const {
    return expect(type_ == NSConditionalExpressionType, "falseExpression").expression(2);
}

id NSExpression::expressionValueWithObject_context(const NSObject* object, const NSDictionary* variables) const {
    return detail::PredicateLease(*this)->value(object, variables);
}

// --- As a node -------------------------------------------------------------------------------------------------------

bool NSExpression::isSameAlone(const PredicateNode& node) const {
    const auto& other = static_cast<const NSExpression&>(node);
    return type_ == other.type_ && function_ == other.function_ && name_ == other.name_ && constant_ == other.constant_;
}

NSUInteger NSExpression::hashAlone() const {
    return type_ + (name_ ? name_->hash() * 3 : 0) + (constant_ ? constant_->hash() * 5 : 0) +
           std::hash<const void*>()(function_) * 7;
}

Ref<detail::PredicateNode> NSExpression::withParts(Parts parts) const {
    if (function_)
        return makeFunction(*function_, std::move(parts));
    if (isMessage())
        return makeMessage(*name_, std::move(parts));
    if (type_ == NSKeyPathExpressionType)
        return makePath(static_cast<NSExpression&>(*parts[0]), *name_);
    return make(type_, name_, std::move(parts));
}

Ref<NSArray> NSExpression::archivedFields() const {
    const auto orNull = [](NSObject* object) { return object ? Ref<NSObject>(*object) : NSNull::null(); };
    const RefPtr<NSString> name = function_ ? RefPtr<NSString>(function()) : name_;
    return NSArray::of(type_, isMessage(), orNull(name.get()), orNull(constant_.get()));
}

bool NSExpression::setArchivedFields(const NSArray& fields) {
    if (fields.count() != 4 || !as<NSNumber>(&fields[0]) || !as<NSNumber>(&fields[1]))
        return false;
    type_ = static_cast<Type>(static_cast<NSNumber&>(fields[0]).unsignedIntegerValue());
    name_ = as<NSString>(&fields[2]);
    constant_ = detail::isNull(&fields[3]) ? nullptr : &fields[3];
    if (type_ == NSFunctionExpressionType && name_ && !static_cast<NSNumber&>(fields[1]).boolValue()) {
        function_ = PredicateFunction::named(*name_);
        name_ = nullptr;
        return function_ && isWellFormed() && function_->takes(parts_.size());
    }
    return isWellFormed();
}

/// Whether name and parts are such as the type asks for.
bool NSExpression::isWellFormed() const {
    const auto areExpressions = [this](std::size_t from) {
        return std::all_of(parts_.begin() + static_cast<std::ptrdiff_t>(from), parts_.end(),
                           [](const auto& part) { return as<NSExpression>(part.get()); });
    };
    const std::size_t count = parts_.size();
    switch (type_) {
        case NSConstantValueExpressionType:
        case NSEvaluatedObjectExpressionType:
            return count == 0;
        case NSVariableExpressionType:
            return count == 0 && name_;
        case NSKeyPathExpressionType:
            return count < 2 && name_ && areExpressions(0);
        case NSFunctionExpressionType:
            return areExpressions(0) && (function_ || (name_ && count));
        case NSUnionSetExpressionType:
        case NSIntersectSetExpressionType:
        case NSMinusSetExpressionType:
            return count == 2 && areExpressions(0);
        case NSAggregateExpressionType:
            return areExpressions(0);
        case NSSubqueryExpressionType:
            return count == 2 && name_ && as<NSExpression>(parts_[0].get()) && as<NSPredicate>(parts_[1].get());
        case NSConditionalExpressionType:
            return count == 3 && as<NSPredicate>(parts_[0].get()) && areExpressions(1);
    }
    return false;
}

namespace {

Ref<NSExpression> withArguments(const NSString& name, const NSArray& arguments) {
    return NSExpression::expressionForFunction_arguments(name, arguments);
}
Ref<NSExpression> withFormat(const NSString& format, const NSArray* arguments) {
    return NSExpression::expressionWithFormat_arguments(format, detail::formatArguments(arguments));
}

const Additions<NSExpression> additions{
    classLevel<&withFormat>("expressionWithFormat:argumentArray:"),
    classLevel<&NSExpression::expressionForConstantValue>("expressionForConstantValue:"),
    classLevel<&NSExpression::expressionForEvaluatedObject>("expressionForEvaluatedObject"),
    classLevel<&NSExpression::expressionForVariable>("expressionForVariable:"),
    classLevel<&NSExpression::expressionForKeyPath>("expressionForKeyPath:"),
    classLevel<&withArguments>("expressionForFunction:arguments:"),
    classLevel<&NSExpression::expressionForFunction_selectorName_arguments>(
        "expressionForFunction:selectorName:arguments:"),
    classLevel<&NSExpression::expressionForAggregate>("expressionForAggregate:"),
    classLevel<&NSExpression::expressionForUnionSet_with>("expressionForUnionSet:with:"),
    classLevel<&NSExpression::expressionForIntersectSet_with>("expressionForIntersectSet:with:"),
    classLevel<&NSExpression::expressionForMinusSet_with>("expressionForMinusSet:with:"),
    classLevel<&NSExpression::expressionForSubquery_usingIteratorVariable_predicate>(
        "expressionForSubquery:usingIteratorVariable:predicate:"),
    classLevel<&NSExpression::expressionForConditional_trueExpression_falseExpression>(
        "expressionForConditional:trueExpression:falseExpression:"),
    instance<&NSExpression::expressionType>("expressionType"),
    instance<&NSExpression::constantValue>("constantValue"),
    instance<&NSExpression::variable>("variable"),
    instance<&NSExpression::keyPath>("keyPath"),
    instance<&NSExpression::function>("function"),
    instance<&NSExpression::operand>("operand"),
    instance<&NSExpression::arguments>("arguments"),
    instance<&NSExpression::collection>("collection"),
    instance<&NSExpression::leftExpression>("leftExpression"),
    instance<&NSExpression::rightExpression>("rightExpression"),
    instance<&NSExpression::predicate>("predicate"),
    instance<&NSExpression::trueExpression>("trueExpression"),
    instance<&NSExpression::falseExpression>("falseExpression"),
    instance<&NSExpression::expressionValueWithObject_context>("expressionValueWithObject:context:"),
    instance<&NSExpression::encodeWithCoder>("encodeWithCoder:"),
    instance<&NSExpression::initWithCoder>("initWithCoder:"),
    instance<&NSExpression::breakReferenceCycles>("breakReferenceCycles"),
};

}  // namespace

}  // namespace tovi
