#include <ToviFoundationKit/Foundation/Composite.h>

#include <unordered_set>

#include <ToviFoundationKit/Foundation/Collections_p.h>
#include <ToviFoundationKit/Foundation/NSCoder.h>
#include <ToviFoundationKit/Runtime/NSException.h>
#include <ToviFoundationKit/Runtime/StringBuilder.h>

namespace tovi::detail {

Ref<Composite> CompositeAccess::copyWithoutChildren(const Composite& composite) {
    Ref<Composite> result = composite.newOfSameClass();
    if (composite.data_)
        result->data_ = composite.data_->copy()->mutableCopy();
    return result;
}

Composite::~Composite() { setParent(nullptr); }

void Composite::setParent(RefPtr<Composite> parent) noexcept {
    isUnproven_ = false;
    if (!holdsParent_)
        parent_ = parent.get();
    else if (NSObject* const former = std::exchange(parent_, parent.leak()))
        former->release();
}

void Composite::setUp(const id& data) { data_ = data ? id(data->mutableCopy()) : id(); }

void Composite::breakReferenceCycles() noexcept {
    setParent(nullptr);
    children_ = nullptr;
    data_ = nullptr;
}

Ref<Composite> Composite::newOfSameClass() const {
    const id made = isa().makeInstance();
    if (!made)
        NSException::raise(NSInvalidArgumentException, u"%@ has no constructor without arguments", isa());
    return *static_cast<Composite*>(made.get());
}

// --- Above -----------------------------------------------------------------------------------------------------------

NSUInteger Composite::numberOfParents() const noexcept {
    NSUInteger count = 0;
    for (const Composite* each = parent(); each; each = each->parent())
        ++count;
    return count;
}

Composite& Composite::root() const noexcept {
    const Composite* each = this;
    while (Composite* const above = each->parent())
        each = above;
    return const_cast<Composite&>(*each);
}

bool Composite::isDescendantOf(const NSObject* node) const noexcept {
    const Composite* each = this;
    while (each && each != node)
        each = each->parent();
    return each;
}

// One way up for all of them.
bool Composite::isDescendantOfAnyOf(const NSArray& nodes) const {
    if (nodes.count() == 1)
        return isDescendantOf(&nodes[0]);
    std::unordered_set<const NSObject*> wanted;
    for (const NSObject& each : nodes)
        wanted.insert(&each);
    const Composite* each = this;
    while (each && !wanted.contains(each))
        each = each->parent();
    return each && !wanted.empty();
}

// --- As a value ------------------------------------------------------------------------------------------------------

bool Composite::isEqual(const NSObject* other) const {
    return other == this ||
           (other && other->isKindOfClass(isa()) && hasEqualParts(static_cast<const Composite&>(*other)));
}

bool Composite::hasEqualParts(const Composite& other) const { return equalParts(*this, other); }

NSUInteger Composite::hash() const { return hashOfCollection(*this, CollectionKind::Composite); }

Ref<NSObject> Composite::copy() const {
    return builtFrom<Ref<NSObject>>(
        *this,
        [this](const NSObject& object, NSObject*, const Composite*& descend) -> Ref<NSObject> {
            // An override of the receiver's class may have called this.
            descend = &object == this ? this : compositeFor(object, Class::ByParts::Copy);
            return descend ? Ref<NSObject>(CompositeAccess::copyWithoutChildren(*descend)) : object.copy();
        },
        [](const Ref<NSObject>& parent, NSObject* key, NSUInteger, const Ref<NSObject>& child) {
            CompositeAccess::addCopiedChild(static_cast<Composite&>(*parent), child, key);
        },
        [](const Ref<NSObject>& incomplete) { static_cast<Composite&>(*incomplete).takeApart(); });
}

Ref<NSString> Composite::description() const {
    struct Nothing {};
    StringBuilder text;
    builtFrom<Nothing>(
        *this,
        [&](const NSObject& object, NSObject* key, const Composite*& descend) {
            if (key)
                text.append(u"\t childKey:").append(key->description()).append(u" -- ");
            const Composite* const composite =
                &object == this ? this : compositeFor(object, Class::ByParts::Description);
            if (!composite)
                text.append(object.description());
            else if (CompositeAccess::describe(*composite, text))
                descend = composite;
            return Nothing();
        },
        [&](Nothing, NSObject*, NSUInteger, Nothing) { text.append(u'\n'); });
    return text.string();
}

// --- In archives -----------------------------------------------------------------------------------------------------

void Composite::encodeWithCoder(NSCoder& coder) const {
    const id children = storedChildren();
    if (coder.allowsKeyedCoding()) {
        coder.encodeObject_forKey(parent(), u"nodeParent"_ns);
        coder.encodeObject_forKey(children, u"nodeChildren"_ns);
        coder.encodeObject_forKey(data_, u"nodeData"_ns);
    } else {
        coder.encodeObject(parent());
        coder.encodeObject(children);
        coder.encodeObject(data_);
    }
}

void Composite::initWithCoder(NSCoder& coder) {
    const bool keyed = coder.allowsKeyedCoding();
    const id parent = keyed ? coder.decodeObjectForKey(u"nodeParent"_ns) : coder.decodeObject();
    const id children = keyed ? coder.decodeObjectForKey(u"nodeChildren"_ns) : coder.decodeObject();
    data_ = keyed ? coder.decodeObjectForKey(u"nodeData"_ns) : coder.decodeObject();
    takeStored(parent, children);
}

}  // namespace tovi::detail
