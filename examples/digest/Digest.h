#pragma once

#include <Mailbox.h>
#include <Options.h>

namespace digest {

/// What a report is about.
class Digest {
public:
    /// Throws std::invalid_argument, with a text for the user, when the options ask for messages with a predicate that
    /// cannot be read or cannot be asked of a message.
    Digest(Options options, const tovi::NSArray& mailboxes);

    const Options& options() const { return options_; }
    /// What messages the options ask for; nil: all.
    const tovi::NSPredicate* selection() const { return selection_.get(); }
    /// With the messages that the options ask for.
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
