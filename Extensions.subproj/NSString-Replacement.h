#pragma once

#include <ToviFoundationKit/Runtime/NSString.h>

namespace tovi {
inline namespace Replacement {

/// Mail in text/enriched (text/richtext) as HTML in which every line feed has become a "<BR>", besides the breaks that
/// the format itself asks for; see Mail/MailText.h.
///
/// The conversion is done by whatever operation class NSString has under the name "htmlStringFromMimeEnrichedString:"
/// ("htmlStringFromMimeRichTextString:"). The library ToviFoundationKitMail brings it, and has to be linked or loaded;
/// where it is not, these raise NSInvalidArgumentException (unrecognized selector), as where the operation answers no
/// string. The operation is given the text with "!!!BR!!!" for each line feed, so a text that has that by itself gets a
/// "<BR>" there, too.
TOVI_EXPORT Ref<NSMutableString> qvlHtmlStringFromMimeEnrichedString(const NSString& text);
TOVI_EXPORT Ref<NSMutableString> qvlHtmlStringFromMimeRichTextString(const NSString& text);

}  // namespace Replacement
}  // namespace tovi
