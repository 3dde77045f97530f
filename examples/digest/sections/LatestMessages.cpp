#include <algorithm>

#include <sections/MessageRow.h>
#include <sections/Sections.h>
#include <Wording.h>

using namespace tovi;

namespace digest {

namespace {

bool hasNotes(const NSArray& messages) {
    return std::ranges::any_of(messages.each<Message>(),
                               [](const Message& message) { return message.notes()->count() > 0; });
}

Ref<NSString> remark(const NSArray& messages) {
    return NSString::stringWithFormat(u"times of %@%s", NSTimeZone::defaultTimeZone()->name(),
                                      hasNotes(messages) ? "; ! is explained under Notes" : "");
}

// As people here write it: "14:05", "2:05 PM".
Ref<NSString> timeText(const NSDate* date) {
    return date ? shortTimeAndNoDateFormatter()->stringFromDate(*date).ref() : u""_ns;
}

}  // namespace

void printLatestMessages(const Digest& digest, Page& page) {
    const NSArray& messages = digest.messages();
    const NSUInteger shown = std::min<NSUInteger>(messages.count(), digest.options().top);
    const auto latest = reversedArray(messages)->subarrayWithRange({0, shown});
    page.heading(u"Latest messages", remark(latest)->view());
    RefPtr<NSString> day;
    for (const Message& message : latest->each<Message>()) {
        const auto itsDay = relativeDayText(message.date());
        if (!day || !day->isEqualToString(itsDay))
            page.row({{itsDay->view()}});
        day = itsDay;
        printMessageRow(page, message, timeText(message.date()), u"  ");
    }
    page.more(messages.count(), shown);
}

}  // namespace digest
