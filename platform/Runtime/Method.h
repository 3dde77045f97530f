#pragma once

#include <array>
#include <cstddef>
#include <functional>
#include <type_traits>
#include <typeinfo>
#include <utility>

#include <ToviFoundationKit/Runtime/MessageValue.h>

namespace tovi {

/// One operation of a class: its selector, its types, and two ways in. `direct` takes the canonical types named by
/// `code`, for senders whose types match; `generic` takes as many values, each of the kind that the operation declares
/// (sendConverting sees to that). Methods are never freed.
struct Method {
    using Generic = void (*)(const Method&, NSObject& receiver, const MessageValue* arguments, MessageValue& result);

    std::uint64_t code = 0;
    MessageValue::Function direct = nullptr;
    Generic generic = nullptr;
    const char* const* encodings = nullptr;  ///< result, receiver ("@"), selector (":"), arguments...
    unsigned argumentCount = 0;
    Selector selector;
    void* context = nullptr;  ///< the callable, when the operation is a lambda

    ValueKind argumentKind(unsigned index) const noexcept {
        return static_cast<ValueKind>(code >> 4 * (argumentCount - index) & 15);
    }
    const char* argumentEncoding(unsigned index) const noexcept { return encodings[3 + index]; }
};

namespace detail {

/// The canonical types of an operation, four bits each, the result lowest.
template <class R, class... A> inline constexpr std::uint64_t signatureCode = [] {
    static_assert(sizeof...(A) < 15, "an operation takes at most fourteen arguments");
    std::uint64_t code = 0;
    for (ValueKind kind : {ValueKind::Void, kindOf<A>()...})
        code = code << 4 | static_cast<std::uint64_t>(kind);
    return code << 4 | static_cast<std::uint64_t>(kindOf<R>());
}();

template <class R, class... A>
inline constexpr std::array<const char*, 3 + sizeof...(A)> encodings{encodingOf<R>(), "@", ":", encodingOf<A>()...};

template <class R, class... A>
using DirectEntry = CanonicalResult<R> (*)(const Method&, NSObject&, CanonicalArgument<A>...);

[[noreturn]] TOVI_EXPORT void raiseNilArgument(const Method& method, const NSObject& receiver, std::size_t index);
/// Raises when the argument is not of the expected class.
TOVI_EXPORT void requireInstance(const Method& method, const NSObject& receiver, std::size_t index,
                                 const NSObject& argument, const Class& expected);

struct Call {
    const Method& method;
    const NSObject& receiver;
    std::size_t index = 0;
};

/// Whether an argument is certainly a U: by its C++ type alone, without a call.
template <class U, class Self> bool isPlainly(const NSObject& object, const NSObject& receiver) {
    return (std::is_base_of_v<U, Self> && &typeid(object) == &typeid(receiver)) || &typeid(object) == &typeid(U);
}

template <class U, class Self> [[gnu::always_inline]] inline U* acceptObject(NSObject* object, const Call& call) {
    using Plain = std::remove_cv_t<U>;
    if constexpr (!std::is_same_v<Plain, NSObject>)
        if (object && !isPlainly<Plain, Self>(*object, call.receiver)) [[unlikely]]
            requireInstance(call.method, call.receiver, call.index, *object, Plain::classObject());
    return static_cast<U*>(object);
}

template <class U, class Self>
[[gnu::always_inline]] inline U& acceptPresentObject(NSObject* object, const Call& call) {
    if (!object) [[unlikely]]
        raiseNilArgument(call.method, call.receiver, call.index);
    return *acceptObject<U, Self>(object, call);
}

template <class T> struct Pointee;
template <class U> struct Pointee<Ref<U>> {
    using type = U;
    static constexpr bool present = true;
};
template <class U> struct Pointee<RefPtr<U>> {
    using type = U;
    static constexpr bool present = false;
};

/// A canonical argument as the parameter type T that the operation of class Self declares.
template <class T, class Self>
[[gnu::always_inline]] inline decltype(auto) accept(CanonicalArgument<T> value, const Call& call) {
    using B = Bare<T>;
    if constexpr (kindOf<T>() != ValueKind::Object) {
        if constexpr (kindOf<T>() == ValueKind::Function)
            return reinterpret_cast<B>(value);
        else
            return static_cast<B>(value);
    } else if constexpr (isRef<B>) {
        using U = typename Pointee<B>::type;
        if constexpr (Pointee<B>::present)
            return B(acceptPresentObject<U, Self>(value, call));
        else
            return B(acceptObject<U, Self>(value, call));
    } else if constexpr (std::is_pointer_v<B>)
        return acceptObject<std::remove_pointer_t<B>, Self>(value, call);
    else
        return acceptPresentObject<std::remove_reference_t<T>, Self>(value, call);
}

/// Where the code of an operation is: a constant known at compile time, or a callable kept with the method.
template <auto function> struct ConstantSource {
    template <class... P> static decltype(auto) invoke(const Method&, P&&... p) {
        return std::invoke(function, std::forward<P>(p)...);
    }
};
template <class F> struct StoredSource {
    template <class... P> static decltype(auto) invoke(const Method& method, P&&... p) {
        return (*static_cast<F*>(method.context))(std::forward<P>(p)...);
    }
};

/// The entry points of an operation R(Self&, A...); Self is void where there is no receiver.
template <class Source, class Self, class R, class... A> struct Entry {
    using Receiver = Self;

    static CanonicalResult<R> direct(const Method& method, NSObject& receiver, CanonicalArgument<A>... arguments) {
        return call(method, receiver, std::index_sequence_for<A...>(), arguments...);
    }

    static void generic(const Method& method, NSObject& receiver, const MessageValue* arguments, MessageValue& result) {
        unpack(method, receiver, arguments, result, std::index_sequence_for<A...>());
    }

    static Method method() noexcept {
        Method m;
        m.code = signatureCode<R, A...>;
        m.direct = reinterpret_cast<MessageValue::Function>(&direct);
        m.generic = &generic;
        m.encodings = encodings<R, A...>.data();
        m.argumentCount = sizeof...(A);
        return m;
    }

private:
    template <std::size_t... i> static CanonicalResult<R> call(const Method& method, NSObject& receiver,
                                                               std::index_sequence<i...>,
                                                               CanonicalArgument<A>... arguments) {
        const auto invoke = [&]() -> decltype(auto) {
            if constexpr (std::is_void_v<Self>)
                return Source::invoke(method, accept<A, Self>(arguments, Call{method, receiver, i})...);
            else
                return Source::invoke(method, static_cast<Self&>(receiver),
                                      accept<A, Self>(arguments, Call{method, receiver, i})...);
        };
        if constexpr (std::is_void_v<R>)
            invoke();
        else
            return canonical<R>(invoke());
    }

    template <std::size_t... i> static void unpack(const Method& method, NSObject& receiver,
                                                   [[maybe_unused]] const MessageValue* arguments,
                                                   [[maybe_unused]] MessageValue& result, std::index_sequence<i...>) {
        if constexpr (std::is_void_v<R>) {
            direct(method, receiver, arguments[i].template raw<CanonicalArgument<A>>()...);
        } else {
            result = MessageValue::of<CanonicalResult<R>>(
                direct(method, receiver, arguments[i].template raw<CanonicalArgument<A>>()...));
            result.setEncoding(encodingOf<R>());
        }
    }
};

/// Takes a callable's type apart into its receiver and parameters.
template <class Source, class F> struct EntryOf;
template <class Source, class R, class S, class... A> struct EntryOf<Source, R (*)(S, A...)> {
    using Instance = Entry<Source, std::remove_cvref_t<S>, R, A...>;
    using Receiverless = Entry<Source, void, R, S, A...>;
};
template <class Source, class R> struct EntryOf<Source, R (*)()> { using Receiverless = Entry<Source, void, R>; };
template <class Source, class R, class C, class... A> struct EntryOf<Source, R (C::*)(A...)> {
    using Instance = Entry<Source, C, R, A...>;
};
template <class Source, class R, class C, class... A> struct EntryOf<Source, R (C::*)(A...) const>
    : EntryOf<Source, R (C::*)(A...)> {};
template <class Source, class R, class C, class... A> struct EntryOf<Source, R (C::*)(A...) noexcept>
    : EntryOf<Source, R (C::*)(A...)> {};
template <class Source, class R, class C, class... A> struct EntryOf<Source, R (C::*)(A...) const noexcept>
    : EntryOf<Source, R (C::*)(A...)> {};
template <class Source, class R, class... A> struct EntryOf<Source, R (*)(A...) noexcept>
    : EntryOf<Source, R (*)(A...)> {};

template <class Operator> struct PlainFunction;
template <class R, class L, class... A> struct PlainFunction<R (L::*)(A...) noexcept> { using type = R (*)(A...); };
template <class R, class L, class... A> struct PlainFunction<R (L::*)(A...) const noexcept> {
    using type = R (*)(A...);
};
template <class R, class L, class... A> struct PlainFunction<R (L::*)(A...)> { using type = R (*)(A...); };
template <class R, class L, class... A> struct PlainFunction<R (L::*)(A...) const> { using type = R (*)(A...); };
template <class L> using LambdaEntry = EntryOf<StoredSource<L>, typename PlainFunction<decltype(&L::operator())>::type>;

}  // namespace detail
}  // namespace tovi
