#pragma once

#include <mail/RawMessage.h>
#include <Person.h>

namespace digest {

/// One message of a mailbox, with what the report tells of it. What cannot be decoded is there as far as it can, and
/// noted. Immutable.
class Message final : public tovi::NSObject {
    TOVI_CLASS(Message, NSObject)

public:
    /// A message without a date that can be read takes the one of its separating line; that becomes a note. `number` is
    /// its place in the mailbox, counted from 1.
    static tovi::Ref<Message> fromRaw(const RawMessage& raw, Person& sender, tovi::NSUInteger number);

    tovi::NSUInteger number() const { return number_; }
    tovi::Ref<Person> sender() const { return sender_; }
    tovi::Ref<tovi::NSString> subject() const { return subject_; }  ///< empty where there is none
    tovi::Ref<tovi::NSString> topic() const { return topic_; }  ///< the subject without "Re:", "[list]" and the like
    tovi::RefPtr<tovi::NSDate> date() const { return date_; }   ///< nil when it is not known
    tovi::RefPtr<tovi::NSString> messageID() const { return messageID_; }
    /// The ids of the messages before it in its conversation, the one that it answers last. An id may come twice.
    tovi::Ref<tovi::NSArray> references() const { return references_; }
    /// The first paragraph of its text, quotations left out.
    tovi::Ref<tovi::NSString> opening() const { return opening_; }
    /// What is unusual about it: texts, "line 12: ...".
    tovi::Ref<tovi::NSArray> notes() const { return notes_; }

    /// Earlier before later, those without a date first; in the order of the mailbox where the dates are the same.
    tovi::NSComparisonResult compareByDate(const Message& other) const;

    tovi::Ref<tovi::NSString> description() const override;  ///< "Ada Byron: Subject"

private:
    Message(const RawMessage& raw, Person& sender, tovi::NSUInteger number);

    tovi::NSUInteger number_;
    tovi::Ref<Person> sender_;
    tovi::Ref<tovi::NSMutableArray> notes_;
    tovi::Ref<tovi::NSString> subject_;
    tovi::Ref<tovi::NSString> topic_;
    tovi::RefPtr<tovi::NSDate> date_;
    tovi::RefPtr<tovi::NSString> messageID_;
    tovi::Ref<tovi::NSArray> references_;
    tovi::Ref<tovi::NSString> opening_;
};

}  // namespace digest
