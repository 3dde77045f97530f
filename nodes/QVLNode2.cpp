#include <ToviFoundationKit/nodes/QVLNode2.h>

#include <algorithm>
#include <map>

#include <ToviFoundationKit/Foundation/NSMutableSet.h>
#include <ToviFoundationKit/Runtime/Additions.h>

namespace tovi {

TOVI_DEFINE_CLASS(QVLNode2, QVLNode)

Ref<QVLNode2> QVLNode2::init() { return adopt(*new QVLNode2); }

Ref<QVLNode2> QVLNode2::initWithData(id data) {
    Ref<QVLNode2> node = init();
    node->setUp(data);
    return node;
}

Ref<QVLNode2> QVLNode2::initWithData_parent_children(id data, RefPtr<QVLNode> parent, RefPtr<NSMutableArray> children) {
    Ref<QVLNode2> node = init();
    node->setUp(data, parent, std::move(children));
    return node;
}

Ref<QVLNode2> QVLNode2::treeNodeWithData(id data) {
    return to<QVLNode2>(QVLNode::treeNodeWithData(std::move(data), classObject()).get());
}

void QVLNode2::insertChild_atIndex(RefPtr<QVLNode> node, NSInteger index) {
    if (!node)
        return;
    insertIntoList(*node, index);
    node->removeFromParent();
    node->setNodeParent(*this);
}

void QVLNode2::insertChildren_atIndex(const NSArray& nodes, NSInteger index) {
    const Ref<NSArray> snapshot = NSArray::arrayWithArray(nodes);
    insertIntoList(snapshot, index);
    leaveParents(snapshot);
    for (NSObject& each : *snapshot)
        nodeIn(each).setNodeParent(*this);
}

// --- Removing --------------------------------------------------------------------------------------------------------

void QVLNode2::removeChild(const QVLNode& node) {
    if (indexOfChild(node) == static_cast<NSUInteger>(NSNotFound))
        return;
    const Ref<QVLNode2> self(*this);
    const Ref<QVLNode> wanted = share(node);
    std::vector<Ref<QVLNode>> kept;
    list()->removeObjectsPassingTest([&](NSObject& each) {
        if (&each != wanted.get() && !wanted->isEqual(&each))
            return false;
        kept.emplace_back(nodeIn(each));
        nodeIn(each).setNodeParent(nullptr);
        return true;
    });
}

void QVLNode2::removeAllChildren() {
    const RefPtr<NSMutableArray> children = list();
    if (!children)
        return;
    for (QVLNode& each : NSArray::arrayWithArray(*children)->each<QVLNode>()) {
        if (each.nodeParent().get() == this)
            each.setNodeParent(nullptr);
        else
            each.removeFromParent();
    }
    children->removeAllObjects();
}

namespace {

bool areOfOneClass(const NSArray& objects, const Class& expected) {
    return std::all_of(objects.begin(), objects.end(), [&](const NSObject& each) { return &each.isa() == &expected; });
}

}  // namespace

// Nodes that leave one parent together are looked up there by their hashes, where all are of one class: between classes
// equality may depend on who is asked.
void QVLNode2::leaveParents(const NSArray& nodes) {
    std::map<QVLNode*, Ref<NSMutableArray>> leaving;
    for (NSObject& each : nodes)
        if (const RefPtr<QVLNode> parent = nodeIn(each).nodeParent())
            leaving.try_emplace(parent.get(), NSMutableArray::array()).first->second->addObject(each);
    for (const auto& [parent, children] : leaving) {
        auto* const owner = as<QVLNode2>(parent);
        const Class& common = (*children)[0].isa();
        if (owner && owner->list() && children->count() > 1 && areOfOneClass(children, common) &&
            areOfOneClass(*owner->list(), common))
            owner->removeEqualChildren(children);
        else
            for (NSObject& each : *children)
                nodeIn(each).removeFromParent();
    }
}

void QVLNode2::removeEqualChildren(const NSArray& nodes) {
    const Ref<NSMutableSet> wanted = NSMutableSet::set();
    for (NSObject& each : nodes)
        wanted->addObject(each);
    list()->removeObjectsPassingTest([&](NSObject& each) {
        if (!wanted->containsObject(each))
            return false;
        nodeIn(each).setNodeParent(nullptr);
        return true;
    });
}

namespace {

const Additions<QVLNode2> additions{
    classLevel<&QVLNode2::init>("new"),
};

}  // namespace

}  // namespace tovi
