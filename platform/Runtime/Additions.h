#pragma once

#include <ToviFoundationKit/Runtime/Class.h>

namespace tovi {

/// One line of a registration table.
template <class Receiver> struct MethodEntry {
    const char* name;
    Method method;
    bool classLevel = false;
};

/// A function whose first parameter is the receiver, or a member function, as an operation of instances.
template <auto function> auto instance(const char* name) {
    using Entry =
        typename detail::EntryOf<detail::ConstantSource<function>, std::remove_const_t<decltype(function)>>::Instance;
    return MethodEntry<typename Entry::Receiver>{name, Entry::method()};
}

/// A function without receiver as a class-level operation.
template <auto function> auto classLevel(const char* name) {
    using Entry = typename detail::EntryOf<detail::ConstantSource<function>,
                                           std::remove_const_t<decltype(function)>>::Receiverless;
    return MethodEntry<void>{name, Entry::method(), true};
}

/// A function whose first parameter is the class that received the message, as a class-level operation.
template <auto function> auto classReceiver(const char* name) {
    using Entry =
        typename detail::EntryOf<detail::ConstantSource<function>, std::remove_const_t<decltype(function)>>::Instance;
    static_assert(std::is_same_v<typename Entry::Receiver, Class>);
    return MethodEntry<void>{name, Entry::method(), true};
}

/// The registration table at the foot of a source file: adds operations to class T when the library is loaded.
///
///     const Additions<NSArray> additions{
///         instance<&reversedArray>("reversedArray"),
///         classLevel<&emptyArray>("emptyArray"),
///     };
template <class T> struct Additions {
    template <class... Receiver> explicit Additions(const MethodEntry<Receiver>&... entries) {
        static_assert(((std::is_void_v<Receiver> || std::is_base_of_v<Receiver, T>)&&...),
                      "the operation's receiver is another class");
        (add(entries.name, entries.method, entries.classLevel), ...);
    }

private:
    static void add(const char* name, const Method& method, bool classLevel) {
        Class& target = T::classObject();
        (classLevel ? target.classMethods() : target.instanceMethods()).add(Selector::named(name), method);
    }
};

}  // namespace tovi
