#pragma once

#include <vector>

#include <ToviFoundationKit/Foundation/Composite.h>
#include <ToviFoundationKit/Foundation/NSMutableDictionary.h>

namespace tovi::detail {

/// The insides of composites.
struct CompositeAccess {
    static NSObject* data(const Composite& composite) noexcept { return composite.data_; }
    static NSObject* children(const Composite& composite) noexcept { return composite.children_; }
    static Ref<Composite> copyWithoutChildren(const Composite& composite);
    static void addCopiedChild(Composite& composite, const Ref<NSObject>& child, NSObject* key) {
        composite.addCopiedChild(child, key);
    }
    static bool describe(const Composite& composite, StringBuilder& text) { return composite.describe(text); }
};

/// The object as a composite when its class leaves the operation to it, else null.
inline const Composite* compositeFor(const NSObject& object, Class::ByParts operation) noexcept {
    return object.isa().answersByParts(operation) ? static_cast<const Composite*>(&object) : nullptr;
}

/// Makes something of a composite and of all those below it, the children before their parent is complete:
///
///     make(object, key, descend)      what becomes of one; sets `descend` to the composite whose children are to
///     follow add(parent, key, index, child)  enters what became of a child; the key is null where the children are a
///     list
///
///     drop(made)                      gets rid of one that will not be complete, since something raised
///
/// Those whose children are under way wait in a vector, not on the stack.
template <class Made, class Make, class Add, class Drop>
Made builtFrom(const NSObject& root, Make make, Add add, Drop drop) {
    struct Open {
        Made made;
        FastEnumeration enumeration;
        const NSDictionary* keyed;
        NSUInteger index = 0;
        id key = nullptr;
    };
    struct OpenOnes : std::vector<Open> {
        explicit OpenOnes(Drop& d) : drop(d) {}
        // What getting rid of them raises would only hide what went wrong first.
        ~OpenOnes() {
            for (Open& each : *this)
                try {
                    drop(each.made);
                } catch (...) {
                }
        }
        Drop& drop;
    } open(drop);
    const auto enter = [&](Made&& child) {
        Open& parent = open.back();
        add(parent.made, parent.key.get(), parent.index++, std::move(child));
    };
    Ref<NSObject> at = share(root);
    id key;
    for (;;) {
        const Composite* descend = nullptr;
        Made made = make(*at, key.get(), descend);
        if (NSObject* const children = descend ? CompositeAccess::children(*descend) : nullptr)
            open.push_back({std::move(made), FastEnumeration(*children), as<NSDictionary>(children)});
        else if (open.empty())
            return made;
        else
            enter(std::move(made));
        for (NSObject* next = nullptr; !next;) {
            Open& parent = open.back();
            next = parent.enumeration.next();
            if (next && parent.keyed) {
                parent.key = next;
                next = parent.keyed->find(*parent.key);
                if (!next)  // the key's own code has changed something
                    raiseMutatedWhileEnumerated(*parent.keyed);
            }
            if (next) {
                at = *next;
                key = parent.key;
                continue;
            }
            Made complete = std::move(parent.made);
            open.pop_back();
            if (open.empty())
                return complete;
            enter(std::move(complete));
        }
    }
}

template <class Made, class Make, class Add> Made builtFrom(const NSObject& root, Make make, Add add) {
    return builtFrom<Made>(root, make, add, [](Made&) {});
}

}  // namespace tovi::detail
