#include <algorithm>
#include <cmath>

#include <ToviFoundationKit/Foundation/FastEnumeration.h>
#include <ToviFoundationKit/Foundation/KeyPath_p.h>
#include <ToviFoundationKit/Foundation/NSDate.h>
#include <ToviFoundationKit/Foundation/NSExpression.h>
#include <ToviFoundationKit/Foundation/NSPredicate.h>
#include <ToviFoundationKit/Foundation/NumberMath_p.h>
#include <ToviFoundationKit/Foundation/PredicateEvaluator_p.h>
#include <ToviFoundationKit/Foundation/PredicateFunctions_p.h>
#include <ToviFoundationKit/Foundation/PredicateLexer_p.h>
#include <ToviFoundationKit/Runtime/StringBuilder.h>

// How an expression is written, and what it is compiled to.

namespace tovi {

using detail::PredicateFunction;
using Form = detail::PredicateFunction::Form;

// --- Constants -------------------------------------------------------------------------------------------------------

namespace {

void writeText(StringBuilder& out, std::u16string_view text) {
    constexpr std::u16string_view escaped = u"\"\\\n\r\t\b\f", letters = u"\"\\nrtbf";
    out.append(u'"');
    for (const char16_t unit : text) {
        if (const std::size_t known = escaped.find(unit); known != escaped.npos)
            out.append(u'\\').append(letters[known]);
        else if (unit < 0x20)
            out.append(NSString::stringWithFormat(u"\\u%04x", unit));
        else
            out.append(unit);
    }
    out.append(u'"');
}

// A real number shows that it is one.
void writeNumber(StringBuilder& out, const NSNumber& number) {
    if (!detail::isReal(number))
        out.append(number.stringValue());
    else if (std::isnan(number.doubleValue()))
        out.append(u"CAST(\"nan\", \"NSNumber\")");
    else if (std::isinf(number.doubleValue()))
        out.append(number.doubleValue() < 0 ? u"-1e999" : u"1e999");
    else {
        const Ref<NSString> text = number.stringValue();
        out.append(text);
        if (text->view().find_first_of(u".e") == std::u16string_view::npos)
            out.append(u".0");
    }
}

void writeDate(StringBuilder& out, const NSDate& date) {
    const double seconds = date.timeIntervalSinceReferenceDate();
    const Ref<NSString> decimals = NSString::stringWithFormat(u"%f", seconds);
    out.append(u"CAST(");
    if (decimals->doubleValue() == seconds)
        out.append(decimals);
    else
        writeNumber(out, NSNumber::numberWithDouble(seconds));
    out.append(u", \"NSDate\")");
}

void writePlain(StringBuilder& out, const NSObject& object) {
    if (detail::isNull(&object))
        out.append(u"NIL");
    else if (const auto* text = as<NSString>(&object))
        writeText(out, *text);
    else if (const auto* number = as<NSNumber>(&object))
        writeNumber(out, *number);
    else if (const auto* date = as<NSDate>(&object))
        writeDate(out, *date);
    else
        out.append(object.description());
}

/// Lists and sets are written by their elements, to any depth.
void writeConstant(StringBuilder& out, const NSObject& constant) {
    struct Open {
        FastEnumeration elements;
        bool isFirst = true;
    };
    std::vector<Open> open;
    const NSObject* next = &constant;
    while (next || !open.empty()) {
        if (next && !open.empty())
            out.append(std::exchange(open.back().isFirst, false) ? u"" : u", ");
        if (!next) {
            out.append(u'}');
            open.pop_back();
        } else if (as<NSArray>(next) || as<NSSet>(next)) {
            out.append(u'{');
            open.push_back({FastEnumeration(*next)});
        } else {
            writePlain(out, *next);
        }
        next = open.empty() ? nullptr : open.back().elements.next();
    }
}

}  // namespace

// --- Expressions -----------------------------------------------------------------------------------------------------

void NSExpression::write(StringBuilder& out, std::size_t index) const {
    const bool isLast = index == parts_.size();
    switch (type_) {
        case NSConstantValueExpressionType:
            return constant_ ? writeConstant(out, *constant_) : void(out.append(u"NIL"));
        case NSEvaluatedObjectExpressionType:
            return void(out.append(u"SELF"));
        case NSVariableExpressionType:
            return void(out.append(u'$').append(*name_));
        case NSKeyPathExpressionType:
            return writePath(out, index);
        case NSFunctionExpressionType:
            return writeFunction(out, index);
        case NSUnionSetExpressionType:
        case NSIntersectSetExpressionType:
        case NSMinusSetExpressionType:
            return void(out.append(index == 1 ? infix() : u""));
        case NSAggregateExpressionType:
            return void(out.append(isLast ? u"}" : index ? u", " : u"{"));
        case NSSubqueryExpressionType:
            if (index == 1)
                return void(out.append(u", $").append(*name_).append(u", "));
            return void(out.append(isLast ? u")" : u"SUBQUERY("));
        case NSConditionalExpressionType:
            return void(out.append(isLast ? u")" : index ? u", " : u"TERNARY("));
    }
}

// A path that cannot be written as such is the argument of a message.
void NSExpression::writePath(StringBuilder& out, std::size_t index) const {
    const bool isLast = index == parts_.size();
    const bool isPlain = detail::isPlainKeyPath(*name_);
    if (!isPlain && index == 0)
        out.append(parts_.empty() ? u"FUNCTION(SELF" : u"FUNCTION(");
    if (!isLast)
        return;
    if (isPlain) {
        if (!parts_.empty())
            out.append(u'.');
        else if (detail::isReservedWord(name_->view().substr(0, name_->view().find(u'.'))))
            out.append(u'#');
        out.append(*name_);
    } else {
        out.append(u", \"valueForKeyPath:\", ");
        writeText(out, *name_);
        out.append(u')');
    }
}

void NSExpression::writeFunction(StringBuilder& out, std::size_t index) const {
    const bool isLast = index == parts_.size();
    const Form form = function_ ? function_->form : Form::Call;
    if (!function_) {
        if (index == 1) {
            out.append(u", ");
            writeText(out, *name_);
        }
        out.append(isLast ? u")" : index ? u", " : u"FUNCTION(");
    } else if (form == Form::Infix) {
        out.append(index == 1 ? infix() : u"");
    } else if (form == Form::Index) {
        out.append(isLast ? u"]" : index ? u"[" : u"");
    } else if (form == Form::Symbol) {
        if (isLast)
            out.append(u'[').append(function_->symbol).append(u']');
    } else {
        const std::u16string_view name = form == Form::Cast   ? u"CAST"
                                         : parts_.size() == 1 ? function_->name.substr(0, function_->name.size() - 1)
                                                              : function_->name;
        if (index == 0)
            out.append(name).append(u'(');
        out.append(isLast ? u")" : index ? u", " : u"");
    }
}

/// What is written between the two parts.
std::u16string_view NSExpression::infix() const noexcept {
    switch (type_) {
        case NSUnionSetExpressionType:
            return u" UNION ";
        case NSIntersectSetExpressionType:
            return u" INTERSECT ";
        case NSMinusSetExpressionType:
            return u" MINUS ";
        default:
            return function_ && function_->form == Form::Infix ? function_->symbol : u"";
    }
}

bool NSExpression::isPostfix() const noexcept {
    if (type_ == NSKeyPathExpressionType)
        return !parts_.empty() && detail::isPlainKeyPath(*name_);
    return function_ && (function_->form == Form::Index || function_->form == Form::Symbol);
}

detail::PredicateNode::Binding NSExpression::binding() const {
    if (!infix().empty())
        return Binding::Infix;
    if (type_ == NSKeyPathExpressionType && detail::isPlainKeyPath(*name_))
        return Binding::Path;
    const bool isLiteral = type_ == NSConstantValueExpressionType || type_ == NSAggregateExpressionType;
    return isLiteral ? Binding::Literal : Binding::Operand;
}

bool NSExpression::parenthesizes(std::size_t index, Binding part) const {
    if (isPostfix() && index == 0)
        return part == Binding::Infix || part == Binding::Literal ||
               (part == Binding::Path && type_ == NSKeyPathExpressionType);
    return part == Binding::Infix && !infix().empty();
}

// --- Compiled --------------------------------------------------------------------------------------------------------

void NSExpression::compile(detail::PredicateCompiler& out, std::size_t index) const {
    using Code = detail::PredicateInstruction::Code;
    const bool isLast = index == parts_.size();
    switch (type_) {
        case NSConstantValueExpressionType:
            return out.emit(Code::Constant, constant_.get());
        case NSEvaluatedObjectExpressionType:
            return out.emit(Code::Self);
        case NSVariableExpressionType:
            return out.emitVariable(*name_);
        case NSKeyPathExpressionType:
            return isLast ? out.emitPath(*name_, parts_.empty()) : void();
        case NSFunctionExpressionType:
            if (isLast && function_)
                out.emit(Code::Call, function_, parts_.size());
            else if (isLast)
                out.emit(Code::Perform, name_.get(), parts_.size());
            return;
        case NSUnionSetExpressionType:
            return isLast ? out.emit(Code::Union) : void();
        case NSIntersectSetExpressionType:
            return isLast ? out.emit(Code::Intersect) : void();
        case NSMinusSetExpressionType:
            return isLast ? out.emit(Code::Minus) : void();
        case NSAggregateExpressionType:
            return isLast ? out.emit(Code::List, nullptr, parts_.size()) : void();
        case NSSubqueryExpressionType:
            if (index == 1)
                out.beginLoop(*name_);
            return isLast ? out.endLoop(*name_) : void();
        case NSConditionalExpressionType:
            if (index == 1)
                out.emitJump(Code::JumpIfFalse);
            if (index == 2) {
                out.emitJump(Code::Jump);
                out.land(0);
            }
            return isLast ? out.land(1) : void();
    }
}

}  // namespace tovi
