#include <algorithm>

#include <sections/Sections.h>
#include <Wording.h>

using namespace tovi;

namespace digest {

namespace {

void printNotesOf(Page& page, const Mailbox& mailbox, const Message& message) {
    page.row({{NSString::stringWithFormat(u"%@, message %lu: %@, %@", mailbox.name(), message.number(),
                                          message.sender()->name(), subjectText(message.subject()))
                   ->view()}});
    for (const NSString& note : message.notes()->each<NSString>())
        page.paragraph(note.view(), 6);
}

}  // namespace

void printNotes(const Digest& digest, Page& page) {
    NSUInteger count = 0;
    for (const Mailbox& mailbox : digest.mailboxes().each<Mailbox>()) {
        for (const Message& message : mailbox.messages()->each<Message>()) {
            if (message.notes()->count() == 0)
                continue;
            if (count == 0)
                page.heading(u"Notes", u"what is unusual about messages");
            if (count++ < digest.options().top)
                printNotesOf(page, mailbox, message);
        }
    }
    page.more(count, std::min<NSUInteger>(count, digest.options().top));
}

}  // namespace digest
