#pragma once

#include <mail/LineReader.h>
#include <mail/RawMessage.h>

namespace digest {

/// How lines of a body that begin with "From " were quoted when they were written.
enum class MboxQuoting {
    mboxrd,  ///< ">From " and ">>From " each lose one ">"
    mboxo    ///< only ">From " does: the writer left quoted ones alone
};

/// How much is kept of a mailbox's excesses, in bytes.
struct MboxLimits {
    std::size_t line = LineReader::defaultLimit;  ///< longer lines are cut
    std::size_t header = 1024 * 1024;             ///< of one message; further fields are left out
    std::size_t body = 1024 * 1024;               ///< of one message
    std::size_t preamble = 64 * 1024;             ///< before the first message; where there is more, it is no mailbox
};

/// Reads the messages of a mailbox one after the other, with bounded memory and in linear time.
///
/// A message begins with a line "From SENDER DATE". It is told from a line of text by its date, so that mailboxes whose
/// bodies were not quoted come out right in most cases. Messages that are broken are handed out with what could be
/// read, and notes. Lines before the first separating line are skipped.
class MboxReader {
public:
    explicit MboxReader(ByteSource& source, MboxQuoting quoting = MboxQuoting::mboxrd, MboxLimits limits = {});

    /// Reads the next message; false at the end. Throws MailboxError when the source is no mailbox or cannot be read.
    bool next(RawMessage& message);

    /// What is wrong with the file as a whole, once `next` has answered false.
    const std::vector<MailNote>& problems() const noexcept { return problems_; }

    /// How far the file has been read.
    std::uint64_t position() const noexcept { return line().offset + line().length; }

private:
    enum class HeaderLine { field, continuation, ignored, stray, end, nextMessage, body };
    struct StrayLine;

    const Line& line() const noexcept { return lines_.line(); }
    bool advance() { return hasLine_ = lines_.next(); }
    void consume(RawMessage& message);
    bool isSeparator() const;
    void findFirstSeparator();
    [[noreturn]] void refuse(bool isBinary) const;

    void readHeader(RawMessage& message);
    HeaderLine kindOfHeaderLine(const RawMessage& message, const StrayLine& stray) const;
    void readField(RawMessage& message);
    void continueField(RawMessage& message, StrayLine& stray);
    void endHeader(RawMessage& message, HeaderLine kind, const StrayLine& stray);
    void beginBody(RawMessage& message, const StrayLine& stray) const;
    bool fitsIntoHeader(RawMessage& message);
    void readBody(RawMessage& message);
    void addBodyLine(RawMessage& message, std::string_view text) const;

    LineReader lines_;
    const MboxQuoting quoting_;
    const MboxLimits limits_;
    bool started_ = false;
    bool hasLine_ = false;
    bool isCutOff_ = false;        // the last line is not complete
    std::size_t headerBytes_ = 0;  // of the message being read
    std::vector<MailNote> problems_;
};

}  // namespace digest
