#include <mail/MessageText.h>

#include <algorithm>

#include <mail/Charset.h>
#include <mail/Flowed.h>
#include <mail/HtmlText.h>
#include <mail/TransferEncoding.h>

using namespace tovi;

namespace digest {

namespace {

// The converters of enriched text are in a library of their own.
bool hasConverters() {
    static const bool isLoaded = [] {
        const auto mail = NSBundle::bundleWithIdentifier(u"tovi.FoundationKit.Mail"_ns);
        return mail && mail->load();
    }();
    return isLoaded;
}

Ref<NSString> plainTextOfEnriched(const NSString& text, bool isRichText, std::vector<std::string>& problems) {
    if (!hasConverters()) {
        problems.push_back("enriched text, and ToviFoundationKitMail is not installed");
        return plainTextOfHTML(text);
    }
    return plainTextOfHTML(isRichText ? qvlHtmlStringFromMimeRichTextString(text)
                                      : qvlHtmlStringFromMimeEnrichedString(text));
}

void noteProblem(std::vector<std::string>& problems, const std::string& problem) {
    if (!problem.empty() && std::ranges::find(problems, problem) == problems.end())
        problems.push_back(problem);
}

}  // namespace

Ref<NSString> textOfPart(const MimePart& part, std::vector<std::string>& problems) {
    const TransferDecoded decoded = transferDecoded(part.content, part.encoding);
    if (decoded.isDamaged)
        noteProblem(problems, "damaged " + part.encoding);
    const CharsetDecoded read = charsetDecoded(decoded.bytes, part.charset);
    noteProblem(problems, read.problem);
    if (part.type == "text/html")
        return plainTextOfHTML(read.text);
    if (part.type == "text/enriched" || part.type == "text/richtext")
        return plainTextOfEnriched(read.text, part.type == "text/richtext", problems);
    return part.isFlowed ? unflowed(read.text, part.deletesSpace) : read.text;
}

MessageText textOf(const RawMessage& message) {
    const MimeTree tree(message);
    std::vector<std::string> problems = tree.problems();
    StringBuilder text;
    for (const std::size_t place : tree.shownTexts()) {
        if (text.length() > 0)
            text.append(u"\n\n");
        text.append(textOfPart(tree.parts()[place], problems));
    }
    return {text.string(), std::move(problems)};
}

namespace {

constexpr NSUInteger enough = 240;  // more than a line of a terminal shows
constexpr std::u16string_view white = u" \t\r\u00A0";

std::u16string_view takeLine(std::u16string_view& text) {
    const std::size_t end = std::min(text.find(u'\n'), text.size());
    std::u16string_view line = text.substr(0, end);
    text.remove_prefix(std::min(end + 1, text.size()));
    line.remove_prefix(std::min(line.find_first_not_of(white), line.size()));
    return line.substr(0, line.find_last_not_of(white) + 1);
}

// A quoted line, or the line that introduces a quotation: "On Monday Ada wrote:".
bool isQuotation(std::u16string_view line) { return line.starts_with(u'>') || line.ends_with(u"wrote:"); }

// "Dear all," says little by itself.
bool isSalutation(std::u16string_view paragraph) {
    return paragraph.size() < 60 && !paragraph.empty() &&
           std::u16string_view(u",،、，").find(paragraph.back()) != std::u16string_view::npos;
}

}  // namespace

Ref<NSString> openingOf(const NSString& text) {
    StringBuilder opening;
    for (std::u16string_view rest = text; !rest.empty() && opening.length() < enough;) {
        const std::u16string_view line = takeLine(rest);
        if (!line.empty() && !isQuotation(line))
            opening.append(opening.length() > 0 ? u" " : u"").append(line.substr(0, enough + 1));
        else if (opening.length() > 0 && !isSalutation(opening.view()))
            break;
    }
    NSUInteger length = std::min(opening.length(), enough);
    if (length < opening.length() && opening.view()[length] >= 0xDC00 && opening.view()[length] <= 0xDFFF)
        --length;
    opening.truncate(length);
    return opening.string();
}

}  // namespace digest
