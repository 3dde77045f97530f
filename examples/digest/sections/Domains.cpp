#include <algorithm>
#include <queue>
#include <vector>

#include <Archived.h>
#include <sections/Sections.h>
#include <Wording.h>

using namespace tovi;

namespace digest {

namespace {

constexpr int countColumns = 6;
constexpr int step = 2;  // of the outline's indentation

// People under the domains of their addresses: "org", below it "example", below that "ada@". A node's data is a
// dictionary with the number of messages that came from there, and with the name where it stands for a person.

/// A node holds its parent, so the tree has to be taken apart.
class TreeOwner {
public:
    explicit TreeOwner(QVLHashNode& root) : root_(root) {}
    ~TreeOwner() { root_->takeApart(); }
    TreeOwner(const TreeOwner&) = delete;
    TreeOwner& operator=(const TreeOwner&) = delete;

    QVLHashNode& root() const { return root_; }

private:
    Ref<QVLHashNode> root_;
};

bool isPerson(std::u16string_view key) { return key.ends_with(u'@'); }

// The way to a person from the root. A domain in brackets is the number of a machine, and is not taken apart.
std::vector<Ref<NSString>> pathTo(const Person& person) {
    std::vector<Ref<NSString>> path;
    const auto address = person.address()->lowercaseString();
    const std::u16string_view text = *address;
    const std::size_t at = text.rfind(u'@');
    if (at == text.npos)
        return {u"(no domain)"_ns, NSString::stringWithFormat(u"%@@", person.name())};
    std::u16string_view domain = text.substr(at + 1);
    while (!domain.empty()) {
        const std::size_t label = domain.starts_with(u'[') ? 0 : domain.rfind(u'.') + 1;  // npos + 1 is 0
        if (label < domain.size())
            path.push_back(NSString::stringWithCharacters(domain.substr(label)));
        domain = domain.substr(0, std::max<std::size_t>(label, 1) - 1);
    }
    path.push_back(NSString::stringWithCharacters(text.substr(0, at + 1)));
    return path;
}

NSDictionary& dataOf(const QVLHashNode& node) { return static_cast<NSDictionary&>(*node.nodeData()); }

NSUInteger messagesOf(const QVLHashNode& node) {
    return to<NSNumber>(dataOf(node).find(u"messages"_ns))->unsignedIntegerValue();
}

void countOne(const QVLHashNode& node) {
    to<NSMutableDictionary>(node.nodeData())
        ->setObject_forKey(NSNumber::numberWithUnsignedInteger(messagesOf(node) + 1), u"messages"_ns);
}

id noMessages() {
    static const id none = NSDictionary::of({{u"messages", 0}});
    return none;
}

// Nodes hold mutable copies of what they are made with.
void addMessage(QVLHashNode& root, const Person& person) {
    Ref<QVLHashNode> node = root;
    countOne(root);
    for (const Ref<NSString>& key : pathTo(person)) {
        if (!node->childForKey(key))
            node->addChildWithData_forKey(noMessages(), key);
        node = node->childForKey(key).ref();
        countOne(node);
    }
    to<NSMutableDictionary>(node->nodeData())->setObject_forKey(person.name(), u"name"_ns);
}

/// A line of the outline: a domain or a person. What nothing else grows beside is on the same line.
struct Branch {
    Ref<QVLHashNode> node;
    std::size_t parent = 0;
    std::u16string domain = {};
    std::u16string title = {};
    std::vector<std::size_t> shown = {};  ///< the branches that grow on it
    NSUInteger hidden = 0;                ///< how many more there are

    bool operator<(const Branch& other) const {
        const NSUInteger mine = messagesOf(node), theirs = messagesOf(other.node);
        return mine != theirs ? mine < theirs : title > other.title;
    }
};

/// The largest branches of a tree. None is larger than the one that it grows on, so they hang together.
class Outline {
public:
    Outline(QVLHashNode& root, std::size_t longest) : branches_{{root}} {
        addBranchesOf(0);
        while (!waiting_.empty()) {
            Branch next = waiting_.top();
            waiting_.pop();
            if (branches_.size() > longest) {
                ++branches_[next.parent].hidden;
                continue;
            }
            branches_[next.parent].shown.push_back(branches_.size());
            branches_.push_back(std::move(next));
            addBranchesOf(branches_.size() - 1);
        }
    }

    const std::vector<Branch>& branches() const { return branches_; }  ///< the first one is the whole tree

private:
    static constexpr std::size_t longDomain = 200;

    void addBranchesOf(std::size_t parent) {
        const auto children = branches_[parent].node->children();
        if (!children)
            return;
        for (const auto [key, child] : *children) {
            Branch branch{branches_[parent].node, parent, branches_[parent].domain};
            climb(branch, key, child);
            while (branch.node->numberOfChildren() == 1)
                climbOnly(branch);
            waiting_.push(std::move(branch));
        }
    }

    static void climbOnly(Branch& branch) {
        const auto children = branch.node->children();
        for (const auto [key, child] : *children)
            climb(branch, key, child);
    }

    static void climb(Branch& branch, const NSObject& key, NSObject& child) {
        const std::u16string_view label = static_cast<const NSString&>(key);
        branch.node = static_cast<QVLHashNode&>(child);
        if (isPerson(label)) {
            branch.title += branch.title.empty() ? u"" : u": ";
            branch.title += static_cast<const NSString&>(*dataOf(branch.node).find(u"name"_ns)).view();
        } else {
            if (branch.domain.size() < longDomain)
                branch.domain.insert(0, std::u16string(label) + (branch.domain.empty() ? u"" : u"."));
            branch.title = branch.domain;
        }
    }

    std::vector<Branch> branches_;
    std::priority_queue<Branch> waiting_;
};

void printBranch(Page& page, const Branch& branch, int indentation) {
    page.row({{NSString::stringWithFormat(u"%lu", messagesOf(branch.node))->view(), countColumns, Align::right},
              {branch.title, 0, Align::left, std::u16string(static_cast<std::size_t>(indentation), u' ')}});
}

void printOutline(Page& page, const std::vector<Branch>& branches) {
    struct Step {
        std::size_t branch;
        int indentation;
        bool isDone;  // all but what is hidden
    };
    std::vector<Step> waiting{{0, -step, false}};
    while (!waiting.empty()) {
        const auto [index, indentation, isDone] = waiting.back();
        waiting.pop_back();
        const Branch& branch = branches[index];
        const int below = std::min(indentation + step, page.columns() / 2);
        if (isDone) {
            page.more(branch.hidden, 0, countColumns + 4 + below);
            continue;
        }
        if (index > 0)
            printBranch(page, branch, indentation);
        waiting.push_back({index, indentation, true});
        for (auto each = branch.shown.rbegin(); each != branch.shown.rend(); ++each)
            waiting.push_back({*each, below, false});
    }
}

}  // namespace

void printDomains(const Digest& digest, Page& page) {
    const TreeOwner tree(QVLHashNode::initWithData(noMessages()));
    for (const Message& message : digest.messages().each<Message>())
        addMessage(tree.root(), message.sender());
    const Archived archived = archivedAndReadBack(tree.root(), "domains");
    const TreeOwner treeReadBack(to<QVLHashNode>(archived.object));
    const Outline outline(treeReadBack.root(), 2 * digest.options().top);  // room for the domains, too
    if (outline.branches().size() <= 2)
        return;
    page.heading(u"Mail domains", u"by number of messages");
    printOutline(page, outline.branches());
    page.aside(NSString::stringWithFormat(u"read back from an archive of %@", sizeText(archived.bytes))->view(), 2);
}

}  // namespace digest
