// Reads any bytes as a mailbox: whole and in small blocks, which must come to the same, and prints the digest of it.
// Then as one message, and as what its parsers are for.

#include <sstream>

#include <mail/Charset.h>
#include <mail/EncodedWord.h>
#include <mail/Flowed.h>
#include <mail/HtmlText.h>
#include <mail/MessageText.h>
#include <mail/MimeField.h>
#include <mail/TransferEncoding.h>
#include <Report.h>

#include "Support.h"

using namespace digest;
using namespace tovi::literals;

namespace {

/// All that the reader tells about a mailbox, as one text.
std::string reading(std::string_view text, std::size_t blockSize, MboxLimits limits) {
    std::ostringstream told;
    MemorySource source(text, blockSize);
    MboxReader reader(source, MboxQuoting::mboxrd, limits);
    try {
        std::uint64_t end = 0;
        for (RawMessage message; reader.next(message);) {
            require(end == 0 || message.offset == end);  // nothing is lost between two messages
            end = message.offset + message.bytes;
            require(message.bodyOffset > message.offset && message.bodyOffset <= end);
            told << message.line << ' ' << message.envelope << ' ' << message.bodyLines << '\n' << message.body;
            for (std::size_t i = 0; i < message.fieldCount(); ++i)
                told << message.fieldName(i) << ':' << message.fieldValue(i) << '\n';
            for (const MailNote& note : message.notes)
                told << note.line << ' ' << note.offset << ' ' << note.text << '\n';
        }
        require(end == text.size());
    } catch (const MailboxError& error) {
        told << error.what();
    }
    for (const MailNote& problem : reader.problems())
        told << problem.line << ' ' << problem.offset << ' ' << problem.text << '\n';
    return told.str();
}

void readAsMessage(std::string_view text) {
    const std::string file = "From a@b.example Tue Mar  3 10:00:00 2020\n" + std::string(text);
    MemorySource source(file);
    MboxReader reader(source);
    RawMessage message;
    require(reader.next(message));
    const MimeTree tree(message);
    for (std::size_t i = 0; i < tree.parts().size(); ++i) {
        const MimePart& part = tree.parts()[i];
        require(i == 0 ? part.parent == MimePart::none : part.parent < i);
        require(part.depth == (i == 0 ? 0 : tree.parts()[part.parent].depth + 1));
    }
    for (const std::size_t shown : tree.shownTexts())
        require(tree.parts()[shown].type.starts_with("text/"));
    const MessageText body = textOf(message);
    require(openingOf(body.text)->length() <= body.text->length());
    if (message.fieldCount() == 0)
        require(*body.text == *guessedText(message.body));
}

void readAsPieces(std::string_view text) {
    require(decodedQuotedPrintable(text).bytes.size() <= text.size());
    require(decodedBase64(text).bytes.size() <= text.size() + 1);
    require(encodedWordLength(text) <= text.size());
    const HeaderText header = decodedHeader(text);
    if (text.find("=?") == text.npos)
        require(*header.text == *guessedText(text) && header.problem.empty());
    const MimeField field(text);
    require(field.value().size() + field.parameter("charset").size() <= text.size());
    const auto units = tovi::NSString::fromUTF8(text);
    plainTextOfHTML(units);
    require(unflowed(units, true)->length() <= 2 * units->length() + 1);
}

}  // namespace

extern "C" int LLVMFuzzerTestOneInput(const std::uint8_t* data, std::size_t size) {
    const std::string_view text(reinterpret_cast<const char*>(data), size);
    constexpr MboxLimits small{.line = 64, .header = 256, .body = 32, .preamble = 128};
    require(reading(text, SIZE_MAX, small) == reading(text, 1 + size % 7, small));

    readAsMessage(text);
    readAsPieces(text);

    MemorySource source(text);
    try {
        const auto name = u"fuzzed"_ns;
        const auto mailbox = Mailbox::read(name, source, MboxQuoting::mboxo, [](std::uint64_t) {});
        std::ostringstream out;
        Page page(out, 40 + static_cast<int>(size % 100), true);
        printReport(Digest(Options(), nullptr, tovi::NSArray::of(*mailbox, *mailbox)), page);
    } catch (const MailboxError&) {
    }
    return 0;
}
