#include <algorithm>

#include <sections/Sections.h>
#include <SortedList.h>
#include <Wording.h>

using namespace tovi;

namespace digest {

namespace {

NSInteger compareTexts(NSObject& a, NSObject& b, void*) {
    return static_cast<NSString&>(a).compare(static_cast<NSString&>(b));
}

// Every subject once, in alphabetical order.
Ref<NSArray> allSubjects(const NSArray& messages) {
    SortedList subjects(&compareTexts, SortedList::Duplicates::dropped);
    const auto texts = arrayByPerformingSelector(messages, "subject"_sel);
    for (NSObject& subject : *texts)
        subjects.add(subject);
    return subjects.objects();
}

}  // namespace

void printSubjectsByPrefix(const Digest& digest, Page& page) {
    const auto subjects = allSubjects(digest.messages());
    const auto prefix = NSString::fromUTF8(digest.options().prefix);
    const auto found = searchItemsStartingWith(subjects, prefix);
    const NSUInteger shown = std::min<NSUInteger>(found->count(), digest.options().top);
    page.heading(NSString::stringWithFormat(u"Subjects that begin with \"%@\"", prefix)->view(),
                 NSString::stringWithFormat(u"%lu of %lu", found->count(), subjects->count())->view());
    for (NSUInteger i = 0; i < shown; ++i)
        page.row({{static_cast<NSString&>((*found)[i]).view()}});
    page.more(found->count(), shown);
}

}  // namespace digest
