#pragma once

#include <atomic>
#include <initializer_list>
#include <string_view>
#include <type_traits>

#include <ToviFoundationKit/Runtime/Method.h>
#include <ToviFoundationKit/Runtime/NSObject.h>
#include <ToviFoundationKit/Runtime/PublishedMap.h>

namespace tovi {

/// The operations of one class at one level (instance or class), by selector. Looking up takes no lock and, once a
/// selector has been used, a few nanoseconds; adding operations is allowed at any time and from any thread.
class TOVI_EXPORT DispatchTable {
public:
    constexpr explicit DispatchTable(DispatchTable* parent) noexcept : parent_(parent) {}

    /// The operation of this table, else of the nearest parent that has it, else null.
    const Method* find(Selector selector) const noexcept {
        if (const auto* entry = cache_.find(selector, selector.hash())) [[likely]]
            return entry->value;
        return findUncached(selector);
    }

    /// A later addition of the same selector takes the place of an earlier one.
    void add(Selector selector, Method method);

private:
    friend class Class;
    struct CacheTraits {
        struct Key {
            Selector selector;
            explicit operator bool() const noexcept { return static_cast<bool>(selector); }
        };
        using Value = const Method*;
        static std::size_t hash(Key key) noexcept { return key.selector.hash(); }
        static bool equal(Key key, Selector probe) noexcept { return key.selector == probe; }
    };
    struct Own {
        Method method;
        const Own* next;
    };

    const Method* findUncached(Selector selector) const noexcept;
    const Method* findLocked(Selector selector) const noexcept;

    DispatchTable* parent_;
    const Own* own_ = nullptr;
    mutable PublishedMap<CacheTraits> cache_;
};

/// A class: its name, its superclass, how to make an instance, and its operations. Classes are objects too; a message
/// to a class reaches its class-level operations. They are made with TOVI_CLASS and live until the process ends.
class TOVI_EXPORT Class final : public NSObject {
public:
    struct Recipe {
        const char* name;
        Class* superclass;
        NSObject* (*makeInstance)();  ///< answers null where instances cannot be made from nothing
        unsigned (*protocols)();
    };
    /// What instances leave to `detail::Composite`, rather than bringing an operation of their own.
    enum class ByParts : unsigned { Equality = 4, Hash = 8, Copy = 16, Description = 32 };

    constexpr explicit Class(Recipe recipe) noexcept
        : NSObject(Immortal()),
          recipe_(recipe),
          instanceMethods_(recipe.superclass ? &recipe.superclass->instanceMethods_ : nullptr),
          classMethods_(recipe.superclass ? &recipe.superclass->classMethods_ : &instanceMethods_) {}
    ~Class() override = default;

    static Class& classObject() noexcept;
    Class& isa() const noexcept override { return classObject(); }

    /// The class of that name, or null. (`NSClassFromString`)
    static Class* named(std::string_view name);

    std::string_view name() const noexcept { return recipe_.name; }
    Class* superclass() const noexcept { return recipe_.superclass; }
    bool isSubclassOfClass(const Class& ancestor) const noexcept;
    bool conformsTo(Protocol protocol) const noexcept { return traits() & static_cast<unsigned>(protocol); }
    bool answersByParts(ByParts operation) const noexcept { return traits() & static_cast<unsigned>(operation); }
    bool instancesRespondToSelector(Selector selector) const noexcept { return instanceMethods_.find(selector); }

    /// A new instance of this very class, or nil where the class has no default constructor.
    id makeInstance() const;

    DispatchTable& instanceMethods() noexcept { return instanceMethods_; }
    const DispatchTable& instanceMethods() const noexcept { return instanceMethods_; }
    DispatchTable& classMethods() noexcept { return classMethods_; }
    const DispatchTable& dispatchTable() const noexcept override { return classMethods_; }

    /// Makes a callable a selector's operation: `[](NSArray& receiver, NSString& word) { ... }`. The first parameter
    /// is the receiver and must be of this class or one above it.
    template <class F> void addMethod(Selector selector, F callable);
    /// The same for a class-level operation; the callable takes the arguments only.
    template <class F> void addClassMethod(Selector selector, F callable);

    /// The operation of instances that key-value coding reads a key with, or null.
    const Method* accessorForKey(const NSString& key) const;

    Ref<NSString> description() const override;  ///< the name

    Ref<NSObject> copy() const override { return share(*this); }  ///< the class itself

private:
    static detail::ImmortalClass class_;

    friend struct ClassRegistry;
    friend class DispatchTable;
    struct AccessorTraits {
        using Key = const NSString*;
        using Value = const Method*;
        static std::size_t hash(Key key);
        static bool equal(Key key, const NSString& probe) noexcept;
    };

    const Method* findAccessor(const NSString& key) const;
    [[noreturn]] void raiseWrongReceiver(Selector selector, const Class& receiver) const;
    void forgetLookups() noexcept;
    unsigned traits() const noexcept {
        const unsigned known = traits_.load(std::memory_order_relaxed);
        return known ? known : findTraits();
    }
    unsigned findTraits() const noexcept;

    Recipe recipe_;
    mutable std::atomic<unsigned> traits_ = 0;  ///< the recipe's protocols, once asked for
    DispatchTable instanceMethods_;
    DispatchTable classMethods_;
    mutable PublishedMap<AccessorTraits> accessors_;
    Class* nextRegistered_ = nullptr;
};

/// Makes a class known by its name before `main` runs; see TOVI_CLASS.
struct TOVI_EXPORT ClassRegistrar {
    explicit ClassRegistrar(Class& registered);
};

namespace detail {

/// Keeps a class out of the program's clean-up: objects may outlive every static destructor.
union TOVI_EXPORT ImmortalClass {
    Class value;
    constexpr explicit ImmortalClass(Class::Recipe recipe) noexcept : value(recipe) {}
    ~ImmortalClass() {}
};

template <class Member> inline constexpr bool isOfNSObject = false;
template <> inline constexpr bool isOfNSObject<Ref<NSObject> (NSObject::*)() const> = true;

/// What class T leaves as its composite base (T::CompositeBase) has it.
template <class T, class Equality, class Hash, class Copy, class Description> constexpr unsigned traitsByParts() {
    using Base = typename T::CompositeBase;
    unsigned traits = 0;
    if (std::is_same_v<Equality, bool (Base::*)(const NSObject*) const>)
        traits |= static_cast<unsigned>(Class::ByParts::Equality);
    if (std::is_same_v<Hash, NSUInteger (Base::*)() const>)
        traits |= static_cast<unsigned>(Class::ByParts::Hash);
    if (std::is_same_v<Copy, Ref<NSObject> (Base::*)() const>)
        traits |= static_cast<unsigned>(Class::ByParts::Copy);
    if (std::is_same_v<Description, Ref<NSString> (Base::*)() const>)
        traits |= static_cast<unsigned>(Class::ByParts::Description);
    return traits;
}

}  // namespace detail

template <class F> void Class::addMethod(Selector selector, F callable) {
    using Entry = typename detail::LambdaEntry<F>::Instance;
    if (!isSubclassOfClass(Entry::Receiver::classObject()))
        raiseWrongReceiver(selector, Entry::Receiver::classObject());
    Method method = Entry::method();
    method.context = new F(std::move(callable));
    instanceMethods_.add(selector, method);
}

template <class F> void Class::addClassMethod(Selector selector, F callable) {
    Method method = detail::LambdaEntry<F>::Receiverless::method();
    method.context = new F(std::move(callable));
    classMethods_.add(selector, method);
}

/// Opens a class that derives from NSObject: `class Account : public NSObject { TOVI_CLASS(Account, NSObject) ... };`
/// It gives the class its run-time form, with a factory when the class can be made without arguments (a private
/// constructor will do), and conformance to copying when it, or a class above it, overrides `copy` or `mutableCopy`.
/// A class in a namespace of the host's is registered under its bare name.
#define TOVI_CLASS(Self, Super)                                                                                     \
public:                                                                                                             \
    static ::tovi::Class& classObject() noexcept { return class_.value; }                                           \
    ::tovi::Class& isa() const noexcept override { return class_.value; }                                           \
    const ::tovi::DispatchTable& dispatchTable() const noexcept override { return class_.value.instanceMethods(); } \
                                                                                                                    \
protected:                                                                                                          \
    TOVI_CLASS_RECIPE(Self)                                                                                         \
    inline static constinit ::tovi::detail::ImmortalClass class_{                                                   \
        ::tovi::Class::Recipe{#Self, &Super::class_.value, &makeInstance_<Self>, &protocols_<Self>}};               \
    inline static const ::tovi::ClassRegistrar registrar_{class_.value};                                            \
                                                                                                                    \
private:

/// The same for a class of a library: the run-time form is defined once, with TOVI_DEFINE_CLASS in the source file.
#define TOVI_DECLARE_CLASS(Self)                                                                                    \
public:                                                                                                             \
    static ::tovi::Class& classObject() noexcept { return class_.value; }                                           \
    ::tovi::Class& isa() const noexcept override { return class_.value; }                                           \
    const ::tovi::DispatchTable& dispatchTable() const noexcept override { return class_.value.instanceMethods(); } \
                                                                                                                    \
protected:                                                                                                          \
    TOVI_CLASS_RECIPE(Self)                                                                                         \
    static ::tovi::detail::ImmortalClass class_;                                                                    \
    static const ::tovi::ClassRegistrar registrar_;                                                                 \
                                                                                                                    \
private:

#define TOVI_DEFINE_CLASS(Self, Super)                                                                \
    constinit ::tovi::detail::ImmortalClass Self::class_{                                             \
        ::tovi::Class::Recipe{#Self, &Super::class_.value, &makeInstance_<Self>, &protocols_<Self>}}; \
    const ::tovi::ClassRegistrar Self::registrar_{class_.value};

#define TOVI_CLASS_RECIPE(Self)                                                                                       \
    template <class T> static ::tovi::NSObject* makeInstance_() {                                                     \
        if constexpr (requires { new T(); })                                                                          \
            return new T();                                                                                           \
        else                                                                                                          \
            return nullptr;                                                                                           \
    }                                                                                                                 \
    template <class T> static unsigned protocols_() {                                                                 \
        unsigned result = 0;                                                                                          \
        if constexpr (!::tovi::detail::isOfNSObject<decltype(&T::copy)>)                                              \
            result |= static_cast<unsigned>(::tovi::Protocol::NSCopying);                                             \
        if constexpr (!::tovi::detail::isOfNSObject<decltype(&T::mutableCopy)>)                                       \
            result |= static_cast<unsigned>(::tovi::Protocol::NSMutableCopying);                                      \
        if constexpr (requires { typename T::CompositeBase; })                                                        \
            result |= ::tovi::detail::traitsByParts<T, decltype(&T::isEqual), decltype(&T::hash), decltype(&T::copy), \
                                                    decltype(&T::description)>();                                     \
        return result;                                                                                                \
    }

}  // namespace tovi
