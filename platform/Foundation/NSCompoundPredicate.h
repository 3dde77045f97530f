#pragma once

#include <ToviFoundationKit/Foundation/NSArray.h>
#include <ToviFoundationKit/Foundation/NSPredicate.h>

namespace tovi {

enum NSCompoundPredicateType : NSUInteger { NSNotPredicateType = 0, NSAndPredicateType = 1, NSOrPredicateType = 2 };

/// Predicates joined. They are asked in their order, as long as the answer is open.
class TOVI_EXPORT NSCompoundPredicate final : public NSPredicate {
    TOVI_DECLARE_CLASS(NSCompoundPredicate)

public:
    /// A list for NOT must have one predicate, else this raises NSInvalidArgumentException. The AND of none is true,
    /// the OR of none false; of a single one both are equal to that.
    static Ref<NSCompoundPredicate> initWithType_subpredicates(NSCompoundPredicateType type,
                                                               const NSArray& subpredicates);
    static Ref<NSCompoundPredicate> andPredicateWithSubpredicates(const NSArray& subpredicates);
    static Ref<NSCompoundPredicate> orPredicateWithSubpredicates(const NSArray& subpredicates);
    static Ref<NSCompoundPredicate> notPredicateWithSubpredicate(NSPredicate& predicate);

    NSCompoundPredicateType compoundPredicateType() const noexcept { return type_; }
    Ref<NSArray> subpredicates() const { return listOfParts(); }

private:
    friend class detail::PredicateParser;
    NSCompoundPredicate() noexcept : NSPredicate(FromArchive()) {}
    NSCompoundPredicate(NSCompoundPredicateType type, Parts parts) noexcept
        : NSPredicate(std::move(parts)), type_(type) {}
    bool isJunction() const noexcept { return type_ != NSNotPredicateType && parts_.size() > 1; }

    const PredicateNode& essence() const override;
    bool isSameAlone(const PredicateNode& other) const override;
    NSUInteger hashAlone() const override { return 0xC0 + type_; }
    Ref<PredicateNode> withParts(Parts parts) const override;
    void write(StringBuilder& out, std::size_t index) const override;
    Binding binding() const override { return isJunction() ? Binding::Junction : Binding::Truth; }
    bool parenthesizes(std::size_t, Binding part) const override { return part == Binding::Junction; }
    void compile(detail::PredicateCompiler& out, std::size_t index) const override;
    Ref<NSArray> archivedFields() const override;
    bool setArchivedFields(const NSArray& fields) override;

    NSCompoundPredicateType type_ = NSAndPredicateType;
};

}  // namespace tovi
