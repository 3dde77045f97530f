#include <ToviFoundationKit/Extensions/NSString-QVLAdditions.h>

#include <algorithm>
#include <unordered_set>

#include <ToviFoundationKit/Extensions/DelimiterPattern_p.h>
#include <ToviFoundationKit/Extensions/NSMutableString-QVLAdditions.h>
#include <ToviFoundationKit/Runtime/Additions.h>
#include <ToviFoundationKit/Runtime/StringBuilder.h>
#include <ToviFoundationKit/Runtime/Unicode_p.h>

namespace tovi {
inline namespace QVLAdditions {

namespace {

constexpr auto npos = std::u16string_view::npos;

}  // namespace

bool hasString(const NSString& receiver, const NSString* searched) {
    return searched && receiver.rangeOfString(*searched).wasFound();
}

NSRange rangeOfNoCaseString(const NSString& receiver, const NSString* searched) {
    return searched ? receiver.rangeOfString_options(*searched, NSCaseInsensitiveSearch) : NSRange{NSNotFound, 0};
}

bool caseInsensitiveHasString(const NSString& receiver, const NSString* searched) {
    return rangeOfNoCaseString(receiver, searched).wasFound();
}

bool hasCaseInsensitivePrefix(const NSString& receiver, const NSString* prefix) {
    return prefix && prefix->length() <= receiver.length() &&
           caseInsensitiveIsEqualToString(receiver.substringToIndex(prefix->length()), *prefix);
}

bool hasCaseInsensitiveSuffix(const NSString& receiver, const NSString* suffix) {
    return suffix && suffix->length() <= receiver.length() &&
           caseInsensitiveIsEqualToString(receiver.substringFromIndex(receiver.length() - suffix->length()), *suffix);
}

bool caseInsensitiveIsEqualToString(const NSString& receiver, const NSString* other) {
    return other && (other == &receiver || receiver.caseInsensitiveCompare(*other) == NSOrderedSame);
}

// Delimiter patterns.

RefPtr<NSString> findRegexFirstString(const NSString& receiver, const NSString& pattern) {
    const auto delimiters = detail::delimitersOf(pattern);
    if (!delimiters)
        return nullptr;
    const std::size_t opening = detail::findDelimiter(receiver, 0, delimiters->opening);
    if (opening == npos)
        return nullptr;
    const std::size_t start = opening + delimiters->opening.size();
    const std::size_t end = detail::findDelimiter(receiver, start, delimiters->closing);
    return end == npos ? RefPtr<NSString>() : RefPtr<NSString>(receiver.substringWithRange({start, end - start}));
}

RefPtr<NSMutableArray> findRegexString(const NSString& receiver, const NSString& pattern) {
    if (!receiver.length())
        return nullptr;
    Ref<NSMutableArray> result = NSMutableArray::array();
    const auto delimiters = detail::delimitersOf(pattern);
    if (!delimiters)
        return result;
    std::size_t opening = detail::findDelimiter(receiver, 0, delimiters->opening);
    if (opening == npos)
        return nullptr;
    do {
        const std::size_t start = opening + delimiters->opening.size();
        const std::size_t end = detail::findDelimiter(receiver, start, delimiters->closing);
        result->addObject(receiver.substringWithRange(detail::rangeUpTo(start, end)));
        const std::size_t next = end + delimiters->closing.size();
        opening = receiver.length() - next < 2 ? npos : detail::findDelimiter(receiver, next, delimiters->opening);
    } while (opening != npos);
    return result;
}

RefPtr<NSMutableArray> findRegexString_inRange(const NSString& receiver, const NSString& pattern, NSRange range) {
    return findRegexString(receiver.substringWithRange(range), pattern);
}

// Tags.

namespace {

/// A tag without its ">", which a "<" too late does not have.
struct Tag {
    std::size_t start, end;
    bool isClosed;
};

/// The next tag from there on; at the end of the text, an empty one.
Tag nextTag(std::u16string_view html, std::size_t from) {
    const std::size_t start = std::min(detail::findDelimiter(html, from, u"<"), html.size());
    const std::size_t end = detail::findDelimiter(html, start, u">");
    return {start, std::min(end, html.size()), end != npos};
}

/// All tags replaced at once. Answers nil when a tag ends with one that came before it alone: that one is taken out of
/// it first, and what is left of it is no tag of the text.
RefPtr<NSString> withoutTagsAtOnce(std::u16string_view html) {
    detail::FoundPieces found(8 * html.size());
    StringBuilder out;
    out.reserve(html.size());
    for (std::size_t from = 0;;) {
        const Tag tag = nextTag(html, from);
        if (!tag.isClosed) {
            out.append(html.substr(from));
            return out.string();
        }
        out.append(html.substr(from, tag.start - from)).append(u' ');
        const std::u16string_view content = html.substr(tag.start + 1, tag.end - tag.start - 1);
        if (!found.contains(content)) {
            if (found.mayEndWithOne(content, u"<"))
                return nullptr;
            found.add(content);
        }
        from = tag.end + 1;
    }
}

/// One tag after the other, each wherever it stands by then. Behind the last one it comes once more.
Ref<NSString> withoutTagsInTurn(const NSString& html) {
    const Ref<NSMutableString> text = NSMutableString::stringWithString(html);
    std::unordered_set<std::u16string_view> missing;  // what the text does not have now
    std::u16string_view opening;
    Tag tag{0, 0, true};
    do {
        tag = nextTag(html, tag.end);
        if (tag.start < tag.end)
            opening = html.view().substr(tag.start, tag.end - tag.start);
        if (missing.contains(opening))
            continue;
        const Ref<NSString> whole = NSString::stringWithCharacters(opening)->stringByAppendingString(u">"_ns);
        if (replaceString_withString_options(text, whole, u" "_ns, NSLiteralSearch))
            missing.clear();
        else
            missing.insert(opening);
    } while (tag.isClosed);
    return static_cast<NSString&>(*text->copy());
}

Ref<NSString> withoutTags(const NSString& html) {
    if (detail::findDelimiter(html, 0, u"<") != npos) {
        const RefPtr<NSString> text = withoutTagsAtOnce(html);
        return text ? text.ref() : withoutTagsInTurn(html);
    }
    const std::u16string_view units = html;
    const Ref<NSMutableString> text = NSMutableString::stringWithString(html);
    if (!std::all_of(units.begin(), units.end(), detail::isWhiteSpace))
        replaceString_withString(text, u"(null)>"_ns, u" "_ns);
    return static_cast<NSString&>(*text->copy());
}

}  // namespace

Ref<NSString> flattenHTML_trimWhiteSpace(const NSString& html, bool trim) {
    const Ref<NSString> text = withoutTags(html);
    return trim ? text->stringByTrimmingWhitespace() : text;
}

Ref<NSString> stringByDeletingPersonalInEmailAddress(const NSString& receiver) {
    const std::size_t opening = detail::findDelimiter(receiver, 0, u"<");
    if (opening == npos)
        return NSString::stringWithString(receiver);
    const std::size_t start = opening + 1;
    const std::size_t end = std::min<std::size_t>(detail::findDelimiter(receiver, start, u">"), receiver.length());
    return receiver.substringWithRange({start, end - start});
}

namespace {

template <class R> using WithMaybeNil = R (*)(const NSString&, const NSString*);

const Additions<NSString> additions{
    instance<WithMaybeNil<bool>(&hasString)>("hasString:"),
    instance<WithMaybeNil<bool>(&caseInsensitiveHasString)>("caseInsensitiveHasString:"),
    instance<WithMaybeNil<NSRange>(&rangeOfNoCaseString)>("rangeOfNoCaseString:"),
    instance<WithMaybeNil<bool>(&hasCaseInsensitivePrefix)>("hasCaseInsensitivePrefix:"),
    instance<WithMaybeNil<bool>(&hasCaseInsensitiveSuffix)>("hasCaseInsensitiveSuffix:"),
    instance<WithMaybeNil<bool>(&caseInsensitiveIsEqualToString)>("caseInsensitiveIsEqualToString:"),
    instance<&findRegexFirstString>("findRegexFirstString:"),
    instance<&findRegexString>("findRegexString:"),
    instance<&findRegexString_inRange>("findRegexString:inRange:"),
    classLevel<&flattenHTML_trimWhiteSpace>("flattenHTML:trimWhiteSpace:"),
    instance<&stringByDeletingPersonalInEmailAddress>("stringByDeletingPersonalInEmailAddress"),
};

}  // namespace

}  // namespace QVLAdditions
}  // namespace tovi
