#include <ToviFoundationKit/Mail/MarkupReader_p.h>

#include <algorithm>
#include <array>
#include <optional>

namespace tovi {

namespace {

enum class Kind : std::uint8_t {
    pair,        ///< opened and closed
    parameter,   ///< the same, with a parameter
    lines,       ///< opened and closed, with the lines as they are
    verbatim,    ///< the same, and no commands up to its own end
    single,      ///< stands by itself
    richSingle,  ///< in rich text only
    comment,
    argument,  ///< a parameter where nothing asks for one
};

/// A command, and what the filter is given for it.
struct Command {
    std::string_view name;  ///< in small letters
    Kind kind;
    std::string_view opening;
    std::string_view closing = {};
};

constexpr std::array commands{
    Command{"bold", Kind::pair, "<bold>", "</bold>"},
    Command{"italic", Kind::pair, "<italic>", "</italic>"},
    Command{"underline", Kind::pair, "<underline>", "</underline>"},
    Command{"fixed", Kind::pair, "<fixed>", "</fixed>"},
    Command{"bigger", Kind::pair, "<bigger>", "</bigger>"},
    Command{"smaller", Kind::pair, "<smaller>", "</smaller>"},
    Command{"center", Kind::pair, "<center>", "</center>"},
    Command{"flushleft", Kind::pair, "<flushleft>", "</flushleft>"},
    Command{"flushright", Kind::pair, "<flushright>", "</flushright>"},
    // The filter opens a paragraph but does not close it.
    Command{"paragraph", Kind::pair, "<flushleft>", "</flushleft>"},
    Command{"heading", Kind::pair, "<flushleft>", "</flushleft>"},
    Command{"footing", Kind::pair, "<flushleft>", "</flushleft>"},
    Command{"indent", Kind::pair, "<paraindent><param>left</param>", "</paraindent>"},
    Command{"indentright", Kind::pair, "<paraindent><param>right</param>", "</paraindent>"},
    Command{"excerpt", Kind::pair, "<excerpt>", "</excerpt>"},
    Command{"signature", Kind::pair, "<signature>", "</signature>"},
    Command{"color", Kind::parameter, "<color>", "</color>"},
    Command{"fontfamily", Kind::parameter, "<fontfamily>", "</fontfamily>"},
    Command{"paraindent", Kind::parameter, "<paraindent>", "</paraindent>"},
    Command{"lang", Kind::parameter, "<lang>", "</lang>"},
    Command{"nofill", Kind::lines, "<nofill>", "</nofill>"},
    Command{"verbatim", Kind::verbatim, "<nofill><fixed>", "</fixed></nofill>"},
    Command{"np", Kind::single, "<np>"},
    Command{"nl", Kind::richSingle, "<nl>"},
    Command{"lt", Kind::richSingle, "<lt>"},
    Command{"comment", Kind::comment, {}},
    Command{"param", Kind::argument, {}},
};

constexpr std::size_t none = commands.size();

constexpr std::size_t placeOf(std::string_view name) {
    return static_cast<std::size_t>(std::ranges::find(commands, name, &Command::name) - commands.begin());
}
constexpr std::size_t nofill = placeOf("nofill"), verbatim = placeOf("verbatim");

constexpr std::size_t longestName = 60;
constexpr std::size_t longestParameter = 200;

constexpr char16_t lowered(char16_t unit) { return unit >= u'A' && unit <= u'Z' ? unit + 32 : unit; }

constexpr bool isInName(char16_t unit) {
    const char16_t small = lowered(unit);
    return (small >= u'a' && small <= u'z') || (unit >= u'0' && unit <= u'9') || unit == u'-';
}

constexpr bool isInParameter(char16_t unit) { return isInName(unit) || unit == u' ' || unit == u',' || unit == u'#'; }

/// What is between "<" and ">", where that is a command: its place in the table, or none for one that is not there.
struct Tag {
    std::size_t command = none;
    bool closes = false;
    std::size_t end = 0;  ///< behind the ">"
};

std::optional<Tag> tagAt(std::u16string_view text, std::size_t place) {
    Tag tag;
    std::size_t end = place + 1;
    tag.closes = end < text.size() && text[end] == u'/';
    end += tag.closes;
    std::string name;
    for (; end < text.size() && name.size() <= longestName && isInName(text[end]); ++end)
        name += static_cast<char>(lowered(text[end]));
    if (name.empty() || name.size() > longestName || end == text.size() || text[end] != u'>')
        return std::nullopt;
    tag.end = end + 1;
    tag.command = placeOf(name);
    return tag;
}

bool isTag(const std::optional<Tag>& tag, Kind kind, bool closes) {
    return tag && tag->command != none && commands[tag->command].kind == kind && tag->closes == closes;
}

}  // namespace

void MarkupReader::read() {
    openCounts_.assign(commands.size(), 0);
    constexpr std::u16string_view special(u"<\n\r\0", 4);
    while (place_ < text_.size()) {
        const std::size_t end = std::min(text_.find_first_of(special, place_), text_.size());
        filter_.addText(text_.substr(place_, end - place_));
        place_ = end;
        if (end == text_.size())
            break;
        if (text_[end] == u'<') {
            readBracket();
        } else if (text_[end] == u'\0') {
            filter_.addMarkup("\uFFFD");
            ++place_;
        } else if (lengthOfLineEnd(end) > 0) {
            readLineEnds();
        } else {
            filter_.addMarkup("\r");
            ++place_;
        }
    }
    while (!open_.empty())
        closeLast();
}

void MarkupReader::readBracket() {
    const auto tag = tagAt(text_, place_);
    const bool isVerbatim = !open_.empty() && commands[open_.back().command].kind == Kind::verbatim;
    if (isVerbatim ? !isTag(tag, Kind::verbatim, true) : !tag) {
        filter_.addMarkup(isRichText() ? "<lt>" : "<<");
        place_ += !isVerbatim && !isRichText() && unit(place_ + 1) == u'<' ? 2 : 1;
    } else if (!isTag(tag, Kind::argument, false) || !takeParameter()) {
        place_ = tag->end;
        if (tag->command != none)
            readCommand(tag->command, tag->closes);
    }
}

void MarkupReader::readCommand(std::size_t command, bool closes) {
    switch (commands[command].kind) {
        case Kind::pair:
        case Kind::parameter:
        case Kind::lines:
        case Kind::verbatim:
            closes ? close(command) : open(command);
            break;
        case Kind::richSingle:
        case Kind::single:
            if (!closes && (isRichText() || commands[command].kind == Kind::single))
                filter_.addMarkup(commands[command].opening);
            break;
        case Kind::comment:
            if (!closes)
                skipComment();
            break;
        case Kind::argument:
            break;
    }
}

void MarkupReader::open(std::size_t command) {
    const Command& opened = commands[command];
    const bool hasParameter = opened.kind == Kind::parameter;
    const std::string parameter = hasParameter ? takeParameter().value_or("") : "";
    open_.push_back({static_cast<std::uint8_t>(command), hasParameter && parameter.empty()});
    ++openCounts_[command];
    if (open_.back().isSilent)
        return;
    filter_.addMarkup(opened.opening);
    if (hasParameter)
        filter_.addMarkup("<param>" + parameter + "</param>");
}

// What was opened inside ends, too.
void MarkupReader::close(std::size_t command) {
    for (const std::size_t before = openCounts_[command]; before > 0 && openCounts_[command] == before;)
        closeLast();
}

void MarkupReader::closeLast() {
    const Open last = open_.back();
    open_.pop_back();
    --openCounts_[last.command];
    if (!last.isSilent)
        filter_.addMarkup(commands[last.command].closing);
}

// Nothing is taken unless it is closed. Of the parameter is answered what may stand in an attribute.
std::optional<std::string> MarkupReader::takeParameter() {
    const auto opening = place_ < text_.size() && text_[place_] == u'<' ? tagAt(text_, place_) : std::nullopt;
    if (!isTag(opening, Kind::argument, false))
        return std::nullopt;
    const std::size_t end = text_.find(u'<', opening->end);
    const auto closing = end == text_.npos ? std::nullopt : tagAt(text_, end);
    if (!isTag(closing, Kind::argument, true))
        return std::nullopt;
    std::string parameter;
    for (const char16_t each : text_.substr(opening->end, std::min(end - opening->end, longestParameter)))
        if (isInParameter(each))
            parameter += static_cast<char>(each);
    place_ = closing->end;
    return parameter;
}

void MarkupReader::skipComment() {
    const std::size_t end = hasOpenComment_ ? text_.npos : endOfComment();
    hasOpenComment_ = end == text_.npos;
    if (!hasOpenComment_)
        place_ = end;
}

// Comments may hold others.
std::size_t MarkupReader::endOfComment() const {
    std::size_t depth = 1;
    for (std::size_t place = place_; (place = text_.find(u'<', place)) != text_.npos; ++place) {
        const auto tag = tagAt(text_, place);
        if (isTag(tag, Kind::comment, false))
            ++depth;
        if (isTag(tag, Kind::comment, true) && --depth == 0)
            return tag->end;
    }
    return text_.npos;
}

std::size_t MarkupReader::lengthOfLineEnd(std::size_t place) const {
    return unit(place) == u'\n' ? 1 : unit(place) == u'\r' && unit(place + 1) == u'\n' ? 2 : 0;
}

void MarkupReader::readLineEnds() {
    std::size_t count = 0;
    for (std::size_t length; (length = lengthOfLineEnd(place_)) > 0; ++count)
        place_ += length;
    const bool addsBreaks = !isRichText() && openCounts_[nofill] + openCounts_[verbatim] == 0 && count > 1;
    if (addsBreaks) {
        filter_.addMarkup(commands[nofill].opening);
        --count;
    }
    for (; count > 0; --count)
        filter_.addMarkup("\n");
    if (addsBreaks)
        filter_.addMarkup(commands[nofill].closing);
}

}  // namespace tovi
