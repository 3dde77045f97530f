// Trees. Each of the n nodes has ten children, or, in a chain, one; the data is a text of about 33 characters, made
// anew for every tree. What is timed ends before the trees are released, which has a row of its own. A chain of a
// million std::shared_ptr cannot be released on a usual stack, so the chains have no peers.

#define QT_NO_KEYWORDS

#include <algorithm>
#include <cstring>
#include <memory>
#include <string>

#include <ToviFoundationKit/Extensions/NSMutableArray-QVLAdditions.h>
#include <ToviFoundationKit/Foundation/NSKeyedArchiver.h>
#include <ToviFoundationKit/Foundation/NSKeyedUnarchiver.h>
#include <ToviFoundationKit/nodes/QVLHashNode.h>
#include <ToviFoundationKit/nodes/QVLNode2.h>

#include "Bench.h"

#ifdef TOVI_BENCH_HAVE_GLIB
#include <glib.h>
#endif
#ifdef TOVI_BENCH_HAVE_QTGUI
#include <QStandardItem>
#endif

using namespace tovi;
using namespace bench;

namespace {

constexpr long wide = 10, deep = 1;

std::vector<std::string> texts(long n) {
    std::vector<std::string> result;
    for (const long number : shuffledNumbers(n))
        result.push_back(std::to_string(number) + ", one of the nodes of a tree");
    return result;
}

/// Makes trees of n nodes by adding one node after the other, level by level: `add(parent, text)` answers the child.
template <class Handle, class Text, class Root, class Add>
Handle grown(const std::vector<Text>& data, long fanOut, Root makeRoot, Add add) {
    static std::vector<Handle> nodes;  // kept, as a large allocation has malloc tidy up what the last tree left
    nodes.reserve(data.size());
    nodes.push_back(makeRoot(data[0]));
    for (std::size_t i = 1; i < data.size(); ++i)
        nodes.push_back(add(nodes[(i - 1) / static_cast<std::size_t>(fanOut)], data[i]));
    Handle root = nodes[0];
    nodes.clear();
    return root;
}

// --- The kit ---------------------------------------------------------------------------------------------------------

std::vector<id> kitTexts(long n) {
    std::vector<id> result;
    for (const std::string& each : texts(n))
        result.emplace_back(NSString::fromUTF8(each));
    return result;
}

template <class Node, long fanOut> struct Kit {
    using Text = id;
    static constexpr std::size_t dataInNode = 0;
    // Held until it is released; a QVLNode's tree is taken apart.
    struct Handle {
        RefPtr<QVLNode> root;
    };

    static std::vector<Text> data(long n) { return kitTexts(n); }
    static Handle build(const std::vector<Text>& data) {
        QVLNode* const root = grown<QVLNode*>(
            data, fanOut, [](const Text& text) { return Node::initWithData(text).leak(); },
            [](QVLNode* parent, const Text& text) {
                parent->appendChildWithData(text);
                return parent->lastChild().get();
            });
        return {adoptPtr(root)};
    }
    static Handle copy(const Handle& tree) { return {to<QVLNode>(tree.root->copy())}; }
    static bool equal(const Handle& a, const Handle& b) { return a.root->isEqual(b.root); }
    static void sort(const Handle& tree) { tree.root->recursiveSortChildren(); }
    static void release(Handle& tree) {
        if constexpr (std::is_same_v<Node, QVLNode>)
            tree.root->takeApart();
        tree.root = nullptr;
    }
};

// --- The peers -------------------------------------------------------------------------------------------------------

struct SharedNode {
    explicit SharedNode(const std::string& text) : data(text) {}
    std::string data;
    std::weak_ptr<SharedNode> parent;
    std::vector<std::shared_ptr<SharedNode>> children;
};

struct Shared {
    using Text = std::string;
    static constexpr std::size_t dataInNode = sizeof(Text);
    using Handle = std::shared_ptr<SharedNode>;

    static std::vector<Text> data(long n) { return texts(n); }
    static Handle add(const Handle& parent, const Text& text) {
        Handle child = std::make_shared<SharedNode>(text);
        child->parent = parent;
        parent->children.push_back(child);
        return child;
    }
    static Handle build(const std::vector<Text>& data) {
        return grown<Handle>(
            data, wide, [](const Text& text) { return std::make_shared<SharedNode>(text); }, add);
    }
    static Handle copy(const Handle& tree) {
        Handle result = std::make_shared<SharedNode>(tree->data);
        for (const Handle& each : tree->children) {
            result->children.push_back(copy(each));
            result->children.back()->parent = result;
        }
        return result;
    }
    static bool equal(const Handle& a, const Handle& b) {
        return a->data == b->data &&
               std::equal(a->children.begin(), a->children.end(), b->children.begin(), b->children.end(), equal);
    }
    static void sort(const Handle& tree) {
        std::sort(tree->children.begin(), tree->children.end(),
                  [](const Handle& a, const Handle& b) { return a->data < b->data; });
        for (const Handle& each : tree->children)
            sort(each);
    }
    static void release(Handle& tree) { tree = nullptr; }
};

#ifdef TOVI_BENCH_HAVE_GLIB
struct Glib {
    using Text = std::string;
    static constexpr std::size_t dataInNode = 0;
    using Handle = GNode*;

    static std::vector<Text> data(long n) { return texts(n); }
    static Handle make(const Text& text) { return g_node_new(text.empty() ? nullptr : g_strdup(text.c_str())); }
    static Handle build(const std::vector<Text>& data) {
        return grown<Handle>(data, wide, make,
                             [](Handle parent, const Text& text) { return g_node_append(parent, make(text)); });
    }
    static Handle copy(Handle tree) {
        return g_node_copy_deep(
            tree, [](gconstpointer text, gpointer) -> gpointer { return g_strdup(static_cast<const char*>(text)); },
            nullptr);
    }
    static bool equal(Handle a, Handle b) {
        if (!a || !b)
            return a == b;
        return !std::strcmp(static_cast<char*>(a->data), static_cast<char*>(b->data)) &&
               equal(a->children, b->children) && equal(a->next, b->next);
    }
    static void sort(Handle tree) {
        std::vector<Handle> children;
        while (Handle const child = tree->children)
            children.push_back(child), g_node_unlink(child);
        std::sort(children.begin(), children.end(), [](Handle a, Handle b) {
            return std::strcmp(static_cast<char*>(a->data), static_cast<char*>(b->data)) < 0;
        });
        for (auto each = children.rbegin(); each != children.rend(); ++each)
            g_node_prepend(tree, *each), sort(*each);
    }
    static void release(Handle tree) {
        g_node_traverse(
            tree, G_PRE_ORDER, G_TRAVERSE_ALL, -1, [](GNode* node, gpointer) { return g_free(node->data), FALSE; },
            nullptr);
        g_node_destroy(tree);
    }
};
#endif

#ifdef TOVI_BENCH_HAVE_QTGUI
struct Qt {
    using Text = QString;
    static constexpr std::size_t dataInNode = 0;
    using Handle = QStandardItem*;

    static std::vector<Text> data(long n) {
        std::vector<Text> result;
        for (const std::string& each : texts(n))
            result.push_back(QString::fromStdString(each));
        return result;
    }
    // A text of its own for each item, as the others have.
    static Handle make(const Text& text) {
        return text.isNull() ? new QStandardItem : new QStandardItem(QString(text.constData(), text.size()));
    }
    static Handle build(const std::vector<Text>& data) {
        return grown<Handle>(data, wide, make, [](Handle parent, const Text& text) {
            const Handle child = make(text);
            parent->appendRow(child);
            return child;
        });
    }
    static Handle copy(Handle tree) {
        const Handle result = make(tree->text());
        for (int i = 0; i < tree->rowCount(); ++i)
            result->appendRow(copy(tree->child(i)));
        return result;
    }
    static bool equal(Handle a, Handle b) {
        if (a->text() != b->text() || a->rowCount() != b->rowCount())
            return false;
        for (int i = 0; i < a->rowCount(); ++i)
            if (!equal(a->child(i), b->child(i)))
                return false;
        return true;
    }
    static void sort(Handle tree) { tree->sortChildren(0); }
    static void release(Handle tree) { delete tree; }
};
#endif

// --- What is measured ------------------------------------------------------------------------------------------------

template <class Trees> void built(State& state) {
    const auto data = Trees::data(state.range(0));
    for (auto _ : state) {
        auto tree = Trees::build(data);
        state.PauseTiming();
        Trees::release(tree);
        state.ResumeTiming();
    }
    countItems(state, state.range(0));
}

template <class Trees> void copied(State& state) {
    auto tree = Trees::build(Trees::data(state.range(0)));
    for (auto _ : state) {
        auto copy = Trees::copy(tree);
        state.PauseTiming();
        check(Trees::equal(tree, copy), "copy");
        Trees::release(copy);
        state.ResumeTiming();
    }
    Trees::release(tree);
    countItems(state, state.range(0));
}

template <class Trees> void compared(State& state) {
    auto tree = Trees::build(Trees::data(state.range(0))), copy = Trees::copy(tree);
    for (auto _ : state)
        check(Trees::equal(tree, copy), "isEqual:");
    Trees::release(tree);
    Trees::release(copy);
    countItems(state, state.range(0));
}

template <class Trees> void sorted(State& state) {
    auto tree = Trees::build(Trees::data(state.range(0)));
    for (auto _ : state) {
        state.PauseTiming();
        auto copy = Trees::copy(tree);
        state.ResumeTiming();
        Trees::sort(copy);
        state.PauseTiming();
        Trees::release(copy);
        state.ResumeTiming();
    }
    Trees::release(tree);
    countItems(state, state.range(0));
}

template <class Trees> void freed(State& state) {
    const auto data = Trees::data(state.range(0));
    for (auto _ : state) {
        state.PauseTiming();
        auto tree = Trees::build(data);
        state.ResumeTiming();
        Trees::release(tree);
    }
    countItems(state, state.range(0));
}

template <class Trees> void bytesOfNode(State& state) {
    constexpr long n = 100'000;
    const std::vector<typename Trees::Text> nothing(n);
    for (auto _ : state) {
        const std::size_t before = bytesInUse();
        auto tree = Trees::build(nothing);
        state.counters["bytes"] = static_cast<double>(bytesInUse() - before) / n - Trees::dataInNode;
        Trees::release(tree);
    }
}

template <class Trees> void registerPeer(const std::string& who, const std::string& what = "tree") {
    const auto add = [&](const char* operation, void (*function)(State&)) {
        benchmark::RegisterBenchmark((what + ' ' + operation + '/' + who).c_str(), function)->Apply(sizes);
    };
    add("built", built<Trees>);
    add("copied", copied<Trees>);
    add("compared", compared<Trees>);
    add("sorted", sorted<Trees>);
    add("freed", freed<Trees>);
    if (what == "tree" && who != "GNode")  // which takes its memory in advance
        benchmark::RegisterBenchmark(("bytes of a node, data apart/" + who).c_str(), bytesOfNode<Trees>)->Iterations(1);
}

// --- The kit alone ---------------------------------------------------------------------------------------------------

template <class Trees, class Operation> void onTree(State& state, Operation operation) {
    auto tree = Trees::build(Trees::data(state.range(0)));
    for (auto _ : state)
        operation(*tree.root);
    Trees::release(tree);
    countItems(state, state.range(0));
}

template <class Trees> void registerKitOnly(const std::string& what) {
    const auto add = [&](const char* operation, auto function) {
        benchmark::RegisterBenchmark((what + ' ' + operation + "/kit").c_str(), [function](State& state) {
            onTree<Trees>(state, function);
        })->Apply(sizes);
    };
    add("hashed", [](QVLNode& tree) { DoNotOptimize(tree.hash()); });
    add("to a dictionary and back", [](QVLNode& tree) {
        const auto back = QVLNode::QVLNodeFromDictionary(tree.QVLNodeToDictionary());
        check(back->numberOfChildren() == tree.numberOfChildren(), "QVLNodeFromDictionary:");
        back->takeApart();
    });
    add("archived", [](QVLNode& tree) { DoNotOptimize(NSKeyedArchiver::archivedDataWithRootObject(tree)); });
    add("archived and read back", [](QVLNode& tree) {
        const auto data = NSKeyedArchiver::archivedDataWithRootObject(tree);
        const auto back = to<QVLNode>(NSKeyedUnarchiver::unarchiveObjectWithData(data));
        check(back->numberOfChildren() == tree.numberOfChildren(), "unarchiveObjectWithData:");
        back->takeApart();
    });
    add("sent a message",
        [](QVLNode& tree) { tree.recursiveMakeChildrenPerformSelector_withObject("isEqualToNode:"_sel, tree); });
}

/// A parent with n children, in order.
Ref<QVLNode2> family(long n) {
    const auto parent = QVLNode2::init();
    for (const auto& each : kitTexts(n))
        parent->appendChildWithData(each);
    return parent;
}

// A tenth of the nodes, as many of their parents, and so on.
void minimumCover(State& state) {
    using Trees = Kit<QVLNode2, wide>;
    const auto tree = Trees::build(Trees::data(state.range(0) * 2));
    const auto nodes = NSMutableArray::array();
    for (Ref<NSArray> level = NSArray::of(*tree.root); level->count() && nodes->count() < NSUInteger(state.range(0));) {
        const auto next = NSMutableArray::array();
        for (QVLNode& each : level->each<QVLNode>())
            next->addObjectsFromArray(*each.children());
        nodes->addObjectsFromArray(next);
        level = next;
    }
    shuffle(nodes);
    nodes->removeObjectsInRange({NSUInteger(state.range(0)), nodes->count() - NSUInteger(state.range(0))});
    repeat(state, state.range(0), [&] { return QVLNode::minimumNodeCoverFromNodesInArray(nodes); });
}

void descendantOfNodes(State& state) {
    const auto parent = family(state.range(0));
    const auto outside = QVLNode2::init();
    const Ref<NSArray> nodes = to<NSArray>(parent->children()->copy());
    repeat(state, state.range(0), [&] { return outside->isDescendantOfNodeInArray(nodes); });
}

void removedByIdentity(State& state) {
    for (auto _ : state) {
        state.PauseTiming();
        const auto parent = family(state.range(0));
        const auto nodes = NSMutableArray::array();
        for (NSUInteger i = 0; i < parent->numberOfChildren(); i += 10)
            nodes->addObject(*parent->childAtIndex(i));
        state.ResumeTiming();
        parent->_removeChildrenIdenticalTo(nodes);
    }
    countItems(state, state.range(0));
}

void appended(State& state) {
    const auto texts = kitTexts(state.range(0));
    for (auto _ : state) {
        const auto parent = QVLNode2::init();
        for (const auto& each : texts)
            parent->appendChildWithData(each);
        state.PauseTiming();
        parent->removeAllChildren();
        state.ResumeTiming();
    }
    countItems(state, state.range(0));
}

void takenAway(State& state) {
    const auto texts = kitTexts(state.range(0));
    for (auto _ : state) {
        state.PauseTiming();
        const auto parent = QVLNode::init();
        std::vector<Ref<QVLNode>> children;
        for (const auto& each : texts) {
            children.push_back(QVLNode::initWithData(each));
            parent->appendChild(children.back());
        }
        state.ResumeTiming();
        for (const auto& each : children)
            each->removeFromParent();
        check(!parent->numberOfChildren(), "removeFromParent");
    }
    countItems(state, state.range(0));
}

BENCHMARK(minimumCover)->Name("minimum cover/kit")->Apply(sizes);
BENCHMARK(descendantOfNodes)->Name("descendant of one of n nodes/kit")->Apply(sizes);
BENCHMARK(removedByIdentity)->Name("a tenth of n children removed/kit")->Apply(sizes);
BENCHMARK(appended)->Name("children appended one by one/kit")->Apply(sizes);
BENCHMARK(takenAway)->Name("children taken away one by one/kit")->Apply(sizes);

[[maybe_unused]] const bool registered = [] {
    registerPeer<Kit<QVLNode, wide>>("kit");
    registerPeer<Kit<QVLNode2, wide>>("kit, QVLNode2");
    registerPeer<Shared>("std::shared_ptr");
#ifdef TOVI_BENCH_HAVE_GLIB
    registerPeer<Glib>("GNode");
#endif
#ifdef TOVI_BENCH_HAVE_QTGUI
    registerPeer<Qt>("QStandardItem");
#endif
    registerPeer<Kit<QVLNode2, deep>>("kit", "chain");
    registerKitOnly<Kit<QVLNode, wide>>("tree");
    registerKitOnly<Kit<QVLNode, deep>>("chain");
    return true;
}();

}  // namespace
