#pragma once

#include <functional>

#include <mail/MboxReader.h>
#include <Message.h>

namespace digest {

/// The messages of one file.
class Mailbox final : public tovi::NSObject {
    TOVI_CLASS(Mailbox, NSObject)

public:
    /// Told after each message how many bytes have been read.
    using Progress = std::function<void(std::uint64_t position)>;

    /// Throws MailboxError when the source is no mailbox or cannot be read.
    static tovi::Ref<Mailbox> read(const tovi::NSString& name, ByteSource& source, MboxQuoting quoting,
                                   const Progress& progress);

    /// A mailbox of the messages that the predicate chooses. Raises what the predicate raises.
    tovi::Ref<Mailbox> selecting(const tovi::NSPredicate& predicate) const;

    tovi::Ref<tovi::NSString> name() const { return name_; }
    tovi::Ref<tovi::NSArray> messages() const { return messages_; }      ///< by date
    tovi::Ref<tovi::NSSet> people() const { return people_; }            ///< who wrote them
    tovi::NSUInteger size() const { return size_; }                      ///< bytes of the whole file
    const std::vector<MailNote>& problems() const { return problems_; }  ///< of the file as a whole

private:
    class Reader;
    Mailbox(const tovi::NSString& name, Reader& reader);
    Mailbox(const Mailbox& whole, const tovi::NSArray& messages);

    tovi::Ref<tovi::NSString> name_;
    tovi::Ref<tovi::NSArray> messages_;
    tovi::Ref<tovi::NSSet> people_;
    tovi::NSUInteger size_;
    std::vector<MailNote> problems_;
};

}  // namespace digest
