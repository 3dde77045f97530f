#pragma once

#include <ToviFoundationKit/Foundation/NSData.h>
#include <ToviFoundationKit/Foundation/NSDictionary.h>

namespace tovi {

class NSError;

// A .strings file, the table of texts in one language:
//
//     /* The button that ends the dialogue. */
//     "ok" = "Fine";
//     greeting = "Hello,\n\"%@\"";  // a word of letters, digits and _ . - / : $ needs no quotes
//
// Keys and values may use \n \r \t \" \' \\ and \UXXXX or \uXXXX (a UTF-16 unit in four hexadecimal digits). The file
// is UTF-8, with or without a byte order mark, or UTF-16 with one. Of equal keys the last counts.

inline constexpr std::u16string_view StringsFileErrorDomain = u"ToviStringsFileErrorDomain";

/// The texts by key, or nil and an error that names the place: "line 3, column 14: ';' expected".
TOVI_EXPORT RefPtr<NSDictionary> stringsFromBytes(NSData::Bytes bytes, RefPtr<NSError>* error = nullptr);
/// The same for a file, whose path the error names too.
TOVI_EXPORT RefPtr<NSDictionary> stringsFromFile(const NSString& path, RefPtr<NSError>* error = nullptr);

}  // namespace tovi
