#pragma once

#include <ToviFoundationKit/ToviFoundationKit.h>

namespace digest {

/// What a page says: without tags, comments, and what is between "<script>", "<style>", "<title>" or "<head>" and its
/// end; character references replaced. Paragraphs, and what else stands by itself, have lines of their own. A "<" that
/// begins no tag is text, and nothing is taken for the end of the page that is not closed. Linear time.
tovi::Ref<tovi::NSString> plainTextOfHTML(const tovi::NSString& html);

}  // namespace digest
