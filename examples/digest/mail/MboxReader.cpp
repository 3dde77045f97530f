#include <mail/MboxReader.h>

#include <algorithm>
#include <utility>

#include <mail/HeaderText.h>
#include <mail/MailDate.h>

namespace digest {

namespace {

constexpr std::string_view fromMark = "From ";

bool isDay(std::string_view word) { return word.size() <= 2 && std::ranges::all_of(word, isDigit); }

bool isTime(std::string_view word) {
    const std::size_t colon = word.find(':');
    return colon != word.npos && colon > 0 && isDigit(word[colon - 1]) && colon + 1 < word.size() &&
           isDigit(word[colon + 1]);
}

std::string_view takeWord(std::string_view& text) {
    while (text.starts_with(' ') || text.starts_with('\t'))
        text.remove_prefix(1);
    const std::string_view word = text.substr(0, text.find_first_of(" \t"));
    text.remove_prefix(word.size());
    return word;
}

// "SENDER Tue Mar  3 10:00:00 2020", perhaps with more; or nothing but an address.
bool looksLikeEnvelope(std::string_view text) {
    text = text.substr(0, 512);
    std::string_view beforeLast, last, word = takeWord(text);
    if (const std::string_view rest = text; word.find('@') != word.npos && rest.find_first_not_of(" \t") == rest.npos)
        return true;
    for (; !word.empty(); word = takeWord(text)) {
        if (beforeLast.size() == 3 && monthOf(beforeLast) > 0 && isDay(last) && isTime(word))
            return true;
        beforeLast = std::exchange(last, word);
    }
    return false;
}

// Where the colon of "Name: value" stands; npos where the line is no header field. White space before the colon is
// allowed, as it once was.
std::size_t colonOfField(std::string_view text) {
    const std::size_t colon = text.find(':');
    if (colon == text.npos || colon == 0)
        return text.npos;
    const std::size_t nameEnd = text.find_last_not_of(" \t", colon - 1) + 1;
    const bool isName =
        nameEnd > 0 && std::ranges::all_of(text.substr(0, nameEnd), [](char c) { return c > ' ' && c < 127; });
    return isName ? colon : text.npos;
}

std::string_view unquoted(std::string_view text, MboxQuoting quoting) {
    const std::size_t marks = std::min(text.find_first_not_of('>'), text.size());
    const bool isQuoted = quoting == MboxQuoting::mboxrd ? marks > 0 : marks == 1;
    return isQuoted && text.substr(marks).starts_with(fromMark) ? text.substr(1) : text;
}

std::string excerpt(std::string_view text) {
    constexpr std::size_t length = 60;
    return '"' + std::string(text.substr(0, length)) + (text.size() > length ? "...\"" : "\"");
}

}  // namespace

/// A line of a header that is no field: the lines after it tell whether it belongs to the body.
struct MboxReader::StrayLine {
    std::string text;  // with its continuation lines
    std::uint64_t number = 0;
    std::uint64_t offset = 0;

    explicit operator bool() const noexcept { return number != 0; }
    void dropInto(RawMessage& message) {
        if (number != 0)
            message.notes.push_back(
                {number, offset, "not a header field: " + excerpt(text.substr(0, text.find('\n')))});
        number = 0;
    }
};

MboxReader::MboxReader(ByteSource& source, MboxQuoting quoting, MboxLimits limits)
    : lines_(source, limits.line), quoting_(quoting), limits_(limits) {}

bool MboxReader::next(RawMessage& message) {
    if (!started_)
        findFirstSeparator();
    if (!hasLine_)
        return false;
    message.reset(line().number, line().offset);
    message.envelope = collapsedText(line().text.substr(fromMark.size()));
    headerBytes_ = 0;
    consume(message);
    readHeader(message);
    readBody(message);
    return true;
}

void MboxReader::findFirstSeparator() {
    started_ = true;
    bool hasText = false, isBinary = false;
    while (advance() && position() - line().length <= limits_.preamble) {
        if (hasText ? isSeparator() : line().text.starts_with(fromMark)) {
            if (hasText)
                problems_.push_back(
                    {1, 0, "skipped what is before the first \"From \" line, line " + std::to_string(line().number)});
            return;
        }
        hasText = hasText || !line().text.empty();
        isBinary = isBinary || line().text.find('\0') != std::string_view::npos;
    }
    refuse(isBinary);
}

void MboxReader::refuse(bool isBinary) const {
    if (position() == 0)
        throw MailboxError("the file is empty");
    throw MailboxError(std::string("line 1: not a mailbox: ") + (isBinary ? "binary data, and " : "") +
                       "no line that begins with \"From \"");
}

bool MboxReader::isSeparator() const {
    const std::string_view text = line().text;
    return text.starts_with(fromMark) && looksLikeEnvelope(text.substr(fromMark.size()));
}

// Counts the current line to the message, and goes to the next one.
void MboxReader::consume(RawMessage& message) {
    message.bytes += line().length;
    if (!line().isTerminated) {
        isCutOff_ = true;
        message.notes.push_back(
            {line().number, line().offset, "the file ends here, without a line end: something may be missing"});
        problems_.push_back(message.notes.back());
    }
    advance();
}

void MboxReader::readHeader(RawMessage& message) {
    StrayLine stray;
    for (; hasLine_; consume(message)) {
        const HeaderLine kind = kindOfHeaderLine(message, stray);
        switch (kind) {
            case HeaderLine::field:
                stray.dropInto(message);
                readField(message);
                break;
            case HeaderLine::continuation:
                continueField(message, stray);
                break;
            case HeaderLine::ignored:
                break;
            case HeaderLine::stray:
                stray = {std::string(line().text), line().number, line().offset};
                break;
            case HeaderLine::end:
            case HeaderLine::nextMessage:
            case HeaderLine::body:
                return endHeader(message, kind, stray);
        }
    }
    message.bodyOffset = line().offset;
    beginBody(message, stray);
    if (!std::exchange(isCutOff_, true)) {
        message.notes.push_back({line().number, line().offset, "the file ends in the middle of a header"});
        problems_.push_back(message.notes.back());
    }
}

MboxReader::HeaderLine MboxReader::kindOfHeaderLine(const RawMessage& message, const StrayLine& stray) const {
    const std::string_view text = line().text;
    if (text.empty())
        return HeaderLine::end;
    if (isSeparator())
        return HeaderLine::nextMessage;
    if (isSpace(text.front()) && (message.fieldCount() > 0 || stray))
        return HeaderLine::continuation;
    if (text.starts_with(">From "))
        return HeaderLine::ignored;  // left from an older mailbox by careless mail servers
    if (colonOfField(text) != text.npos)
        return HeaderLine::field;
    return stray ? HeaderLine::body : HeaderLine::stray;
}

void MboxReader::readField(RawMessage& message) {
    if (!fitsIntoHeader(message))
        return;
    const std::string_view text = line().text;
    const std::size_t colon = colonOfField(text);
    message.addField(text.substr(0, text.find_last_not_of(" \t", colon - 1) + 1), text.substr(colon + 1));
    if (line().isCut)
        message.notes.push_back({line().number, line().offset, "the header field is too long and was cut"});
}

void MboxReader::continueField(RawMessage& message, StrayLine& stray) {
    if (!fitsIntoHeader(message))
        return;
    if (stray)
        stray.text.append("\n").append(line().text);
    else
        message.extendField(line().text);
}

void MboxReader::endHeader(RawMessage& message, HeaderLine kind, const StrayLine& stray) {
    if (kind == HeaderLine::nextMessage)
        message.notes.push_back({line().number, line().offset, "the header ends with the next message"});
    if (kind == HeaderLine::end)
        consume(message);
    message.bodyOffset = line().offset;
    beginBody(message, stray);
    if (stray && kind == HeaderLine::end)
        addBodyLine(message, {});
}

// A line that was no field, and after which none came, belongs to the text.
void MboxReader::beginBody(RawMessage& message, const StrayLine& stray) const {
    if (!stray)
        return;
    message.notes.push_back({stray.number, stray.offset, "the header ends without an empty line"});
    message.bodyOffset = stray.offset;
    addBodyLine(message, stray.text);
}

bool MboxReader::fitsIntoHeader(RawMessage& message) {
    const bool fitted = headerBytes_ <= limits_.header;
    headerBytes_ += line().text.size();
    if (fitted && headerBytes_ > limits_.header)
        message.notes.push_back({line().number, line().offset, "the header is too long; the rest is left out"});
    return headerBytes_ <= limits_.header;
}

void MboxReader::readBody(RawMessage& message) {
    bool emptyLineWaits = false;  // it counts unless it is the one before the next message
    for (; hasLine_ && !isSeparator(); consume(message)) {
        if (emptyLineWaits)
            addBodyLine(message, {});
        emptyLineWaits = line().text.empty();
        if (!emptyLineWaits)
            addBodyLine(message, unquoted(line().text, quoting_));
    }
}

void MboxReader::addBodyLine(RawMessage& message, std::string_view text) const {
    ++message.bodyLines;
    if (message.body.size() >= limits_.body) {
        message.bodyIsCut = true;
        return;
    }
    const std::size_t room = limits_.body - message.body.size();
    message.bodyIsCut = message.bodyIsCut || text.size() > room;
    message.body += text.substr(0, room);
    message.body += '\n';
}

}  // namespace digest
