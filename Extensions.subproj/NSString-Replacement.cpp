#include <ToviFoundationKit/Extensions/NSString-Replacement.h>

#include <ToviFoundationKit/Extensions/NSMutableString-QVLAdditions.h>
#include <ToviFoundationKit/Runtime/Additions.h>
#include <ToviFoundationKit/Runtime/Cast.h>
#include <ToviFoundationKit/Runtime/Message.h>

namespace tovi {
inline namespace Replacement {

namespace {

// The converter folds line ends away, but leaves such a word alone.
Ref<NSMutableString> convertedKeepingLines(const NSString& text, Selector converter) {
    const Ref<NSString> mark = u"!!!BR!!!"_ns;
    const Ref<NSMutableString> marked = NSMutableString::stringWithString(text);
    replaceString_withString(marked, u"\n"_ns, mark);
    const id converted = NSString::classObject().performSelector_withObject(converter, marked.get());
    const Ref<NSMutableString> html = NSMutableString::stringWithString(to<NSString>(converted));
    replaceString_withString(html, mark, u"<BR>"_ns);
    return html;
}

}  // namespace

Ref<NSMutableString> qvlHtmlStringFromMimeEnrichedString(const NSString& text) {
    return convertedKeepingLines(text, "htmlStringFromMimeEnrichedString:"_sel);
}

Ref<NSMutableString> qvlHtmlStringFromMimeRichTextString(const NSString& text) {
    return convertedKeepingLines(text, "htmlStringFromMimeRichTextString:"_sel);
}

namespace {

const Additions<NSString> additions{
    classLevel<&qvlHtmlStringFromMimeEnrichedString>("qvlHtmlStringFromMimeEnrichedString:"),
    classLevel<&qvlHtmlStringFromMimeRichTextString>("qvlHtmlStringFromMimeRichTextString:"),
};

}  // namespace

}  // namespace Replacement
}  // namespace tovi
