#pragma once

#include <atomic>
#include <vector>

#include <ToviFoundationKit/Runtime/NSString.h>

namespace tovi {

class NSArray;
class NSCoder;
class NSDictionary;
class StringBuilder;

namespace detail {

class PredicateCompiler;
class PredicateEvaluator;
class PredicateParser;

/// What predicates and expressions have in common: both are immutable trees of predicates and expressions. A node tells
/// of itself alone; what follows from that for its tree is done here, to any depth without deep recursion.
class TOVI_EXPORT PredicateNode : public NSObject {
public:
    bool isEqual(const NSObject* other) const override;
    NSUInteger hash() const override;
    Ref<NSString> description() const override;
    Ref<NSObject> copy() const override;  ///< the receiver itself

    void encodeWithCoder(NSCoder& coder) const;
    void initWithCoder(NSCoder& coder);
    void breakReferenceCycles() noexcept { parts_.clear(); }

protected:
    using Parts = std::vector<Ref<PredicateNode>>;
    /// How tightly the text of a node holds together.
    enum class Binding : unsigned char { Junction, Truth, Infix, Literal, Path, Operand };

    explicit PredicateNode(Parts parts = {}) noexcept : parts_(std::move(parts)), isComplete_(true) {}
    struct FromArchive {};
    explicit PredicateNode(FromArchive) noexcept {}
    ~PredicateNode() override;

    Ref<PredicateNode> withVariables(const NSDictionary& variables) const;
    /// The objects of a list as parts; raises NSInvalidArgumentException unless they are nodes.
    static Parts partsFrom(const NSArray& list);
    Ref<NSArray> listOfParts(std::size_t from = 0) const;

    // What a node tells of itself.

    /// What the node comes to: another node where it adds nothing to that.
    virtual const PredicateNode& essence() const { return *this; }
    /// Apart from the parts. Asked of a node of the same class.
    virtual bool isSameAlone(const PredicateNode& other) const = 0;
    virtual NSUInteger hashAlone() const = 0;
    /// The same with other parts.
    virtual Ref<PredicateNode> withParts(Parts parts) const = 0;
    /// What a variable of that name is replaced with, if the node is one; nil otherwise.
    virtual const NSString* variableName() const { return nullptr; }
    /// The name that means something of its own in the last part.
    virtual const NSString* boundName() const { return nullptr; }

    /// Writes what stands before the part of that index, or behind all parts.
    virtual void write(StringBuilder& out, std::size_t index) const = 0;
    virtual Binding binding() const = 0;
    /// Whether the part of that index, which binds so, needs parentheses.
    virtual bool parenthesizes(std::size_t, Binding) const { return false; }

    /// Emits what is to be done before the part of that index is, or after all parts.
    virtual void compile(PredicateCompiler& out, std::size_t index) const = 0;

    /// Everything but the parts, and taking that back; answers false when the fields or the parts cannot be the node's.
    virtual Ref<NSArray> archivedFields() const = 0;
    virtual bool setArchivedFields(const NSArray& fields) = 0;

    Parts parts_;

private:
    friend class PredicateCompiler;
    friend class PredicateLease;
    template <class Visit> static void walk(const PredicateNode& root, Visit visit);

    mutable std::atomic<PredicateEvaluator*> idle_ = nullptr;  ///< made when first used, and lent to one at a time
    bool isComplete_ = false;
};

}  // namespace detail
}  // namespace tovi
