#include <algorithm>
#include <cstdlib>

#include <sections/MessageRow.h>
#include <sections/Sections.h>
#include <Wording.h>

using namespace tovi;

namespace digest {

void printRandomSample(const Digest& digest, Page& page) {
    const unsigned seed = digest.options().seed;
    srandom(seed);
    const auto shuffled = shuffledArray(digest.messages());
    const NSUInteger shown = std::min<NSUInteger>(shuffled->count(), digest.options().top);
    page.heading(u"A random sample", NSString::stringWithFormat(u"--seed %u", seed)->view());
    const auto sample = shuffled->subarrayWithRange({0, shown});
    for (const Message& message : sample->each<Message>()) {
        printMessageRow(page, message, minuteText(message.date()));
        if (const auto opening = message.opening(); opening->length() > 0)
            page.aside(opening->view(), 6);
    }
}

}  // namespace digest
