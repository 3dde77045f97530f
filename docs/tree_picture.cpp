// Writes tree.svg, the guide's picture of a tree: the tree as it is, the smallest cover of some of its nodes, and its
// dictionary form, all of it as the library gives it.

#include <algorithm>
#include <iostream>
#include <sstream>
#include <string>

#include <ToviFoundationKit/ToviFoundationKit.h>

using namespace tovi;

namespace {

constexpr int nodeWidth = 72, nodeHeight = 32;
constexpr int columnWidth = 88, levelHeight = 106;
constexpr int treeLeft = 36, treeTop = 102;
constexpr int formLeft = 520, formTop = 86, lineHeight = 14;

/// A node that knows its place in the picture.
class PlacedNode final : public QVLNode2 {
    TOVI_CLASS(PlacedNode, QVLNode2)

public:
    static Ref<PlacedNode> withData(id data) {
        const auto node = adopt(*new PlacedNode);
        node->setUp(data);
        return node;
    }

    Ref<PlacedNode> add(const char16_t* name) {
        appendChildWithData(NSString::stringWithCharacters(name));
        return static_cast<PlacedNode&>(*lastChild());
    }

    /// Leaves get one column after the other; what is above them comes into the middle.
    void place(int& column) {
        if (numberOfChildren() == 0) {
            x = treeLeft + column++ * columnWidth + nodeWidth / 2;
        } else {
            for (PlacedNode& child : children()->each<PlacedNode>())
                child.place(column);
            x = (static_cast<PlacedNode&>(*firstChild()).x + static_cast<PlacedNode&>(*lastChild()).x) / 2;
        }
        y = treeTop + static_cast<int>(numberOfParents()) * levelHeight;
    }

    int x = 0, y = 0;  ///< of the middle

private:
    PlacedNode() = default;
};

std::string escaped(const NSString& text) {
    std::string result;
    for (const char c : text.UTF8String())
        result += c == '<' ? "&lt;" : c == '&' ? "&amp;" : std::string(1, c);
    return result;
}

void text(const char* style, int x, int y, const std::string& words) {
    std::cout << "  <text class=\"" << style << "\" x=\"" << x << "\" y=\"" << y << "\">" << words << "</text>\n";
}

void drawNode(const PlacedNode& node, const NSArray& chosen, const NSArray& cover) {
    if (const auto parent = node.nodeParent()) {
        const auto& above = static_cast<const PlacedNode&>(*parent);
        const int from = above.y + nodeHeight / 2, to = node.y - nodeHeight / 2, middle = (from + to) / 2;
        std::cout << "  <path class=\"link\" d=\"M" << above.x << ' ' << from << 'C' << above.x << ' ' << middle << ' '
                  << node.x << ' ' << middle << ' ' << node.x << ' ' << to << "\"/>\n";
    }
    const char* style = cover.indexOfObjectIdenticalTo(node) != static_cast<NSUInteger>(NSNotFound) ? "node cover"
                        : node.isDescendantOfNodeInArray(cover)                                     ? "node covered"
                                                                                                    : "node";
    const int left = node.x - nodeWidth / 2, top = node.y - nodeHeight / 2;
    std::cout << "  <rect class=\"" << style << "\" x=\"" << left << "\" y=\"" << top << "\" width=\"" << nodeWidth
              << "\" height=\"" << nodeHeight << "\" rx=\"6\"/>\n";
    text("name", node.x, node.y + 5, escaped(*node.nodeData()->description()));
    const NSUInteger place = chosen.indexOfObjectIdenticalTo(node);
    if (place == static_cast<NSUInteger>(NSNotFound))
        return;
    std::cout << "  <circle class=\"mark\" cx=\"" << left + nodeWidth << "\" cy=\"" << top << "\" r=\"9\"/>\n";
    text("number", left + nodeWidth, top + 4, std::to_string(place + 1));
}

void drawTree(const PlacedNode& node, const NSArray& chosen, const NSArray& cover) {
    drawNode(node, chosen, cover);
    for (const PlacedNode& child : node.children()->each<PlacedNode>())
        drawTree(child, chosen, cover);
}

void drawLines(const NSString& words) {
    std::istringstream lines(escaped(words));
    std::string line;
    for (int y = formTop; std::getline(lines, line); y += lineHeight)
        text("form", formLeft, y, line);
}

std::string namesOf(const NSArray& nodes) {
    return escaped(arrayByPerformingSelector(nodes, "nodeData"_sel)->componentsJoinedByString(u", "_ns));
}

constexpr const char* head = R"(<svg xmlns="http://www.w3.org/2000/svg" viewBox="0 0 960 600" font-size="14"
    font-family="Helvetica, Arial, sans-serif">
  <title>A tree, the smallest cover of some of its nodes, and its dictionary form</title>
  <style>
    .page { fill: #fff }
    .title { font-weight: bold; fill: #1f2937 }
    .remark { font-size: 12.5px; fill: #5b6472 }
    .link { fill: none; stroke: #9aa3b0; stroke-width: 1.5 }
    .node { fill: #f7f7f4; stroke: #9aa3b0; stroke-width: 1.5 }
    .cover { fill: #f3d9a4; stroke: #a8731b; stroke-width: 2.5 }
    .covered { fill: #fdf3e1; stroke: #c9a35b }
    .name { fill: #1f2937; text-anchor: middle }
    .mark { fill: #2b5c8a }
    .number { fill: #fff; font-size: 12px; font-weight: bold; text-anchor: middle }
    .form { fill: #3d4654; font: 11.5px ui-monospace, Menlo, Consolas, "DejaVu Sans Mono", monospace; white-space: pre }
    .rule { stroke: #d8d8d0 }
    @media (prefers-color-scheme: dark) {
      .page { fill: #161b22 }
      .title { fill: #e6e9ee }
      .remark { fill: #a0a9b6 }
      .link { stroke: #6a7482 }
      .node { fill: #222a35; stroke: #6a7482 }
      .cover { fill: #7a5413; stroke: #e0b25c }
      .covered { fill: #3a2f1b; stroke: #9c7937 }
      .name { fill: #e6e9ee }
      .mark { fill: #6aa9e0 }
      .number { fill: #10151c }
      .form { fill: #c3cad4 }
      .rule { stroke: #323b48 }
    }
  </style>
  <rect class="page" width="960" height="600" rx="8"/>
)";

}  // namespace

int main() {
    const auto garden = PlacedNode::withData(u"garden"_ns);
    const auto beds = garden->add(u"beds");
    const auto beans = beds->add(u"beans");
    beds->add(u"roses");
    const auto shed = garden->add(u"shed");
    const auto tools = shed->add(u"tools");
    const auto spade = tools->add(u"spade");
    tools->add(u"rake");
    garden->add(u"gate");
    int column = 0;
    garden->place(column);

    const auto chosen = NSArray::of(spade, tools, shed, beans);
    const auto cover = QVLNode::minimumNodeCoverFromNodesInArray(chosen);

    std::cout << head;
    text("title", treeLeft, 34, "A tree");
    text("remark", treeLeft, 54, "1 to 4: the nodes of a list");
    drawTree(garden, chosen, cover);
    const int foot = treeTop + 3 * levelHeight + 92;
    text("remark", treeLeft, foot, "minimumNodeCoverFromNodesInArray");
    text("title", treeLeft, foot + 22, namesOf(chosen) + " \u2192 " + namesOf(cover));
    text("remark", treeLeft, foot + 44, "strong: the cover; light: what lies below it");
    std::cout << "  <path class=\"rule\" d=\"M" << formLeft - 24 << " 24V576\"/>\n";
    text("title", formLeft, 34, "QVLNodeToDictionary");
    text("remark", formLeft, 54, "the same tree as dictionaries, as they print themselves");
    std::cout << "  <g xml:space=\"preserve\">\n";
    drawLines(*garden->QVLNodeToDictionary()->description());
    std::cout << "  </g>\n</svg>\n";
}
