#include <algorithm>

#include <sections/Sections.h>
#include <SortedList.h>
#include <Wording.h>

using namespace tovi;

namespace digest {

namespace {

/// A person and how many messages this person wrote.
class Tally final : public NSObject {
    TOVI_CLASS(Tally, NSObject)

public:
    static Ref<Tally> of(Person& person) { return adopt(*new Tally(person)); }

    const Person& person() const { return person_; }
    NSUInteger count() const { return count_; }
    void countOne() { ++count_; }

private:
    explicit Tally(Person& person) : person_(person) {}

    Ref<Person> person_;
    NSUInteger count_ = 0;
};

// Many messages before few, then by name.
NSInteger compareTallies(NSObject& a, NSObject& b, void*) {
    const Tally& first = static_cast<Tally&>(a);
    const Tally& second = static_cast<Tally&>(b);
    if (first.count() != second.count())
        return first.count() > second.count() ? NSOrderedAscending : NSOrderedDescending;
    return first.person().compare(second.person());
}

Ref<NSArray> talliesByCount(const NSArray& messages) {
    const auto tallies = NSMutableDictionary::dictionary();
    for (const Message& message : messages.each<Message>()) {
        const auto sender = message.sender();
        if (!tallies->find(*sender))
            tallies->setObject_forKey(Tally::of(sender), sender);
        static_cast<Tally*>(tallies->find(*sender))->countOne();
    }
    SortedList sorted(&compareTallies);
    for (const auto entry : *tallies)
        sorted.add(entry.value);
    return sorted.objects();
}

}  // namespace

void printSenders(const Digest& digest, Page& page) {
    const auto tallies = talliesByCount(digest.messages());
    const NSUInteger shown = std::min<NSUInteger>(tallies->count(), digest.options().top);
    page.heading(u"Senders", u"by number of messages");
    if (shown == 0)
        return;
    const NSUInteger most = static_cast<Tally&>((*tallies)[0]).count();
    const int barColumns = std::clamp(page.columns() / 4, 5, 30);
    for (NSUInteger i = 0; i < shown; ++i) {
        const auto& tally = static_cast<const Tally&>((*tallies)[i]);
        const NSUInteger length = std::max<NSUInteger>(1, tally.count() * static_cast<NSUInteger>(barColumns) / most);
        page.row({{NSString::stringWithFormat(u"%lu", tally.count())->view(), 6, Align::right},
                  {tally.person().description()->view(), page.columns() - barColumns - 12},
                  {std::u16string(length, u'#')}});
    }
    page.more(tallies->count(), shown);
}

}  // namespace digest
