#pragma once

#include <deque>
#include <string>
#include <string_view>
#include <vector>

#include <mail/RawMessage.h>

namespace digest {

/// A part of a message, as it was sent.
struct MimePart {
    static constexpr std::size_t none = ~std::size_t{0};

    std::size_t parent = none;  ///< its place in the tree's list
    unsigned depth = 0;
    std::string type;      ///< "text/plain"; multiparts and messages have theirs below them
    std::string charset;   ///< empty where none is named
    std::string encoding;  ///< for the way: "base64"; may be empty
    bool isAttached = false;
    bool isFlowed = false;      ///< format=flowed
    bool deletesSpace = false;  ///< delsp=yes
    std::string boundary;
    std::string_view content;  ///< not decoded
};

/// The parts of a message (RFC 2046), those that hold others before what they hold. Valid while the message is.
///
/// A multipart that is not closed ends with what it is in. One in which no part is found, and what is nested deeper
/// than 32 levels, is plain text. Linear time.
class MimeTree {
public:
    explicit MimeTree(const RawMessage& message);
    MimeTree(const MimeTree&) = delete;
    MimeTree& operator=(const MimeTree&) = delete;

    const std::vector<MimePart>& parts() const noexcept { return parts_; }
    const std::vector<std::string>& problems() const noexcept { return problems_; }

    /// The places of the text parts to be shown, in order. Of alternatives that is the plain one, else enriched text,
    /// else HTML. Attachments are left out.
    std::vector<std::size_t> shownTexts() const;

private:
    /// A part whose header was not read yet.
    struct Found {
        std::size_t parent;
        unsigned depth;
        std::string_view text;
    };

    void add(MimePart part);
    bool addPartsOf(std::size_t multipart);
    void addMessageIn(std::size_t part);
    void noteProblem(std::string problem);

    const bool isCut_;
    std::vector<MimePart> parts_;
    std::vector<Found> found_;         // the next one last
    std::deque<std::string> decoded_;  // messages that were encoded for the way
    std::vector<std::string> problems_;
};

}  // namespace digest
