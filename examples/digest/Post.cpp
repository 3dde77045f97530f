#include <Post.h>

#include <algorithm>
#include <unordered_map>
#include <vector>

using namespace tovi;

namespace digest {

/// Which message answers which.
class Post::Threading {
public:
    explicit Threading(const NSArray& messages)
        : messages_(messages), parents_(messages.count(), none), isAnswered_(messages.count()) {
        findParents();
        cutCircles();
    }

    void addTo(Post& list) const {
        const bool hasReplies = std::find(isAnswered_.begin(), isAnswered_.end(), true) != isAnswered_.end();
        std::vector<Post*> posts(parents_.size());
        for (const std::size_t each : parentsFirst_) {
            const std::size_t parent = parents_[each];
            if (parent != none || isAnswered_[each] || !hasReplies)
                posts[each] = &(parent == none ? list : *posts[parent]).addReply(message(each));
        }
    }

private:
    static constexpr std::size_t none = ~std::size_t(0);

    const Message& message(std::size_t index) const { return static_cast<const Message&>(messages_[index]); }

    void findParents() {
        std::unordered_map<Ref<NSString>, std::size_t> known;
        std::vector<std::size_t> unrepeated;
        for (std::size_t i = 0; i < parents_.size(); ++i) {
            const auto messageID = message(i).messageID();
            if (!messageID || known.try_emplace(messageID.ref(), i).second)
                unrepeated.push_back(i);
        }
        for (const std::size_t each : unrepeated) {
            const auto references = message(each).references();
            for (NSUInteger i = references->count(); i-- > 0 && parents_[each] == none;)
                if (const auto found = known.find(to<NSString>(references->objectAtIndex(i)));
                    found != known.end() && found->second != each)
                    parents_[each] = found->second;
            if (parents_[each] != none)
                isAnswered_[parents_[each]] = true;
        }
    }

    // Climbs from each message as far as nobody has climbed yet. Where that comes back to its own path, the message at
    // which it does so begins the conversation.
    void cutCircles() {
        std::vector<std::size_t> climbedFrom(parents_.size(), none);
        std::vector<std::size_t> path;
        for (std::size_t i = 0; i < parents_.size(); ++i) {
            std::size_t each = i;
            for (; each != none && climbedFrom[each] == none; each = parents_[each]) {
                climbedFrom[each] = i;
                path.push_back(each);
            }
            if (each != none && climbedFrom[each] == i && !path.empty()) {
                parents_[each] = none;
                const auto place = std::find(path.begin(), path.end(), each);
                std::rotate(place, place + 1, path.end());
            }
            parentsFirst_.insert(parentsFirst_.end(), path.rbegin(), path.rend());
            path.clear();
        }
    }

    const NSArray& messages_;
    std::vector<std::size_t> parents_;
    std::vector<bool> isAnswered_;
    std::vector<std::size_t> parentsFirst_;
};

namespace {

Ref<NSDictionary> dataOf(const Message& message) {
    const auto data = NSMutableDictionary::of(
        {{u"sender", message.sender()->name()}, {u"topic", message.topic()}, {u"opening", message.opening()}});
    data->setValue_forKey(message.date().get(), u"date"_ns);
    return data;
}

}  // namespace

Ref<Post> Post::conversationsOf(const NSArray& messages) {
    const auto list = adopt(*new Post);
    list->setNodeData(NSDictionary::dictionary());
    Threading(messages).addTo(list);
    return list;
}

Post& Post::addReply(const Message& message) {
    appendChildWithData(dataOf(message));
    return static_cast<Post&>(*lastChild());
}

NSObject* Post::value(const NSString& key) const { return to<NSDictionary>(nodeData())->find(key); }

Ref<NSString> Post::sender() const { return to<NSString>(value(u"sender"_ns)); }
Ref<NSString> Post::topic() const { return to<NSString>(value(u"topic"_ns)); }
Ref<NSString> Post::opening() const { return to<NSString>(value(u"opening"_ns)); }
RefPtr<NSDate> Post::date() const { return as<NSDate>(value(u"date"_ns)); }

NSComparisonResult Post::compareByDate(const Post& other) const {
    const auto mine = date(), theirs = other.date();
    if (mine && theirs)
        return mine->compare(*theirs);
    return mine ? NSOrderedDescending : theirs ? NSOrderedAscending : NSOrderedSame;
}

// Sorting is stable, so what is sorted by last counts first.
void Post::sortConversations() {
    recursiveSortChildrenWithSelector("compareByDate:"_sel);
    for (Post& conversation : children()->each<Post>()) {
        conversation.messageCount_ = 0;
        conversation.recursiveMakeChildrenPerformSelector_withObject("countIn:"_sel, conversation);
    }
    resortChildrenWithSelector("latestDate"_sel);
    resortChildrenWithSelector("messageCount"_sel);
}

void Post::countIn(Post& conversation) const {
    ++conversation.messageCount_;
    if (const auto when = date())
        conversation.latestDate_ = conversation.latestDate_->laterDate(*when);
}

namespace {

const Additions<Post> additions{
    instance<&Post::sender>("sender"),
    instance<&Post::topic>("topic"),
    instance<&Post::opening>("opening"),
    instance<&Post::date>("date"),
    instance<&Post::compareByDate>("compareByDate:"),
    instance<&Post::messageCount>("messageCount"),
    instance<&Post::latestDate>("latestDate"),
    instance<&Post::countIn>("countIn:"),
};

}  // namespace
}  // namespace digest
