#include <ToviFoundationKit/Extensions/NSMutableString-QVLAdditions.h>

#include <algorithm>

#include <ToviFoundationKit/Extensions/DelimiterPattern_p.h>
#include <ToviFoundationKit/Runtime/Additions.h>
#include <ToviFoundationKit/Runtime/NSException.h>
#include <ToviFoundationKit/Runtime/StringBuilder.h>

namespace tovi {
inline namespace QVLAdditions {

NSUInteger replaceString_withString_options(NSMutableString& receiver, const NSString& target,
                                            const NSString& replacement, NSStringCompareOptions options) {
    return receiver.replaceOccurrencesOfString_withString_options_range(target, replacement, options,
                                                                        {0, receiver.length()});
}

void replaceString_withString(NSMutableString& receiver, const NSString& target, const NSString& replacement) {
    replaceString_withString_options(receiver, target, replacement, NSLiteralSearch);
}

namespace {

constexpr auto npos = std::u16string_view::npos;

/// What stands between delimiters, with these.
struct Stretch {
    std::size_t start = 0;  ///< of the opening delimiter
    std::size_t content = 0, contentEnd = 0, end = 0;
    bool hasOpenings = false;  ///< the content does
};

/// Rewrites a text from left to right in one go. That gives what rewriting each stretch everywhere in turn would give,
/// as long as no delimiter comes into being where text of before and after meet, and no stretch ends within another.
/// Where it cannot be sure of that it gives up.
class OnePass {
public:
    enum class Outcome { Done, Unclosed, GaveUp };

    OnePass(std::u16string_view text, const detail::Delimiters& from, const detail::Delimiters& to)
        : text_(text),
          from_(from),
          to_(to),
          sameDelimiters_(from.opening == from.closing),
          opening_(from.opening),
          closing_(from.closing),
          found_(8 * text.size()) {}

    Outcome run();
    /// The text rewritten so far, and the rest.
    Ref<NSString> result() {
        out_.append(text_.substr(written_));
        written_ = text_.size();
        return out_.string();
    }
    /// Where in the result the content of the stretch that is not closed begins.
    std::size_t unclosedContent() const noexcept { return unclosedContent_; }

private:
    bool hasDelimiter(std::u16string_view text) const {
        return detail::findDelimiter(text, 0, from_.opening) != npos ||
               detail::findDelimiter(text, 0, from_.closing) != npos;
    }
    bool mayJoin(std::u16string_view before, detail::Pieces rewritten) const;
    bool findStretch(Stretch& stretch);
    bool isIndependent(const Stretch& stretch);
    /// Where both delimiters are the same, what is between two stretches looks like one.
    bool isGapSafe(std::size_t end) const {
        return !sameDelimiters_ || !written_ || !found_.contains(between(written_, end));
    }
    Outcome unclosed(std::size_t content);
    void write(const Stretch& stretch);
    std::u16string_view between(std::size_t start, std::size_t end) const { return text_.substr(start, end - start); }

    std::u16string_view text_;
    detail::Delimiters from_, to_;
    bool sameDelimiters_;
    detail::JoiningDelimiter opening_, closing_;
    detail::FoundPieces found_;
    StringBuilder out_;
    std::size_t written_ = 0;      ///< how much of the text is in `out_`
    std::size_t nextOpening_ = 0;  ///< the first opening delimiter from there on; npos when there is none
    std::size_t resumed_ = 0;      ///< where in `out_` the last new stretch ended
    std::size_t unclosedContent_ = 0;
    bool leftOpenings_ = false;  ///< there are opening delimiters in `out_`
};

/// The stretch at the next opening delimiter, which is closed, and the opening delimiter behind it. False when opening
/// delimiters are mixed up with the closing one.
bool OnePass::findStretch(Stretch& stretch) {
    stretch.start = nextOpening_;
    stretch.content = stretch.start + from_.opening.size();
    stretch.contentEnd = detail::findDelimiter(text_, stretch.content, from_.closing);
    if (stretch.contentEnd == npos)
        return true;
    stretch.end = stretch.contentEnd + from_.closing.size();
    for (std::size_t next = stretch.start;;) {
        next = detail::findDelimiter(text_, next + 1, from_.opening);
        if (sameDelimiters_ && next == stretch.contentEnd)
            continue;
        if (next == npos || next >= stretch.end) {
            nextOpening_ = next;
            return true;
        }
        if (next < stretch.content || next + from_.opening.size() > stretch.contentEnd)
            return false;
        stretch.hasOpenings = true;
    }
}

/// Whether a delimiter may come into being where the new delimiters, the content between them and the text around meet.
bool OnePass::mayJoin(std::u16string_view before, detail::Pieces rewritten) const {
    for (std::size_t i = 0; i <= 3; ++i) {
        const std::u16string_view text = i ? rewritten.texts[i - 1] : before;
        const detail::Pieces following{rewritten.texts.subspan(i), rewritten.isAll};
        if (opening_.mayJoin(text, following) || closing_.mayJoin(text, following))
            return true;
    }
    return false;
}

/// Whether rewriting the stretch here and elsewhere has no other effects.
bool OnePass::isIndependent(const Stretch& stretch) {
    const std::u16string_view before = text_.substr(0, stretch.start);
    const std::u16string_view content = between(stretch.content, stretch.contentEnd);
    const std::u16string_view behind[] = {to_.opening, content, to_.closing, text_.substr(stretch.end)};
    if (mayJoin(before, {behind, true}))
        return false;
    // The next stretch may have been rewritten before this one.
    if (nextOpening_ != npos && nextOpening_ - stretch.end < from_.length()) {
        const std::size_t start = nextOpening_ + from_.opening.size();
        const std::size_t end = std::min(detail::findDelimiter(text_, start, from_.closing), text_.size());
        const std::u16string_view bothRewritten[] = {
            to_.opening, content, to_.closing, between(stretch.end, nextOpening_), to_.opening, between(start, end)};
        if (mayJoin(before, {bothRewritten, false}))
            return false;
    }
    if (!isGapSafe(stretch.start))
        return false;
    // An opening delimiter that was left must not find a closing one before the stretch's own.
    const std::size_t closingEnd = stretch.content + from_.closing.size() - 1;
    if (leftOpenings_ && detail::findDelimiter(between(written_, closingEnd), 0, from_.closing) != npos)
        return false;
    return !stretch.hasOpenings || (!found_.contains(content) && !found_.mayEndWithOne(content, from_.opening));
}

void OnePass::write(const Stretch& stretch) {
    const std::u16string_view content = between(stretch.content, stretch.contentEnd);
    out_.append(between(written_, stretch.start)).append(to_.opening).append(content).append(to_.closing);
    written_ = stretch.end;
    leftOpenings_ |= stretch.hasOpenings;
    if (!found_.contains(content)) {
        found_.add(content);
        resumed_ = out_.length();
    }
}

OnePass::Outcome OnePass::unclosed(std::size_t content) {
    // The search has ended before when no two units are left.
    const std::size_t left = out_.length() - resumed_ + text_.size() - written_;
    unclosedContent_ = out_.length() + content - written_;
    return written_ && left < 2 ? Outcome::Done : Outcome::Unclosed;
}

OnePass::Outcome OnePass::run() {
    if (hasDelimiter(to_.opening) || hasDelimiter(to_.closing))
        return Outcome::GaveUp;
    nextOpening_ = detail::findDelimiter(text_, 0, from_.opening);
    while (nextOpening_ != npos) {
        Stretch stretch;
        if (!findStretch(stretch))
            return Outcome::GaveUp;
        if (stretch.contentEnd == npos && isGapSafe(stretch.start))
            return unclosed(stretch.content);
        if (stretch.contentEnd == npos || !isIndependent(stretch))
            return Outcome::GaveUp;
        write(stretch);
    }
    return Outcome::Done;
}

/// Rewrites one stretch everywhere, then looks for the next.
void rewriteInTurn(NSMutableString& receiver, const NSString& pattern, const detail::Delimiters& from,
                   const detail::Delimiters& to) {
    // Rewriting each opening delimiter once makes it that long; what grows far beyond will hardly ever end.
    std::size_t openings = 1;
    for (std::size_t at = 0; (at = detail::findDelimiter(receiver, at, from.opening)) != npos;
         at += from.opening.size())
        ++openings;
    const std::size_t longest = receiver.length() + 4 * openings * to.length() + 4096;
    for (std::size_t next = 0; next < receiver.length();) {
        const std::size_t opening = detail::findDelimiter(receiver, next, from.opening);
        if (opening == npos)
            return;
        const std::size_t start = opening + from.opening.size();
        const Ref<NSString> content =
            receiver.substringWithRange(detail::rangeUpTo(start, detail::findDelimiter(receiver, start, from.closing)));
        const auto withDelimiters = [&content](const detail::Delimiters& delimiters) {
            return StringBuilder().append(delimiters.opening).append(content).append(delimiters.closing).string();
        };
        const Ref<NSString> replacement = withDelimiters(to);
        replaceString_withString(receiver, withDelimiters(from), replacement);
        if (receiver.length() > longest)
            NSException::raise(
                NSInvalidArgumentException,
                u"*** -[%@ replaceRegexString:withRegexString:]: the text grows without end, because the "
                u"replacement of the pattern \"%@\" brings its delimiters along",
                receiver.isa(), pattern);
        next = opening + replacement->length();
        if (receiver.length() < next + 2)
            return;
    }
}

}  // namespace

void replaceRegexString_withRegexString(NSMutableString& receiver, const NSString& pattern,
                                        const NSString& replacement) {
    // The arguments may be the receiver.
    const Ref<NSString> keptPattern = NSString::stringWithString(pattern);
    const Ref<NSString> keptReplacement = NSString::stringWithString(replacement);
    const auto from = detail::delimitersOf(*keptPattern);
    if (!from)
        return replaceString_withString(receiver, keptPattern, keptReplacement);
    if (detail::findDelimiter(receiver, 0, from->opening) == npos)
        return;
    const auto to = detail::delimitersOf(*keptReplacement);
    if (!to)
        NSException::raise(NSInvalidArgumentException,
                           u"*** -[%@ replaceRegexString:withRegexString:]: the replacement \"%@\" of the pattern "
                           u"\"%@\" has no \"*\"",
                           receiver.isa(), keptReplacement, keptPattern);
    OnePass pass(receiver, *from, *to);
    const OnePass::Outcome outcome = pass.run();
    if (outcome == OnePass::Outcome::GaveUp)
        return rewriteInTurn(receiver, keptPattern, *from, *to);
    receiver.setString(pass.result());
    if (outcome == OnePass::Outcome::Unclosed)
        receiver.substringWithRange(detail::rangeUpTo(pass.unclosedContent(), npos));
}

namespace {

const Additions<NSMutableString> additions{
    instance<&replaceString_withString>("replaceString:withString:"),
    instance<&replaceString_withString_options>("replaceString:withString:options:"),
    instance<&replaceRegexString_withRegexString>("replaceRegexString:withRegexString:"),
};

}  // namespace

}  // namespace QVLAdditions
}  // namespace tovi

void removeMultipleSpaceInString(tovi::NSMutableString& string) {
    const std::u16string_view text = string;
    std::size_t run = tovi::detail::findDelimiter(text, 0, u"  ");
    if (run == std::u16string_view::npos)
        return;
    tovi::StringBuilder out;
    std::size_t from = 0;
    do {
        out.append(text.substr(from, run + 1 - from));
        from = std::min(text.find_first_not_of(u' ', run), text.size());
        run = tovi::detail::findDelimiter(text, from, u"  ");
    } while (run != std::u16string_view::npos);
    string.setString(out.append(text.substr(from)).string());
}

void replaceSpaceByPlus(tovi::NSMutableString& string) {
    using namespace tovi::literals;
    tovi::replaceString_withString(string, u" "_ns, u"+"_ns);
}
