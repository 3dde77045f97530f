#pragma once

#include <Message.h>

namespace digest {

/// A message in the tree of its conversation: its children are its replies. It has what the report tells of the message
/// as its data, a dictionary, so that it can be archived as any node can.
class Post final : public tovi::QVLNode2 {
    TOVI_CLASS(Post, QVLNode2)

public:
    /// The conversations of a list, in a post that stands for the list. What nobody answers and answers nothing is left
    /// out, unless there is nothing else; so are further messages of a message id, and circles are cut, as anything may
    /// be in a header.
    static tovi::Ref<Post> conversationsOf(const tovi::NSArray& messages);

    tovi::Ref<tovi::NSString> sender() const;
    tovi::Ref<tovi::NSString> topic() const;
    tovi::Ref<tovi::NSString> opening() const;
    tovi::RefPtr<tovi::NSDate> date() const;  ///< nil when it is not known

    /// Earlier before later, those without a date first.
    tovi::NSComparisonResult compareByDate(const Post& other) const;

    /// Below the list: the long conversations first, then the ones that went on until late; replies by date. For this
    /// it counts the messages.
    void sortConversations();
    /// How many messages the conversation that begins here has, and the date of the latest; known once the list has
    /// been sorted.
    tovi::NSUInteger messageCount() const { return messageCount_; }
    tovi::Ref<tovi::NSDate> latestDate() const { return latestDate_; }
    void countIn(Post& conversation) const;  ///< adds this one message to both

private:
    Post() = default;
    class Threading;

    tovi::NSObject* value(const tovi::NSString& key) const;
    Post& addReply(const Message& message);

    tovi::NSUInteger messageCount_ = 0;
    tovi::Ref<tovi::NSDate> latestDate_ = tovi::NSDate::distantPast();
};

}  // namespace digest
