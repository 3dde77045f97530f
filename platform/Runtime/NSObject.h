#pragma once

#include <sys/single_threaded.h>

#include <atomic>
#include <cassert>
#include <cstdint>

#include <ToviFoundationKit/Runtime/Export.h>
#include <ToviFoundationKit/Runtime/NSTypes.h>
#include <ToviFoundationKit/Runtime/Ref.h>
#include <ToviFoundationKit/Runtime/Selector.h>

namespace tovi {

class Class;
class DispatchTable;
class NSInvocation;
class NSMethodSignature;
class NSString;
namespace detail {
union ImmortalClass;
}

/// What a class can be asked to do by convention. A class conforms when it, or a class above it, overrides the
/// operation.
enum class Protocol : std::uint8_t { NSCopying = 1, NSMutableCopying = 2 };

/// The root class: a reference count, a class, equality, a hash, a description, copies and messages.
///
/// Objects live on the heap, are made by named constructors, and are held by Ref and RefPtr. The count is atomic: an
/// object may be released on any thread. Chains of objects of any length are destroyed without deep recursion.
class TOVI_EXPORT NSObject {
public:
    NSObject(const NSObject&) = delete;
    NSObject& operator=(const NSObject&) = delete;

    static Class& classObject() noexcept;
    virtual Class& isa() const noexcept;

    /// Value equality; identity unless a class says otherwise. Nothing is equal to nil.
    virtual bool isEqual(const NSObject* other) const;
    /// Equal objects have equal hashes.
    virtual NSUInteger hash() const;
    /// A text for people; "<Class: 0x...>" unless a class says otherwise.
    virtual Ref<NSString> description() const;

    /// An immutable value equal to the receiver, perhaps the receiver itself. Raises NSInvalidArgumentException
    /// (unrecognized selector) where the class does not conform to NSCopying.
    virtual Ref<NSObject> copy() const;
    /// A new object of the mutable form. Raises where the class does not conform to NSMutableCopying.
    virtual Ref<NSObject> mutableCopy() const;

    bool isKindOfClass(const Class& ancestor) const noexcept;
    bool isMemberOfClass(const Class& exact) const noexcept;
    bool conformsTo(Protocol protocol) const noexcept;
    bool respondsToSelector(Selector selector) const noexcept;
    /// nil when the receiver does not respond to the selector.
    RefPtr<NSMethodSignature> methodSignatureForSelector(Selector selector) const;

    /// Sends a message. Answers the operation's object; nil where it has no result; numbers, ranges and rectangles
    /// boxed. Objects passed for number parameters are unboxed, surplus arguments are ignored, missing ones raise
    /// NSInvalidArgumentException, as does a selector that the receiver does not respond to.
    id performSelector(Selector selector);
    id performSelector_withObject(Selector selector, NSObject* first);
    id performSelector_withObject_withObject(Selector selector, NSObject* first, NSObject* second);
    id performSelector_withObject_withObject_withObject(Selector selector, NSObject* first, NSObject* second,
                                                        NSObject* third);

    /// The value named by the key: the answer of the first of `get<Key>`, `<key>`, `is<Key>` that the class has,
    /// numbers boxed. Raises NSUndefinedKeyException when there is none.
    virtual id valueForKey(const NSString& key);
    /// Follows a path of keys joined by dots; nil as soon as a value on the way is nil.
    virtual id valueForKeyPath(const NSString& path);

    void retain() const noexcept;
    void release() const noexcept;
    NSUInteger retainCount() const noexcept;

    /// The operations that this object answers to: its class's, or, for a class object, the class-level ones.
    virtual const DispatchTable& dispatchTable() const noexcept;

protected:
    constexpr NSObject() noexcept : count_(1 | notAdopted) {}
    static detail::ImmortalClass class_;
    /// For objects in static storage, which nobody adopts and nothing destroys.
    struct Immortal {};
    constexpr explicit NSObject(Immortal) noexcept : count_(1) {}
    virtual ~NSObject() = default;

private:
    friend NSObject* detail::adopted(NSObject* object) noexcept;
    void destroy() const noexcept;
    static void destroyCondemned() noexcept;

    // Bits above the count. They cost nothing to keep and let debug builds check the life cycle.
    static constexpr std::uint32_t notAdopted = 1U << 31;
    static constexpr std::uint32_t dying = 1U << 30;

    mutable std::atomic<std::uint32_t> count_;
};

// As long as the process has one thread a plain load and store do; the C library keeps track.
inline void NSObject::retain() const noexcept {
    assert(!(count_.load(std::memory_order_relaxed) & (notAdopted | dying)) && "retained before adoption or in death");
    if (__libc_single_threaded)
        count_.store(count_.load(std::memory_order_relaxed) + 1, std::memory_order_relaxed);
    else
        count_.fetch_add(1, std::memory_order_relaxed);
}

// Who holds the only reference need not ask other threads: nobody else can take one.
inline void NSObject::release() const noexcept {
    const std::uint32_t count = count_.load(std::memory_order_acquire);
    if (count == 1)
        destroy();
    else if (__libc_single_threaded)
        count_.store(count - 1, std::memory_order_relaxed);
    else if (count_.fetch_sub(1, std::memory_order_acq_rel) == 1)
        destroy();
}

namespace detail {
inline NSObject* retained(NSObject* object) noexcept {
    if (object)
        object->retain();
    return object;
}
inline void released(NSObject* object) noexcept {
    if (object)
        object->release();
}
inline NSObject* adopted(NSObject* object) noexcept {
    assert(object->count_.load(std::memory_order_relaxed) == (1 | NSObject::notAdopted) && "adopted twice");
    object->count_.store(1, std::memory_order_relaxed);
    return object;
}
}  // namespace detail

/// True when both are the very same object, or both nil.
inline bool identical(const NSObject* a, const NSObject* b) noexcept { return a == b; }

}  // namespace tovi

// Comparing means the same wherever Ref and RefPtr are known.
#include <ToviFoundationKit/Runtime/ObjectOperators.h>
