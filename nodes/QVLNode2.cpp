#include <ToviFoundationKit/nodes/QVLNode2.h>

#include <algorithm>
#include <unordered_map>

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
    const Ref<QVLNode2> self(*this);
    insertIntoList(*node, index);
    node->removeFromParent();
    node->setNodeParent(*this);
}

void QVLNode2::insertChildren_atIndex(const NSArray& nodes, NSInteger index) {
    const Ref<QVLNode2> self(*this);
    const Ref<NSArray> snapshot = NSArray::arrayWithArray(nodes);
    insertIntoList(snapshot, index);
    leaveParents(snapshot);
    for (NSObject& each : *snapshot)
        nodeIn(each).setNodeParent(*this);
}

// --- Removing --------------------------------------------------------------------------------------------------------

void QVLNode2::removeChild(const QVLNode& node) {
    const Ref<QVLNode2> self(*this);
    const Ref<QVLNode> wanted = share(node);
    const RefPtr<NSMutableArray> children = list();
    if (!children || children->indexOfObject(wanted) == static_cast<NSUInteger>(NSNotFound))
        return;
    const Ref<NSArray> held = NSArray::arrayWithArray(*children);
    children->removeObjectsPassingTest([&](NSObject& each) {
        if (&each != wanted.get() && !wanted->isEqual(&each))
            return false;
        nodeIn(each).setNodeParent(nullptr);
        return true;
    });
}

void QVLNode2::removeAllChildren() {
    const Ref<QVLNode2> self(*this);
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

// From here on a look-up by hash pays.
constexpr NSUInteger fewestTogether = 32;

bool areOfOneClass(const NSArray& objects, const Class& expected) {
    return std::all_of(objects.begin(), objects.end(), [&](const NSObject& each) { return &each.isa() == &expected; });
}

// Equal nodes have equal data; one without data is equal to itself alone.
NSUInteger lookUpHash(const QVLNode& node) {
    const id data = node.nodeData();
    return data ? data->hash() : reinterpret_cast<std::uintptr_t>(&node);
}

}  // namespace

// In their order, as one after the other would leave; nodes that stand together below one parent leave it together.
void QVLNode2::leaveParents(const NSArray& nodes) {
    for (NSUInteger i = 0, end; i < nodes.count(); i = end) {
        end = i + 1;
        const RefPtr<QVLNode> parent = nodeIn(nodes[i]).nodeParent();
        if (!parent)
            continue;
        while (end < nodes.count() && nodeIn(nodes[end]).parent() == parent.get())
            ++end;
        const Class& common = nodes[i].isa();
        const Ref<NSArray> leaving = nodes.subarrayWithRange({i, end - i});
        auto* const owner = as<QVLNode2>(parent.get());
        if (end - i >= fewestTogether && owner && owner->list() && common.answersByParts(Class::ByParts::Equality) &&
            areOfOneClass(leaving, common) && areOfOneClass(*owner->list(), common))
            owner->removeEqualChildren(leaving);
        else
            for (NSObject& each : *leaving)
                nodeIn(each).removeFromParent();
    }
}

void QVLNode2::removeEqualChildren(const NSArray& nodes) {
    std::unordered_multimap<NSUInteger, QVLNode*> wanted;
    for (NSObject& each : nodes)
        wanted.emplace(lookUpHash(nodeIn(each)), &nodeIn(each));
    const RefPtr<NSMutableArray> children = list();
    const Ref<NSArray> held = NSArray::arrayWithArray(*children);
    children->removeObjectsPassingTest([&](NSObject& each) {
        const auto [first, last] = wanted.equal_range(lookUpHash(nodeIn(each)));
        if (std::none_of(first, last, [&](const auto& entry) { return entry.second->isEqual(&each); }))
            return false;
        nodeIn(each).setNodeParent(nullptr);
        return true;
    });
}

}  // namespace tovi
