#pragma once

#include <vector>

#include <mail/MimeTree.h>
#include <ToviFoundationKit/ToviFoundationKit.h>

namespace digest {

/// A body as text, and what stood in the way.
struct MessageText {
    tovi::Ref<tovi::NSString> text;
    std::vector<std::string> problems;
};

/// The text of a part, and why it may not be all: decoded from the encoding for the way and from its charset, lines
/// that were broken in format=flowed joined, HTML and enriched text as plain text.
tovi::Ref<tovi::NSString> textOfPart(const MimePart& part, std::vector<std::string>& problems);

/// The text parts of a message that are to be shown, one after the other, with an empty line between them.
MessageText textOf(const RawMessage& message);

/// The first paragraph of a text on one line, with the second one if that is but "Dear all,"; quotations left out.
tovi::Ref<tovi::NSString> openingOf(const tovi::NSString& text);

}  // namespace digest
