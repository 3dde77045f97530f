#include <algorithm>

#include <sections/Sections.h>
#include <SortedList.h>
#include <Wording.h>

using namespace tovi;

namespace digest {

namespace {

/// A subject, and the people who wrote about it.
class Topic final : public NSObject {
    TOVI_CLASS(Topic, NSObject)

public:
    /// `senders` holds a person once for each message.
    static Ref<Topic> of(const NSString& title, const NSArray& senders) { return adopt(*new Topic(title, senders)); }

    Ref<NSString> title() const { return title_; }
    Ref<NSArray> people() const { return people_; }  ///< each once, in the order of their first messages
    NSUInteger messageCount() const { return messageCount_; }

private:
    Topic(const NSString& title, const NSArray& senders)
        : title_(share(title)), people_(NSSet::setWithArray(senders)->allObjects()), messageCount_(senders.count()) {}

    Ref<NSString> title_;
    Ref<NSArray> people_;
    NSUInteger messageCount_;
};

// Many people before few, then many messages before few, then by title.
NSInteger compareTopics(NSObject& a, NSObject& b, void*) {
    const Topic& first = static_cast<Topic&>(a);
    const Topic& second = static_cast<Topic&>(b);
    if (first.people()->count() != second.people()->count())
        return first.people()->count() > second.people()->count() ? NSOrderedAscending : NSOrderedDescending;
    if (first.messageCount() != second.messageCount())
        return first.messageCount() > second.messageCount() ? NSOrderedAscending : NSOrderedDescending;
    return first.title()->compare(second.title());
}

// Who wrote about what: lists of topics by person, one for each message.
Ref<NSDictionary> topicsBySender(const NSArray& messages) {
    const auto topics = NSMutableDictionary::dictionary();
    for (const Message& message : messages.each<Message>()) {
        const auto sender = message.sender();
        if (!topics->find(*sender))
            topics->setObject_forKey(NSMutableArray::array(), sender);
        static_cast<NSMutableArray*>(topics->find(*sender))->addObject(message.topic());
    }
    return topics;
}

Ref<NSArray> topicsByPeople(const NSArray& messages) {
    SortedList topics(&compareTopics);
    const auto sendersByTopic = invertKeysAndObjects(topicsBySender(messages));
    for (const auto [title, senders] : *sendersByTopic) {
        const auto& text = static_cast<const NSString&>(title);
        if (text.length() > 0)
            topics.add(Topic::of(text, static_cast<const NSArray&>(senders)));
    }
    return topics.objects();
}

}  // namespace

void printTopics(const Digest& digest, Page& page) {
    const auto topics = topicsByPeople(digest.messages());
    const NSUInteger shown = std::min<NSUInteger>(topics->count(), digest.options().top);
    page.heading(u"Subjects", u"by number of people who wrote about them");
    for (NSUInteger i = 0; i < shown; ++i) {
        const auto& topic = static_cast<const Topic&>((*topics)[i]);
        page.row({{topic.title()->view()}, {counted(topic.messageCount(), u"message")->view(), 14, Align::right}});
        const auto names = arrayByPerformingSelector(topic.people(), "name"_sel);
        page.aside(names->componentsJoinedByString(u", "_ns)->view(), 6);
    }
    page.more(topics->count(), shown);
}

}  // namespace digest
