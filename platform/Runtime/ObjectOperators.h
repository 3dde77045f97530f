#pragma once

#include <concepts>
#include <functional>
#include <iosfwd>

#include <ToviFoundationKit/Runtime/NSObject.h>

// What C++ expects of values, for objects and for what holds them: == by value (isEqual), a hash that goes with it, and
// printing as the description. `identical` compares identity. The plain structures are printed, too.

namespace tovi {

namespace detail {

template <class T> inline constexpr bool holdsObject = false;
template <class T> inline constexpr bool holdsObject<Ref<T>> = true;
template <class T> inline constexpr bool holdsObject<RefPtr<T>> = true;
template <class T> concept Holder = holdsObject<T>;
template <class T> concept HolderOrObject = Holder<T> || std::derived_from<T, NSObject>;

template <HolderOrObject T> const NSObject* objectIn(const T& value) noexcept {
    if constexpr (Holder<T>)
        return value.get();
    else
        return &value;
}

TOVI_EXPORT bool equalOrBothNil(const NSObject* a, const NSObject* b);
TOVI_EXPORT void print(std::ostream& out, const NSObject* object);

}  // namespace detail

inline bool operator==(const NSObject& a, const NSObject& b) { return a.isEqual(&b); }

/// True when both are nil, too.
template <detail::HolderOrObject A, detail::HolderOrObject B>
    requires(detail::Holder<A> || detail::Holder<B>)
bool operator==(const A& a, const B& b) { return detail::equalOrBothNil(detail::objectIn(a), detail::objectIn(b)); }

/// The description as UTF-8; nil is "(null)".
template <detail::HolderOrObject T> std::ostream& operator<<(std::ostream& out, const T& value) {
    detail::print(out, detail::objectIn(value));
    return out;
}

TOVI_EXPORT std::ostream& operator<<(std::ostream& out, const NSRange& range);  ///< "{location, length}"
TOVI_EXPORT std::ostream& operator<<(std::ostream& out, const NSPoint& point);
TOVI_EXPORT std::ostream& operator<<(std::ostream& out, const NSSize& size);
TOVI_EXPORT std::ostream& operator<<(std::ostream& out, const NSRect& rect);

}  // namespace tovi

template <class T> struct std::hash<tovi::Ref<T>> {
    std::size_t operator()(const tovi::Ref<T>& object) const { return object->hash(); }
};
template <class T> struct std::hash<tovi::RefPtr<T>> {
    std::size_t operator()(const tovi::RefPtr<T>& object) const { return object ? object->hash() : 0; }
};
