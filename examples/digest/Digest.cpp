#include <Digest.h>

#include <SortedList.h>

using namespace tovi;

namespace digest {

namespace {

Ref<NSArray> allMessages(const NSArray& mailboxes) {
    SortedList messages("compareByDate:"_sel);
    for (const Mailbox& mailbox : mailboxes.each<Mailbox>())
        messages.addSorted(mailbox.messages());
    return messages.objects();
}

}  // namespace

Digest::Digest(Options options, const NSArray& mailboxes)
    : options_(std::move(options)), mailboxes_(share(mailboxes)), messages_(allMessages(mailboxes)) {}

}  // namespace digest
