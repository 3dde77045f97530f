#include <Message.h>

#include <algorithm>
#include <array>

#include <mail/EncodedWord.h>
#include <mail/HeaderText.h>
#include <mail/MailAddress.h>
#include <mail/MailDate.h>
#include <mail/MessageText.h>

using namespace tovi;

namespace digest {

namespace {

Ref<NSString> noteText(const MailNote& note) {
    return NSString::stringWithFormat(u"line %lu: %@", note.line, NSString::fromUTF8(note.text));
}

Ref<NSMutableArray> noteTexts(const RawMessage& raw) {
    const auto texts = NSMutableArray::array();
    for (const MailNote& note : raw.notes)
        texts->addObject(noteText(note));
    return texts;
}

// The separating line has a date, too, behind the sender, who may be of several words.
std::optional<MailDate> envelopeDate(std::string_view envelope) {
    for (int words = 0; words < 4; ++words) {
        if (const auto date = parseMailDate(envelope))
            return date;
        const std::size_t space = envelope.find(' ');
        if (space == envelope.npos)
            break;
        envelope.remove_prefix(space + 1);
    }
    return std::nullopt;
}

RefPtr<NSDate> dateOf(const RawMessage& raw, NSMutableArray& notes) {
    const auto field = raw.field("Date");
    auto date = parseMailDate(field.value_or(""));
    if (!date) {
        date = envelopeDate(raw.envelope);
        const std::string reason = field ? "\"" + collapsedText(field->substr(0, 80)) + "\" is no date" : "no date";
        notes.addObject(noteText({raw.line, raw.offset, reason + (date ? "; took the separating line's" : "")}));
    }
    if (!date)
        return nullptr;
    return NSDate::dateWithTimeIntervalSince1970(static_cast<NSTimeInterval>(date->secondsSince1970));
}

Ref<NSString> subjectOf(const RawMessage& raw, NSMutableArray& notes) {
    const HeaderText subject = decodedHeader(raw.field("Subject").value_or(""));
    if (!subject.problem.empty())
        notes.addObject(noteText({raw.line, raw.offset, "subject: " + subject.problem}));
    return subject.text->stringByTrimmingWhitespace();
}

// A large message is not all there, which may be what looks damaged.
Ref<NSString> readOpening(const RawMessage& raw, NSMutableArray& notes) {
    const MessageText body = textOf(raw);
    for (const std::string& problem : body.problems)
        if (!raw.bodyIsCut)
            notes.addObject(noteText({raw.line, raw.offset, "body: " + problem}));
    return openingOf(body.text);
}

bool isReplyMark(std::u16string_view word) {
    static constexpr std::array<std::u16string_view, 12> marks{u"re", u"fwd", u"fw",  u"aw",   u"wg",   u"antw",
                                                               u"sv", u"vs",  u"odp", u"回复", u"答复", u"转发"};
    const auto lowered = [](char16_t c) { return c >= u'A' && c <= u'Z' ? static_cast<char16_t>(c + 32) : c; };
    return std::ranges::any_of(marks,
                               [&](std::u16string_view mark) { return std::ranges::equal(word, mark, {}, lowered); });
}

// The length of a "Re:", "RE[2]:" or "[list]" at the front; 0 where there is none.
std::size_t markLength(std::u16string_view text) {
    if (text.starts_with(u'['))
        return text.substr(0, 40).find(u']') + 1;  // npos + 1 is 0
    const std::size_t colon = text.substr(0, 8).find_first_of(u":：");
    return colon != text.npos && isReplyMark(text.substr(0, text.find_first_of(u":：[( "))) ? colon + 1 : 0;
}

Ref<NSString> topicOf(const NSString& subject) {
    std::u16string_view text = subject;
    while (const std::size_t length = markLength(text))
        text.remove_prefix(std::min(text.find_first_not_of(u" \t", length), text.size()));
    return text.size() == subject.length() ? share(subject) : NSString::stringWithCharacters(text);
}

RefPtr<NSString> messageIDOf(const RawMessage& raw) {
    const auto ids = parseMessageIDs(raw.field("Message-ID").value_or(""));
    return ids.empty() ? RefPtr<NSString>() : NSString::fromUTF8(ids.front());
}

// What In-Reply-To says counts before References, so it comes last.
Ref<NSArray> referencesOf(const RawMessage& raw) {
    auto ids = parseMessageIDs(raw.field("References").value_or(""));
    const auto answered = parseMessageIDs(raw.field("In-Reply-To").value_or(""));
    ids.insert(ids.end(), answered.begin(), answered.end());
    return NSArray::from(ids);
}

}  // namespace

Message::Message(const RawMessage& raw, Person& sender, NSUInteger number)
    : number_(number),
      sender_(sender),
      notes_(noteTexts(raw)),
      subject_(subjectOf(raw, notes_)),
      topic_(topicOf(subject_)),
      date_(dateOf(raw, notes_)),
      messageID_(messageIDOf(raw)),
      references_(referencesOf(raw)),
      opening_(readOpening(raw, notes_)) {}

Ref<Message> Message::fromRaw(const RawMessage& raw, Person& sender, NSUInteger number) {
    return adopt(*new Message(raw, sender, number));
}

NSComparisonResult Message::compareByDate(const Message& other) const {
    if (date_ && other.date_) {
        if (const NSComparisonResult order = date_->compare(*other.date_))
            return order;
    } else if (date_ || other.date_) {
        return date_ ? NSOrderedDescending : NSOrderedAscending;
    }
    return number_ == other.number_  ? NSOrderedSame
           : number_ < other.number_ ? NSOrderedAscending
                                     : NSOrderedDescending;
}

Ref<NSString> Message::description() const { return NSString::stringWithFormat(u"%@: %@", sender_->name(), subject_); }

namespace {

const Additions<Message> additions{
    instance<&Message::number>("number"),
    instance<&Message::sender>("sender"),
    instance<&Message::subject>("subject"),
    instance<&Message::topic>("topic"),
    instance<&Message::date>("date"),
    instance<&Message::messageID>("messageID"),
    instance<&Message::references>("references"),
    instance<&Message::opening>("opening"),
    instance<&Message::notes>("notes"),
    instance<&Message::compareByDate>("compareByDate:"),
};

}  // namespace
}  // namespace digest
