#pragma once

#include <typeinfo>

#include <ToviFoundationKit/Runtime/Class.h>

namespace tovi {

namespace detail {

[[noreturn]] TOVI_EXPORT void raiseUnrecognizedSelector(const NSObject& receiver, Selector selector);
/// Checks the number of arguments, converts them and the result.
TOVI_EXPORT MessageValue sendConverting(const Method& method, NSObject& receiver, const MessageValue* arguments,
                                        std::size_t count);

inline const Method& methodFor(NSObject& receiver, Selector selector) {
    const Method* method = receiver.dispatchTable().find(selector);
    if (!method) [[unlikely]]
        raiseUnrecognizedSelector(receiver, selector);
    return *method;
}

/// An argument's type as it travels: objects passed as references count as objects, nullptr as nil.
template <class T> using Sent =
    std::conditional_t<std::is_base_of_v<NSObject, T> || std::is_null_pointer_v<T>, NSObject*, std::decay_t<T>>;

template <class T> CanonicalArgument<Sent<T>> asArgument(const T& value) {
    if constexpr (std::is_null_pointer_v<T>)
        return nullptr;
    else if constexpr (kindOf<Sent<T>>() != ValueKind::Object)
        return canonical<const Sent<T>&>(value);
    else if constexpr (isRef<T>)
        return value.get();
    else if constexpr (std::is_pointer_v<T>)
        return const_cast<std::remove_const_t<std::remove_pointer_t<T>>*>(value);
    else
        return const_cast<T*>(&value);
}

template <class T> MessageValue asValue(const T& value) {
    if constexpr (kindOf<Sent<T>>() == ValueKind::Object)
        return MessageValue(id(asArgument<T>(value)));
    else
        return MessageValue::of<Sent<T>>(value);
}

/// Sends to a method of other types than the message's.
template <class R, class... A>
[[gnu::noinline]] R sendBoxed(const Method& method, NSObject& receiver, const A&... arguments) {
    const std::array<MessageValue, sizeof...(A)> values{asValue<A>(arguments)...};
    [[maybe_unused]] MessageValue result = sendConverting(method, receiver, values.data(), sizeof...(A));
    if constexpr (std::same_as<R, id>)
        return result.boxed();
    else if constexpr (!std::is_void_v<R>)
        return static_cast<R>(result.converted(kindOf<R>(), encodingOf<R>()).template raw<CanonicalArgument<R>>());
}

/// Sends to a method that was looked up before.
template <class R, class... A> R sendResolved(const Method& method, NSObject& receiver, const A&... arguments) {
    if (method.code != signatureCode<R, Sent<A>...>) [[unlikely]]
        return sendBoxed<R, A...>(method, receiver, arguments...);
    const auto entry = reinterpret_cast<DirectEntry<R, Sent<A>...>>(method.direct);
    if constexpr (std::is_void_v<R>)
        entry(method, receiver, asArgument<A>(arguments)...);
    else
        return static_cast<R>(entry(method, receiver, asArgument<A>(arguments)...));
}

}  // namespace detail

/// Sends a message with typed arguments and a typed result: `send<NSInteger>(a, "compare:"_sel, b)`. Where the types
/// are those of the operation this costs little more than a virtual call; otherwise values are converted as
/// `performSelector` does. Raises NSInvalidArgumentException when the receiver does not respond to the selector.
template <class R = id, class... A> R send(NSObject& receiver, Selector selector, const A&... arguments) {
    return detail::sendResolved<R, A...>(detail::methodFor(receiver, selector), receiver, arguments...);
}

/// Sends one selector to many receivers: looks the operation up only when the receiver's class changes.
class MessageSite {
public:
    explicit MessageSite(Selector selector) noexcept : selector_(selector) {}

    template <class R = id, class... A> R send(NSObject& receiver, const A&... arguments) {
        return detail::sendResolved<R, A...>(resolve(receiver), receiver, arguments...);
    }

private:
    const Method& resolve(NSObject& receiver) {
        if (&typeid(receiver) != type_) [[unlikely]]
            lookUp(receiver);
        return *method_;
    }
    void lookUp(NSObject& receiver) {
        method_ = &detail::methodFor(receiver, selector_);
        // Class objects are all of one type, but each has operations of its own.
        type_ = &receiver.isa() == &Class::classObject() ? nullptr : &typeid(receiver);
    }

    Selector selector_;
    const std::type_info* type_ = nullptr;
    const Method* method_ = nullptr;
};

}  // namespace tovi
