#pragma once

#include <ToviFoundationKit/Foundation/Composite.h>
#include <ToviFoundationKit/Foundation/NSMutableDictionary.h>

namespace tovi {

/// A tree node whose children are reached by keys: one data object, a dictionary of children, and a parent, which the
/// node holds as QVLNode does; `takeApart` frees a whole tree. What QVLNode says about circles, classes, depth and
/// threads holds here too.
///
/// Keys are copied, as a dictionary does; where an operation visits all of them it does so in the dictionary's order.
class TOVI_EXPORT QVLHashNode : public detail::Composite {
    TOVI_DECLARE_CLASS(QVLHashNode)

public:
    static Ref<QVLHashNode> init();
    /// The node holds a mutable copy of the data, which must have one; `setNodeData` keeps the object itself.
    static Ref<QVLHashNode> initWithData(id data);
    /// Takes the dictionary's entries over into one of its own; nil leaves the node without. The children's parent
    /// links are not touched, and the node is not added to its parent's children.
    static Ref<QVLHashNode> initWithData_parent_children(id data, RefPtr<QVLHashNode> parent,
                                                         RefPtr<NSDictionary> children);
    /// The inverse of `dictionaryRepresentation`. The data is the value itself, not a copy. Raises
    /// NSInvalidArgumentException where there should be a dictionary and is another object.
    static Ref<QVLHashNode> initWithDictionaryRepresentation(const NSDictionary& representation);

    RefPtr<QVLHashNode> nodeParent() const noexcept { return static_cast<QVLHashNode*>(parent()); }
    virtual void setNodeParent(RefPtr<QVLHashNode> parent);  ///< sets the link and nothing else
    /// The dictionary itself; nil as long as no child was added.
    RefPtr<NSMutableDictionary> children() const noexcept { return dictionary(); }
    RefPtr<QVLHashNode> childForKey(const NSObject& key) const;  ///< nil when there is none
    NSUInteger numberOfChildren() const noexcept;

    /// A child that stood under the key is replaced; it keeps its parent link.
    virtual void addChild_forKey(QVLHashNode& node, NSObject& key);
    /// A new QVLHashNode, whatever the receiver's class, made as by `initWithData`.
    void addChildWithData_forKey(id data, NSObject& key);
    /// Clears the child's parent. Nothing happens when there is none.
    virtual void removeChildForKey(const NSObject& key);
    /// Takes the receiver out of its parent's dictionary, wherever it stands there, and all links of the tree below
    /// apart: every node there, the receiver included, ends without parent and children.
    void takeApart() override;

    Ref<QVLHashNode> rootNode() const { return static_cast<QVLHashNode&>(root()); }
    bool isDescendantOfNode(
        const RefPtr<QVLHashNode>& node) const noexcept;  ///< every node is one of itself; nil: false
    bool isDescendantOfNodeInArray(const NSArray& nodes) const { return isDescendantOfAnyOf(nodes); }

    bool isEqualToNode(const QVLHashNode& other) const { return hasEqualParts(other); }
    /// A mutable dictionary: under "QVLHashNode__nodeChildren" the children's representations by their keys, where the
    /// dictionary of children exists (it may be empty); under "QVLHashNode__nodeData" a mutable copy of the data,
    /// unless nil.
    Ref<NSMutableDictionary> dictionaryRepresentation() const;

protected:
    explicit QVLHashNode(ParentLink link = ParentLink::Held) noexcept : Composite(link) {}
    /// What the named constructors do, for those of a host's class.
    using Composite::setUp;
    void setUp(const id& data, QVLHashNode* parent, RefPtr<NSDictionary> children);
    void setUpFromRepresentation(const NSDictionary& representation);

private:
    struct Messages;

    NSMutableDictionary* dictionary() const noexcept { return static_cast<NSMutableDictionary*>(children_.get()); }
    static QVLHashNode& nodeIn(NSObject& object);
    /// The data's description and a line break, then a line for each child: "\t childKey:<key> -- <description>\n".
    bool describe(StringBuilder& text) const override;
    void addCopiedChild(const Ref<NSObject>& child, NSObject* key) override;
    void takeStored(id parent, id children) override;
};

}  // namespace tovi
