#pragma once

#include <vector>

#include <ToviFoundationKit/Foundation/PredicateFunctions_p.h>
#include <ToviFoundationKit/Foundation/PredicateLexer_p.h>

namespace tovi::detail {

/// Reads the format of a predicate or an expression. Operands wait in a row until the operators around them, which wait
/// in another, are known to take them; so nothing here recurses.
class PredicateParser {
public:
    PredicateParser(std::u16string_view format, FormatArguments arguments) noexcept
        : lexer_(format), arguments_(arguments) {}

    Ref<NSPredicate> predicate();
    Ref<NSExpression> expression();

private:
    using Parts = std::vector<Ref<PredicateNode>>;
    struct Operand {
        Ref<PredicateNode> node;
        std::size_t position;
    };
    /// How tightly operators hold what is around them.
    enum Precedence : unsigned char {
        None,
        OrLevel,
        AndLevel,
        NotLevel,
        ModifierLevel,
        ComparisonLevel,
        SetLevel,
        SumLevel,
        ProductLevel,
        PowerLevel,
        MinusLevel
    };
    struct Operator {
        enum class Kind : unsigned char {
            And,
            Or,
            Not,
            Modifier,
            Comparison,
            Custom,
            Set,
            Function,
            Minus,
            Group,
            List,
            Call,
            Index  // open: of no precedence
        };
        Kind kind;
        Precedence precedence = None;
        std::size_t position = 0;
        std::size_t operandsBefore = 0;
        NSUInteger type = 0;  ///< of a comparison, a modifier or a set
        NSComparisonPredicateOptions options{};
        const PredicateFunction* function = nullptr;
        std::u16string name{};  ///< of a call or a custom comparison
    };
    using Kind = Operator::Kind;
    static constexpr NSUInteger noneModifier = 99;

    void parse();
    void takeOperand(PredicateToken&& token);
    void takeWord(const PredicateToken& token);
    void takeName(PredicateToken&& token);
    void takeSign(const PredicateToken& token);
    void takeMinus(std::size_t position);
    void takeConversion(const PredicateToken& token);
    bool takeOperator(PredicateToken&& token);
    bool takeOperatorWord(const PredicateToken& token);
    bool takeOperatorSign(const PredicateToken& token);
    void takeIndex(std::size_t position);
    void takePath(std::size_t position);

    void push(Ref<PredicateNode> node, std::size_t position) {
        operands_.push_back({std::move(node), position});
        expectsOperand_ = false;
    }
    void pushConstant(NSObject* value, std::size_t position);
    void open(Kind kind, std::size_t position, std::u16string name = {});
    void operate(Operator&& pending, bool associatesRight = false);
    void operate(Kind kind, Precedence precedence, std::size_t position, NSUInteger type = 0);
    void operateInfix(std::u16string_view symbol, Precedence precedence, std::size_t position);

    void reduce(Precedence atLeast);
    void reduceLast();
    void join(const Operator& pending);
    void modify(const Operator& pending);
    void compare(Operator&& pending);
    void combine(const Operator& pending);
    void close(char16_t sign, std::size_t position);
    void closeCall(const Operator& call, Parts parts);
    void closeIndex(Parts parts);
    const FormatArgument& nextArgument(std::size_t position);

    Operand takeOperand();
    Ref<NSExpression> takeExpression();
    Ref<NSPredicate> takePredicate();
    Parts takeOperands(std::size_t count);
    void requireExpressions(const Parts& parts, std::size_t position, std::size_t from = 0) const;

    PredicateLexer lexer_;
    FormatArguments arguments_;
    std::size_t argumentsTaken_ = 0;
    bool expectsOperand_ = true;
    std::vector<Operand> operands_;
    std::vector<Operator> operators_;
};

/// The objects of a list as arguments. They borrow from it; null is an empty list.
std::vector<FormatArgument> formatArguments(const NSArray* arguments);

}  // namespace tovi::detail
