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

}  // namespace

void printLatestMessages(const Digest& digest, Page& page) {
    const NSArray& messages = digest.messages();
    const NSUInteger shown = std::min<NSUInteger>(messages.count(), digest.options().top);
    const auto latest = reversedArray(messages)->subarrayWithRange({0, shown});
    page.heading(u"Latest messages",
                 hasNotes(latest) ? u"times are GMT; ! is explained under Notes" : u"times are GMT");
    for (const Message& message : latest->each<Message>())
        printMessageRow(page, message);
    page.more(messages.count(), shown);
}

}  // namespace digest
