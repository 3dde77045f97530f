#include <algorithm>

#include <sections/Sections.h>
#include <Wording.h>

using namespace tovi;

namespace digest {

namespace {

/// When the messages of a list were written. Those without a date come first in it.
Ref<NSString> periodText(const NSArray& messages) {
    for (const Message& first : messages.each<Message>()) {
        if (const auto date = first.date())
            return NSString::stringWithFormat(u"%@ to %@", dayText(date),
                                              dayText(to<Message>(messages.lastObject())->date()));
    }
    return u"no dates"_ns;
}

// Dates as people read them; a cast to something else than a date has no such text.
Ref<NSString> selectionText(const NSPredicate& selection) {
    try {
        return qvlDescription(selection);
    } catch (const NSException&) {
        return selection.predicateFormat();
    }
}

void printRow(Page& page, int nameColumns, const NSString& name, const NSArray& messages, NSUInteger people,
              NSUInteger size) {
    page.row({{name, nameColumns},
              {counted(messages.count(), u"message")->view(), 15, Align::right},
              {counted(people, u"person", u"people")->view(), 13, Align::right},
              {sizeText(size)->view(), 7, Align::right},
              {periodText(messages)->view()}});
}

}  // namespace

void printOverview(const Digest& digest, Page& page) {
    int nameColumns = 5;
    for (const Mailbox& mailbox : digest.mailboxes().each<Mailbox>())
        nameColumns = std::max(nameColumns, columnsOf(printable(*mailbox.name())));
    nameColumns = std::min(nameColumns, std::max(page.columns() - 69, 8));

    page.heading(u"Mailboxes");
    if (digest.selection())
        page.paragraph(NSString::stringWithFormat(u"messages where %@", selectionText(*digest.selection()))->view(), 2);
    const auto people = NSMutableSet::set();
    NSUInteger size = 0;
    for (const Mailbox& mailbox : digest.mailboxes().each<Mailbox>()) {
        printRow(page, nameColumns, mailbox.name(), mailbox.messages(), mailbox.people()->count(), mailbox.size());
        people->unionSet(mailbox.people());
        size += mailbox.size();
    }
    if (digest.mailboxes().count() > 1)
        printRow(page, nameColumns, u"all"_ns, digest.messages(), people->count(), size);
}

}  // namespace digest
