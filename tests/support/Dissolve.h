#pragma once

#include <unordered_map>
#include <vector>

#include <ToviFoundationKit/nodes/QVLHashNode.h>
#include <ToviFoundationKit/nodes/QVLNode.h>

#include "ArchivedPerson.h"

/// Takes what an archive gave apart: its objects may hold each other in circles, and not all of them can be changed.
inline void dissolve(const tovi::id& root) {
    using namespace tovi;
    struct List : NSArray {
        static auto objects() { return &List::objects_; }
        static auto count() { return &List::count_; }
    };
    struct Keyed : NSDictionary {
        static auto table() { return &Keyed::table_; }
    };
    struct Set : NSSet {
        static auto table() { return &Set::table_; }
    };
    std::unordered_map<NSObject*, id> found;
    std::vector<NSObject*> waiting;
    const auto visit = [&](NSObject* object) {
        if (object && found.emplace(object, object).second)
            waiting.push_back(object);
    };
    visit(root.get());
    while (!waiting.empty()) {
        NSObject& object = *waiting.back();
        waiting.pop_back();
        const auto visitParts = [&](const auto& node) {
            for (const id& each : {id(node.nodeParent()), node.nodeData(), id(node.children())})
                visit(each.get());
        };
        if (auto* const person = as<ArchivedPerson>(&object)) {
            visit(person->friendly);
        } else if (auto* const node = as<QVLNode>(&object)) {
            visitParts(*node);
        } else if (auto* const keyedNode = as<QVLHashNode>(&object)) {
            visitParts(*keyedNode);
        } else if (auto* const list = as<NSArray>(&object)) {
            for (NSObject& each : *list)
                visit(&each);
        } else if (auto* const set = as<NSSet>(&object)) {
            for (NSObject& each : *set)
                visit(&each);
        } else if (auto* const keyed = as<NSDictionary>(&object)) {
            for (const auto [key, value] : *keyed)
                visit(&key), visit(&value);
        }
    }
    for (const auto& [object, held] : found) {
        if (auto* const person = as<ArchivedPerson>(object))
            person->breakReferenceCycles();
        else if (auto* const node = as<QVLNode>(object))
            node->breakReferenceCycles();
        else if (auto* const keyedNode = as<QVLHashNode>(object))
            keyedNode->breakReferenceCycles();
        else if (auto* const list = as<NSArray>(object))
            while (list->*List::count())
                (list->*List::objects())[--(list->*List::count())]->release();
        else if (auto* const set = as<NSSet>(object))
            for (auto& entry : set->*Set::table())
                detail::released(std::exchange(entry.key, nullptr));
        else if (auto* const keyed = as<NSDictionary>(object))
            for (auto& entry : keyed->*Keyed::table()) {
                detail::released(std::exchange(entry.key, nullptr));
                detail::released(std::exchange(entry.value, nullptr));
            }
    }
}
