#pragma once

#include <ToviFoundationKit/nodes/QVLNode.h>

namespace tovi {

/// A tree node that does not hold its parent, and that leaves its earlier parent when it is added as a child. A tree
/// lives as long as its root is held. Otherwise it is as QVLNode.
///
/// A node that goes clears the parent links of its children. The parent link of any other node (one whose parent's list
/// does not hold it) dangles once the parent has gone: whoever makes one sees to it. From an archive such a link comes
/// back as nil.
class TOVI_EXPORT QVLNode2 : public QVLNode {
    TOVI_DECLARE_CLASS(QVLNode2)

public:
    static Ref<QVLNode2> init();
    static Ref<QVLNode2> initWithData(id data);
    static Ref<QVLNode2> initWithData_parent_children(id data, RefPtr<QVLNode> parent, RefPtr<NSMutableArray> children);
    static Ref<QVLNode2> treeNodeWithData(id data);

    /// Inserts the node, then sends it `removeFromParent`, then sets its parent. So a node that is a child of the
    /// receiver already ends outside the list, with every child equal to it, and with the receiver as its parent.
    void insertChild_atIndex(RefPtr<QVLNode> node, NSInteger index) override;
    /// The same with the nodes that the list holds at the beginning: all are inserted, then all leave their parents,
    /// then all get their new one.
    void insertChildren_atIndex(const NSArray& nodes, NSInteger index) override;
    void removeChild(const QVLNode& node) final;  ///< every child equal to the node; their parents are cleared
    void removeAllChildren() override;            ///< each child leaves its parent, whichever that is

protected:
    QVLNode2() noexcept : QVLNode(ParentLink::Borrowed) {}

private:
    static void leaveParents(const NSArray& nodes);
    void removeEqualChildren(const NSArray& nodes);
};

}  // namespace tovi
