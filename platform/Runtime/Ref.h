#pragma once

#include <concepts>
#include <cstddef>
#include <functional>
#include <type_traits>
#include <utility>

#include <ToviFoundationKit/Runtime/Export.h>

namespace tovi {

class NSObject;
template <class T> class RefPtr;

namespace detail {
[[noreturn]] TOVI_EXPORT void raiseNil();  ///< raises NSInvalidArgumentException: nil was used as an object
inline NSObject* retained(NSObject* object) noexcept;
inline void released(NSObject* object) noexcept;
inline NSObject* adopted(NSObject* object) noexcept;
template <class U, class T> concept PointsTo = std::is_convertible_v<U*, T*>;
}  // namespace detail

/// Owns one reference to an object and is never null. It converts to `T&`, so it goes wherever an object is asked for.
/// A moved-from Ref may only be assigned to or destroyed.
///
/// The pointer is kept as the root class, so a Ref to a class that is only declared can be held, copied and destroyed.
template <class T> class Ref {
public:
    Ref(T& object) noexcept : object_(detail::retained(&object)) {}
    Ref(std::nullptr_t) = delete;
    Ref(const Ref& other) noexcept : object_(detail::retained(other.object_)) {}
    Ref(Ref&& other) noexcept : object_(std::exchange(other.object_, nullptr)) {}
    template <detail::PointsTo<T> U>
        requires(!std::same_as<U, T>)
    Ref(const Ref<U>& other)
    noexcept : object_(detail::retained(other.get())) {}
    template <detail::PointsTo<T> U>
        requires(!std::same_as<U, T>)
    Ref(Ref<U>&& other)
    noexcept : object_(other.leak()) {}
    ~Ref() { detail::released(object_); }

    Ref& operator=(Ref other) noexcept {
        std::swap(object_, other.object_);
        return *this;
    }

    T* get() const noexcept { return static_cast<T*>(object_); }
    T& operator*() const noexcept { return *get(); }
    T* operator->() const noexcept { return get(); }
    operator T&() const noexcept { return *get(); }

    /// Gives the reference away; the caller must adopt it.
    [[nodiscard]] T* leak() noexcept { return static_cast<T*>(std::exchange(object_, nullptr)); }

private:
    struct Adopt {};
    Ref(Adopt, NSObject* object) noexcept : object_(object) {}
    template <class U> friend Ref<U> adopt(U& object) noexcept;
    template <class U> friend class RefPtr;

    NSObject* object_;
};

/// Owns one reference to an object, or is null (nil). Using a null one as an object raises NSInvalidArgumentException.
template <class T> class RefPtr {
public:
    constexpr RefPtr() noexcept = default;
    constexpr RefPtr(std::nullptr_t) noexcept {}
    RefPtr(T* object) noexcept : object_(detail::retained(object)) {}
    RefPtr(T& object) noexcept : object_(detail::retained(&object)) {}
    RefPtr(const RefPtr& other) noexcept : object_(detail::retained(other.object_)) {}
    RefPtr(RefPtr&& other) noexcept : object_(std::exchange(other.object_, nullptr)) {}
    template <detail::PointsTo<T> U>
        requires(!std::same_as<U, T>)
    RefPtr(const RefPtr<U>& other)
    noexcept : object_(detail::retained(other.get())) {}
    template <detail::PointsTo<T> U>
        requires(!std::same_as<U, T>)
    RefPtr(RefPtr<U>&& other)
    noexcept : object_(other.leak()) {}
    template <detail::PointsTo<T> U> RefPtr(const Ref<U>& other) noexcept : object_(detail::retained(other.object_)) {}
    template <detail::PointsTo<T> U> RefPtr(Ref<U>&& other) noexcept : object_(std::exchange(other.object_, nullptr)) {}
    ~RefPtr() { detail::released(object_); }

    RefPtr& operator=(RefPtr other) noexcept {
        std::swap(object_, other.object_);
        return *this;
    }

    T* get() const noexcept { return static_cast<T*>(object_); }
    T& operator*() const { return *checked(); }
    T* operator->() const { return checked(); }
    operator T*() const noexcept { return get(); }
    explicit operator bool() const noexcept { return object_ != nullptr; }

    /// The object as a Ref; raises NSInvalidArgumentException when nil.
    Ref<T> ref() const { return Ref<T>(*checked()); }
    [[nodiscard]] T* leak() noexcept { return static_cast<T*>(std::exchange(object_, nullptr)); }

private:
    template <class U> friend RefPtr<U> adoptPtr(U* object) noexcept;
    T* checked() const {
        if (!object_) [[unlikely]]
            detail::raiseNil();
        return get();
    }

    NSObject* object_ = nullptr;
};

/// An object of any class, or nil.
using id = RefPtr<NSObject>;

/// Takes over the reference that a new object is born with: once, right after `new`.
template <class T> [[nodiscard]] Ref<T> adopt(T& object) noexcept {
    return Ref<T>(typename Ref<T>::Adopt{}, detail::adopted(&object));
}

template <class T> [[nodiscard]] RefPtr<T> adoptPtr(T* object) noexcept {
    RefPtr<T> result;
    result.object_ = object;
    return result;
}

/// Another reference to an object that was handed over as const. Sharing an object does not change it.
template <class T> [[nodiscard]] Ref<T> share(const T& object) noexcept { return Ref<T>(const_cast<T&>(object)); }

}  // namespace tovi
