#include <algorithm>
#include <unordered_map>

#include <ToviFoundationKit/Extensions/ElementTable_p.h>
#include <ToviFoundationKit/nodes/QVLNode.h>

namespace tovi {

namespace {

/// The nodes of a list and all nodes above them, as far as their parent links say, with an answer to "is an ancestor of
/// this one, or itself, marked?" in logarithmic time. Each node covers a run of places, its descendants' places among
/// them; a mark counts for all the places in its node's run.
class Ancestry {
public:
    explicit Ancestry(const NSArray& nodes) {
        for (const QVLNode& each : nodes.each<const QVLNode>())
            enter(each);
        assignPlaces();
        marks_.assign(parents_.size() + 1, 0);
    }

    void mark(const QVLNode& node) {
        const std::size_t index = indexes_.at(&node);
        count(begins_[index], 1);
        count(begins_[index] + sizes_[index], -1);
    }

    bool isBelowMark(const QVLNode& node) const {
        int sum = 0;
        for (std::size_t i = begins_[indexes_.at(&node)] + 1; i > 0; i &= i - 1)
            sum += marks_[i - 1];
        return sum > 0;
    }

private:
    static constexpr std::size_t none = ~std::size_t(0);

    // Goes up to the first node that is known. A circle of parents ends where it closes.
    void enter(const QVLNode& node) {
        const std::size_t start = parents_.size();
        for (const QVLNode *each = &node, *parent; each; each = parent) {
            parent = each->nodeParent();
            const auto [found, isNew] = indexes_.try_emplace(each, parents_.size());
            const bool closesCircle = !isNew && found->second >= start;
            if (each != &node && !closesCircle)
                parents_.back() = found->second;
            if (!isNew)
                return;
            parents_.push_back(none);
        }
    }

    void assignPlaces() {
        std::vector<std::size_t> order = parentsFirst();
        sizes_.assign(parents_.size(), 1);
        for (auto each = order.rbegin(); each != order.rend(); ++each)
            if (parents_[*each] != none)
                sizes_[parents_[*each]] += sizes_[*each];
        begins_.resize(parents_.size());
        std::vector<std::size_t> next(parents_.size());
        std::size_t nextTree = 0;
        for (const std::size_t each : order) {
            std::size_t& place = parents_[each] == none ? nextTree : next[parents_[each]];
            begins_[each] = place;
            place += sizes_[each];
            next[each] = begins_[each] + 1;
        }
    }

    std::vector<std::size_t> parentsFirst() const {
        std::vector<std::size_t> order;
        std::vector<bool> isPlaced(parents_.size());
        std::vector<std::size_t> path;
        for (std::size_t i = 0; i < parents_.size(); ++i) {
            for (std::size_t each = i; each != none && !isPlaced[each]; each = parents_[each]) {
                isPlaced[each] = true;
                path.push_back(each);
            }
            order.insert(order.end(), path.rbegin(), path.rend());
            path.clear();
        }
        return order;
    }

    void count(std::size_t place, int change) {
        for (std::size_t i = place + 1; i <= marks_.size(); i += i & (~i + 1))
            marks_[i - 1] += change;
    }

    std::unordered_map<const QVLNode*, std::size_t> indexes_;
    std::vector<std::size_t> parents_, sizes_, begins_;
    std::vector<int> marks_;  ///< sums over runs of places, as a binary indexed tree keeps them
};

/// The nodes that are still to be looked at: a list from which a node goes with all its occurrences.
class Work {
public:
    explicit Work(const NSArray& nodes) : nodes_(nodes), table_(nodes), isGone_(nodes.count()) {}

    /// Takes the first one out, though not its other occurrences.
    QVLNode* takeFirst() {
        while (next_ < nodes_.count() && isGone_[first(nodes_[next_])])
            ++next_;
        return next_ < nodes_.count() ? static_cast<QVLNode*>(&nodes_[next_++]) : nullptr;
    }

    bool contains(const QVLNode& node) const {
        const std::uint32_t index = first(node);
        if (index == table_.none || isGone_[index])
            return false;
        // The occurrence that was taken last does not count.
        return &node != &nodes_[next_ - 1] || table_.next(static_cast<std::uint32_t>(next_ - 1)) != table_.none;
    }

    void removeAll(const QVLNode& node) {
        if (const std::uint32_t index = first(node); index != table_.none)
            isGone_[index] = true;
    }

private:
    std::uint32_t first(const NSObject& node) const { return table_.first(node); }

    const NSArray& nodes_;
    ElementTable<ByIdentity> table_;
    std::vector<bool> isGone_;  ///< by the first index of a node
    NSUInteger next_ = 0;
};

}  // namespace

Ref<NSMutableArray> QVLNode::minimumNodeCoverFromNodesInArray(const NSArray& nodes) {
    const Ref<NSArray> list = NSArray::arrayWithArray(nodes);
    Ref<NSMutableArray> cover = NSMutableArray::array();
    Ancestry ancestry(list);
    Work work(list);
    while (QVLNode* node = work.takeFirst()) {
        for (QVLNode* parent; (parent = node->nodeParent()) && work.contains(*parent); node = parent)
            work.removeAll(*node);
        if (!ancestry.isBelowMark(*node)) {
            cover->addObject(*node);
            ancestry.mark(*node);
        }
        work.removeAll(*node);
    }
    return cover;
}

}  // namespace tovi
