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

RefPtr<NSPredicate> selectionOf(const Options& options) {
    const auto conditions = NSMutableArray::array();
    const auto add = [&](const NSString& format) {
        conditions->addObject(predicateWithFormatByReplacingRelativeDatePatternsWithRealDates(format.view()));
    };
    if (options.since)
        add(*NSString::stringWithFormat(u"date >= $-%u_start", *options.since));
    if (!options.where.empty())
        asked([&] { add(*NSString::fromUTF8(options.where)); });
    if (conditions->count() < 2)
        return as<NSPredicate>(conditions->firstObject());
    return NSCompoundPredicate::andPredicateWithSubpredicates(conditions);
}

Digest::Digest(Options options, RefPtr<NSPredicate> selection, const NSArray& mailboxes)
    : options_(std::move(options)),
      selection_(std::move(selection)),
      mailboxes_(asked([&] { return selected(mailboxes, selection_.get()); })),
      messages_(allMessages(mailboxes_)) {}

}  // namespace digest
