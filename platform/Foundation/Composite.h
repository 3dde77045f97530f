#pragma once

#include <ToviFoundationKit/Runtime/Class.h>

namespace tovi {

class NSArray;
class NSCoder;
class StringBuilder;

namespace detail {

/// What the classes of tree nodes have in common: an object that is its data and its children, the latter in a list or
/// under keys, and that may stand below a parent. Equality, hash, copies and description come from these parts; they
/// follow children to any depth without deep recursion, and the first two also data, lists, dictionaries and sets. A
/// class that overrides one of them is asked instead, for itself and as a child.
class TOVI_EXPORT Composite : public NSObject {
public:
    using CompositeBase = Composite;

    id nodeData() const noexcept { return data_; }
    /// Keeps the object itself, not a copy.
    void setNodeData(id data) noexcept { data_ = std::move(data); }
    NSUInteger numberOfParents() const noexcept;  ///< the steps to the root, 0 for the root itself

    /// True for the receiver itself, and for an object of its class or one below it whose data and children are equal.
    /// Parents do not count. The receiver's data is asked, so one without data is equal to no other. No children and an
    /// empty collection of children are the same.
    bool isEqual(const NSObject* other) const override;
    NSUInteger hash() const override;  ///< the data's XOR the children's
    /// A node of the receiver's class, without parent, that holds a mutable copy of the data and copies of the
    /// children.
    Ref<NSObject> copy() const override;
    Ref<NSString> description() const override;

    /// The parent, the children and the data: under the keys "nodeParent", "nodeChildren" and "nodeData", or in this
    /// order where the coder has no keys. So whoever archives one node archives its whole tree.
    virtual void encodeWithCoder(NSCoder& coder) const;
    virtual void initWithCoder(NSCoder& coder);
    virtual void takeApart() = 0;
    /// Lets go of the parent, the children and the data.
    virtual void breakReferenceCycles() noexcept;

protected:
    enum class ParentLink : bool { Borrowed, Held };
    explicit Composite(ParentLink link) noexcept : holdsParent_(link == ParentLink::Held) {}
    ~Composite() override;
    bool holdsParent() const noexcept { return holdsParent_; }

    void setUp(const id& data);  ///< holds a mutable copy of it; nil stays nil
    bool hasEqualParts(const Composite& other) const;
    void setParent(RefPtr<Composite> parent) noexcept;
    Composite& root() const noexcept;
    bool isDescendantOf(const NSObject* node) const noexcept;
    bool isDescendantOfAnyOf(const NSArray& nodes) const;
    /// A new instance of the receiver's class; raises NSInvalidArgumentException where that needs arguments.
    Ref<Composite> newOfSameClass() const;
    /// For `copy`: how a new one gets its children's copies. The key is null where the children are a list.
    virtual void addCopiedChild(const Ref<NSObject>& child, NSObject* key) = 0;
    /// For `description`: writes what stands before the keys and children, and answers whether these are to follow.
    virtual bool describe(StringBuilder& text) const = 0;
    /// For archives: the children as they are stored, and as they come back.
    virtual id storedChildren() const { return children_; }
    virtual void takeStored(id parent, id children) = 0;

private:
    const bool holdsParent_;

protected:
    /// Null as long as an archive says so alone (see QVLNode::takeStored).
    Composite* parent() const noexcept { return isUnproven_ ? nullptr : parent_; }

    // A node's own marks; they lie here because there is room.
    bool hasNoList_ : 1 = false;
    bool sharesList_ : 1 = false;
    bool isInList_ : 1 = false;
    bool isInLists_ : 1 = false;
    bool isFromArchive_ : 1 = false;
    bool isUnproven_ : 1 = false;

    Composite* parent_ = nullptr;
    id data_;
    id children_;  ///< a list, a dictionary, or nil

private:
    friend struct CompositeAccess;
};

}  // namespace detail
}  // namespace tovi
