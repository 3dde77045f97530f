#include <ToviFoundationKit/nodes/QVLHashNode.h>

#include <vector>

#include <ToviFoundationKit/Foundation/Composite_p.h>
#include <ToviFoundationKit/Foundation/NSCoder.h>
#include <ToviFoundationKit/nodes/Unfinished_p.h>
#include <ToviFoundationKit/Runtime/Additions.h>
#include <ToviFoundationKit/Runtime/StringBuilder.h>

namespace tovi {

TOVI_DEFINE_CLASS(QVLHashNode, NSObject)

namespace {

const NSString& childrenKey() {
    static const Ref<NSString> key = u"QVLHashNode__nodeChildren"_ns;
    return key;
}

const NSString& dataKey() {
    static const Ref<NSString> key = u"QVLHashNode__nodeData"_ns;
    return key;
}

}  // namespace

// --- Making ----------------------------------------------------------------------------------------------------------

void QVLHashNode::setUp(const id& data, QVLHashNode* parent, RefPtr<NSDictionary> children) {
    setUp(data);
    children_ = children ? id(NSMutableDictionary::dictionaryWithDictionary(*children)) : id();
    setParent(parent);
}

// Children are entered without theirs, which follow.
void QVLHashNode::setUpFromRepresentation(const NSDictionary& representation) {
    struct Pending {
        Ref<QVLHashNode> node;
        Ref<NSDictionary> representation;
    };
    const Unfinished<QVLHashNode> unfinished(*this);
    std::vector<Pending> pending{{*this, share(representation)}};
    data_ = representation.objectForKey(dataKey());
    while (!pending.empty()) {
        const Pending at = std::move(pending.back());
        pending.pop_back();
        const id value = at.representation->objectForKey(childrenKey());
        if (!value)
            continue;
        const Ref<NSDictionary> children = to<NSDictionary>(value);
        at.node->children_ = NSMutableDictionary::dictionaryWithCapacity(children->count());
        for (const auto& [key, child] : *children) {
            const Ref<NSDictionary> form = to<NSDictionary>(&child);
            const Ref<Composite> made = newOfSameClass();
            nodeIn(made).data_ = form->objectForKey(dataKey());
            at.node->addChild_forKey(nodeIn(made), key);
            pending.push_back({nodeIn(made), form});
        }
    }
}

Ref<QVLHashNode> QVLHashNode::init() { return adopt(*new QVLHashNode); }

Ref<QVLHashNode> QVLHashNode::initWithData(id data) {
    Ref<QVLHashNode> node = init();
    node->setUp(data);
    return node;
}

Ref<QVLHashNode> QVLHashNode::initWithData_parent_children(id data, RefPtr<QVLHashNode> parent,
                                                           RefPtr<NSDictionary> children) {
    Ref<QVLHashNode> node = init();
    node->setUp(data, parent, std::move(children));
    return node;
}

Ref<QVLHashNode> QVLHashNode::initWithDictionaryRepresentation(const NSDictionary& representation) {
    Ref<QVLHashNode> node = init();
    node->setUpFromRepresentation(representation);
    return node;
}

// --- Children --------------------------------------------------------------------------------------------------------

// The values are looked at as what they are, since anybody may put anything into the dictionary.
QVLHashNode& QVLHashNode::nodeIn(NSObject& object) {
    if (&object.isa() != &classObject() && !object.isKindOfClass(classObject())) [[unlikely]]
        detail::raiseWrongClass(&object, classObject());
    return static_cast<QVLHashNode&>(object);
}

void QVLHashNode::setNodeParent(RefPtr<QVLHashNode> parent) { setParent(std::move(parent)); }

RefPtr<QVLHashNode> QVLHashNode::childForKey(const NSObject& key) const {
    NSObject* const child = children_ ? dictionary()->find(key) : nullptr;
    return child ? RefPtr<QVLHashNode>(nodeIn(*child)) : nullptr;
}

NSUInteger QVLHashNode::numberOfChildren() const noexcept { return children_ ? dictionary()->count() : 0; }

void QVLHashNode::addChild_forKey(QVLHashNode& node, NSObject& key) {
    if (!children_)
        children_ = NSMutableDictionary::dictionary();
    dictionary()->setObject_forKey(node, key);
    node.setNodeParent(*this);
}

void QVLHashNode::addChildWithData_forKey(id data, NSObject& key) {
    addChild_forKey(initWithData(std::move(data)), key);
}

void QVLHashNode::removeChildForKey(const NSObject& key) {
    const Ref<QVLHashNode> self(*this);
    const Ref<NSObject> held = share(key);
    const RefPtr<NSMutableDictionary> children = dictionary();
    if (const RefPtr<QVLHashNode> child = childForKey(key))
        child->setNodeParent(nullptr);
    if (children)
        children->removeObjectForKey(key);
}

void QVLHashNode::takeApart() {
    const Ref<QVLHashNode> self(*this);
    if (const RefPtr<QVLHashNode> parent = nodeParent(); parent && parent->children_) {
        const RefPtr<NSMutableDictionary> siblings = parent->children();
        const Ref<NSArray> keys = siblings->allKeys();
        for (NSObject& key : *keys)
            if (siblings->find(key) == this)
                siblings->removeObjectForKey(key);
    }
    std::vector<Ref<QVLHashNode>> waiting{self};
    while (!waiting.empty()) {
        const Ref<QVLHashNode> node = std::move(waiting.back());
        waiting.pop_back();
        node->setNodeParent(nullptr);
        const RefPtr<NSMutableDictionary> children = node->children();
        node->children_ = nullptr;
        if (!children)
            continue;
        for (const auto& [key, value] : *children)
            if (as<QVLHashNode>(&value))
                waiting.emplace_back(static_cast<QVLHashNode&>(value));
        children->removeAllObjects();
    }
}

bool QVLHashNode::isDescendantOfNode(const RefPtr<QVLHashNode>& node) const noexcept {
    return node && isDescendantOf(node.get());
}

// --- As a value ------------------------------------------------------------------------------------------------------

void QVLHashNode::addCopiedChild(const Ref<NSObject>& child, NSObject* key) { addChild_forKey(nodeIn(child), *key); }

bool QVLHashNode::describe(StringBuilder& text) const {
    if (data_)
        text.append(data_->description());
    text.append(u'\n');
    return true;
}

Ref<NSMutableDictionary> QVLHashNode::dictionaryRepresentation() const {
    struct Form {
        Ref<NSMutableDictionary> node;
        RefPtr<NSMutableDictionary> children;
    };
    return detail::builtFrom<Form>(
               *this,
               [](NSObject& object, NSObject*, const Composite*& descend) {
                   QVLHashNode& node = nodeIn(object);
                   Form form{NSMutableDictionary::dictionary(), nullptr};
                   const id data = node.data_ ? id(node.data_->mutableCopy()) : id();
                   if (node.children_) {
                       form.children = NSMutableDictionary::dictionaryWithCapacity(node.numberOfChildren());
                       form.node->setObject_forKey(*form.children, share(childrenKey()));
                       descend = &node;
                   }
                   if (data)
                       form.node->setObject_forKey(*data, share(dataKey()));
                   return form;
               },
               [](const Form& parent, NSObject* key, NSUInteger, const Form& child) {
                   parent.children->setObject_forKey(child.node, *key);
               })
        .node;
}

void QVLHashNode::takeStored(id parent, id children) {
    setParent(parent ? RefPtr<Composite>(to<QVLHashNode>(parent)) : nullptr);
    if (!children)
        return;
    to<NSDictionary>(children);
    children_ = as<NSMutableDictionary>(children.get()) ? std::move(children) : children->mutableCopy();
}

// --- Messages --------------------------------------------------------------------------------------------------------

// What is not as in C++: instances that were made of a class before, and nil.
struct QVLHashNode::Messages {
    static Ref<QVLHashNode> init(QVLHashNode& self) {
        self.breakReferenceCycles();
        return self;
    }
    static Ref<QVLHashNode> initWithData(QVLHashNode& self, const id& data) {
        self.setUp(data);
        return self;
    }
    static Ref<QVLHashNode> initWithData_parent_children(QVLHashNode& self, const id& data, QVLHashNode* parent,
                                                         RefPtr<NSDictionary> children) {
        self.setUp(data, parent, std::move(children));
        return self;
    }
    static Ref<QVLHashNode> initWithDictionaryRepresentation(QVLHashNode& self, const NSDictionary& representation) {
        self.setUpFromRepresentation(representation);
        return self;
    }
    static RefPtr<QVLHashNode> childForKey(const QVLHashNode& self, const NSObject* key) {
        return key ? self.childForKey(*key) : nullptr;
    }
    static bool isDescendantOfNodeInArray(const QVLHashNode& self, const NSArray* nodes) {
        return nodes && self.isDescendantOfNodeInArray(*nodes);
    }
    static bool isEqualToNode(const QVLHashNode& self, const QVLHashNode* node) {
        return node && self.isEqualToNode(*node);
    }

    static const Additions<QVLHashNode> additions;
};

const Additions<QVLHashNode> QVLHashNode::Messages::additions{
    instance<&Messages::init>("init"),
    instance<&Messages::initWithData>("initWithData:"),
    instance<&Messages::initWithData_parent_children>("initWithData:parent:children:"),
    instance<&Messages::initWithDictionaryRepresentation>("initWithDictionaryRepresentation:"),
    instance<&QVLHashNode::nodeData>("nodeData"),
    instance<&QVLHashNode::setNodeData>("setNodeData:"),
    instance<&QVLHashNode::nodeParent>("nodeParent"),
    instance<&QVLHashNode::setNodeParent>("setNodeParent:"),
    instance<&QVLHashNode::children>("children"),
    instance<&Messages::childForKey>("childForKey:"),
    instance<&QVLHashNode::numberOfChildren>("numberOfChildren"),
    instance<&QVLHashNode::addChild_forKey>("addChild:forKey:"),
    instance<&QVLHashNode::addChildWithData_forKey>("addChildWithData:forKey:"),
    instance<&QVLHashNode::removeChildForKey>("removeChildForKey:"),
    instance<&QVLHashNode::takeApart>("takeApart"),
    instance<&QVLHashNode::rootNode>("rootNode"),
    instance<&QVLHashNode::numberOfParents>("numberOfParents"),
    instance<&QVLHashNode::isDescendantOfNode>("isDescendantOfNode:"),
    instance<&Messages::isDescendantOfNodeInArray>("isDescendantOfNodeInArray:"),
    instance<&Messages::isEqualToNode>("isEqualToNode:"),
    instance<&QVLHashNode::encodeWithCoder>("encodeWithCoder:"),
    instance<&QVLHashNode::initWithCoder>("initWithCoder:"),
    instance<&QVLHashNode::breakReferenceCycles>("breakReferenceCycles"),
    instance<&QVLHashNode::dictionaryRepresentation>("dictionaryRepresentation"),
};

}  // namespace tovi
