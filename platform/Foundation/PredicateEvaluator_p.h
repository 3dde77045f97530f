#pragma once

#include <ToviFoundationKit/Foundation/FastEnumeration.h>
#include <ToviFoundationKit/Foundation/NSMutableArray.h>
#include <ToviFoundationKit/Foundation/PredicateComparison_p.h>
#include <ToviFoundationKit/Foundation/PredicateCompiler_p.h>

namespace tovi::detail {

/// Evaluates a predicate or an expression, for one thread and one object at a time, and keeps what can be used again.
class PredicateEvaluator {
public:
    explicit PredicateEvaluator(const PredicateNode& node);

    bool test(const NSObject* object, const NSDictionary* variables);
    id value(const NSObject* object, const NSDictionary* variables);
    /// Lets go of what an evaluation has left that raised something.
    void reset() noexcept;

private:
    struct Loop {
        FastEnumeration elements;
        Ref<NSMutableArray> kept;
        std::size_t slot;
    };

    void run(const NSObject* object, const NSDictionary* variables);
    void takeValue(const PredicateInstruction& instruction);
    void takeAnswer(const PredicateInstruction& instruction);
    std::size_t takeWay(const PredicateInstruction& instruction, std::size_t next);
    std::size_t takeNextOrJump(std::size_t next, std::size_t end);

    void push(id value) { stack_.push_back(std::move(value)); }
    id pop() {
        id value = std::move(stack_.back());
        stack_.pop_back();
        return value;
    }
    std::span<const id> top(std::size_t count) const { return std::span(stack_).last(count); }
    void replace(std::size_t count, id value) {
        stack_.resize(stack_.size() - count);
        push(std::move(value));
    }
    template <class Operation> void combine(Operation operation);
    id variable(const NSString& name) const;

    PredicateProgram program_;
    std::vector<PredicateComparison> comparisons_;
    std::vector<id> stack_, slots_;
    std::vector<Loop> loops_;
    NSObject* object_ = nullptr;
    const NSDictionary* variables_ = nullptr;
    bool truth_ = false;
};

/// Borrows a node's evaluator, or makes another one while that is lent to somebody else.
class PredicateLease {
public:
    explicit PredicateLease(const PredicateNode& node)
        : node_(node), evaluator_(node.idle_.exchange(nullptr, std::memory_order_acquire)) {
        if (!evaluator_)
            evaluator_ = new PredicateEvaluator(node);
    }
    PredicateLease(const PredicateLease&) = delete;
    PredicateLease& operator=(const PredicateLease&) = delete;
    ~PredicateLease() {
        evaluator_->reset();
        delete node_.idle_.exchange(evaluator_, std::memory_order_acq_rel);
    }
    PredicateEvaluator* operator->() const noexcept { return evaluator_; }

private:
    const PredicateNode& node_;
    PredicateEvaluator* evaluator_;
};

}  // namespace tovi::detail
