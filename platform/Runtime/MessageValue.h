#pragma once

#include <concepts>
#include <cstdint>
#include <optional>
#include <type_traits>

#include <ToviFoundationKit/Runtime/NSObject.h>

namespace tovi {

/// How a value travels in a message. Every C++ type that an operation may take or answer maps to one of these.
enum class ValueKind : std::uint8_t {
    Void = 1,
    Object,
    Bool,
    Integer,
    Real,
    Selector,
    Function,
    Pointer,
    Range,
    Point,
    Size,
    Rect
};

/// One argument or result of a message, with its type encoding ("@", "q", "d", "{_NSRange=QQ}" ...).
/// An object in it is retained.
class TOVI_EXPORT MessageValue {
public:
    using Function = void (*)();

    MessageValue() noexcept : encoding_("v") {}
    MessageValue(id object) noexcept : kind_(ValueKind::Object), encoding_("@"), object_(std::move(object)) {}
    template <class T> static MessageValue of(const T& value);

    ValueKind kind() const noexcept { return kind_; }
    const char* encoding() const noexcept { return encoding_; }

    /// The value as an object: scalars boxed as NSNumber, structures as NSValue, selectors as their names; no result as
    /// nil. Raises NSInvalidArgumentException for functions and bare pointers.
    id boxed() const;
    /// The value converted to another kind: numbers among each other as NSNumber does it, objects unboxed (an NSNumber
    /// to any number, an NSValue to its structure, an NSString to a selector), values boxed, no result to nil or 0.
    /// Raises NSInvalidArgumentException where there is no way: nil is no number.
    MessageValue converted(ValueKind kind, const char* encoding) const;
    /// The same, and nothing where there is no way.
    std::optional<MessageValue> convertedIfPossible(ValueKind kind, const char* encoding) const;

    /// Narrows the type encoding within the same kind ("q" to "I").
    void setEncoding(const char* encoding) noexcept { encoding_ = encoding; }

    const id& object() const noexcept { return object_; }
    template <class Canonical> Canonical raw() const noexcept;

private:
    union Raw {
        bool boolean;
        std::int64_t integer;
        double real;
        tovi::Selector selector;
        Function function;
        void* pointer;
        NSRange range;
        NSPoint point;
        NSSize size;
        NSRect rect;
        constexpr Raw() noexcept : integer(0) {}
    };

    MessageValue(ValueKind kind, const char* encoding) noexcept : kind_(kind), encoding_(encoding) {}
    template <class Canonical> void set(Canonical value) noexcept;
    std::int64_t integerFor(const char* encoding) const noexcept;
    double realFor(const char* encoding) const noexcept;
    bool isNumber() const noexcept;
    static MessageValue zero(ValueKind kind, const char* encoding) noexcept;

    ValueKind kind_ = ValueKind::Void;
    const char* encoding_;
    id object_;
    Raw raw_;
};

namespace detail {

template <class T> using Bare = std::remove_cv_t<std::remove_reference_t<T>>;
template <class T> inline constexpr bool isRef = false;
template <class T> inline constexpr bool isRef<Ref<T>> = true;
template <class T> inline constexpr bool isRef<RefPtr<T>> = true;
template <class T> inline constexpr bool isFunction =
    std::is_pointer_v<T>&& std::is_function_v<std::remove_pointer_t<T>>;
/// U* and U& name objects; every other class type is one of the structures, a Ref or unknown.
template <class T>
inline constexpr bool isObjectReference = (std::is_pointer_v<T> && std::is_class_v<std::remove_pointer_t<T>>) ||
                                          (std::is_reference_v<T> && std::is_base_of_v<NSObject, Bare<T>>);

template <class T> struct Unsupported : std::false_type {};

template <class T> consteval ValueKind kindOf() {
    using B = Bare<T>;
    if constexpr (std::is_void_v<B>)
        return ValueKind::Void;
    else if constexpr (isObjectReference<T> || isObjectReference<B> || isRef<B>)
        return ValueKind::Object;
    else if constexpr (std::same_as<B, bool>)
        return ValueKind::Bool;
    else if constexpr (std::is_integral_v<B> || std::is_enum_v<B>)
        return ValueKind::Integer;
    else if constexpr (std::is_floating_point_v<B>)
        return ValueKind::Real;
    else if constexpr (std::same_as<B, Selector>)
        return ValueKind::Selector;
    else if constexpr (isFunction<B>)
        return ValueKind::Function;
    else if constexpr (std::same_as<B, void*> || std::same_as<B, const void*>)
        return ValueKind::Pointer;
    else if constexpr (std::same_as<B, NSRange>)
        return ValueKind::Range;
    else if constexpr (std::same_as<B, NSPoint>)
        return ValueKind::Point;
    else if constexpr (std::same_as<B, NSSize>)
        return ValueKind::Size;
    else if constexpr (std::same_as<B, NSRect>)
        return ValueKind::Rect;
    else
        static_assert(Unsupported<T>::value, "a message cannot carry this type");
}

template <class T> consteval const char* integerEncoding() {
    if constexpr (std::is_enum_v<T>)
        return integerEncoding<std::underlying_type_t<T>>();
    else if constexpr (sizeof(T) == 1)
        return std::is_signed_v<T> ? "c" : "C";
    else if constexpr (sizeof(T) == 2)
        return std::is_signed_v<T> ? "s" : "S";
    else if constexpr (sizeof(T) == 4)
        return std::is_signed_v<T> ? "i" : "I";
    else
        return std::is_signed_v<T> ? "q" : "Q";
}

template <class T> consteval const char* encodingOf() {
    using B = Bare<T>;
    switch (kindOf<T>()) {
        case ValueKind::Void:
            return "v";
        case ValueKind::Object:
            return "@";
        case ValueKind::Bool:
            return "c";
        case ValueKind::Integer:
            if constexpr (std::is_integral_v<B> || std::is_enum_v<B>)
                return integerEncoding<B>();
            break;
        case ValueKind::Real:
            return sizeof(B*) && std::same_as<B, float> ? "f" : "d";
        case ValueKind::Selector:
            return ":";
        case ValueKind::Function:
            return "^?";
        case ValueKind::Pointer:
            return "^v";
        case ValueKind::Range:
            return "{_NSRange=QQ}";
        case ValueKind::Point:
            return "{CGPoint=dd}";
        case ValueKind::Size:
            return "{CGSize=dd}";
        case ValueKind::Rect:
            return "{CGRect={CGPoint=dd}{CGSize=dd}}";
    }
    return "?";
}

/// The type in which a kind of value is passed between the sender and an operation's entry point.
template <ValueKind kind> struct CanonicalType;
template <> struct CanonicalType<ValueKind::Void> {
    using Argument = void;
    using Result = void;
};
template <> struct CanonicalType<ValueKind::Object> {
    using Argument = NSObject*;
    using Result = id;
};
template <> struct CanonicalType<ValueKind::Bool> {
    using Argument = bool;
    using Result = bool;
};
template <> struct CanonicalType<ValueKind::Integer> {
    using Argument = std::int64_t;
    using Result = std::int64_t;
};
template <> struct CanonicalType<ValueKind::Real> {
    using Argument = double;
    using Result = double;
};
template <> struct CanonicalType<ValueKind::Selector> {
    using Argument = Selector;
    using Result = Selector;
};
template <> struct CanonicalType<ValueKind::Function> {
    using Argument = MessageValue::Function;
    using Result = MessageValue::Function;
};
template <> struct CanonicalType<ValueKind::Pointer> {
    using Argument = void*;
    using Result = void*;
};
template <> struct CanonicalType<ValueKind::Range> {
    using Argument = NSRange;
    using Result = NSRange;
};
template <> struct CanonicalType<ValueKind::Point> {
    using Argument = NSPoint;
    using Result = NSPoint;
};
template <> struct CanonicalType<ValueKind::Size> {
    using Argument = NSSize;
    using Result = NSSize;
};
template <> struct CanonicalType<ValueKind::Rect> {
    using Argument = NSRect;
    using Result = NSRect;
};

template <class T> using CanonicalArgument = typename CanonicalType<kindOf<T>()>::Argument;
template <class T> using CanonicalResult = typename CanonicalType<kindOf<T>()>::Result;

/// The value of any carried type in its canonical form.
template <class T> CanonicalResult<T> canonical(T&& value) {
    constexpr ValueKind kind = kindOf<T>();
    using B = Bare<T>;
    if constexpr (kind == ValueKind::Object) {
        if constexpr (isRef<B>)
            return std::forward<T>(value);
        else if constexpr (std::is_pointer_v<B>)
            return id(const_cast<std::remove_cv_t<std::remove_pointer_t<B>>*>(value));
        else
            return id(const_cast<B*>(&value));
    } else if constexpr (kind == ValueKind::Integer)
        return static_cast<std::int64_t>(value);
    else if constexpr (kind == ValueKind::Function)
        return reinterpret_cast<MessageValue::Function>(value);
    else if constexpr (kind == ValueKind::Pointer)
        return const_cast<void*>(static_cast<const void*>(value));
    else
        return static_cast<CanonicalResult<T>>(value);
}

}  // namespace detail

template <class Canonical> Canonical MessageValue::raw() const noexcept {
    if constexpr (std::same_as<Canonical, bool>)
        return raw_.boolean;
    else if constexpr (std::same_as<Canonical, std::int64_t>)
        return raw_.integer;
    else if constexpr (std::same_as<Canonical, double>)
        return raw_.real;
    else if constexpr (std::same_as<Canonical, tovi::Selector>)
        return raw_.selector;
    else if constexpr (std::same_as<Canonical, Function>)
        return raw_.function;
    else if constexpr (std::same_as<Canonical, void*>)
        return raw_.pointer;
    else if constexpr (std::same_as<Canonical, NSRange>)
        return raw_.range;
    else if constexpr (std::same_as<Canonical, NSPoint>)
        return raw_.point;
    else if constexpr (std::same_as<Canonical, NSSize>)
        return raw_.size;
    else if constexpr (std::same_as<Canonical, NSRect>)
        return raw_.rect;
    else
        return object_.get();
}

template <class Canonical> void MessageValue::set(Canonical value) noexcept {
    if constexpr (std::same_as<Canonical, bool>)
        raw_.boolean = value;
    else if constexpr (std::same_as<Canonical, std::int64_t>)
        raw_.integer = value;
    else if constexpr (std::same_as<Canonical, double>)
        raw_.real = value;
    else if constexpr (std::same_as<Canonical, tovi::Selector>)
        raw_.selector = value;
    else if constexpr (std::same_as<Canonical, Function>)
        raw_.function = value;
    else if constexpr (std::same_as<Canonical, void*>)
        raw_.pointer = value;
    else if constexpr (std::same_as<Canonical, NSRange>)
        raw_.range = value;
    else if constexpr (std::same_as<Canonical, NSPoint>)
        raw_.point = value;
    else if constexpr (std::same_as<Canonical, NSSize>)
        raw_.size = value;
    else if constexpr (std::same_as<Canonical, NSRect>)
        raw_.rect = value;
    else
        object_ = std::move(value);
}

template <class T> MessageValue MessageValue::of(const T& value) {
    MessageValue result;
    result.kind_ = detail::kindOf<T>();
    result.encoding_ = detail::encodingOf<T>();
    result.set(detail::canonical(value));
    return result;
}

}  // namespace tovi
