#pragma once

#include <cstdint>
#include <iterator>
#include <ranges>

#include <ToviFoundationKit/Runtime/Cast.h>

namespace tovi {

class NSEnumerator;

namespace detail {
[[noreturn]] TOVI_EXPORT void raiseMutatedWhileEnumerated(const NSObject& collection);

/// Runs of memory that hold pointers to objects `stride` bytes apart, some of them null (removed entries), and the
/// counter that the collection steps at each change.
struct ObjectRun {
    const std::byte* position = nullptr;
    const std::byte* end = nullptr;
    std::size_t stride = 0;
    const std::uint32_t* mutations = nullptr;
};
}  // namespace detail

/// Enumerates any collection: lists and sets their objects, dictionaries their keys, enumerators what is left in them.
///
///     for (NSObject& each : FastEnumeration(collection)) ...
///
/// The collection stays alive meanwhile. Changing it raises NSGenericException at the next step. An object that is no
/// collection raises NSInvalidArgumentException.
class TOVI_EXPORT FastEnumeration {
public:
    explicit FastEnumeration(const NSObject& collection);

    /// The next object, valid until the following call or a change of the collection; null at the end.
    NSObject* next() {
        if (enumerator_)
            return nextOfEnumerator();
        while (run_.position != run_.end) {
            if (*run_.mutations != expected_) [[unlikely]]
                detail::raiseMutatedWhileEnumerated(*collection_);
            NSObject* const object = *reinterpret_cast<NSObject* const*>(run_.position);
            run_.position += run_.stride;
            if (object) [[likely]]
                return object;
        }
        return nullptr;
    }

    class Iterator {
    public:
        using value_type = NSObject;
        using difference_type = std::ptrdiff_t;

        Iterator() noexcept = default;
        NSObject& operator*() const noexcept { return *object_; }
        Iterator& operator++() {
            object_ = enumeration_->next();
            return *this;
        }
        void operator++(int) { ++*this; }
        bool operator==(std::default_sentinel_t) const noexcept { return !object_; }

    private:
        friend class FastEnumeration;
        explicit Iterator(FastEnumeration& enumeration) : enumeration_(&enumeration), object_(enumeration.next()) {}

        FastEnumeration* enumeration_ = nullptr;
        NSObject* object_ = nullptr;
    };

    Iterator begin() { return Iterator(*this); }
    std::default_sentinel_t end() const noexcept { return {}; }

private:
    NSObject* nextOfEnumerator();

    Ref<NSObject> collection_;
    NSEnumerator* enumerator_ = nullptr;  ///< the collection itself when it is one
    detail::ObjectRun run_;
    std::uint32_t expected_ = 0;
    id current_;
};

/// The elements of a collection, which it keeps alive, as objects of class T. An element of another class raises
/// NSInvalidArgumentException when it is reached.
///
///     for (NSString& key : dictionary->allKeys()->each<NSString>()) ...
template <class T, class Collection> class TypedView : public std::ranges::view_base {
public:
    class Iterator {
    public:
        using value_type = T;
        using difference_type = std::ptrdiff_t;

        Iterator() = default;
        explicit Iterator(typename Collection::Iterator position) : position_(position) {}
        T& operator*() const {
            NSObject* const object = &*position_;
            if (!object->isKindOfClass(T::classObject())) [[unlikely]]
                detail::raiseWrongClass(object, T::classObject());
            return static_cast<T&>(*object);
        }
        Iterator& operator++() {
            ++position_;
            return *this;
        }
        Iterator operator++(int) {
            const Iterator before = *this;
            ++*this;
            return before;
        }
        bool operator==(const Iterator&) const = default;

    private:
        typename Collection::Iterator position_;
    };

    explicit TypedView(const Collection& collection) noexcept : collection_(share(collection)) {}
    Iterator begin() const { return Iterator(collection_->begin()); }
    Iterator end() const { return Iterator(collection_->end()); }

private:
    Ref<Collection> collection_;
};

}  // namespace tovi
