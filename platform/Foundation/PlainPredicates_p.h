#pragma once

#include <ToviFoundationKit/Foundation/NSPredicate.h>

namespace tovi {

/// TRUEPREDICATE and FALSEPREDICATE.
class NSTruthPredicate final : public NSPredicate {
    TOVI_DECLARE_CLASS(NSTruthPredicate)

public:
    static NSTruthPredicate& of(bool value);

private:
    NSTruthPredicate() noexcept : NSPredicate(FromArchive()) {}
    explicit NSTruthPredicate(bool value) noexcept : NSPredicate(Parts()), value_(value) {}

    bool isSameAlone(const PredicateNode& other) const override;
    NSUInteger hashAlone() const override { return value_; }
    Ref<PredicateNode> withParts(Parts) const override { return of(value_); }
    void write(StringBuilder& out, std::size_t index) const override;
    Binding binding() const override { return Binding::Truth; }
    void compile(detail::PredicateCompiler& out, std::size_t index) const override;
    Ref<NSArray> archivedFields() const override;
    bool setArchivedFields(const NSArray& fields) override;

    bool value_ = false;
};

/// A callable as a predicate.
class NSBlockPredicate final : public NSPredicate {
    TOVI_DECLARE_CLASS(NSBlockPredicate)

public:
    static Ref<NSBlockPredicate> withBlock(Block block) { return adopt(*new NSBlockPredicate(std::move(block))); }
    bool ask(NSObject* object, const NSDictionary* variables) const { return block_(object, variables); }

private:
    explicit NSBlockPredicate(Block block) noexcept : NSPredicate(Parts()), block_(std::move(block)) {}

    bool isSameAlone(const PredicateNode& other) const override { return this == &other; }
    NSUInteger hashAlone() const override { return NSObject::hash(); }
    Ref<PredicateNode> withParts(Parts) const override { return share(*this); }
    void write(StringBuilder& out, std::size_t index) const override;
    Binding binding() const override { return Binding::Truth; }
    void compile(detail::PredicateCompiler& out, std::size_t index) const override;
    Ref<NSArray> archivedFields() const override;
    bool setArchivedFields(const NSArray&) override { return false; }

    Block block_;
};

}  // namespace tovi
