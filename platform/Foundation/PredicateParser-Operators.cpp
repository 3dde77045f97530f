#include <algorithm>

#include <ToviFoundationKit/Foundation/NSCompoundPredicate.h>
#include <ToviFoundationKit/Foundation/NumberMath_p.h>
#include <ToviFoundationKit/Foundation/PredicateParser_p.h>

namespace tovi::detail {

using TokenKind = PredicateToken::Kind;
using Word = PredicateToken::Word;

// --- Reading ---------------------------------------------------------------------------------------------------------

void PredicateParser::open(Kind kind, std::size_t position, std::u16string name) {
    operators_.push_back(
        {.kind = kind, .position = position, .operandsBefore = operands_.size(), .name = std::move(name)});
    expectsOperand_ = true;
}

/// An operator between operands takes those before it that hold tighter. AND and OR wait for the rest of their row.
void PredicateParser::operate(Operator&& pending, bool associatesRight) {
    if (!expectsOperand_)
        reduce(static_cast<Precedence>(pending.precedence + associatesRight));
    operators_.push_back(std::move(pending));
    expectsOperand_ = true;
}

void PredicateParser::operate(Kind kind, Precedence precedence, std::size_t position, NSUInteger type) {
    const bool isJunction = kind == Kind::And || kind == Kind::Or;
    operate({.kind = kind, .precedence = precedence, .position = position, .type = type}, isJunction);
}

void PredicateParser::operateInfix(std::u16string_view symbol, Precedence precedence, std::size_t position) {
    operate({.kind = Kind::Function,
             .precedence = precedence,
             .position = position,
             .function = PredicateFunction::written(PredicateFunction::Form::Infix, symbol)},
            precedence == PowerLevel);
}

/// Answers false at the end.
bool PredicateParser::takeOperator(PredicateToken&& token) {
    switch (token.kind) {
        case TokenKind::Word:
            if (takeOperatorWord(token))
                return true;
            break;
        case TokenKind::Sign:
            if (takeOperatorSign(token))
                return true;
            break;
        case TokenKind::Comparison:
            operate({.kind = Kind::Comparison,
                     .precedence = ComparisonLevel,
                     .position = token.position,
                     .type = token.type,
                     .options = lexer_.options()});
            return true;
        case TokenKind::Name:
            if (std::ranges::count(token.text, u':') != 1 || token.text.back() != u':')
                break;
            operate({.kind = Kind::Custom,
                     .precedence = ComparisonLevel,
                     .position = token.position,
                     .name = std::move(token.text)});
            return true;
        case TokenKind::End:
            reduce(None);
            if (operators_.empty())
                return false;
            lexer_.fail(token.position, u"a closing parenthesis or bracket");
        default:
            break;
    }
    lexer_.fail(token.position, u"an operator");
}

bool PredicateParser::takeOperatorWord(const PredicateToken& token) {
    switch (token.word) {
        case Word::And:
            operate(Kind::And, AndLevel, token.position);
            return true;
        case Word::Or:
            operate(Kind::Or, OrLevel, token.position);
            return true;
        case Word::Union:
            operate(Kind::Set, SetLevel, token.position, NSUnionSetExpressionType);
            return true;
        case Word::Intersect:
            operate(Kind::Set, SetLevel, token.position, NSIntersectSetExpressionType);
            return true;
        case Word::Minus:
            operate(Kind::Set, SetLevel, token.position, NSMinusSetExpressionType);
            return true;
        default:
            return false;
    }
}

bool PredicateParser::takeOperatorSign(const PredicateToken& token) {
    const std::size_t position = token.position;
    switch (token.sign) {
        case u'+':
            operateInfix(u" + ", SumLevel, position);
            return true;
        case u'-':
            operateInfix(u" - ", SumLevel, position);
            return true;
        case u'*':
            operateInfix(u" * ", ProductLevel, position);
            return true;
        case u'/':
            operateInfix(u" / ", ProductLevel, position);
            return true;
        case u'%':
            operate({.kind = Kind::Function,
                     .precedence = ProductLevel,
                     .position = position,
                     .function = PredicateFunction::named(u"modulus:by:")});
            return true;
        case PredicateToken::power:
            operateInfix(u" ** ", PowerLevel, position);
            return true;
        case u'.':
            takePath(position);
            return true;
        case u'[':
            takeIndex(position);
            return true;
        case u',':
        case u')':
        case u'}':
        case u']':
            close(token.sign, position);
            return true;
        default:
            return false;
    }
}

void PredicateParser::takePath(std::size_t position) {
    const std::u16string path = lexer_.path();
    const Ref<NSExpression> operand = takeExpression();
    push(NSExpression::makePath(operand, path), position);
}

void PredicateParser::takeIndex(std::size_t position) {
    requireExpressions({operands_.back().node}, operands_.back().position);
    PredicateLexer ahead = lexer_;
    const PredicateToken token = ahead.next();
    for (const std::u16string_view place : {u"FIRST", u"LAST", u"SIZE"}) {
        const bool isPlace = token.kind == TokenKind::Name && !token.isEscaped && isSameWord(token.text, place);
        if (!isPlace || !ahead.take(u']'))
            continue;
        lexer_ = ahead;
        const auto* const function = PredicateFunction::written(PredicateFunction::Form::Symbol, place);
        Operand list = takeOperand();
        return push(NSExpression::makeFunction(*function, {list.node}), list.position);
    }
    open(Kind::Index, position);
}

// --- Operands --------------------------------------------------------------------------------------------------------

PredicateParser::Operand PredicateParser::takeOperand() {
    Operand operand = std::move(operands_.back());
    operands_.pop_back();
    return operand;
}

Ref<NSExpression> PredicateParser::takeExpression() {
    const Operand operand = takeOperand();
    if (auto* const expression = as<NSExpression>(operand.node.get()))
        return *expression;
    lexer_.fail(operand.position, u"an expression");
}

Ref<NSPredicate> PredicateParser::takePredicate() {
    const Operand operand = takeOperand();
    if (auto* const predicate = as<NSPredicate>(operand.node.get()))
        return *predicate;
    lexer_.fail(operand.position, u"a condition");
}

PredicateParser::Parts PredicateParser::takeOperands(std::size_t count) {
    Parts parts;
    for (auto each = operands_.end() - static_cast<std::ptrdiff_t>(count); each != operands_.end(); ++each)
        parts.push_back(std::move(each->node));
    operands_.erase(operands_.end() - static_cast<std::ptrdiff_t>(count), operands_.end());
    return parts;
}

void PredicateParser::requireExpressions(const Parts& parts, std::size_t position, std::size_t from) const {
    for (std::size_t i = from; i < parts.size(); ++i)
        if (!as<NSExpression>(parts[i].get()))
            lexer_.fail(position, parts.size() == 1 ? u"an expression" : u"a list of expressions");
}

// --- Putting together ------------------------------------------------------------------------------------------------

/// Gives the operators their operands, up to the last that is open or holds less tightly.
void PredicateParser::reduce(Precedence atLeast) {
    while (!operators_.empty() && operators_.back().precedence != None && operators_.back().precedence >= atLeast)
        reduceLast();
}

void PredicateParser::reduceLast() {
    Operator pending = std::move(operators_.back());
    operators_.pop_back();
    const std::size_t position = operands_.back().position;
    switch (pending.kind) {
        case Kind::And:
        case Kind::Or:
            return join(pending);
        case Kind::Not:
            return push(NSCompoundPredicate::notPredicateWithSubpredicate(takePredicate()), pending.position);
        case Kind::Modifier:
            return modify(pending);
        case Kind::Comparison:
        case Kind::Custom:
            return compare(std::move(pending));
        case Kind::Minus: {
            const Ref<NSExpression> minusOne =
                NSExpression::expressionForConstantValue(NSNumber::numberWithInteger(-1).get());
            Parts parts{minusOne, takeExpression()};
            return push(NSExpression::makeFunction(*PredicateFunction::named(u"multiply:by:"), std::move(parts)),
                        position);
        }
        default:
            return combine(pending);
    }
}

/// A row of the same junction makes one predicate.
void PredicateParser::join(const Operator& pending) {
    std::size_t count = 2;
    for (; !operators_.empty() && operators_.back().kind == pending.kind; ++count)
        operators_.pop_back();
    const auto first = operands_.end() - static_cast<std::ptrdiff_t>(count);
    for (auto each = first; each != operands_.end(); ++each)
        if (!as<NSPredicate>(each->node.get()))
            lexer_.fail(each->position, u"a condition");
    const std::size_t position = first->position;
    const auto type = pending.kind == Kind::And ? NSAndPredicateType : NSOrPredicateType;
    push(adopt(*new NSCompoundPredicate(type, takeOperands(count))), position);
}

void PredicateParser::modify(const Operator& pending) {
    const Operand operand = takeOperand();
    const auto* const comparison = as<NSComparisonPredicate>(operand.node.get());
    if (!comparison)
        lexer_.fail(operand.position, u"a comparison");
    const bool isNone = pending.type == noneModifier;
    const auto modifier = static_cast<NSComparisonPredicateModifier>(isNone ? NSAnyPredicateModifier : pending.type);
    const Ref<NSPredicate> modified = comparison->with(modifier, comparison->parts_);
    push(isNone ? Ref<NSPredicate>(NSCompoundPredicate::notPredicateWithSubpredicate(modified)) : modified,
         pending.position);
}

void PredicateParser::compare(Operator&& pending) {
    const Ref<NSExpression> right = takeExpression();
    const std::size_t position = operands_.back().position;
    const Ref<NSExpression> left = takeExpression();
    if (pending.kind == Kind::Custom) {
        const Selector selector = Selector::existing(NSString::stringWithCharacters(pending.name)->UTF8String());
        if (!selector)
            lexer_.fail(pending.position, u"a selector that is known");
        push(NSComparisonPredicate::initWithLeftExpression_rightExpression_customSelector(left, right, selector),
             position);
    } else {
        push(NSComparisonPredicate::initWithLeftExpression_rightExpression_modifier_type_options(
                 left, right, NSDirectPredicateModifier, static_cast<NSPredicateOperatorType>(pending.type),
                 pending.options),
             position);
    }
}

void PredicateParser::combine(const Operator& pending) {
    const Ref<NSExpression> right = takeExpression();
    const std::size_t position = operands_.back().position;
    const Ref<NSExpression> left = takeExpression();
    Parts parts{left, right};
    if (pending.function)
        push(NSExpression::makeFunction(*pending.function, std::move(parts)), position);
    else
        push(NSExpression::make(static_cast<NSExpressionType>(pending.type), nullptr, std::move(parts)), position);
}

// --- Parentheses and brackets ----------------------------------------------------------------------------------------

namespace {

char16_t closingSign(bool isList, bool isIndex) { return isList ? u'}' : isIndex ? u']' : u')'; }

}  // namespace

/// A closing sign, or a comma, behind an operand or nothing at all.
void PredicateParser::close(char16_t sign, std::size_t position) {
    const bool isEmpty = expectsOperand_;
    if (!isEmpty)
        reduce(None);
    const bool canBeEmpty = sign != u',' && !operators_.empty() &&
                            operators_.back().operandsBefore == operands_.size() &&
                            (operators_.back().kind == Kind::List || operators_.back().kind == Kind::Call);
    if (isEmpty && !canBeEmpty)
        lexer_.fail(position, u"an expression");
    if (operators_.empty())
        lexer_.fail(position, u"an operator or the end");
    const Kind kind = operators_.back().kind;
    if (sign == u',' && (kind == Kind::List || kind == Kind::Call)) {
        expectsOperand_ = true;
        return;
    }
    if (sign != closingSign(kind == Kind::List, kind == Kind::Index))
        lexer_.fail(position, u"another closing sign");
    const Operator opened = std::move(operators_.back());
    operators_.pop_back();
    expectsOperand_ = false;
    if (kind == Kind::Group)
        return;
    Parts parts = takeOperands(operands_.size() - opened.operandsBefore);
    if (kind == Kind::Call)
        return closeCall(opened, std::move(parts));
    requireExpressions(parts, opened.position);
    if (kind == Kind::Index)
        closeIndex(std::move(parts));
    else
        push(NSExpression::make(NSAggregateExpressionType, nullptr, std::move(parts)), opened.position);
}

void PredicateParser::closeIndex(Parts parts) {
    const std::size_t position = operands_.back().position;
    parts.insert(parts.begin(), takeExpression());
    push(NSExpression::makeFunction(*PredicateFunction::written(PredicateFunction::Form::Index, u""), std::move(parts)),
         position);
}

void PredicateParser::closeCall(const Operator& call, Parts parts) {
    const std::size_t position = call.position;
    const auto is = [&call](std::u16string_view word) { return isSameWord(call.name, word); };
    if (is(u"TERNARY")) {
        if (parts.size() != 3 || !as<NSPredicate>(parts[0].get()))
            lexer_.fail(position, u"a condition with two expressions");
        requireExpressions(parts, position, 1);
        return push(NSExpression::make(NSConditionalExpressionType, nullptr, std::move(parts)), position);
    }
    if (is(u"SUBQUERY")) {
        const auto* variable = parts.size() == 3 ? as<NSExpression>(parts[1].get()) : nullptr;
        if (!variable || !variable->variableName() || !as<NSExpression>(parts[0].get()) ||
            !as<NSPredicate>(parts[2].get()))
            lexer_.fail(position, u"a collection, a variable and a condition");
        const Ref<NSString> name = share(*variable->variableName());
        parts.erase(parts.begin() + 1);
        return push(NSExpression::make(NSSubqueryExpressionType, name, std::move(parts)), position);
    }
    requireExpressions(parts, position);
    if (is(u"FUNCTION")) {
        const auto* name =
            parts.size() > 1 ? as<NSString>(static_cast<NSExpression&>(*parts[1]).constant_.get()) : nullptr;
        if (!name)
            lexer_.fail(position, u"a receiver and the name of an operation");
        const Ref<NSString> held = share(*name);
        parts.erase(parts.begin() + 1);
        return push(NSExpression::makeMessage(held, std::move(parts)), position);
    }
    const std::u16string_view name = is(u"CAST") ? u"castObject:toType:" : std::u16string_view(call.name);
    const PredicateFunction* const function = PredicateFunction::named(name, parts.size());
    if (!function || !function->takes(parts.size()))
        lexer_.fail(position, function ? u"another number of arguments" : u"a function that is known");
    push(NSExpression::makeFunction(*function, std::move(parts)), position);
}

}  // namespace tovi::detail
