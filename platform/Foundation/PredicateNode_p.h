#pragma once

#include <ToviFoundationKit/Foundation/PredicateNode.h>

namespace tovi::detail {

/// Calls `visit(node, index)` before the part of that index is visited, and once more behind the last one.
template <class Visit> void PredicateNode::walk(const PredicateNode& root, Visit visit) {
    struct Step {
        const PredicateNode& node;
        std::size_t next = 0;
    };
    std::vector<Step> steps{{root.essence()}};
    while (!steps.empty()) {
        Step& step = steps.back();
        const PredicateNode& node = step.node;
        const std::size_t next = step.next++;
        visit(node, next);
        if (next < node.parts_.size())
            steps.push_back({node.parts_[next]->essence()});
        else
            steps.pop_back();
    }
}

}  // namespace tovi::detail
