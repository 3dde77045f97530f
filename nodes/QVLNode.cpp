#include <ToviFoundationKit/nodes/QVLNode.h>

#include <ToviFoundationKit/Extensions/ElementTable_p.h>
#include <ToviFoundationKit/Extensions/NSMutableArray-QVLAdditions.h>
#include <ToviFoundationKit/Foundation/Composite_p.h>
#include <ToviFoundationKit/Foundation/NSCoder.h>
#include <ToviFoundationKit/nodes/Unfinished_p.h>
#include <ToviFoundationKit/Runtime/Additions.h>
#include <ToviFoundationKit/Runtime/NSFormat.h>
#include <ToviFoundationKit/Runtime/NSNumber.h>

namespace tovi {

TOVI_DEFINE_CLASS(QVLNode, NSObject)

QVLNode::~QVLNode() { letGoOfChildren(); }

// Children that do not hold their parent outlive it without the link.
void QVLNode::letGoOfChildren() noexcept {
    if (!children_)
        return;
    for (NSObject& each : *list())
        if (auto* const child = as<QVLNode>(&each); child && !child->holdsParent() && child->parent_ == this)
            child->setParent(nullptr);
}

void QVLNode::breakReferenceCycles() noexcept {
    letGoOfChildren();
    Composite::breakReferenceCycles();
}

// --- Making ----------------------------------------------------------------------------------------------------------

void QVLNode::setUp(const id& data, QVLNode* parent, RefPtr<NSMutableArray> children) {
    setUp(data);
    hasNoList_ = !children;
    sharesList_ = true;
    children_ = std::move(children);
    setParent(parent);
}

Ref<QVLNode> QVLNode::init() { return adopt(*new QVLNode); }

Ref<QVLNode> QVLNode::initWithData(id data) {
    Ref<QVLNode> node = init();
    node->setUp(data);
    return node;
}

Ref<QVLNode> QVLNode::initWithData_parent_children(id data, RefPtr<QVLNode> parent, RefPtr<NSMutableArray> children) {
    Ref<QVLNode> node = init();
    node->setUp(data, parent, std::move(children));
    return node;
}

Ref<QVLNode> QVLNode::treeNodeWithData(id data, const Class& nodeClass) {
    const Ref<QVLNode> node = to<QVLNode>(nodeClass.makeInstance());
    node->setUp(data, nullptr, NSMutableArray::immutableArray());
    return node;
}

Ref<QVLNode> QVLNode::newNode(id data) const {
    const Ref<Composite> made = newOfSameClass();
    auto& node = static_cast<QVLNode&>(*made);
    node.setUp(data);
    return node;
}

void QVLNode::setNodeParent(RefPtr<QVLNode> parent) { setParent(std::move(parent)); }

// --- The list of children --------------------------------------------------------------------------------------------
//
// Most nodes are leaves, so the list is made when somebody asks for it. As long as nobody else has it, and a node is
// known to have been put into one list once, its place is the only one to be removed.

RefPtr<NSMutableArray> QVLNode::listToChange() {
    if (!children_ && !hasNoList_)
        children_ = NSMutableArray::array();
    return list();
}

RefPtr<NSMutableArray> QVLNode::children() const {
    auto& self = const_cast<QVLNode&>(*this);
    self.sharesList_ = true;
    return self.listToChange();
}

// The elements are looked at as what they are, since anybody may put anything into the list.
QVLNode& QVLNode::nodeIn(NSObject& object) {
    if (&object.isa() != &classObject() && !object.isKindOfClass(classObject())) [[unlikely]]
        detail::raiseWrongClass(&object, classObject());
    return static_cast<QVLNode&>(object);
}

void QVLNode::noteInList() noexcept {
    isInLists_ = isInLists_ || isInList_;
    isInList_ = true;
}

void QVLNode::forgetList() noexcept { isInList_ = isInLists_; }

void QVLNode::insertIntoList(QVLNode& node, NSInteger index) {
    const RefPtr<NSMutableArray> children = listToChange();
    if (!children)
        return;
    const auto place = static_cast<NSUInteger>(index);
    if (place <= children->count())
        children->insertObject_atIndex(node, place);
    else
        children->addObject(node);
    node.noteInList();
}

void QVLNode::insertIntoList(const NSArray& nodes, NSInteger index) {
    for (NSObject& each : nodes)
        nodeIn(each);
    const RefPtr<NSMutableArray> children = listToChange();
    if (!children)
        return;
    const auto place = static_cast<NSUInteger>(index);
    if (place <= children->count())
        insertObjectsFromArray_atIndex(*children, nodes, place);
    else
        children->addObjectsFromArray(nodes);
    for (NSObject& each : nodes)
        nodeIn(each).noteInList();
}

void QVLNode::insertChild_atIndex(RefPtr<QVLNode> node, NSInteger index) {
    if (!node)
        return;
    insertIntoList(*node, index);
    node->setNodeParent(*this);
}

void QVLNode::insertChildren_atIndex(const NSArray& nodes, NSInteger index) {
    insertIntoList(nodes, index);
    for (NSObject& each : nodes)
        nodeIn(each).setNodeParent(*this);
}

void QVLNode::appendChildWithData(id data) { insertChild_atIndex(newNode(std::move(data)), -1); }
void QVLNode::prependChildWithData(id data) { insertChild_atIndex(newNode(std::move(data)), 0); }

// Setting the parent may run the host's code, after which everything is looked at anew.
void QVLNode::removeChildAtIndex(NSUInteger index) {
    const Ref<QVLNode> self(*this), child = nodeIn((*list())[index]);
    if (sharesList_ || child->isInLists_)
        return _removeChildrenIdenticalTo(NSArray::arrayWithObject(child));
    child->setNodeParent(nullptr);
    const RefPtr<NSMutableArray> children = list();
    if (!children)
        return;
    if (index < children->count() && &(*children)[index] == child.get())
        children->removeObjectAtIndex(index);
    else
        children->removeObjectIdenticalTo(child);
    child->forgetList();
}

void QVLNode::removeChild(const QVLNode& node) {
    const NSUInteger index = indexOfChild(node);
    if (index < numberOfChildren())
        removeChildAtIndex(index);
}

void QVLNode::_removeChildrenIdenticalTo(const NSArray& nodes) {
    const Ref<QVLNode> self(*this);
    const Ref<NSArray> removed = NSArray::arrayWithArray(nodes);
    for (NSObject& each : *removed)
        nodeIn(each).setNodeParent(nullptr);
    const RefPtr<NSMutableArray> children = list();
    if (!children || !removed->count())
        return;
    if (removed->count() == 1)
        return children->removeObjectIdenticalTo((*removed)[0]);
    const ElementTable<ByIdentity> table(removed);
    children->removeObjectsPassingTest([&](NSObject& each) { return table.contains(each); });
}

void QVLNode::removeAllChildren() {
    const Ref<QVLNode> self(*this);
    const RefPtr<NSMutableArray> children = list();
    if (!children)
        return;
    const bool isShared = sharesList_;
    const Ref<NSArray> removed = NSArray::arrayWithArray(*children);
    for (NSObject& each : *removed)
        nodeIn(each).setNodeParent(nullptr);
    children->removeAllObjects();
    if (!isShared)
        for (NSObject& each : *removed)
            nodeIn(each).forgetList();
}

void QVLNode::removeFromParent() {
    const Ref<QVLNode> self(*this);
    if (const RefPtr<QVLNode> parent = nodeParent())
        parent->removeChild(*this);
}

namespace {
bool isImmutable(const RefPtr<NSMutableArray>& list) { return list && &list->isa() == &NSArray::classObject(); }
}  // namespace

void QVLNode::takeApart() {
    const Ref<QVLNode> self(*this);
    if (const RefPtr<QVLNode> parent = nodeParent(); parent && !isImmutable(parent->list()))
        parent->_removeChildrenIdenticalTo(NSArray::arrayWithObject(*this));
    std::vector<Ref<QVLNode>> waiting{self};
    while (!waiting.empty()) {
        const Ref<QVLNode> node = std::move(waiting.back());
        waiting.pop_back();
        node->setNodeParent(nullptr);
        const RefPtr<NSMutableArray> children = node->list();
        node->children_ = nullptr;
        if (!children)
            continue;
        for (NSObject& each : *children)
            if (as<QVLNode>(&each))
                waiting.emplace_back(static_cast<QVLNode&>(each));
        if (!isImmutable(children))
            children->removeAllObjects();
    }
}

// --- Finding one's way -----------------------------------------------------------------------------------------------

NSUInteger QVLNode::numberOfChildren() const noexcept { return children_ ? list()->count() : 0; }

NSUInteger QVLNode::indexOfChild(const NSObject& node) const {
    const RefPtr<NSMutableArray> children = list();
    return children ? children->indexOfObject(node) : static_cast<NSUInteger>(NSNotFound);
}

NSUInteger QVLNode::indexOfChildIdenticalTo(const NSObject& node) const {
    return children_ ? list()->indexOfObjectIdenticalTo(node) : static_cast<NSUInteger>(NSNotFound);
}

RefPtr<QVLNode> QVLNode::childAtIndex(NSUInteger index) const {
    if (hasNoList_)
        return nullptr;
    return nodeIn((*const_cast<QVLNode&>(*this).listToChange())[index]);
}

RefPtr<QVLNode> QVLNode::lastChild() const {
    const NSUInteger count = numberOfChildren();
    return count ? childAtIndex(count - 1) : nullptr;
}

// Not found is a large number, for which the parent raises.
RefPtr<QVLNode> QVLNode::nextSiblingNode() const {
    const RefPtr<QVLNode> parent = nodeParent();
    const NSUInteger next = parent ? parent->indexOfChild(*this) + 1 : 0;
    if (!parent || static_cast<NSInteger>(next) >= static_cast<NSInteger>(parent->numberOfChildren()))
        return nullptr;
    return parent->childAtIndex(next);
}

RefPtr<QVLNode> QVLNode::previousSiblingNode() const {
    const RefPtr<QVLNode> parent = nodeParent();
    const NSUInteger index = parent ? parent->indexOfChild(*this) : 0;
    return index ? parent->childAtIndex(index - 1) : nullptr;
}

Ref<QVLNode> QVLNode::rootNodeAtIndex(NSInteger levels) const {
    const auto* node = this;
    for (; node->parent() && levels >= 0; --levels)
        node = static_cast<const QVLNode*>(node->parent());
    return share(*node);
}

bool QVLNode::isDescendantOfNode(const RefPtr<QVLNode>& node) const noexcept {
    return node && isDescendantOf(node.get());
}

// --- As a value ------------------------------------------------------------------------------------------------------

void QVLNode::addCopiedChild(const Ref<NSObject>& child, NSObject*) { appendChild(nodeIn(child)); }

bool QVLNode::describe(StringBuilder& text) const {
    const auto address = [](const NSObject* object) {
        return static_cast<std::uint32_t>(reinterpret_cast<std::uintptr_t>(object));
    };
    const Ref<NSString> words = NSString::stringWithFormat(
        u"  parent:0x%08x\nself:0x%08x  class:<%@>\n  nodeChildren:0x%08x (has %ld childrens)\nnodeData:%@",
        address(parent()), address(this), isa(), address(const_cast<QVLNode&>(*this).listToChange().get()),
        numberOfChildren(), data_);
    text.append(words);
    return false;
}

Ref<NSMutableDictionary> QVLNode::QVLNodeToDictionary() const {
    struct Form {
        Ref<NSMutableDictionary> node;
        RefPtr<NSMutableDictionary> children;
    };
    std::vector<Ref<NSNumber>> numbers;
    return detail::builtFrom<Form>(
               *this,
               [](NSObject& object, NSObject*, const Composite*& descend) {
                   QVLNode& node = nodeIn(object);
                   Form form{NSMutableDictionary::dictionaryWithCapacity(3), nullptr};
                   if (node.data_)
                       form.node->setObject_forKey(*node.data_, u"data"_ns);
                   if (const NSUInteger count = node.numberOfChildren()) {
                       form.children = NSMutableDictionary::dictionaryWithCapacity(count);
                       form.node->setObject_forKey(*form.children, u"childrens"_ns);
                       descend = &node;
                   }
                   return form;
               },
               [&](const Form& parent, NSObject*, NSUInteger index, const Form& child) {
                   if (index == numbers.size())
                       numbers.push_back(NSNumber::numberWithUnsignedInteger(index));
                   parent.children->setObject_forKey(child.node, numbers[index]);
               })
        .node;
}

// Children are entered empty and filled later.
Ref<QVLNode> QVLNode::QVLNodeFromDictionary(const NSDictionary& dictionary) {
    struct Pending {
        Ref<QVLNode> node;
        Ref<NSDictionary> form;
    };
    const auto nodeFor = [](const NSDictionary& form) { return initWithData(form.objectForKey(u"data"_ns)); };
    const Ref<QVLNode> root = nodeFor(dictionary);
    const Unfinished<QVLNode> unfinished(root);
    std::vector<Pending> pending{{root, share(dictionary)}};
    while (!pending.empty()) {
        const Pending at = std::move(pending.back());
        pending.pop_back();
        const id value = at.form->objectForKey(u"childrens"_ns);
        if (!value)
            continue;
        const Ref<NSDictionary> children = to<NSDictionary>(value);
        for (NSUInteger i = 0; i < children->count(); ++i) {
            const id form = children->objectForKey(NSNumber::numberWithUnsignedInteger(i));
            const Ref<QVLNode> child = form ? nodeFor(to<NSDictionary>(form)) : init();
            at.node->appendChild(child);
            if (form)
                pending.push_back({child, to<NSDictionary>(form)});
        }
    }
    return root;
}

// --- In archives -----------------------------------------------------------------------------------------------------

// A leaf without list stores the one that stands for all such lists, an empty one that nobody changes.
id QVLNode::storedChildren() const {
    static const Ref<NSMutableArray> none = NSMutableArray::array();
    return children_ || hasNoList_ ? children_ : id(none);
}

// Anybody can write an archive in which a node names a parent that it does not hold and that nothing else does. Such a
// link counts once the parent turns out to have the node among its children, as it lets go of it when it dies. Of the
// two the one that comes first leaves word with the child: the child that it has a parent to be proven, the parent that
// it is the one.
void QVLNode::takeStoredParent(QVLNode* parent) noexcept {
    isFromArchive_ = true;
    const bool isProven = holdsParent() || parent_ == parent ||
                          (parent && parent_ && parent->isFromArchive_ &&
                           parent->indexOfChildIdenticalTo(*this) != static_cast<NSUInteger>(NSNotFound));
    setParent(parent);
    isUnproven_ = !isProven;
}

void QVLNode::proveToChild(NSObject& object) noexcept {
    auto* const child = as<QVLNode>(&object);
    if (!child || child->holdsParent())
        return;
    if (!child->isFromArchive_)
        child->parent_ = this;
    else if (child->parent_ == this)
        child->isUnproven_ = false;
}

void QVLNode::takeStored(id parent, id children) {
    takeStoredParent(parent ? to<QVLNode>(parent).get() : nullptr);
    hasNoList_ = !children;
    sharesList_ = true;
    if (!children)
        return;
    const Ref<NSArray> stored = to<NSArray>(children);
    for (NSObject& each : *stored)
        proveToChild(each);
    if (!as<NSMutableArray>(children.get()))
        children_ = NSMutableArray::immutableArrayWithArray(stored);
    else if (stored->count())
        children_ = std::move(children);
}

// --- Messages --------------------------------------------------------------------------------------------------------

// What is not as in C++: instances that were made of a class before, and nil.
struct QVLNode::Messages {
    static Ref<QVLNode> init(QVLNode& self) {
        self.letGoOfChildren();
        self.children_ = nullptr;
        self.hasNoList_ = self.sharesList_ = false;
        self.data_ = nullptr;
        self.setParent(nullptr);
        return self;
    }
    static Ref<QVLNode> initWithData(QVLNode& self, const id& data) {
        self.setUp(data);
        return self;
    }
    static Ref<QVLNode> initWithData_parent_children(QVLNode& self, const id& data, QVLNode* parent,
                                                     RefPtr<NSMutableArray> children) {
        self.setUp(data, parent, std::move(children));
        return self;
    }
    static Ref<QVLNode> treeNodeWithData(const Class& nodeClass, id data) {
        return QVLNode::treeNodeWithData(std::move(data), nodeClass);
    }
    static Ref<QVLNode> fromDictionary(const NSDictionary* dictionary) {
        return dictionary ? QVLNodeFromDictionary(*dictionary) : QVLNode::init();
    }
    static void removeChild(QVLNode& self, const QVLNode* node) {
        if (node)
            self.removeChild(*node);
    }
    static NSUInteger indexOfChild(const QVLNode& self, const NSObject* node) {
        return node ? self.indexOfChild(*node) : static_cast<NSUInteger>(NSNotFound);
    }
    static NSUInteger indexOfChildIdenticalTo(const QVLNode& self, const NSObject* node) {
        return node ? self.indexOfChildIdenticalTo(*node) : static_cast<NSUInteger>(NSNotFound);
    }
    static bool isDescendantOfNodeInArray(const QVLNode& self, const NSArray* nodes) {
        return nodes && self.isDescendantOfNodeInArray(*nodes);
    }
    static bool isEqualToNode(const QVLNode& self, const QVLNode* node) { return node && self.isEqualToNode(*node); }

    static const Additions<QVLNode> additions;
};

const Additions<QVLNode> QVLNode::Messages::additions{
    instance<&Messages::init>("init"),
    instance<&Messages::initWithData>("initWithData:"),
    instance<&Messages::initWithData_parent_children>("initWithData:parent:children:"),
    classReceiver<&Messages::treeNodeWithData>("treeNodeWithData:"),
    classLevel<&QVLNode::minimumNodeCoverFromNodesInArray>("minimumNodeCoverFromNodesInArray:"),
    classLevel<&Messages::fromDictionary>("QVLNodeFromDictionary:"),
    instance<&QVLNode::nodeData>("nodeData"),
    instance<&QVLNode::setNodeData>("setNodeData:"),
    instance<&QVLNode::nodeParent>("nodeParent"),
    instance<&QVLNode::setNodeParent>("setNodeParent:"),
    instance<&QVLNode::children>("children"),
    instance<&QVLNode::appendChild>("appendChild:"),
    instance<&QVLNode::prependChild>("prependChild:"),
    instance<&QVLNode::appendChildren>("appendChildren:"),
    instance<&QVLNode::prependChildren>("prependChildren:"),
    instance<&QVLNode::appendChildWithData>("appendChildWithData:"),
    instance<&QVLNode::prependChildWithData>("prependChildWithData:"),
    instance<&QVLNode::insertChild_atIndex>("insertChild:atIndex:"),
    instance<&QVLNode::insertChildren_atIndex>("insertChildren:atIndex:"),
    instance<&Messages::removeChild>("removeChild:"),
    instance<&QVLNode::removeAllChildren>("removeAllChildren"),
    instance<&QVLNode::removeFromParent>("removeFromParent"),
    instance<&QVLNode::_removeChildrenIdenticalTo>("_removeChildrenIdenticalTo:"),
    instance<&QVLNode::takeApart>("takeApart"),
    instance<&QVLNode::numberOfChildren>("numberOfChildren"),
    instance<&Messages::indexOfChild>("indexOfChild:"),
    instance<&Messages::indexOfChildIdenticalTo>("indexOfChildIdenticalTo:"),
    instance<&QVLNode::childAtIndex>("childAtIndex:"),
    instance<&QVLNode::firstChild>("firstChild"),
    instance<&QVLNode::lastChild>("lastChild"),
    instance<&QVLNode::nextSiblingNode>("nextSiblingNode"),
    instance<&QVLNode::previousSiblingNode>("previousSiblingNode"),
    instance<&QVLNode::rootNode>("rootNode"),
    instance<&QVLNode::rootNodeAtIndex>("rootNodeAtIndex:"),
    instance<&QVLNode::numberOfParents>("numberOfParents"),
    instance<&QVLNode::isDescendantOfNode>("isDescendantOfNode:"),
    instance<&Messages::isDescendantOfNodeInArray>("isDescendantOfNodeInArray:"),
    instance<&Messages::isEqualToNode>("isEqualToNode:"),
    instance<&QVLNode::QVLNodeToDictionary>("QVLNodeToDictionary"),
    instance<&QVLNode::encodeWithCoder>("encodeWithCoder:"),
    instance<&QVLNode::initWithCoder>("initWithCoder:"),
    instance<&QVLNode::breakReferenceCycles>("breakReferenceCycles"),
    instance<&QVLNode::compare>("compare:"),
    instance<&QVLNode::recursiveSortChildren>("recursiveSortChildren"),
    instance<&QVLNode::sortChildrenWithSelector>("sortChildrenWithSelector:"),
    instance<&QVLNode::resortChildrenWithSelector>("resortChildrenWithSelector:"),
    instance<&QVLNode::recursiveSortChildrenWithSelector>("recursiveSortChildrenWithSelector:"),
    instance<&QVLNode::recursiveMakeChildrenPerformSelector_withObject>(
        "recursiveMakeChildrenPerformSelector:withObject:"),
    instance<&QVLNode::recursiveMakeChildrenPerformSelector_withObject_withObject>(
        "recursiveMakeChildrenPerformSelector:withObject:withObject:"),
};

}  // namespace tovi
