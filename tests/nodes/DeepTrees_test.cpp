#include <gtest/gtest.h>

#include <ToviFoundationKit/ToviFoundationKit.h>

#include <support/SmallStack.h>

using namespace tovi;

namespace {

constexpr NSUInteger depth = 1'000'000;

template <class Node> Ref<Node> chain(NSString& last) {
    const Ref<NSString> data = u"d"_ns, key = u"k"_ns;
    Ref<Node> root = Node::initWithData(data);
    Ref<Node> at = root;
    for (NSUInteger i = 1; i < depth; ++i) {
        const Ref<Node> next = Node::initWithData(i + 1 < depth ? data : Ref<NSString>(last));
        if constexpr (std::is_same_v<Node, QVLHashNode>)
            at->addChild_forKey(next, key);
        else
            at->appendChild(next);
        at = next;
    }
    return root;
}

template <class Node> class DeepTrees : public testing::Test {};
using Classes = testing::Types<QVLNode, QVLNode2, QVLHashNode>;

}  // namespace

TYPED_TEST_SUITE(DeepTrees, Classes);

TYPED_TEST(DeepTrees, PassThroughEveryOperationOnASmallStack) {
    onSmallStack([] {
        const auto tree = chain<TypeParam>(u"x"_ns), other = chain<TypeParam>(u"y"_ns);
        const auto copied = to<TypeParam>(tree->copy());
        EXPECT_TRUE(*copied == *tree && !(*copied == *other));
        EXPECT_EQ(copied->hash(), tree->hash());
        const auto data = NSKeyedArchiver::archivedDataWithRootObject(tree);
        const auto back = to<TypeParam>(NSKeyedUnarchiver::unarchiveObjectWithData(data));
        EXPECT_TRUE(*back == *tree);
        if constexpr (std::is_same_v<TypeParam, QVLHashNode>) {
            EXPECT_EQ(tree->description()->length(),
                      2 * depth + (depth - 1) * std::string_view("\t childKey:k -- \n").size());
            const auto rebuilt = QVLHashNode::initWithDictionaryRepresentation(tree->dictionaryRepresentation());
            EXPECT_TRUE(*rebuilt == *tree);
            rebuilt->takeApart();
        } else {
            tree->recursiveSortChildren();
            tree->recursiveSortChildrenWithSelector("compare:"_sel);
            tree->recursiveMakeChildrenPerformSelector_withObject("setNodeData:"_sel, u"z"_ns);
            EXPECT_GT(tree->description()->length(), 0U);
            const auto rebuilt = QVLNode::QVLNodeFromDictionary(tree->QVLNodeToDictionary());
            EXPECT_TRUE(rebuilt->isEqualToNode(tree));
            rebuilt->takeApart();
        }
        for (const auto& each : {tree, other, copied, back})
            each->takeApart();
    });
}

TEST(DeepTrees, AreFreedWithTheirRoot) {
    onSmallStack([] { chain<QVLNode2>(u"x"_ns); });
}
