#include <algorithm>

#include <sections/Sections.h>
#include <SortedList.h>
#include <Wording.h>

using namespace tovi;

namespace digest {

namespace {

void printPeople(const Digest& digest, Page& page, const NSSet& people) {
    SortedList sorted("compare:"_sel);
    for (NSObject& person : people)
        sorted.add(person);
    const auto list = sorted.objects();
    const NSUInteger shown = std::min<NSUInteger>(list->count(), digest.options().top);
    for (NSUInteger i = 0; i < shown; ++i)
        page.row({{(*list)[i].description()->view()}});
    page.more(list->count(), shown);
}

Ref<NSSet> peopleOfAll(const NSArray& mailboxes) {
    Ref<NSSet> people = static_cast<const Mailbox&>(mailboxes[0]).people();
    for (const Mailbox& mailbox : mailboxes.each<Mailbox>())
        people = setByIntersectingSet(people, mailbox.people());
    return people;
}

}  // namespace

void printCommonPeople(const Digest& digest, Page& page) {
    const NSArray& mailboxes = digest.mailboxes();
    if (mailboxes.count() < 2)
        return;
    const auto common = peopleOfAll(mailboxes);
    page.heading(mailboxes.count() == 2 ? u"People in both mailboxes" : u"People in all mailboxes",
                 counted(common->count(), u"person", u"people")->view());
    printPeople(digest, page, common);
    for (const Mailbox& mailbox : mailboxes.each<Mailbox>()) {
        const auto rest = setByMinusingSet(mailbox.people(), common);
        page.aside(NSString::stringWithFormat(u"%@ has %@", mailbox.name(), counted(rest->count(), u"other"))->view(),
                   2);
    }
}

}  // namespace digest
