#include <ToviFoundationKit/Mail/MailText.h>

#include <ToviFoundationKit/Mail/MarkupReader_p.h>
#include <ToviFoundationKit/Runtime/Additions.h>

namespace tovi {
inline namespace MailText {

namespace {

Ref<NSString> htmlFrom(const NSString& text, MailMarkup markup) {
    MarkupFilter filter(markup);
    MarkupReader(text, markup, filter).read();
    return filter.html();
}

}  // namespace

Ref<NSString> htmlStringFromMimeEnrichedString(const NSString& text) { return htmlFrom(text, MailMarkup::enriched); }
Ref<NSString> htmlStringFromMimeRichTextString(const NSString& text) { return htmlFrom(text, MailMarkup::richText); }

namespace {

const Additions<NSString> additions{
    classLevel<&htmlStringFromMimeEnrichedString>("htmlStringFromMimeEnrichedString:"),
    classLevel<&htmlStringFromMimeRichTextString>("htmlStringFromMimeRichTextString:"),
};

}  // namespace

}  // namespace MailText
}  // namespace tovi

extern "C" const int ToviFoundationKitMailIsLinked = 1;
