#pragma once

#include <ToviFoundationKit/Foundation/Composite.h>
#include <ToviFoundationKit/Foundation/NSMutableArray.h>
#include <ToviFoundationKit/Foundation/NSMutableDictionary.h>

namespace tovi {

/// A tree node: one data object, an ordered list of child nodes, and a parent.
///
/// A node holds its children and its parent, so a tree keeps itself alive. Whoever makes one breaks that circle, with
/// `removeChild`, `removeAllChildren` or `removeFromParent`, or for the whole tree at once with `takeApart`. QVLNode2
/// is the node that does not hold its parent.
///
/// Children are looked up by equality, unless the name says "identical"; nodes are equal when their data and their
/// children are. Of two equal siblings, every such look-up means the first.
///
/// Nothing checks that a node is added once only, that it leaves an earlier parent, or that it is not its own ancestor.
/// In a circle of children `isEqual`, `hash`, `copy`, the dictionary form and the recursive operations do not end, and
/// in a circle of parents neither do `rootNode`, `numberOfParents` and the tests for descendants; description,
/// archives, `takeApart` and destruction are safe. An object in the list of children that is no node raises
/// NSInvalidArgumentException when it is met.
///
/// No operation needs the machine's stack for the depth of a tree. A tree belongs to one thread at a time, even for
/// reading. New nodes "of the receiver's class" are made by its constructor without arguments, a host's class included.
class TOVI_EXPORT QVLNode : public detail::Composite {
    TOVI_DECLARE_CLASS(QVLNode)

public:
    static Ref<QVLNode> init();
    /// The node holds a mutable copy of the data. Data of a class without one, such as a number, raises
    /// NSInvalidArgumentException; `setNodeData` has no such limit. Nil data stays nil.
    static Ref<QVLNode> initWithData(id data);
    /// Takes the list itself for its storage; a node without one (nil) ignores insertions. The children's parent links
    /// are not touched, and the node is not added to its parent's children.
    static Ref<QVLNode> initWithData_parent_children(id data, RefPtr<QVLNode> parent, RefPtr<NSMutableArray> children);
    /// A node of the given class whose list of children is immutable: adding to it raises NSInvalidArgumentException.
    static Ref<QVLNode> treeNodeWithData(id data, const Class& nodeClass = classObject());

    RefPtr<QVLNode> nodeParent() const noexcept { return static_cast<QVLNode*>(parent()); }
    /// Sets the link and nothing else: no list of children changes.
    virtual void setNodeParent(RefPtr<QVLNode> parent);
    /// The list itself, not a copy; nil for a node that was made without.
    RefPtr<NSMutableArray> children() const;

    // Adding. An index that is negative or past the end appends. A nil node is ignored. A node that holds no list gives
    // what is added a parent and nothing else.

    virtual void insertChild_atIndex(RefPtr<QVLNode> node, NSInteger index);
    virtual void insertChildren_atIndex(const NSArray& nodes, NSInteger index);  ///< as a block, in their order
    void appendChild(RefPtr<QVLNode> node) { insertChild_atIndex(std::move(node), -1); }
    void prependChild(RefPtr<QVLNode> node) { insertChild_atIndex(std::move(node), 0); }
    void appendChildren(const NSArray& nodes) { insertChildren_atIndex(nodes, -1); }
    void prependChildren(const NSArray& nodes) { insertChildren_atIndex(nodes, 0); }
    void appendChildWithData(id data);  ///< a new node of the receiver's class, made as by `initWithData`
    void prependChildWithData(id data);

    // Removing.

    /// Clears the parent of the first child that is equal to the node, and removes every occurrence of that very child.
    /// Nothing happens when no child is equal.
    virtual void removeChild(const QVLNode& node);
    virtual void removeAllChildren();
    void removeFromParent();  ///< `removeChild` of the parent; nothing without one
    /// Clears the parent of every node of the list, then removes every occurrence of each, by identity.
    void _removeChildrenIdenticalTo(const NSArray& nodes);
    /// Leaves the parent (by identity, unless its list is immutable), then takes all links of the tree below apart:
    /// every node there, the receiver included, ends without parent and children. Lists of children that others hold
    /// are emptied, unless immutable.
    void takeApart() override;
    void breakReferenceCycles() noexcept override;

    // Finding one's way.

    NSUInteger numberOfChildren() const noexcept;
    NSUInteger indexOfChild(const NSObject& node) const;  ///< NSNotFound when no child is equal
    NSUInteger indexOfChildIdenticalTo(const NSObject& node) const;
    RefPtr<QVLNode> childAtIndex(NSUInteger index) const;  ///< raises NSRangeException; nil only without a list
    /// Raises NSRangeException when there is no child, unlike `lastChild`; nil only without a list.
    RefPtr<QVLNode> firstChild() const { return childAtIndex(0); }
    RefPtr<QVLNode> lastChild() const;
    /// Nil for a root and at the end. They raise NSRangeException where the parent's list does not hold the receiver.
    RefPtr<QVLNode> nextSiblingNode() const;
    RefPtr<QVLNode> previousSiblingNode() const;
    Ref<QVLNode> rootNode() const { return static_cast<QVLNode&>(root()); }
    /// Climbs at most `levels` + 1 parents: 0 gives the parent, a negative number the receiver.
    Ref<QVLNode> rootNodeAtIndex(NSInteger levels) const;
    bool isDescendantOfNode(const RefPtr<QVLNode>& node) const noexcept;  ///< every node is one of itself; nil: false
    bool isDescendantOfNodeInArray(const NSArray& nodes) const { return isDescendantOfAnyOf(nodes); }
    /// Reduces a list of nodes, taken in its order: each one climbs as long as its parent is still in the list, and
    /// goes into the answer unless it is a descendant of a node there. What is in the answer stays, so a node that
    /// comes before an ancestor other than its parent is answered along with it: of a grandchild G and A, [G, A] gives
    /// both, [A, G] gives A alone.
    static Ref<NSMutableArray> minimumNodeCoverFromNodesInArray(const NSArray& nodes);

    // As a value. See detail::Composite for isEqual, hash, copy and archives.

    bool isEqualToNode(const QVLNode& other) const { return hasEqualParts(other); }
    /// A mutable dictionary with the data itself under "data", unless nil, and, where there are children, a dictionary
    /// of theirs under "childrens", by the numbers 0, 1, 2 ...
    Ref<NSMutableDictionary> QVLNodeToDictionary() const;
    /// The inverse. Makes plain QVLNodes, which hold mutable copies of the data. Of the "childrens" dictionary's n keys
    /// the numbers below n count; one that is missing gives an empty node. Raises NSInvalidArgumentException where
    /// there should be a dictionary and is another object.
    static Ref<QVLNode> QVLNodeFromDictionary(const NSDictionary& dictionary);

    // Sorting; stable. The key selector is one for the whole process: a null selector means the one given last.

    NSInteger compare(const QVLNode& other) const;  ///< the answer of the data's `compare:`
    void recursiveSortChildren();                   ///< by `compare:`, the receiver's children first, then theirs
    /// Sorts by what the children answer to the key selector, compared by `compare:`; not recursive.
    void sortChildrenWithSelector(Selector key);
    void resortChildrenWithSelector(Selector key);  ///< in descending order; ties keep their order, too
    /// Sorts by sending the selector itself to a child with another ("compare:"), unlike the two above, though it is
    /// also kept as the key selector; null is sent as it is, which raises NSInvalidArgumentException. Recursive.
    void recursiveSortChildrenWithSelector(Selector comparator);

    /// Sends the message to the receiver, then to every node below it, parents before their children.
    void recursiveMakeChildrenPerformSelector_withObject(Selector selector, id object);
    void recursiveMakeChildrenPerformSelector_withObject_withObject(Selector selector, id first, id second);

protected:
    explicit QVLNode(ParentLink link = ParentLink::Held) noexcept : Composite(link) {}
    ~QVLNode() override;
    /// What the named constructors do, for those of a host's class. They do not call `setNodeParent`.
    using Composite::setUp;
    void setUp(const id& data, QVLNode* parent, RefPtr<NSMutableArray> children);

private:
    friend class QVLNode2;
    struct Messages;

    RefPtr<NSMutableArray> list() const noexcept { return static_cast<NSMutableArray*>(children_.get()); }
    RefPtr<NSMutableArray> listToChange();
    void insertIntoList(QVLNode& node, NSInteger index);
    void insertIntoList(const NSArray& nodes, NSInteger index);
    void noteInList() noexcept;
    void forgetList() noexcept;
    void letGoOfChildren() noexcept;
    static QVLNode& nodeIn(NSObject& object);
    bool describe(StringBuilder& text) const override;
    void addCopiedChild(const Ref<NSObject>& child, NSObject* key) override;
    id storedChildren() const override;
    void takeStored(id parent, id children) override;
    void takeStoredParent(QVLNode* parent) noexcept;
    void proveToChild(NSObject& child) noexcept;
    Ref<QVLNode> newNode(id data) const;
    void removeChildAtIndex(NSUInteger index);
    void sortChildrenBy(Selector comparator);
    void sortChildrenByKey(Selector key, bool descending);
    void sortBelow(Selector comparator);
    template <class... A> void performBelow(Selector selector, const A&... arguments);
};

}  // namespace tovi
