#include <ToviFoundationKit/Mail/MarkupFilter_p.h>

#include <algorithm>

#include <gmime/gmime-filter-enriched.h>

namespace tovi {

namespace {

constexpr std::size_t pieceLength = 2048;             // in code units
constexpr std::size_t enoughWaits = 4 * pieceLength;  // in bytes
constexpr std::size_t mostBytesOfHTML = 8;            // for a byte of text or markup; "&nbsp;" takes six

/// How much of the text makes one piece: blanks that belong together stay so, and the halves of a character.
std::size_t lengthOfPiece(std::u16string_view text) {
    if (text.size() <= pieceLength)
        return text.size();
    const auto isTogether = [text](std::size_t i) {
        return (text[i] == u' ' && text[i - 1] == u' ') || (text[i] >= 0xDC00 && text[i] <= 0xDFFF);
    };
    std::size_t length = pieceLength;
    while (length > 0 && isTogether(length))
        --length;
    return length > 0 ? length : pieceLength;
}

GMimeFilter* newFilter(MailMarkup markup) {
    static const bool isReady = (g_mime_init(), true);
    (void)isReady;
    return g_mime_filter_enriched_new(markup == MailMarkup::richText ? GMIME_FILTER_ENRICHED_IS_RICHTEXT : 0);
}

}  // namespace

MarkupFilter::MarkupFilter(MailMarkup markup) : filter_(newFilter(markup)) {}

void MarkupFilter::addText(std::u16string_view text) {
    while (!text.empty()) {
        const std::size_t length = lengthOfPiece(text);
        waiting_ += NSString::stringWithCharacters(text.substr(0, length))->UTF8String();
        text.remove_prefix(length);
        if (waiting_.size() >= enoughWaits)
            run();
    }
}

void MarkupFilter::addMarkup(std::string_view markup) {
    waiting_ += markup;
    if (waiting_.size() >= enoughWaits)
        run();
}

Ref<NSString> MarkupFilter::html() {
    run();
    return html_.string();
}

void MarkupFilter::run() {
    waiting_ += "<no-op>";
    g_mime_filter_set_size(filter_.get(), waiting_.size() * mostBytesOfHTML, FALSE);
    char* html = nullptr;
    std::size_t length = 0, room = 0;
    g_mime_filter_filter(filter_.get(), waiting_.data(), waiting_.size(), 0, &html, &length, &room);
    html_.appendUTF8({html, length});
    waiting_.clear();
}

}  // namespace tovi
