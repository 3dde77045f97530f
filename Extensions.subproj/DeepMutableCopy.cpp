#include <ToviFoundationKit/Extensions/DeepMutableCopy_p.h>

#include <utility>
#include <vector>

#include <ToviFoundationKit/Runtime/Additions.h>
#include <ToviFoundationKit/Runtime/Message.h>

namespace tovi {

namespace {

/// True when the method is the kit's own operation rather than one that another class brought.
template <auto function> bool is(const Method* method) {
    static const Method kits = instance<function>("deepMutableCopy").method;
    return method && method->direct == kits.direct;
}

/// Copies containers one after the other: a nested one is entered into its parent's copy empty and filled later, so no
/// depth of nesting needs the machine's stack.
class DeepCopier {
public:
    Ref<NSMutableArray> start(const NSArray& list) {
        Ref<NSMutableArray> copy = NSMutableArray::arrayWithCapacity(list.count());
        lists_.emplace_back(share(list), copy);
        return copy;
    }

    // Starts out with the same keys and values; those that have copies are replaced later.
    Ref<NSMutableDictionary> start(const NSDictionary& dictionary) {
        Ref<NSMutableDictionary> copy = NSMutableDictionary::dictionaryWithDictionary(dictionary);
        dictionaries_.emplace_back(share(dictionary), copy);
        return copy;
    }

    void finish() {
        while (!lists_.empty() || !dictionaries_.empty()) {
            if (!lists_.empty())
                fillList();
            else
                fillDictionary();
        }
    }

private:
    template <class Source, class Copy> using Pending = std::vector<std::pair<Ref<Source>, Ref<Copy>>>;

    void fillList() {
        const auto [source, copy] = std::move(lists_.back());
        lists_.pop_back();
        for (NSObject& element : *source)
            copy->addObject(copyOf(element));
    }

    void fillDictionary() {
        const auto [source, copy] = std::move(dictionaries_.back());
        dictionaries_.pop_back();
        for (const auto& [key, value] : *source) {
            const Ref<NSObject> held(key);
            const Ref<NSObject> copied = copyOf(value);
            if (!identical(copied.get(), &value))
                copy->setObject_forKey(copied, held);
        }
    }

    Ref<NSObject> copyOf(NSObject& element) {
        const Kind kind = kindOf(element);
        switch (kind.how) {
            case Kind::List:
                return start(static_cast<NSArray&>(element));
            case Kind::Dictionary:
                return start(static_cast<NSDictionary&>(element));
            case Kind::Message:
                return detail::sendResolved<id>(*kind.method, element).ref();
            case Kind::MutableCopy:
                return element.mutableCopy();
            case Kind::Shared:
                break;
        }
        return element;
    }

    /// What becomes of an element depends on its class only; runs of one class are looked up once.
    struct Kind {
        enum How { List, Dictionary, Message, MutableCopy, Shared } how = Shared;
        const Method* method = nullptr;
    };

    Kind kindOf(const NSObject& element) {
        const DispatchTable& table = element.dispatchTable();
        if (&table != lastTable_) {
            lastKind_ = lookUp(element, table.find("deepMutableCopy"_sel));
            lastTable_ = &table;
        }
        return lastKind_;
    }

    static Kind lookUp(const NSObject& element, const Method* method) {
        if (is<&deepMutableCopyOfArray>(method))
            return {Kind::List, method};
        if (is<&deepMutableCopyOfDictionary>(method))
            return {Kind::Dictionary, method};
        if (method)
            return {Kind::Message, method};
        return {element.conformsTo(Protocol::NSMutableCopying) ? Kind::MutableCopy : Kind::Shared, nullptr};
    }

    Pending<NSArray, NSMutableArray> lists_;
    Pending<NSDictionary, NSMutableDictionary> dictionaries_;
    const DispatchTable* lastTable_ = nullptr;
    Kind lastKind_;
};

template <class Container> auto deepCopied(const Container& container) {
    DeepCopier copier;
    auto copy = copier.start(container);
    copier.finish();
    return copy;
}

}  // namespace

Ref<NSMutableArray> deepMutableCopyOfArray(const NSArray& list) { return deepCopied(list); }
Ref<NSMutableDictionary> deepMutableCopyOfDictionary(const NSDictionary& dictionary) { return deepCopied(dictionary); }

}  // namespace tovi
