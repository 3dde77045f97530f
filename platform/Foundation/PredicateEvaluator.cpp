#include <ToviFoundationKit/Foundation/PredicateEvaluator_p.h>

#include <ToviFoundationKit/Foundation/KeyPath_p.h>
#include <ToviFoundationKit/Foundation/NSMutableDictionary.h>
#include <ToviFoundationKit/Foundation/NSNull.h>
#include <ToviFoundationKit/Foundation/PlainPredicates_p.h>
#include <ToviFoundationKit/Foundation/PredicateFunctions_p.h>
#include <ToviFoundationKit/Runtime/NSException.h>

namespace tovi::detail {

using Code = PredicateInstruction::Code;

PredicateEvaluator::PredicateEvaluator(const PredicateNode& node)
    : program_(PredicateCompiler::compile(node)), slots_(program_.slotCount) {
    comparisons_.reserve(program_.comparisons.size());
    for (const NSComparisonPredicate* const each : program_.comparisons)
        comparisons_.emplace_back(*each);
}

bool PredicateEvaluator::test(const NSObject* object, const NSDictionary* variables) {
    run(object, variables);
    return truth_;
}

id PredicateEvaluator::value(const NSObject* object, const NSDictionary* variables) {
    run(object, variables);
    return pop();
}

void PredicateEvaluator::reset() noexcept {
    if (stack_.empty() && loops_.empty()) [[likely]]
        return;
    stack_.clear();
    loops_.clear();
    for (id& each : slots_)
        each = nullptr;
}

void PredicateEvaluator::run(const NSObject* object, const NSDictionary* variables) {
    object_ = const_cast<NSObject*>(object);
    variables_ = variables;
    const std::size_t end = program_.code.size();
    for (std::size_t at = 0; at < end;) {
        const PredicateInstruction& instruction = program_.code[at++];
        if (instruction.code < Code::Truth)
            takeValue(instruction);
        else if (instruction.code < Code::JumpIfFalse)
            takeAnswer(instruction);
        else
            at = takeWay(instruction, at);
    }
}

id PredicateEvaluator::variable(const NSString& name) const {
    if (NSObject* const value = variables_ ? variables_->find(name) : nullptr)
        return value;
    NSException::raise(NSInvalidArgumentException, u"there is no value for the variable $%@", name);
}

template <class Operation> void PredicateEvaluator::combine(Operation operation) {
    const auto operands = top(2);
    const bool hasNil = !operands[0] || !operands[1];
    replace(2, hasNil ? id() : id(operation(*operands[0], *operands[1])));
}

namespace {

id listOf(std::span<const id> values) {
    std::vector<Ref<NSObject>> objects;
    objects.reserve(values.size());
    for (const id& each : values)
        objects.push_back(each ? each.ref() : Ref<NSObject>(NSNull::null()));
    return NSArray::arrayTakingObjects(objects);
}

}  // namespace

void PredicateEvaluator::takeValue(const PredicateInstruction& instruction) {
    const std::size_t number = instruction.number;
    switch (instruction.code) {
        case Code::KeyOfSelf:
            return push(object_ ? object_->valueForKey(*instruction.as<const NSString>()) : id());
        case Code::Constant:
            return push(instruction.as<NSObject>());
        case Code::Self:
            return push(object_);
        case Code::Variable:
            return push(variable(*instruction.as<const NSString>()));
        case Code::Slot:
            return push(slots_[number]);
        case Code::Key:
            if (stack_.back())
                stack_.back() = stack_.back()->valueForKey(*instruction.as<const NSString>());
            return;
        case Code::Path:
            if (stack_.back())
                stack_.back() = valueForKeys(*stack_.back(), program_.paths[number]);
            return;
        case Code::List:
            return replace(number, listOf(top(number)));
        case Code::Call:
            return replace(number, instruction.as<const PredicateFunction>()->call(top(number)));
        case Code::Perform: {
            const auto values = top(number);
            return replace(number, perform(values[0], *instruction.as<const NSString>(), values.subspan(1)));
        }
        case Code::Union:
            return combine(unionOf);
        case Code::Intersect:
            return combine(intersectionOf);
        default:
            return combine(differenceOf);
    }
}

void PredicateEvaluator::takeAnswer(const PredicateInstruction& instruction) {
    switch (instruction.code) {
        case Code::Truth:
            truth_ = instruction.number;
            break;
        case Code::Not:
            truth_ = !truth_;
            break;
        case Code::Ask:
            truth_ = instruction.as<const NSBlockPredicate>()->ask(object_, variables_);
            break;
        default: {
            const id right = pop(), left = pop();
            truth_ = comparisons_[instruction.number].holds(left.get(), right.get());
        }
    }
}

std::size_t PredicateEvaluator::takeWay(const PredicateInstruction& instruction, std::size_t next) {
    const std::size_t there = instruction.number;
    switch (instruction.code) {
        case Code::JumpIfFalse:
            return truth_ ? next : there;
        case Code::JumpIfTrue:
            return truth_ ? there : next;
        case Code::Jump:
            return there;
        case Code::BeginLoop: {
            const id collection = pop();
            const Ref<NSObject> elements = collection ? collection.ref() : Ref<NSObject>(NSArray::array());
            loops_.push_back({FastEnumeration(elements), NSMutableArray::array(), there});
            return next;
        }
        case Code::NextOrJump:
            return takeNextOrJump(next, there);
        default:
            if (truth_)
                loops_.back().kept->addObject(*slots_[loops_.back().slot]);
            return there;
    }
}

std::size_t PredicateEvaluator::takeNextOrJump(std::size_t next, std::size_t end) {
    Loop& loop = loops_.back();
    NSObject* const element = loop.elements.next();
    slots_[loop.slot] = element;
    if (element)
        return next;
    push(loop.kept->copy());
    loops_.pop_back();
    return end;
}

}  // namespace tovi::detail
