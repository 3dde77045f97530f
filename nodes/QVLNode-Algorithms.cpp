#include <atomic>

#include <ToviFoundationKit/Foundation/Composite_p.h>
#include <ToviFoundationKit/nodes/QVLNode.h>
#include <ToviFoundationKit/Runtime/Additions.h>
#include <ToviFoundationKit/Runtime/Message.h>

namespace tovi {

// --- Sorting ---------------------------------------------------------------------------------------------------------

namespace {

/// The selector by which the keyed sorts get their keys, for all trees.
constinit std::atomic<Selector> sortKey;

void keep(Selector key) noexcept {
    if (key)
        sortKey.store(key, std::memory_order_relaxed);
}

/// True when children answer to the selector with `QVLNode::compare`, so that their data can be sorted in their place.
bool comparesData(const NSArray& children, Selector comparator) {
    static const Method own = instance<&QVLNode::compare>("compare:").method;
    const DispatchTable* table = nullptr;
    for (const NSObject& each : children) {
        if (&each.dispatchTable() == table)
            continue;
        table = &each.dispatchTable();
        const Method* const method = table->find(comparator);
        if (!method || method->direct != own.direct)
            return false;
    }
    return true;
}

}  // namespace

NSInteger QVLNode::compare(const QVLNode& other) const {
    return data_ ? send<NSInteger>(*data_, "compare:"_sel, other.data_) : NSOrderedSame;
}

void QVLNode::sortChildrenBy(Selector comparator) {
    const RefPtr<NSMutableArray> children = list();
    if (!children || !comparesData(*children, comparator))
        return children ? children->sortUsingSelector(comparator) : void();
    std::vector<id> data;
    data.reserve(children->count());
    for (NSObject& each : *children)
        data.push_back(nodeIn(each).data_);
    children->sortUsingKeys(data, "compare:"_sel);
}

void QVLNode::sortChildrenByKey(Selector key, bool descending) {
    keep(key);
    const RefPtr<NSMutableArray> children = list();
    if (!children)
        return;
    std::vector<id> keys;
    keys.reserve(children->count());
    MessageSite site(sortKey.load(std::memory_order_relaxed));
    if (children->count() > 1)
        for (NSObject& each : *children)
            keys.push_back(site.send(each));
    else
        keys.resize(children->count());
    children->sortUsingKeys(keys, "compare:"_sel, descending);
}

// Depth first, the first child's subtree before the second one's.
void QVLNode::sortBelow(Selector comparator) {
    std::vector<Ref<QVLNode>> waiting{*this};
    while (!waiting.empty()) {
        const Ref<QVLNode> node = std::move(waiting.back());
        waiting.pop_back();
        node->sortChildrenBy(comparator);
        for (NSUInteger i = node->numberOfChildren(); i-- > 0;)
            waiting.emplace_back(nodeIn((*node->list())[i]));
    }
}

void QVLNode::recursiveSortChildren() { sortBelow("compare:"_sel); }
void QVLNode::sortChildrenWithSelector(Selector key) { sortChildrenByKey(key, false); }
void QVLNode::resortChildrenWithSelector(Selector key) { sortChildrenByKey(key, true); }

void QVLNode::recursiveSortChildrenWithSelector(Selector comparator) {
    keep(comparator);
    sortBelow(comparator);
}

// --- Messages to a whole tree ----------------------------------------------------------------------------------------

template <class... A> void QVLNode::performBelow(Selector selector, const A&... arguments) {
    struct Nothing {};
    MessageSite site(selector);
    detail::builtFrom<Nothing>(
        *this,
        [&](NSObject& object, NSObject*, const Composite*& descend) {
            descend = &nodeIn(object);
            site.send(object, arguments...);
            return Nothing();
        },
        [](Nothing, NSObject*, NSUInteger, Nothing) {});
}

void QVLNode::recursiveMakeChildrenPerformSelector_withObject(Selector selector, id object) {
    performBelow(selector, object);
}

void QVLNode::recursiveMakeChildrenPerformSelector_withObject_withObject(Selector selector, id first, id second) {
    performBelow(selector, first, second);
}

}  // namespace tovi
