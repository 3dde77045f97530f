#include <gtest/gtest.h>

#include <ToviFoundationKit/ToviFoundationKit.h>

using namespace tovi;

namespace {

Ref<QVLNode2> node(std::u16string_view data) { return QVLNode2::initWithData(NSString::stringWithCharacters(data)); }

Ref<QVLNode2> parentOf(std::initializer_list<const char16_t*> children) {
    Ref<QVLNode2> result = node(u"p");
    for (const char16_t* each : children)
        result->appendChild(node(each));
    return result;
}

std::string children(const QVLNode& parent) {
    std::string text;
    for (const QVLNode& each : parent.children()->each<const QVLNode>())
        text += each.nodeData()->description()->UTF8String();
    return text;
}

}  // namespace

TEST(QVLNode2, LeavesItsEarlierParent) {
    const auto from = parentOf({u"a", u"b", u"c"}), there = parentOf({u"x", u"y"});
    const auto b = from->childAtIndex(1).ref();
    there->insertChild_atIndex(b, 1);
    EXPECT_EQ(children(from) + "|" + children(there), "ac|xby");
    EXPECT_TRUE(identical(b->nodeParent(), &*there));
    there->insertChildren_atIndex(*from->children(), 0);
    EXPECT_EQ(children(from) + "|" + children(there), "|acxby");
    for (const QVLNode& each : there->children()->each<const QVLNode>())
        EXPECT_TRUE(identical(each.nodeParent(), &*there));
    there->appendChild(nullptr);
    EXPECT_EQ(there->numberOfChildren(), 5U);
}

TEST(QVLNode2, EndsOutsideTheParentThatItIsAddedToAgain) {
    const auto parent = parentOf({u"a", u"b", u"a", u"c"});
    const auto a = parent->childAtIndex(0).ref();
    parent->appendChild(a);
    EXPECT_EQ(children(parent), "bc");
    EXPECT_TRUE(identical(a->nodeParent(), &*parent));
    parent->appendChildren(*parent->children());
    EXPECT_EQ(children(parent), "");
}

TEST(QVLNode2, LeavesParentsInTheOrderOfTheNodes) {
    const auto q = parentOf({u"a"}), b = parentOf({u"a"});
    q->appendChildren(NSArray::of(*q->firstChild(), *b->firstChild()));
    EXPECT_EQ(children(q) + "|" + children(b), "|a") << "the first took the second one's link along";
}

TEST(QVLNode2, RemovesEveryEqualChild) {
    const auto parent = parentOf({u"a", u"b", u"a"});
    const auto first = parent->childAtIndex(0).ref(), last = parent->childAtIndex(2).ref();
    parent->removeChild(node(u"a"));
    EXPECT_EQ(children(parent), "b");
    EXPECT_FALSE(first->nodeParent() || last->nodeParent());
    parent->removeAllChildren();
    EXPECT_EQ(children(parent), "");
    const auto stray = node(u"s"), elsewhere = parentOf({u"s", u"t"});
    stray->setNodeParent(elsewhere);
    parent->children()->addObject(stray);
    parent->removeAllChildren();
    EXPECT_EQ(children(elsewhere), "t") << "a child leaves the parent that it has";
    QVLNode2::treeNodeWithData(u"t"_ns)->removeChild(stray);
}

TEST(QVLNode2, MovesManyAsItMovesOne) {
    for (const bool together : {false, true}) {
        const auto from = QVLNode2::init(), there = QVLNode2::init();
        const auto moved = NSMutableArray::array();
        for (int i = 0; i < 60; ++i) {
            const auto added = node(std::u16string(1, static_cast<char16_t>(u'A' + i % 20)));
            if (i % 7 == 0)
                added->setNodeData(nullptr);
            from->appendChild(added);
            if (i % 3 == 0)
                moved->addObject(added);
        }
        if (together)
            there->appendChildren(moved);
        else
            for (NSObject& each : *moved)
                there->appendChild(static_cast<QVLNode2&>(each));
        EXPECT_EQ(there->numberOfChildren(), 20U);
        EXPECT_EQ(from->numberOfChildren(), 12U) << "nodes without data are equal to themselves only";
    }
}

TEST(QVLNode2, DoesNotHoldItsParent) {
    RefPtr<QVLNode2> root = parentOf({u"a"});
    const auto a = root->firstChild().ref();
    EXPECT_EQ(root->retainCount(), 1U);
    const auto other = QVLNode2::initWithData_parent_children(nullptr, root, NSMutableArray::array());
    EXPECT_EQ(root->retainCount(), 1U);
    other->setNodeParent(nullptr);
    root = nullptr;
    EXPECT_FALSE(a->nodeParent());
    EXPECT_EQ(a->retainCount(), 1U);
}

TEST(QVLNode2, ComesBackFromAnArchiveWithoutHoldingItsParent) {
    const auto root = parentOf({u"a", u"b"});
    root->firstChild()->appendChildWithData(u"c"_ns);
    const auto data = NSKeyedArchiver::archivedDataWithRootObject(*root->firstChild());
    const auto reader = NSKeyedUnarchiver::unarchiverForReadingWithData(data);
    const auto a = to<QVLNode2>(reader->rootObject());
    EXPECT_EQ(*a->rootNode(), *root);
    EXPECT_TRUE(as<QVLNode2>(a->firstChild().get()));
    EXPECT_FALSE(to<QVLNode2>(NSKeyedUnarchiver::unarchiveObjectWithData(data))->nodeParent()) << "nobody held it";
}

TEST(QVLNode2, TakesOnlyAParentFromAnArchiveThatHasItAmongItsChildren) {
    const auto parent = parentOf({u"a"}), stray = node(u"s");
    stray->setNodeParent(parent);
    for (const Ref<QVLNode2>& root : {stray, parent}) {
        const auto reader = NSKeyedUnarchiver::unarchiverForReadingWithData(
            NSKeyedArchiver::archivedDataWithRootObject(NSArray::of(root, parent)));
        const auto list = to<NSArray>(reader->rootObject());
        const auto back = to<QVLNode2>(list->objectAtIndex(0)), above = to<QVLNode2>(list->objectAtIndex(1));
        EXPECT_FALSE(back->nodeParent());
        EXPECT_TRUE(identical(above->firstChild()->nodeParent(), &*above));
    }
}
