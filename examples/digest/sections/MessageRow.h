#pragma once

#include <Message.h>
#include <Page.h>

namespace digest {

/// Prints a message as a row: when it came (with something before it), "!" where there are notes, sender, subject.
void printMessageRow(Page& page, const Message& message, const tovi::NSString& when, std::u16string_view lead = {});

}  // namespace digest
