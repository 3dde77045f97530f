#pragma once

#include <span>

#include <ToviFoundationKit/Runtime/NSString.h>

namespace tovi::detail {

/// A function of expressions.
struct PredicateFunction {
    /// How a call is written: `name(a, b)`, `a + b`, `CAST(a, b)`, `a[b]` or `a[FIRST]`.
    enum class Form : unsigned char { Call, Infix, Cast, Index, Symbol };
    static constexpr unsigned any = ~0U;

    std::u16string_view name;  ///< with its colons
    unsigned argumentCount;    ///< or any, but not none
    bool takesNil;             ///< where it does not, its value for nil is nil
    id (*apply)(std::span<const id> arguments);
    Form form = Form::Call;
    std::u16string_view symbol{};  ///< between the arguments, or in the brackets

    /// Null where there is none. A colon at the end may be missing; where the name has a meaning without one, too, the
    /// number of arguments decides.
    static const PredicateFunction* named(std::u16string_view name, std::size_t arguments = 0) noexcept;
    /// The one that is written so, between its arguments or in brackets.
    static const PredicateFunction* written(Form form, std::u16string_view symbol) noexcept;

    bool takes(std::size_t count) const noexcept { return argumentCount == any ? count > 0 : count == argumentCount; }
    id call(std::span<const id> arguments) const;
};

/// The left set with (without, ...) the objects of the right collection.
Ref<NSObject> unionOf(const NSObject& left, const NSObject& right);
Ref<NSObject> intersectionOf(const NSObject& left, const NSObject& right);
Ref<NSObject> differenceOf(const NSObject& left, const NSObject& right);

/// Sends a message with objects as arguments; nil to nil. Raises NSInvalidArgumentException when the selector is not
/// known.
id perform(NSObject* receiver, const NSString& selector, std::span<const id> arguments);

}  // namespace tovi::detail
