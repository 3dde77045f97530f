#include <gtest/gtest.h>

#include <ToviFoundationKit/ToviFoundationKit.h>

#include <support/ArchivedPerson.h>
#include <support/Expect.h>

using namespace tovi;

namespace {

/// Frees a tree at the end of a test.
class Tree {
public:
    explicit Tree(Ref<QVLNode> root) : root_(std::move(root)) {}
    ~Tree() { root_->rootNode()->takeApart(); }
    QVLNode* operator->() const { return root_.get(); }
    operator QVLNode&() const { return *root_; }
    Ref<QVLNode> operator*() const { return root_; }

private:
    Ref<QVLNode> root_;
};

Ref<QVLNode> node(std::u16string_view data) { return QVLNode::initWithData(NSString::stringWithCharacters(data)); }

/// A tree as a text writes it, a letter a node: "a(b(c)d)".
Ref<QVLNode> grown(std::u16string_view text) {
    std::vector<Ref<QVLNode>> path;
    RefPtr<QVLNode> last;
    for (const char16_t& unit : text) {
        if (unit == u'(') {
            path.push_back(last.ref());
        } else if (unit == u')') {
            path.pop_back();
        } else {
            last = node({&unit, 1});
            if (!path.empty())
                path.back()->appendChild(last);
        }
    }
    return last->rootNode();
}

std::string written(const QVLNode& tree) {
    std::string text = tree.nodeData() ? tree.nodeData()->description()->UTF8String() : "-";
    if (tree.numberOfChildren()) {
        text += '(';
        for (const QVLNode& each : tree.children()->each<const QVLNode>())
            text += written(each);
        text += ')';
    }
    return text;
}

Ref<QVLNode> child(const QVLNode& parent, NSUInteger index) { return parent.childAtIndex(index).ref(); }
constexpr auto notFound = static_cast<NSUInteger>(NSNotFound);

/// A host's node: its own class, a rank to sort by, and a count of the messages it got.
class Ranked : public QVLNode {
    TOVI_CLASS(Ranked, QVLNode)

public:
    static Ref<Ranked> make(std::u16string_view data, int rank) {
        Ref<Ranked> result = adopt(*new Ranked);
        result->setUp(NSString::stringWithCharacters(data));
        result->rank_ = rank;
        return result;
    }
    NSInteger rank() const { return rank_; }
    NSInteger compareRank(const Ranked& other) const { return rank_ < other.rank_ ? -1 : rank_ > other.rank_; }
    void note(NSMutableArray& log, NSObject* mark) { log.addObject(*NSArray::of(*nodeData(), *mark)); }
    int rank_ = 0;
};

/// A host's node with an equality of its own.
class Anything : public QVLNode {
    TOVI_CLASS(Anything, QVLNode)

public:
    bool isEqual(const NSObject* other) const override { return as<QVLNode>(other); }
    NSUInteger hash() const override { return 7; }
    Ref<NSObject> copy() const override { return adopt(*new Anything); }
};

/// Data that empties a tree when it is compared or hashed.
class Leaver : public NSObject {
    TOVI_CLASS(Leaver, NSObject)

public:
    static Ref<Leaver> make(QVLNode& tree) {
        Ref<Leaver> result = adopt(*new Leaver);
        result->tree_ = &tree;
        return result;
    }
    bool isEqual(const NSObject*) const override { return tree_->removeAllChildren(), false; }
    NSUInteger hash() const override { return tree_->removeAllChildren(), 0; }

private:
    QVLNode* tree_ = nullptr;
};

const Additions<Ranked> additions{
    instance<&Ranked::rank>("rank"),
    instance<&Ranked::compareRank>("compareRank:"),
    instance<&Ranked::note>("note:mark:"),
};

}  // namespace

TEST(QVLNode, HoldsAMutableCopyOfItsDataUnlessItIsSetLater) {
    const Ref<NSString> text = u"text"_ns;
    const auto made = QVLNode::initWithData(text);
    EXPECT_EQ(made->nodeData(), text);
    EXPECT_TRUE(as<NSMutableString>(made->nodeData().get()));
    made->setNodeData(NSNumber::numberWithInt(3));
    EXPECT_EQ(made->nodeData(), NSNumber::numberWithInt(3));
    EXPECT_RAISES(QVLNode::initWithData(NSNumber::numberWithInt(3)), NSInvalidArgumentException,
                  "-[NSNumber mutableCopyWithZone:]: unrecognized");
    EXPECT_FALSE(QVLNode::initWithData(nullptr)->nodeData());
}

TEST(QVLNode, InsertsAtAnIndexAndAppendsOtherwise) {
    const Tree tree(node(u"r"));
    struct {
        const char16_t* data;
        NSInteger index;
        const char* expected;
    } rows[] = {{u"a", 0, "r(a)"},
                {u"b", 1, "r(ab)"},
                {u"c", -1, "r(abc)"},
                {u"d", 9, "r(abcd)"},
                {u"e", 0, "r(eabcd)"},
                {u"f", 2, "r(eafbcd)"},
                {u"g", std::numeric_limits<NSInteger>::min(), "r(eafbcdg)"}};
    for (const auto& row : rows) {
        const auto added = node(row.data);
        tree->insertChild_atIndex(added, row.index);
        EXPECT_EQ(written(tree), row.expected);
        EXPECT_TRUE(identical(added->nodeParent(), &*(*tree)));
    }
    tree->appendChild(nullptr);
    tree->insertChildren_atIndex(NSArray::of(node(u"x"), node(u"y")), 1);
    tree->appendChildren(NSArray::of(node(u"z")));
    tree->prependChildWithData(u"0"_ns);
    EXPECT_EQ(written(tree), "r(0exyafbcdgz)");
    EXPECT_RAISES(tree->appendChildren(NSArray::of(node(u"n"), u"no node")), NSInvalidArgumentException, "");
    EXPECT_EQ(tree->numberOfChildren(), 11U);
}

TEST(QVLNode, KeepsTheListItIsGivenAndTheImmutableOneOfTreeNodes) {
    const auto parent = node(u"p");
    const auto list = NSMutableArray::of(node(u"a"));
    const Tree tree(QVLNode::initWithData_parent_children(u"t"_ns, parent, list));
    EXPECT_TRUE(identical(tree->children(), &*list));
    EXPECT_FALSE(child(tree, 0)->nodeParent());
    EXPECT_TRUE(identical(tree->nodeParent(), &*parent));
    EXPECT_EQ(parent->numberOfChildren(), 0U);

    const auto none = QVLNode::initWithData_parent_children(nullptr, nullptr, nullptr);
    const auto orphan = node(u"o");
    none->appendChild(orphan);
    EXPECT_FALSE(none->children() || none->firstChild() || none->lastChild() || none->childAtIndex(3));
    EXPECT_EQ(none->numberOfChildren(), 0U);
    EXPECT_TRUE(identical(orphan->nodeParent(), &*none));
    orphan->takeApart();

    const auto frozen = QVLNode::treeNodeWithData(u"f"_ns);
    EXPECT_RAISES(frozen->appendChild(node(u"a")), NSInvalidArgumentException,
                  "-[NSArray addObject:]: unrecognized selector");
    EXPECT_RAISES(frozen->appendChildren(NSArray::of(node(u"a"))), NSInvalidArgumentException, "unrecognized selector");
    EXPECT_EQ(frozen->numberOfChildren(), 0U);
    frozen->removeChild(node(u"a"));
    EXPECT_EQ(to<Ranked>(send(Ranked::classObject(), "treeNodeWithData:"_sel, u"x"_ns))->nodeData(), u"x"_ns);
}

TEST(QVLNode, RemovesTheFirstEqualChildWhereverThatVeryOneStands) {
    const Tree tree(grown(u"r(abac)"));
    const auto first = child(tree, 0);
    tree->children()->addObject(first);  // once more
    tree->removeChild(node(u"a"));
    EXPECT_EQ(written(tree), "r(bac)");
    EXPECT_FALSE(first->nodeParent());
    tree->removeChild(node(u"zz"));
    const auto twice = node(u"t");
    tree->appendChild(twice);
    tree->prependChild(twice);
    EXPECT_EQ(written(tree), "r(tbact)");
    twice->removeFromParent();
    EXPECT_EQ(written(tree), "r(bac)");
    const auto kept = child(tree, 1);
    tree->removeAllChildren();
    EXPECT_FALSE(kept->nodeParent());
    EXPECT_EQ(tree->numberOfChildren(), 0U);
    kept->removeFromParent();
}

TEST(QVLNode, RemovesAllOccurrencesOfMovedNodesThoughItsListWasNeverShown) {
    const Tree a(node(u"a")), b(node(u"b"));
    const auto moved = node(u"m");
    a->appendChild(moved);
    b->appendChild(moved);  // nothing takes it out of a
    b->appendChild(moved);
    b->removeChild(moved);
    EXPECT_EQ(b->numberOfChildren(), 0U);
    EXPECT_EQ(a->indexOfChildIdenticalTo(moved), 0U);
    a->_removeChildrenIdenticalTo(NSArray::of(moved, node(u"m")));
    EXPECT_EQ(a->numberOfChildren(), 0U);
    const auto again = node(u"n");
    a->appendChild(again);
    b->appendChild(again);
    a->removeAllChildren();
    b->appendChild(again);
    b->removeChild(again);
    EXPECT_EQ(b->numberOfChildren(), 0U);
}

TEST(QVLNode, AnswersMessagesOfAHostsClassAndWithNil) {
    const id made = send(Ranked::classObject(), "new"_sel);
    EXPECT_TRUE(as<Ranked>(made.get()));
    send(*made, "initWithData:"_sel, u"d"_ns);
    const Tree tree(to<Ranked>(made));
    tree->appendChild(Ranked::make(u"b", 2));
    tree->appendChild(Ranked::make(u"a", 1));
    tree->sortChildrenWithSelector("rank"_sel);
    tree->recursiveMakeChildrenPerformSelector_withObject("resortChildrenWithSelector:"_sel, nullptr);
    EXPECT_EQ(written(tree), "d(ba)");
    send(*made, "removeChild:"_sel, nullptr);
    EXPECT_EQ(send<NSUInteger>(*made, "indexOfChild:"_sel, nullptr), notFound);
    EXPECT_FALSE(send<bool>(*made, "isDescendantOfNodeInArray:"_sel, nullptr));
    send(*made, "init"_sel);
    EXPECT_EQ(written(tree), "-");
}

TEST(QVLNode, OutlivesDataThatTakesItOutOfItsTree) {
    const Tree tree(grown(u"r(ab)"));
    const Tree same(to<QVLNode>(tree->copy()));
    for (const auto& each : {child(tree, 0), child(same, 0)})
        each->setNodeData(Leaver::make(*tree));
    EXPECT_FALSE(*tree == *same);
    tree->appendChild(node(u"c"));
    tree->appendChild(node(u"d"));
    child(tree, 0)->setNodeData(Leaver::make(*tree));
    tree->hash();
    EXPECT_EQ(tree->numberOfChildren(), 0U);
}

TEST(QVLNode, FindsItsWayByEquality) {
    const Tree tree(grown(u"r(a(bcb)d)"));
    const auto a = child(tree, 0), b = child(a, 0), c = child(a, 1), secondB = child(a, 2);
    EXPECT_EQ(a->indexOfChild(secondB), 0U);
    EXPECT_EQ(a->indexOfChildIdenticalTo(secondB), 2U);
    EXPECT_EQ(a->indexOfChild(tree), notFound);
    EXPECT_TRUE(identical(secondB->nextSiblingNode(), &*c));
    EXPECT_FALSE(secondB->previousSiblingNode());
    EXPECT_TRUE(identical(c->previousSiblingNode(), &*b));
    EXPECT_FALSE(tree->nextSiblingNode() || tree->previousSiblingNode());
    EXPECT_FALSE(child(tree, 1)->nextSiblingNode());
    EXPECT_TRUE(identical(tree->lastChild(), &*child(tree, 1)));
    EXPECT_RAISES(b->firstChild(), NSRangeException, "index 0 beyond bounds for empty array");
    EXPECT_FALSE(b->lastChild());
    EXPECT_RAISES(a->childAtIndex(3), NSRangeException, "index 3 beyond bounds [0 .. 2]");

    const auto stray = QVLNode::initWithData_parent_children(u"s"_ns, a, NSMutableArray::array());
    EXPECT_RAISES(stray->nextSiblingNode(), NSRangeException, "beyond bounds");
    EXPECT_RAISES(stray->previousSiblingNode(), NSRangeException, "beyond bounds");
    stray->takeApart();
}

TEST(QVLNode, ClimbsToItsAncestors) {
    const Tree tree(grown(u"r(a(b(c)))"));
    const auto a = child(tree, 0), b = child(a, 0), c = child(b, 0);
    const std::pair<NSInteger, std::u16string_view> rows[] = {{-1, u"c"}, {0, u"b"}, {1, u"a"}, {2, u"r"}, {99, u"r"}};
    for (const auto& [levels, expected] : rows)
        EXPECT_EQ(c->rootNodeAtIndex(levels)->nodeData(), box(expected));
    EXPECT_TRUE(identical(c->rootNode().get(), &*(*tree)));
    EXPECT_EQ(c->numberOfParents(), 3U);
    EXPECT_EQ(tree->numberOfParents(), 0U);
    EXPECT_TRUE(c->isDescendantOfNode(c) && c->isDescendantOfNode(*tree) && !b->isDescendantOfNode(c));
    EXPECT_FALSE(c->isDescendantOfNode(nullptr));
    EXPECT_TRUE(c->isDescendantOfNodeInArray(NSArray::of(node(u"c"), a, u"text")));
    EXPECT_FALSE(a->isDescendantOfNodeInArray(NSArray::of(b, c, node(u"r"))));
    EXPECT_FALSE(a->isDescendantOfNodeInArray(NSArray::array()));
}

TEST(QVLNode, IsEqualByDataAndChildrenButNeverWithoutData) {
    const Tree tree(grown(u"r(a(b)c)")), same(grown(u"r(a(b)c)")), other(grown(u"r(a(x)c)")),
        shorter(grown(u"r(a(b))"));
    EXPECT_EQ(*tree, *same);
    EXPECT_EQ(tree->hash(), same->hash());
    EXPECT_FALSE(*tree == *other || *tree == *shorter || tree->isEqual(nullptr));
    EXPECT_EQ(tree->hash(), tree->nodeData()->hash() ^ tree->children()->hash());
    child(same, 1)->setNodeData(nullptr);
    child(tree, 1)->setNodeData(nullptr);
    EXPECT_FALSE(*tree == *same);
    EXPECT_EQ(*tree, *tree);

    const Tree inherited(QVLNode2::initWithData(u"x"_ns)), plain(node(u"x"));
    EXPECT_TRUE(plain->isEqual(&*(*inherited)));
    EXPECT_FALSE(inherited->isEqual(&*(*plain)));
    EXPECT_TRUE(inherited->isEqualToNode(plain));
}

TEST(QVLNode, AsksClassesThatHaveAnEqualityOfTheirOwn) {
    const Tree tree(node(u"r")), other(grown(u"r(b)"));
    tree->appendChild(to<Anything>(Anything::classObject().makeInstance()));
    EXPECT_EQ(*tree, *other);
    EXPECT_FALSE(*other == *tree);
    EXPECT_EQ(tree->hash(), tree->nodeData()->hash() ^ NSArray::of(*tree->firstChild())->hash());
    const Tree copied(to<QVLNode>(tree->copy()));
    EXPECT_TRUE(as<Anything>(copied->firstChild().get()));
}

TEST(QVLNode, IsCopiedWithAllBelowIt) {
    const Tree tree(grown(u"r(a(bc)d)"));
    const Tree copied(to<QVLNode>(child(tree, 0)->copy()));
    EXPECT_EQ(*copied, *child(tree, 0));
    EXPECT_FALSE(copied->nodeParent());
    EXPECT_TRUE(identical(child(copied, 1)->nodeParent(), &*(*copied)));
    EXPECT_FALSE(identical(copied->nodeData(), child(tree, 0)->nodeData()));
    EXPECT_TRUE(as<NSMutableString>(copied->nodeData().get()));

    const Tree ranked(Ranked::make(u"p", 1));
    ranked->appendChildWithData(u"q"_ns);
    EXPECT_TRUE(as<Ranked>(ranked->firstChild().get()));
    const Tree second(to<QVLNode>(ranked->copy()));
    EXPECT_TRUE(as<Ranked>(&*(*second)) && as<Ranked>(second->firstChild().get()));
    EXPECT_TRUE(tree->conformsTo(Protocol::NSCopying) && !tree->conformsTo(Protocol::NSMutableCopying));
    child(tree, 0)->children()->addObject(u"no node"_ns);
    EXPECT_RAISES(tree->copy(), NSInvalidArgumentException, "QVLNode");
}

TEST(QVLNode, BecomesADictionaryAndComesBack) {
    const auto leaf = [](std::u16string_view data) { return NSDictionary::of({{u"data", data}}); };
    EXPECT_EQ(grown(u"a")->QVLNodeToDictionary(), leaf(u"a"));
    EXPECT_EQ(QVLNode::init()->QVLNodeToDictionary(), NSDictionary::dictionary());
    const Tree tree(grown(u"r(a(b)c)"));
    const auto form = tree->QVLNodeToDictionary();
    const auto a = NSDictionary::of({{u"data", u"a"}, {u"childrens", NSDictionary::of({{0U, leaf(u"b")}})}});
    EXPECT_EQ(form, NSDictionary::of({{u"data", u"r"}, {u"childrens", NSDictionary::of({{0U, a}, {1U, leaf(u"c")}})}}));
    EXPECT_TRUE(identical(form->objectForKey(u"data"_ns), tree->nodeData()));
    const Tree back(QVLNode::QVLNodeFromDictionary(form));
    EXPECT_EQ(*back, *tree);
    EXPECT_EQ(child(back, 0)->numberOfParents(), 1U);

    const auto read = [](std::u16string_view key, const NSObject& value) {
        return QVLNode::QVLNodeFromDictionary(NSDictionary::of({{key, value}}));
    };
    const Tree gap(read(u"childrens", NSDictionary::of({{0, leaf(u"x")}, {2, leaf(u"x")}})));
    EXPECT_EQ(written(gap), "-(x-)");
    for (const Ref<NSObject>& wrong : {Ref<NSObject>(box(5)), Ref<NSObject>(NSDictionary::of({{0, u"x"}}))})
        EXPECT_RAISES(read(u"childrens", wrong), NSInvalidArgumentException, "NSDictionary");
    EXPECT_RAISES(read(u"data", box(5)), NSInvalidArgumentException, "mutableCopy");
}

TEST(QVLNode, DescribesItselfWithAddressesOf32Bits) {
    const Tree tree(grown(u"r(ab)"));
    const auto low = [](const void* address) {
        return static_cast<unsigned>(reinterpret_cast<std::uintptr_t>(address));
    };
    char expected[200];
    std::snprintf(expected, sizeof expected,
                  "  parent:0x%08x\nself:0x%08x  class:<QVLNode>\n  nodeChildren:0x%08x (has 2 childrens)\nnodeData:r",
                  0U, low(&*(*tree)), low(tree->children().get()));
    EXPECT_EQ(tree->description()->UTF8String(), expected);
}

TEST(QVLNode, SortsByDataByAKeyAndByItsOwnComparison) {
    const Tree tree(grown(u"r(c(zyx)ab)"));
    tree->recursiveSortChildren();
    EXPECT_EQ(written(tree), "r(abc(xyz))");
    tree->recursiveSortChildrenWithSelector("compare:"_sel);
    EXPECT_EQ(written(tree), "r(abc(xyz))");

    const Tree ranks(node(u"r"));
    for (const auto& [data, rank] : {std::pair(u"a", 2), {u"b", 1}, {u"c", 2}, {u"d", 3}})
        ranks->appendChild(Ranked::make(data, rank));
    ranks->sortChildrenWithSelector("rank"_sel);
    EXPECT_EQ(written(ranks), "r(bacd)");
    ranks->resortChildrenWithSelector(Selector());
    EXPECT_EQ(written(ranks), "r(dacb)");
    ranks->recursiveSortChildrenWithSelector("compareRank:"_sel);
    EXPECT_EQ(written(ranks), "r(bacd)");
    EXPECT_RAISES(ranks->sortChildrenWithSelector(Selector()), NSInvalidArgumentException, "");
    EXPECT_RAISES(ranks->recursiveSortChildrenWithSelector(Selector()), NSInvalidArgumentException,
                  "unrecognized selector");
    EXPECT_EQ(written(ranks), "r(bacd)");

    const Tree mixed(grown(u"r(ab)"));
    child(mixed, 1)->setNodeData(NSNumber::numberWithInt(5));
    EXPECT_RAISES(mixed->recursiveSortChildren(), NSInvalidArgumentException, "");
    EXPECT_EQ(node(u"a")->compare(node(u"b")), NSOrderedAscending);
    EXPECT_EQ(send<NSInteger>(*node(u"b"), "compare:"_sel, node(u"a")), NSOrderedDescending);
}

TEST(QVLNode, SendsMessagesToAWholeTreeParentsFirst) {
    const Tree tree(Ranked::make(u"r", 0));
    tree->appendChild(Ranked::make(u"a", 0));
    tree->appendChildWithData(u"c"_ns);
    child(tree, 0)->appendChildWithData(u"b"_ns);
    const auto log = NSMutableArray::array();
    tree->recursiveMakeChildrenPerformSelector_withObject_withObject("note:mark:"_sel, log, u"!"_ns);
    EXPECT_EQ(log, NSArray::of(NSArray::of(u"r", u"!"), NSArray::of(u"a", u"!"), NSArray::of(u"b", u"!"),
                               NSArray::of(u"c", u"!")));
    child(tree, 1)->recursiveMakeChildrenPerformSelector_withObject("setNodeData:"_sel, u"x"_ns);
    EXPECT_EQ(written(tree), "r(a(b)x)");
}

TEST(QVLNode, ReducesNodesToAMinimumCoverInTheOrderGiven) {
    const Tree tree(grown(u"r(a(b(c(d))e)f)"));
    const auto r = *tree, a = child(r, 0), b = child(a, 0), c = child(b, 0), d = child(c, 0), e = child(a, 1),
               f = child(r, 1);
    const auto cover = [](const NSArray& nodes) {
        std::string text;
        for (const QVLNode& each : QVLNode::minimumNodeCoverFromNodesInArray(nodes)->each<const QVLNode>())
            text += each.nodeData()->description()->UTF8String();
        return text;
    };
    const std::pair<Ref<NSArray>, const char*> rows[] = {
        {NSArray::array(), ""},           {NSArray::of(b, a), "a"},          {NSArray::of(a, b), "a"},
        {NSArray::of(c, a), "ca"},        {NSArray::of(a, c), "a"},          {NSArray::of(d, c, b, a), "a"},
        {NSArray::of(d, b, c), "b"},      {NSArray::of(d, d, f, d), "df"},   {NSArray::of(e, f, r), "er"},
        {NSArray::of(d, a, f, c), "caf"}, {NSArray::of(d, a, e, b, r), "dr"}};
    for (const auto& [nodes, expected] : rows)
        EXPECT_EQ(cover(nodes), expected) << nodes;
}

TEST(QVLNode, CoversAsTheStepsSayForRandomTrees) {
    const auto stepByStep = [](const NSArray& nodes) {
        const auto result = NSMutableArray::array(), work = NSMutableArray::arrayWithArray(nodes);
        while (work->count()) {
            Ref<QVLNode> n = to<QVLNode>(work->objectAtIndex(0));
            work->removeObjectAtIndex(0);
            while (n->nodeParent() && work->indexOfObjectIdenticalTo(*n->nodeParent()) != notFound) {
                work->removeObjectIdenticalTo(n);
                n = n->nodeParent().ref();
            }
            if (!n->isDescendantOfNodeInArray(result))
                result->addObject(*n);
            work->removeObjectIdenticalTo(n);
        }
        return result;
    };
    std::srand(1);
    for (int round = 0; round < 300; ++round) {
        std::vector<Ref<QVLNode>> all{node(u"r")};
        const Tree tree(all[0]);
        while (all.size() < 30) {
            all.push_back(node(u"x"));
            all[static_cast<std::size_t>(std::rand()) % (all.size() - 1)]->appendChild(all.back());
        }
        const auto nodes = NSMutableArray::array();
        for (int i = 0; i < 15; ++i)
            nodes->addObject(*all[static_cast<std::size_t>(std::rand()) % all.size()]);
        const auto expected = stepByStep(nodes), cover = QVLNode::minimumNodeCoverFromNodesInArray(nodes);
        ASSERT_EQ(cover->count(), expected->count());
        for (NSUInteger i = 0; i < cover->count(); ++i)
            ASSERT_TRUE(identical(&(*cover)[i], &(*expected)[i]));
    }
}

TEST(QVLNode, ComesBackFromArchivesWithItsWholeTree) {
    const Tree tree(grown(u"r(a(bc)d)"));
    const Ref<QVLNode> inner = child(tree, 0);
    const auto again = [](const QVLNode& each, const ArchiveForm& form = archiveForms[0]) {
        return to<QVLNode>(form.unarchive(form.archive(each), nullptr));
    };
    for (const ArchiveForm& form : archiveForms) {
        const Tree back(again(inner, form));
        EXPECT_EQ(*back, *inner);
        EXPECT_EQ(*back->nodeParent(), *(*tree));
        EXPECT_TRUE(identical(child(*back->nodeParent(), 0).get(), &*(*back)));
        EXPECT_TRUE(identical(child(back, 1)->nodeParent(), &*(*back)));
        child(back, 0)->appendChildWithData(u"new"_ns);
    }
    EXPECT_RAISES(again(QVLNode::treeNodeWithData(u"t"_ns))->appendChild(node(u"a")), NSInvalidArgumentException,
                  "unrecognized selector");
    EXPECT_FALSE(again(QVLNode::initWithData_parent_children(nullptr, nullptr, nullptr))->children());
    const Tree ranked(Ranked::make(u"x", 3)), back(again(ranked));
    EXPECT_TRUE(as<Ranked>(&*(*back)));
}

TEST(QVLNode, IsFreedWhenItsTreeIsTakenApart) {
    const auto tree = grown(u"r(a(bc)d)");
    const auto a = child(tree, 0), b = child(a, 0);
    EXPECT_TRUE(identical(b->nodeParent(), &*a)) << "the parent is held";
    a->takeApart();
    EXPECT_EQ(written(tree), "r(d)");
    EXPECT_FALSE(b->nodeParent() || a->nodeParent());
    tree->takeApart();
    EXPECT_EQ(tree->retainCount(), 1U);

    const auto circle = node(u"x"), other = node(u"y");
    circle->appendChild(other);
    other->appendChild(circle);
    EXPECT_EQ(NSKeyedArchiver::archivedDataWithRootObject(circle)->length() > 0, true);
    EXPECT_NE(circle->description()->UTF8String().find("has 1 childrens"), std::string::npos);
    circle->takeApart();
    EXPECT_EQ(other->numberOfChildren(), 0U);
}
