#pragma once

#include <ToviFoundationKit/Runtime/Class.h>

namespace tovi {

namespace detail {
[[noreturn]] TOVI_EXPORT void raiseWrongSharedInstance(const Class& expected, const NSObject& shared);
}

inline namespace Singleton {

/// The shared instance of a class: nil, unless the class, or one above it, brings a class-level `sharedInstance` of its
/// own (`Account::classObject().addClassMethod("sharedInstance"_sel, [] { ... })`). Callers must expect nil.
TOVI_EXPORT id sharedInstance(Class& receiver);

/// The same by type; raises NSInvalidArgumentException when the class's shared instance is of another type.
template <class T> RefPtr<T> sharedInstance() {
    const id shared = sharedInstance(T::classObject());
    if (shared && !shared->isKindOfClass(T::classObject()))
        detail::raiseWrongSharedInstance(T::classObject(), *shared);
    return static_cast<T*>(shared.get());
}

}  // namespace Singleton
}  // namespace tovi
