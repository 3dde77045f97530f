#include <Mailbox.h>

#include <mail/Charset.h>
#include <mail/EncodedWord.h>
#include <mail/HeaderText.h>
#include <mail/MailAddress.h>
#include <SortedList.h>

using namespace tovi;

namespace digest {

/// Collects what a mailbox consists of while its file is read.
class Mailbox::Reader {
public:
    Reader(ByteSource& source, MboxQuoting quoting) : mbox_(source, quoting) {}

    void read(const Progress& progress) {
        RawMessage raw;
        for (NSUInteger number = 1; mbox_.next(raw); ++number) {
            noteRepetition(raw, number);
            const auto sender = personOf(raw);
            messages.add(Message::fromRaw(raw, sender, number));
            progress(mbox_.position());
        }
    }

    const MboxReader& mbox() const { return mbox_; }

    SortedList messages{"compareByDate:"_sel};
    const Ref<NSMutableSet> people = NSMutableSet::set();

private:
    // The person that the From field names: the object that stands for this person already, if there is one.
    Ref<Person> personOf(RawMessage& raw) {
        const MailAddress sender = parseMailAddress(raw.field("From").value_or(""));
        const auto name = decodedName(sender, raw);
        const auto person = Person::withName_address(name, guessedText(sender.address));
        if (const auto known = people->member(person)) {
            to<Person>(known)->learnName(name);
            return to<Person>(known);
        }
        people->addObject(person);
        return person;
    }

    static Ref<NSString> decodedName(const MailAddress& sender, RawMessage& raw) {
        const HeaderText name = decodedHeader(sender.name);
        if (!name.problem.empty())
            raw.notes.push_back({raw.line, raw.offset, "sender: " + name.problem});
        return name.text->stringByTrimmingWhitespace();
    }

    void noteRepetition(RawMessage& raw, NSUInteger number) {
        const auto field = raw.field("Message-ID");
        if (!field)
            return;
        const auto messageID = NSString::fromUTF8(collapsedText(*field));
        if (const auto first = numbersByID_->objectForKey(messageID))
            raw.notes.push_back(
                {raw.line, raw.offset, "the message id of message " + first->description()->UTF8String() + " again"});
        else
            numbersByID_->setObject_forKey(NSNumber::numberWithUnsignedInteger(number), messageID);
    }

    MboxReader mbox_;
    const Ref<NSMutableDictionary> numbersByID_ = NSMutableDictionary::dictionary();
};

Mailbox::Mailbox(const NSString& name, Reader& reader)
    : name_(share(name)),
      messages_(reader.messages.objects()),
      people_(reader.people),
      size_(reader.mbox().position()),
      problems_(reader.mbox().problems()) {}

Mailbox::Mailbox(const Mailbox& whole, const NSArray& messages)
    : name_(whole.name_),
      messages_(share(messages)),
      people_(NSSet::setWithArray(arrayByPerformingSelector(messages, "sender"_sel))),
      size_(whole.size_),
      problems_(whole.problems_) {}

Ref<Mailbox> Mailbox::selecting(const NSPredicate& predicate) const {
    return adopt(*new Mailbox(*this, messages_->filteredArrayUsingPredicate(predicate)));
}

Ref<Mailbox> Mailbox::read(const NSString& name, ByteSource& source, MboxQuoting quoting, const Progress& progress) {
    Reader reader(source, quoting);
    reader.read(progress);
    return adopt(*new Mailbox(name, reader));
}

}  // namespace digest
