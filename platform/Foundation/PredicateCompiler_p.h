#pragma once

#include <string_view>
#include <unordered_map>
#include <vector>

#include <ToviFoundationKit/Foundation/PredicateNode.h>

namespace tovi {
class NSComparisonPredicate;
}

namespace tovi::detail {

/// One step of an evaluation. Values go to a stack, from which they are taken; the answer of a condition is held aside.
struct PredicateInstruction {
    enum class Code : unsigned char {
        // A value.
        Self,
        Constant,   ///< operand: the object or null
        Variable,   ///< operand: its name
        Slot,       ///< number: of the loop's variable
        KeyOfSelf,  ///< operand: the key
        Key,
        Path,     ///< number: of the program's path
        List,     ///< number: how many values
        Call,     ///< operand: the function; number: how many arguments
        Perform,  ///< operand: the selector's name; number: how many values, with the receiver
        Union,
        Intersect,
        Minus,
        // An answer.
        Truth,    ///< number: 0 or 1
        Ask,      ///< operand: the predicate
        Compare,  ///< number: of the program's comparison
        Not,
        // Elsewhere; number: where.
        JumpIfFalse,
        JumpIfTrue,
        Jump,
        // A loop over the elements of a collection; the value is a list of those that are kept.
        BeginLoop,   ///< number: of the variable's slot
        NextOrJump,  ///< to the end
        KeepIfTrue   ///< and back to NextOrJump
    };

    Code code;
    std::size_t number;
    const void* operand;

    template <class T> T* as() const noexcept { return static_cast<T*>(const_cast<void*>(operand)); }
};

/// What a predicate or an expression is compiled to. It borrows from that.
struct PredicateProgram {
    std::vector<PredicateInstruction> code;
    std::vector<std::vector<Ref<NSString>>> paths;
    std::vector<Ref<NSString>> keys;
    std::vector<const NSComparisonPredicate*> comparisons;
    std::size_t slotCount = 0;
};

/// Takes the instructions from the nodes of a tree.
class PredicateCompiler {
public:
    using Code = PredicateInstruction::Code;

    static PredicateProgram compile(const PredicateNode& root);

    void emit(Code code, const void* operand = nullptr, std::size_t number = 0) {
        program_.code.push_back({code, number, operand});
    }
    void emitPath(const NSString& path, bool ofSelf);
    void emitVariable(const NSString& name);
    void emitComparison(const NSComparisonPredicate& comparison);

    /// A jump of the node whose turn it is; where to is said with `land`, by its index among the node's.
    void emitJump(Code code);
    void land(std::size_t index);
    void landAll();

    void beginLoop(const NSString& variable);
    void endLoop(const NSString& variable);

private:
    std::size_t here() const noexcept { return program_.code.size(); }

    PredicateProgram program_;
    std::vector<std::size_t> jumps_;       ///< of the nodes under way, the innermost's last
    std::vector<std::size_t> firstJumps_;  ///< of each of these nodes
    std::vector<std::size_t> loops_;       ///< the places of NextOrJump of the loops around
    std::unordered_map<std::u16string_view, std::vector<std::size_t>> bound_;  ///< the slots that a name stands for
};

}  // namespace tovi::detail
