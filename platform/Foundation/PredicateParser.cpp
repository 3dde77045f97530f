#include <ToviFoundationKit/Foundation/PredicateParser_p.h>

#include <limits>

#include <ToviFoundationKit/Foundation/NSCompoundPredicate.h>
#include <ToviFoundationKit/Foundation/NumberMath_p.h>
#include <ToviFoundationKit/Foundation/PlainPredicates_p.h>

// The way through the format, operands first. PredicateParser-Operators.cpp has what operators make of them.

namespace tovi::detail {

using TokenKind = PredicateToken::Kind;
using Word = PredicateToken::Word;

std::vector<FormatArgument> formatArguments(const NSArray* arguments) {
    std::vector<FormatArgument> result;
    if (arguments)
        for (const NSObject& each : *arguments)
            result.emplace_back(each);
    return result;
}

Ref<NSPredicate> PredicateParser::predicate() {
    parse();
    return takePredicate();
}

Ref<NSExpression> PredicateParser::expression() {
    parse();
    return takeExpression();
}

void PredicateParser::parse() {
    for (;;) {
        PredicateToken token = lexer_.next();
        if (expectsOperand_)
            takeOperand(std::move(token));
        else if (!takeOperator(std::move(token)))
            return;
    }
}

// --- Operands --------------------------------------------------------------------------------------------------------

void PredicateParser::pushConstant(NSObject* value, std::size_t position) {
    push(NSExpression::expressionForConstantValue(value), position);
}

void PredicateParser::takeOperand(PredicateToken&& token) {
    switch (token.kind) {
        case TokenKind::Constant:
            return pushConstant(token.value, token.position);
        case TokenKind::Name:
            return takeName(std::move(token));
        case TokenKind::Variable:
            return push(NSExpression::expressionForVariable(NSString::stringWithCharacters(token.text)),
                        token.position);
        case TokenKind::Word:
            return takeWord(token);
        case TokenKind::Conversion:
            return takeConversion(token);
        case TokenKind::Sign:
            return takeSign(token);
        case TokenKind::Comparison:
        case TokenKind::End:
            lexer_.fail(token.position, u"an expression");
    }
}

void PredicateParser::takeWord(const PredicateToken& token) {
    const std::size_t position = token.position;
    switch (token.word) {
        case Word::Not:
            return operate(Kind::Not, NotLevel, position);
        case Word::Any:
            return operate(Kind::Modifier, ModifierLevel, position, NSAnyPredicateModifier);
        case Word::All:
            return operate(Kind::Modifier, ModifierLevel, position, NSAllPredicateModifier);
        case Word::None:
            return operate(Kind::Modifier, ModifierLevel, position, noneModifier);
        case Word::Nil:
            return pushConstant(nullptr, position);
        case Word::True:
        case Word::False:
            return pushConstant(NSNumber::numberWithBool(token.word == Word::True).get(), position);
        case Word::Self:
            return push(NSExpression::expressionForEvaluatedObject(), position);
        case Word::TruePredicate:
        case Word::FalsePredicate:
            return push(NSTruthPredicate::of(token.word == Word::TruePredicate), position);
        default:
            lexer_.fail(position, u"an expression");
    }
}

void PredicateParser::takeName(PredicateToken&& token) {
    if (!token.isEscaped && lexer_.take(u'('))
        return open(Kind::Call, token.position, std::move(token.text));
    if (token.text.find(u':') != token.text.npos)
        lexer_.fail(token.position + token.text.size(), u"an opening parenthesis");
    push(NSExpression::makePath(nullptr, token.text), token.position);
}

void PredicateParser::takeSign(const PredicateToken& token) {
    if (token.is(u'('))
        open(Kind::Group, token.position);
    else if (token.is(u'{'))
        open(Kind::List, token.position);
    else if (token.is(u'-'))
        takeMinus(token.position);
    else if (token.is(u')') || token.is(u'}'))
        close(token.sign, token.position);
    else
        lexer_.fail(token.position, u"an expression");
}

namespace {

Ref<NSNumber> negated(const NSNumber& number) {
    constexpr auto least = std::numeric_limits<NSInteger>::min();
    if (isReal(number))
        return NSNumber::numberWithDouble(-number.doubleValue());
    if (number.unsignedIntegerValue() == static_cast<NSUInteger>(least))
        return NSNumber::numberWithInteger(least);
    return difference(NSNumber::numberWithInteger(0), number);
}

}  // namespace

/// A number with a minus in front is a constant.
void PredicateParser::takeMinus(std::size_t position) {
    if (!lexer_.isBeforeNumber())
        return operate(Kind::Minus, MinusLevel, position);
    const PredicateToken number = lexer_.next();
    pushConstant(negated(static_cast<NSNumber&>(*number.value)).get(), position);
}

// --- Arguments -------------------------------------------------------------------------------------------------------

namespace {

Ref<NSNumber> numberFrom(const FormatArgument& argument, PredicateLexer& lexer, std::size_t position) {
    switch (argument.type()) {
        case FormatArgument::Type::Signed:
        case FormatArgument::Type::Character:
            return NSNumber::numberWithInteger(argument.integer());
        case FormatArgument::Type::Unsigned:
            return NSNumber::numberWithUnsignedInteger(static_cast<NSUInteger>(argument.integer()));
        case FormatArgument::Type::Real:
            return NSNumber::numberWithDouble(argument.real());
        case FormatArgument::Type::Object:
            if (const auto* number = as<NSNumber>(argument.object()))
                return share(*number);
            [[fallthrough]];
        default:
            lexer.failWithout(position, u"number to be had from the argument");
    }
}

Ref<NSString> textFrom(const FormatArgument& argument, PredicateLexer& lexer, std::size_t position) {
    if (argument.type() == FormatArgument::Type::Text8)
        return NSString::fromUTF8(argument.text8());
    if (argument.type() == FormatArgument::Type::Text16)
        return NSString::stringWithCharacters(argument.text16());
    if (argument.type() == FormatArgument::Type::Object)
        if (const auto* text = as<NSString>(argument.object()))
            return share(*text);
    lexer.failWithout(position, u"text to be had from the argument");
}

/// An argument of any type as an object; nil as such.
id objectFrom(const FormatArgument& argument, PredicateLexer& lexer, std::size_t position) {
    switch (argument.type()) {
        case FormatArgument::Type::Object:
            return const_cast<NSObject*>(argument.object());
        case FormatArgument::Type::Text8:
        case FormatArgument::Type::Text16:
            return textFrom(argument, lexer, position);
        default:
            return numberFrom(argument, lexer, position);
    }
}

Ref<NSNumber> integerFrom(const FormatArgument& argument, PredicateLexer& lexer, std::size_t position) {
    const Ref<NSNumber> number = numberFrom(argument, lexer, position);
    return isReal(number) ? NSNumber::numberWithInteger(number->integerValue()) : number;
}

Ref<NSString> characterFrom(const FormatArgument& argument, PredicateLexer& lexer, std::size_t position) {
    const auto unit = static_cast<char16_t>(numberFrom(argument, lexer, position)->unsignedShortValue());
    return NSString::stringWithCharacters({&unit, 1});
}

}  // namespace

const FormatArgument& PredicateParser::nextArgument(std::size_t position) {
    if (argumentsTaken_ == arguments_.size())
        lexer_.failWithout(position, u"argument for the conversion");
    return arguments_[argumentsTaken_++];
}

void PredicateParser::takeConversion(const PredicateToken& token) {
    const std::size_t position = token.position;
    const FormatArgument& argument = nextArgument(position);
    switch (token.sign) {
        case u'@': {
            const id object = objectFrom(argument, lexer_, position);
            if (auto* const node = dynamic_cast<PredicateNode*>(object.get()))
                return push(*node, position);
            return pushConstant(object, position);
        }
        case u'K':
            return push(NSExpression::makePath(nullptr, *textFrom(argument, lexer_, position)), position);
        case u's':
        case u'S':
            return pushConstant(textFrom(argument, lexer_, position).get(), position);
        case u'c':
        case u'C':
            return pushConstant(characterFrom(argument, lexer_, position).get(), position);
        case u'd':
        case u'D':
        case u'i':
        case u'u':
        case u'U':
        case u'x':
        case u'X':
        case u'o':
        case u'O':
            return pushConstant(integerFrom(argument, lexer_, position).get(), position);
        default:
            return pushConstant(NSNumber::numberWithDouble(numberFrom(argument, lexer_, position)->doubleValue()).get(),
                                position);
    }
}

}  // namespace tovi::detail
