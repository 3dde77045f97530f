#pragma once

#include <Digest.h>
#include <Page.h>

namespace digest {

/// Prints all sections, in their order.
void printReport(const Digest& digest, Page& page);

}  // namespace digest
