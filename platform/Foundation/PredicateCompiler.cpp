#include <ToviFoundationKit/Foundation/PredicateCompiler_p.h>

#include <algorithm>

#include <ToviFoundationKit/Foundation/KeyPath_p.h>
#include <ToviFoundationKit/Foundation/PredicateNode_p.h>

namespace tovi::detail {

PredicateProgram PredicateCompiler::compile(const PredicateNode& root) {
    PredicateCompiler compiler;
    PredicateNode::walk(root, [&compiler](const PredicateNode& node, std::size_t index) {
        if (index == 0)
            compiler.firstJumps_.push_back(compiler.jumps_.size());
        node.compile(compiler, index);
        if (index == node.parts_.size()) {
            compiler.jumps_.resize(compiler.firstJumps_.back());
            compiler.firstJumps_.pop_back();
        }
    });
    return std::move(compiler.program_);
}

void PredicateCompiler::emitPath(const NSString& path, bool ofSelf) {
    auto keys = keysOfPath(path);
    if (keys.size() == 1 && *keys[0] != u"self" && !path.view().starts_with(u'@')) {
        program_.keys.push_back(keys[0]);
        return emit(ofSelf ? Code::KeyOfSelf : Code::Key, keys[0].get());
    }
    if (ofSelf)
        emit(Code::Self);
    emit(Code::Path, nullptr, program_.paths.size());
    program_.paths.push_back(std::move(keys));
}

void PredicateCompiler::emitVariable(const NSString& name) {
    const auto found = bound_.find(name);
    if (found != bound_.end() && !found->second.empty())
        emit(Code::Slot, nullptr, found->second.back());
    else
        emit(Code::Variable, &name);
}

void PredicateCompiler::emitComparison(const NSComparisonPredicate& comparison) {
    emit(Code::Compare, nullptr, program_.comparisons.size());
    program_.comparisons.push_back(&comparison);
}

void PredicateCompiler::emitJump(Code code) {
    jumps_.push_back(here());
    emit(code);
}

void PredicateCompiler::land(std::size_t index) { program_.code[jumps_[firstJumps_.back() + index]].number = here(); }

void PredicateCompiler::landAll() {
    for (std::size_t i = firstJumps_.back(); i < jumps_.size(); ++i)
        program_.code[jumps_[i]].number = here();
}

void PredicateCompiler::beginLoop(const NSString& variable) {
    const std::size_t slot = loops_.size();
    program_.slotCount = std::max(program_.slotCount, slot + 1);
    bound_[variable].push_back(slot);
    emit(Code::BeginLoop, nullptr, slot);
    loops_.push_back(here());
    emit(Code::NextOrJump);
}

void PredicateCompiler::endLoop(const NSString& variable) {
    bound_[variable].pop_back();
    emit(Code::KeepIfTrue, nullptr, loops_.back());
    program_.code[loops_.back()].number = here();
    loops_.pop_back();
}

}  // namespace tovi::detail
