#include <ToviFoundationKit/Foundation/NSComparisonPredicate.h>

#include <ToviFoundationKit/Foundation/PredicateCompiler_p.h>
#include <ToviFoundationKit/Foundation/PredicateOperator_p.h>
#include <ToviFoundationKit/Runtime/Additions.h>
#include <ToviFoundationKit/Runtime/NSException.h>
#include <ToviFoundationKit/Runtime/StringBuilder.h>

namespace tovi {

TOVI_DEFINE_CLASS(NSComparisonPredicate, NSPredicate)

Ref<NSComparisonPredicate> NSComparisonPredicate::initWithLeftExpression_rightExpression_modifier_type_options(
    NSExpression& left, NSExpression& right, NSComparisonPredicateModifier modifier, NSPredicateOperatorType type,
    NSComparisonPredicateOptions options) {
    if (detail::textOfOperator(type).empty() || modifier > NSAnyPredicateModifier)
        NSException::raise(NSInvalidArgumentException, u"there is no operator of type %lu and modifier %lu", type,
                           modifier);
    const auto made = adopt(*new NSComparisonPredicate({left, right}));
    made->modifier_ = modifier;
    made->type_ = type;
    made->options_ = static_cast<NSComparisonPredicateOptions>(options & 15);
    return made;
}

Ref<NSComparisonPredicate> NSComparisonPredicate::initWithLeftExpression_rightExpression_customSelector(
    NSExpression& left, NSExpression& right, Selector selector) {
    if (selector.numberOfArguments() != 1)
        NSException::raise(NSInvalidArgumentException, u"the selector %s does not take one object", selector);
    const auto made = adopt(*new NSComparisonPredicate({left, right}));
    made->type_ = NSCustomSelectorPredicateOperatorType;
    made->selector_ = selector;
    return made;
}

Ref<NSComparisonPredicate> NSComparisonPredicate::with(NSComparisonPredicateModifier modifier, Parts parts) const {
    const auto made = adopt(*new NSComparisonPredicate(std::move(parts)));
    made->modifier_ = modifier;
    made->type_ = type_;
    made->options_ = options_;
    made->selector_ = selector_;
    return made;
}

bool NSComparisonPredicate::isSameAlone(const PredicateNode& node) const {
    const auto& other = static_cast<const NSComparisonPredicate&>(node);
    return modifier_ == other.modifier_ && type_ == other.type_ && options_ == other.options_ &&
           selector_ == other.selector_;
}

NSUInteger NSComparisonPredicate::hashAlone() const { return type_ << 8 | modifier_ << 4 | options_; }

Ref<detail::PredicateNode> NSComparisonPredicate::withParts(Parts parts) const {
    return with(modifier_, std::move(parts));
}

void NSComparisonPredicate::write(StringBuilder& out, std::size_t index) const {
    constexpr std::u16string_view modifiers[] = {u"", u"ALL ", u"ANY "};
    if (index == 0)
        out.append(modifiers[modifier_]);
    if (index != 1)
        return;
    out.append(u' ');
    if (type_ == NSCustomSelectorPredicateOperatorType)
        out.appendUTF8(selector_.name());
    else
        out.append(detail::textOfOperator(type_));
    if (options_) {
        out.append(u'[');
        for (unsigned i = 0; i < 4; ++i)
            if (options_ & 1U << i)
                out.append(detail::optionLetters[i]);
        out.append(u']');
    }
    out.append(u' ');
}

void NSComparisonPredicate::compile(detail::PredicateCompiler& out, std::size_t index) const {
    if (index == 2)
        out.emitComparison(*this);
}

Ref<NSArray> NSComparisonPredicate::archivedFields() const {
    return NSArray::of(modifier_, type_, options_, selector_.name());
}

bool NSComparisonPredicate::setArchivedFields(const NSArray& fields) {
    NSUInteger numbers[3];
    for (NSUInteger i = 0; i < 3; ++i) {
        const auto* number = fields.count() == 4 ? as<NSNumber>(&fields[i]) : nullptr;
        if (!number)
            return false;
        numbers[i] = number->unsignedIntegerValue();
    }
    modifier_ = static_cast<NSComparisonPredicateModifier>(numbers[0]);
    type_ = static_cast<NSPredicateOperatorType>(numbers[1]);
    options_ = static_cast<NSComparisonPredicateOptions>(numbers[2]);
    const auto* name = as<NSString>(&fields[3]);
    const bool isCustom = type_ == NSCustomSelectorPredicateOperatorType;
    if (name && isCustom)
        selector_ = Selector::existing(name->UTF8String());
    return name && isCustom == (selector_.numberOfArguments() == 1) && numbers[0] <= NSAnyPredicateModifier &&
           numbers[2] < 16 && (isCustom || !detail::textOfOperator(type_).empty()) && parts_.size() == 2 &&
           as<NSExpression>(parts_[0].get()) && as<NSExpression>(parts_[1].get());
}

namespace {

const Additions<NSComparisonPredicate> additions{
    classLevel<&NSComparisonPredicate::initWithLeftExpression_rightExpression_modifier_type_options>(
        "initWithLeftExpression:rightExpression:modifier:type:options:"),
    classLevel<&NSComparisonPredicate::initWithLeftExpression_rightExpression_customSelector>(
        "initWithLeftExpression:rightExpression:customSelector:"),
    instance<&NSComparisonPredicate::leftExpression>("leftExpression"),
    instance<&NSComparisonPredicate::rightExpression>("rightExpression"),
    instance<&NSComparisonPredicate::comparisonPredicateModifier>("comparisonPredicateModifier"),
    instance<&NSComparisonPredicate::predicateOperatorType>("predicateOperatorType"),
    instance<&NSComparisonPredicate::options>("options"),
    instance<&NSComparisonPredicate::customSelector>("customSelector"),
};

}  // namespace

}  // namespace tovi
