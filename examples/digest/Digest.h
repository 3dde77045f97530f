#pragma once

#include <Mailbox.h>
#include <Options.h>

namespace digest {

/// What a report is about.
class Digest {
public:
    Digest(Options options, const tovi::NSArray& mailboxes);

    const Options& options() const { return options_; }
    const tovi::NSArray& mailboxes() const { return mailboxes_; }
    /// The messages of all mailboxes, by date.
    const tovi::NSArray& messages() const { return messages_; }

private:
    Options options_;
    tovi::Ref<tovi::NSArray> mailboxes_;
    tovi::Ref<tovi::NSArray> messages_;
};

}  // namespace digest
