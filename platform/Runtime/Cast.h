#pragma once

#include <type_traits>

#include <ToviFoundationKit/Runtime/Class.h>

namespace tovi {

namespace detail {
[[noreturn]] TOVI_EXPORT void raiseWrongClass(const NSObject* object, const Class& expected);
}

/// The object as a T when it is one (by its run-time class), else null: `if (const auto* text = as<NSString>(object))`.
template <class T> const T* as(const NSObject* object) noexcept {
    if (!object)
        return nullptr;
    const Class& exact = object->isa();
    return &exact == &T::classObject() || exact.isSubclassOfClass(T::classObject()) ? static_cast<const T*>(object)
                                                                                    : nullptr;
}
template <class T> T* as(NSObject* object) noexcept {
    return const_cast<T*>(as<T>(static_cast<const NSObject*>(object)));
}

/// The object as a T; raises NSInvalidArgumentException when it is nil or of another class.
template <class T> Ref<T> to(NSObject* object) {
    if (T* const found = as<T>(object))
        return *found;
    detail::raiseWrongClass(object, T::classObject());
}
template <class T, class U> Ref<T> to(const RefPtr<U>& object) { return to<T>(object.get()); }
template <class T, class U> Ref<T> to(const Ref<U>& object) { return to<T>(object.get()); }

}  // namespace tovi
