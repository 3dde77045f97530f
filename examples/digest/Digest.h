#pragma once

#include <Mailbox.h>
#include <Options.h>

namespace digest {

/// What messages the options ask for; nil: all. Throws std::invalid_argument, with a text for the user, when that
/// cannot be read.
tovi::RefPtr<tovi::NSPredicate> selectionOf(const Options& options);

/// What a report is about.
class Digest {
public:
    /// With the messages that the predicate chooses; nil: all. Throws std::invalid_argument, with a text for the user,
    /// when it cannot be asked of a message.
    Digest(Options options, tovi::RefPtr<tovi::NSPredicate> selection, const tovi::NSArray& mailboxes);

    const Options& options() const { return options_; }
    const tovi::NSPredicate* selection() const { return selection_.get(); }
    const tovi::NSArray& mailboxes() const { return mailboxes_; }
    /// The messages of all mailboxes, by date.
    const tovi::NSArray& messages() const { return messages_; }

private:
    Options options_;
    tovi::RefPtr<tovi::NSPredicate> selection_;
    tovi::Ref<tovi::NSArray> mailboxes_;
    tovi::Ref<tovi::NSArray> messages_;
};

}  // namespace digest
