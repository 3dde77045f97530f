#pragma once

#include <ToviFoundationKit/ToviFoundationKit.h>

namespace digest {

/// How long the encoded word is that the text begins with, "=?charset?Q?text?="; 0 where there is none.
std::size_t encodedWordLength(std::string_view text);

/// The text of a header field.
struct HeaderText {
    tovi::Ref<tovi::NSString> text;
    std::string problem;  ///< why it is not all as it was written; empty where it is
};

/// Decodes the encoded words of RFC 2047, in quotes too, as many mail programs write them there. White space between
/// two is dropped, and words that follow each other in the same charset and encoding are one, so that a character may
/// begin in one and end in the next. What is no encoded word is UTF-8 if it can be, else ISO-8859-1. A word that makes
/// no sense stays as it is written.
HeaderText decodedHeader(std::string_view field);

}  // namespace digest
