#include <gtest/gtest.h>

#include <ToviFoundationKit/ToviFoundationKit.h>

#include <support/ArchivedPerson.h>
#include <support/Expect.h>

using namespace tovi;

namespace {

Ref<QVLHashNode> node(const char16_t* data) { return QVLHashNode::initWithData(NSString::stringWithCharacters(data)); }

class Folder : public QVLHashNode {
    TOVI_CLASS(Folder, QVLHashNode)
};

/// root with children 1: a (with child x: b) and 2: c; taken apart at the end.
struct Sample {
    Ref<QVLHashNode> root = node(u"root"), a = node(u"a"), b = node(u"b"), c = node(u"c");
    Sample() {
        root->addChild_forKey(a, NSNumber::numberWithInt(1));
        a->addChild_forKey(b, u"x"_ns);
        root->addChild_forKey(c, NSNumber::numberWithInt(2));
    }
    ~Sample() { root->takeApart(); }
};

}  // namespace

TEST(QVLHashNode, KeepsChildrenUnderKeys) {
    const Sample tree;
    EXPECT_TRUE(identical(tree.root->childForKey(NSNumber::numberWithDouble(1)), &*tree.a));
    EXPECT_FALSE(tree.root->childForKey(u"x"_ns) || tree.c->childForKey(u"x"_ns) || tree.c->children());
    EXPECT_EQ(tree.root->numberOfChildren() + 10 * tree.c->numberOfChildren(), 2U);
    EXPECT_TRUE(tree.b->isDescendantOfNode(tree.root) &&
                tree.b->isDescendantOfNodeInArray(NSArray::of(tree.c, tree.a)));
    EXPECT_TRUE(identical(tree.b->rootNode().get(), &*tree.root));
    EXPECT_EQ(tree.b->numberOfParents(), 2U);

    const auto second = node(u"second");
    tree.root->addChild_forKey(second, NSNumber::numberWithInt(1));
    EXPECT_TRUE(identical(tree.a->nodeParent(), &*tree.root)) << "what was replaced keeps its parent link";
    tree.root->removeChildForKey(NSNumber::numberWithInt(1));
    tree.root->removeChildForKey(u"none"_ns);
    EXPECT_FALSE(second->nodeParent());
    EXPECT_EQ(tree.root->numberOfChildren(), 1U);
    EXPECT_RAISES(send(*tree.root, "addChild:forKey:"_sel, nullptr, u"k"_ns), NSInvalidArgumentException, "");
    tree.c->takeApart();
    EXPECT_FALSE(tree.c->nodeParent() || tree.root->numberOfChildren());
    tree.a->setNodeParent(nullptr);
    tree.a->takeApart();
}

TEST(QVLHashNode, TakesTheEntriesOfADictionary) {
    const Sample tree;
    const auto made = QVLHashNode::initWithData_parent_children(u"m"_ns, tree.root, *tree.root->children());
    EXPECT_FALSE(identical(made->children(), tree.root->children()));
    EXPECT_EQ(made->numberOfChildren(), 2U);
    EXPECT_TRUE(identical(tree.a->nodeParent(), &*tree.root));
    EXPECT_EQ(tree.root->numberOfChildren(), 2U);
    EXPECT_FALSE(QVLHashNode::initWithData_parent_children(u"m"_ns, nullptr, nullptr)->children());
    made->setNodeParent(nullptr);
}

TEST(QVLHashNode, IsEqualAndCopiedWithAllBelowIt) {
    const Sample tree, same;
    EXPECT_EQ(tree.root, same.root);
    EXPECT_EQ(tree.root->hash(), same.root->hash());
    EXPECT_EQ(tree.root->hash(), tree.root->nodeData()->hash() ^ tree.root->children()->hash());
    const auto copied = to<QVLHashNode>(tree.a->copy());
    EXPECT_EQ(copied, tree.a);
    EXPECT_FALSE(copied->nodeParent());
    EXPECT_TRUE(identical(copied->childForKey(u"x"_ns)->nodeParent(), &*copied));
    copied->takeApart();
    same.b->setNodeData(u"other"_ns);
    EXPECT_FALSE(tree.root == same.root);

    const auto folder = to<Folder>(Folder::classObject().makeInstance());
    folder->addChildWithData_forKey(u"plain"_ns, u"k"_ns);
    EXPECT_EQ(&folder->childForKey(u"k"_ns)->isa(), &QVLHashNode::classObject());
    EXPECT_FALSE(folder->isEqual(&*QVLHashNode::init()) || QVLHashNode::init() == QVLHashNode::init()) << "no data";
    EXPECT_EQ(node(u"e"), [] {
        const auto emptied = node(u"e");
        emptied->addChildWithData_forKey(nullptr, u"k"_ns);
        emptied->removeChildForKey(u"k"_ns);
        return emptied;
    }());
    folder->takeApart();
}

TEST(QVLHashNode, HasADictionaryRepresentation) {
    EXPECT_EQ(QVLHashNode::init()->dictionaryRepresentation(), NSDictionary::dictionary());
    const auto emptied = QVLHashNode::init();
    emptied->addChildWithData_forKey(nullptr, u"k"_ns);
    emptied->removeChildForKey(u"k"_ns);
    EXPECT_EQ(emptied->dictionaryRepresentation(),
              NSDictionary::of({{u"QVLHashNode__nodeChildren", NSDictionary::dictionary()}}));

    const Sample tree;
    const auto form = tree.a->dictionaryRepresentation();
    EXPECT_EQ(form,
              NSDictionary::of({{u"QVLHashNode__nodeData", u"a"},
                                {u"QVLHashNode__nodeChildren",
                                 NSDictionary::of({{u"x", NSDictionary::of({{u"QVLHashNode__nodeData", u"b"}})}})}}));
    EXPECT_FALSE(identical(form->objectForKey(u"QVLHashNode__nodeData"_ns), tree.a->nodeData()));
    const auto back = QVLHashNode::initWithDictionaryRepresentation(form);
    EXPECT_EQ(back, tree.a);
    EXPECT_TRUE(identical(back->nodeData(), form->objectForKey(u"QVLHashNode__nodeData"_ns)));
    EXPECT_TRUE(identical(back->childForKey(u"x"_ns)->nodeParent(), &*back));
    back->takeApart();

    const id folder = Folder::classObject().makeInstance();
    send(*folder, "initWithDictionaryRepresentation:"_sel, form);
    EXPECT_TRUE(as<Folder>(to<Folder>(folder)->childForKey(u"x"_ns).get()));
    to<Folder>(folder)->takeApart();
    for (const id& wrong : {id(NSNumber::numberWithInt(1)), id(NSDictionary::of({{u"k", 1}}))})
        EXPECT_RAISES(
            QVLHashNode::initWithDictionaryRepresentation(NSDictionary::of({{u"QVLHashNode__nodeChildren", *wrong}})),
            NSInvalidArgumentException, "NSDictionary");
}

TEST(QVLHashNode, DescribesItsChildrenWithinItsLines) {
    const Sample tree;
    EXPECT_EQ(node(u"x")->description(), u"x\n"_ns);
    EXPECT_EQ(tree.root->description(), u"root\n\t childKey:1 -- a\n\t childKey:x -- b\n\n\n\t childKey:2 -- c\n\n"_ns);
    EXPECT_EQ(QVLHashNode::init()->description(), u"\n"_ns);
}

TEST(QVLHashNode, ComesBackFromArchives) {
    const Sample tree;
    for (const ArchiveForm& form : archiveForms) {
        const auto back = to<QVLHashNode>(form.unarchive(form.archive(tree.b), nullptr));
        EXPECT_EQ(back->rootNode(), tree.root);
        EXPECT_TRUE(identical(back->nodeParent()->childForKey(u"x"_ns), &*back));
        EXPECT_FALSE(back->children());
        back->rootNode()->takeApart();
    }
}
