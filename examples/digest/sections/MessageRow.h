#pragma once

#include <Message.h>
#include <Page.h>

namespace digest {

/// Prints a message as a row: date, "!" where there are notes, sender, subject.
void printMessageRow(Page& page, const Message& message);

}  // namespace digest
