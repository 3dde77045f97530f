#pragma once

#include <span>
#include <vector>

#include <ToviFoundationKit/Runtime/Message.h>
#include <ToviFoundationKit/Runtime/NSString.h>

namespace tovi {

/// The types of an operation: its result and its arguments, the receiver ("@") and the selector (":") being arguments 0
/// and 1. Encodings: c s i l q C S I L Q (integers by size, unsigned in capitals), f d, @ object, : selector, v
/// nothing,
/// ^? function, ^v pointer, {_NSRange=QQ} and the other structures.
class TOVI_EXPORT NSMethodSignature final : public NSObject {
    TOVI_DECLARE_CLASS(NSMethodSignature)

public:
    static Ref<NSMethodSignature> forMethod(const Method& method);

    NSUInteger numberOfArguments() const noexcept { return method_.argumentCount + 2U; }
    /// Raises NSInvalidArgumentException when there is no such argument.
    const char* getArgumentTypeAtIndex(NSUInteger index) const;
    const char* methodReturnType() const noexcept { return method_.encodings[0]; }

    bool isEqual(const NSObject* other) const override;  ///< the same types in the same order
    NSUInteger hash() const override;

private:
    friend class NSInvocation;
    explicit NSMethodSignature(const Method& method) noexcept : method_(method) {}
    std::span<const char* const> types() const noexcept { return {method_.encodings, method_.argumentCount + 3U}; }

    const Method& method_;
};

/// A message put together beforehand: target, selector and arguments, to be sent later and more than once. Object
/// arguments and the target are retained.
class TOVI_EXPORT NSInvocation final : public NSObject {
    TOVI_DECLARE_CLASS(NSInvocation)

public:
    static Ref<NSInvocation> invocationWithMethodSignature(const NSMethodSignature& signature);

    Ref<NSMethodSignature> methodSignature() const { return signature_; }
    id target() const { return target_; }
    void setTarget(NSObject* target) { target_ = target; }
    Selector selector() const noexcept { return selector_; }
    void setSelector(Selector selector) noexcept { selector_ = selector; }

    /// Sets an argument; 2 is the first after the receiver and the selector, which 0 and 1 stand for. The value is
    /// converted to the argument's type. Raises NSInvalidArgumentException when there is no such argument or no
    /// conversion. Arguments that were never set are nil or 0.
    template <class T> void setArgument_atIndex(const T& value, NSUInteger index) {
        setValue_atIndex(detail::asValue<T>(value), index);
    }
    void setValue_atIndex(const MessageValue& value, NSUInteger index);
    MessageValue valueAtIndex(NSUInteger index) const;

    /// Sends the message. A nil target makes it do nothing, the result being nil or 0. Raises
    /// NSInvalidArgumentException where the target does not respond to the selector, takes another number of arguments
    /// than the signature has, or arguments that these do not convert to.
    void invoke();
    void invokeWithTarget(NSObject* target);

    /// The result of the last `invoke`, converted to R.
    template <class R> R returnValue() const {
        if constexpr (std::same_as<R, id>)
            return result_.boxed();
        else
            return static_cast<R>(result_.converted(detail::kindOf<R>(), detail::encodingOf<R>())
                                      .template raw<detail::CanonicalArgument<R>>());
    }

private:
    explicit NSInvocation(const NSMethodSignature& signature);
    std::size_t position(NSUInteger index, const char* operation) const;

    Ref<NSMethodSignature> signature_;
    id target_;
    Selector selector_;
    std::vector<MessageValue> arguments_;  ///< from position 2 on
    MessageValue result_;
};

}  // namespace tovi
