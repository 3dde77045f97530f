#include <Digest.h>

#include <stdexcept>

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

RefPtr<NSPredicate> selectionOf(const Options& options) {
    const auto conditions = NSMutableArray::array();
    if (options.since)
        conditions->addObject(predicateWithFormatByReplacingRelativeDatePatternsWithRealDates(
            NSString::stringWithFormat(u"date >= $-%u_start", *options.since)->view()));
    if (!options.where.empty())
        conditions->addObject(
            predicateWithFormatByReplacingRelativeDatePatternsWithRealDates(NSString::fromUTF8(options.where)->view()));
    if (conditions->count() < 2)
        return as<NSPredicate>(conditions->firstObject());
    return NSCompoundPredicate::andPredicateWithSubpredicates(conditions);
}

/// Calls the function; what a predicate raises becomes a text for the user.
template <class F> auto asked(F function) {
    try {
        return function();
    } catch (const NSException& exception) {
        throw std::invalid_argument(std::string("--where: ") + exception.reason()->UTF8String());
    }
}

Ref<NSArray> selected(const NSArray& mailboxes, const NSPredicate* selection) {
    if (!selection)
        return share(mailboxes);
    const auto list = NSMutableArray::array();
    for (const Mailbox& mailbox : mailboxes.each<Mailbox>())
        list->addObject(mailbox.selecting(*selection));
    return list;
}

}  // namespace

Digest::Digest(Options options, const NSArray& mailboxes)
    : options_(std::move(options)),
      selection_(asked([&] { return selectionOf(options_); })),
      mailboxes_(asked([&] { return selected(mailboxes, selection_.get()); })),
      messages_(allMessages(mailboxes_)) {}

}  // namespace digest
