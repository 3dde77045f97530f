#include <algorithm>
#include <vector>

#include <Archived.h>
#include <Post.h>
#include <sections/Sections.h>
#include <Wording.h>

using namespace tovi;

namespace digest {

namespace {

constexpr int indentation = 6;
constexpr int dateColumns = 16;

/// A post on the page: what stands before it and before its replies.
struct Line {
    const Post& post;
    std::u16string lead;
    std::u16string repliesLead;
};

// The replies' lines go on top, the first one last. Far down they are not indented any more.
void pushReplies(std::vector<Line>& waiting, const Line& line, std::size_t longestLead) {
    const NSUInteger count = line.post.numberOfChildren();
    const bool isFull = line.repliesLead.size() >= longestLead;
    for (NSUInteger i = count; i-- > 0;) {
        const bool isLast = i + 1 == count;
        waiting.push_back({static_cast<const Post&>(*line.post.childAtIndex(i)),
                           line.repliesLead + (isLast ? u"└─ " : u"├─ "),
                           isFull ? line.repliesLead : line.repliesLead + (isLast ? u"   " : u"│  ")});
    }
}

void printConversation(Page& page, const Post& conversation, NSUInteger top) {
    const NSUInteger count = conversation.messageCount();
    page.row({{subjectText(conversation.topic())->view()}, {counted(count, u"message")->view(), 14, Align::right}});
    const int textColumns = page.columns() - indentation - dateColumns - 4;
    const int nameColumns = std::max(std::min(textColumns, 18), textColumns * 3 / 5);
    const std::u16string margin(indentation - 2, u' ');
    std::vector<Line> waiting{{conversation, {}, {}}};
    for (NSUInteger shown = 0; shown < top && !waiting.empty(); ++shown) {
        const Line line = std::move(waiting.back());
        waiting.pop_back();
        page.row({{minuteText(line.post.date().get())->view(), dateColumns + indentation - 2, Align::left, margin},
                  {line.post.sender()->view(), nameColumns, Align::left, line.lead},
                  {line.post.opening()->view()}});
        pushReplies(waiting, line, static_cast<std::size_t>(nameColumns / 2));
    }
    page.more(count, std::min(count, top), indentation);
}

}  // namespace

void printConversations(const Digest& digest, Page& page) {
    const Archived archived = archivedAndReadBack(Post::conversationsOf(digest.messages()), "conversations");
    const auto list = to<Post>(archived.object);
    if (list->numberOfChildren() == 0)
        return;
    list->sortConversations();
    const NSUInteger shown = std::min<NSUInteger>(list->numberOfChildren(), digest.options().top);
    page.heading(u"Conversations", u"the longest first");
    for (NSUInteger i = 0; i < shown; ++i)
        printConversation(page, static_cast<const Post&>(*list->childAtIndex(i)), digest.options().top);
    page.more(list->numberOfChildren(), shown);
    page.aside(NSString::stringWithFormat(u"read back from an archive of %@", sizeText(archived.bytes))->view(), 2);
}

}  // namespace digest
