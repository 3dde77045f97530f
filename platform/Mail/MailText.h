#pragma once

#include <ToviFoundationKit/Runtime/NSString.h>

namespace tovi {
inline namespace MailText {

// The formatted texts of mail as HTML: text/enriched (RFC 1896) and text/richtext (RFC 1341, section 7.1.3).
//
// They are in a library of their own, ToviFoundationKitMail, so that no program needs GMime that does not read such
// mail. A program links it (the CMake target Tovi::FoundationKitMail, the pkg-config module ToviFoundationKitMail) and
// includes this header, by which the linker knows that it is needed; or it loads it when it needs it:
//
//     const RefPtr<NSBundle> mail = NSBundle::bundleWithIdentifier(u"tovi.FoundationKit.Mail"_ns);
//     if (mail && mail->load()) ...
//
// Either way class NSString then responds to "htmlStringFromMimeEnrichedString:" and
// "htmlStringFromMimeRichTextString:", which the additions in NSString-Replacement.h send. A library that was loaded
// stays.
//
// The result is a fragment to be put into a page's body, of these elements only, each closed within the one that it was
// opened in: b, i, u, tt, font (size, color, face), p (align, style), blockquote, address, span (lang), and br and hr,
// which have no end. "&", "<" and ">" of the text are escaped. A blank that follows another becomes "&nbsp;"; all other
// text, in any script, comes through as it is, but that surrogates without partner and NUL become U+FFFD.
//
// Any text has a result. Commands and their parameters are read in any case; those that are not known or stand for
// nothing in HTML go away, and their text stays. Only the text of comments goes with them. What is no command, as the
// bracket in "1 < 2", is text. A command that is not closed ends with the one around it, a closing one that closes
// nothing is left out. Linear time; for any number of threads at once.

/// Line ends: a single one is a line end of HTML, which is a blank; n in a row make n - 1 "<br>"; between nofill or
/// verbatim and their ends each makes one. "<<" is "<".
TOVI_EXPORT Ref<NSString> htmlStringFromMimeEnrichedString(const NSString& text);

/// Line ends are blanks; "<nl>" makes a "<br>", "<np>" an "<hr>". "<lt>" is "<".
TOVI_EXPORT Ref<NSString> htmlStringFromMimeRichTextString(const NSString& text);

}  // namespace MailText
}  // namespace tovi

extern "C" TOVI_EXPORT const int ToviFoundationKitMailIsLinked;

namespace tovi::detail {
// A linker may leave a library out that is used by the names of its operations only.
[[gnu::used]] inline const int& mailIsLinked = ToviFoundationKitMailIsLinked;
}  // namespace tovi::detail
