#include <Report.h>

#include <sections/Sections.h>

namespace digest {

void printReport(const Digest& digest, Page& page) {
    static constexpr Section* sections[] = {
        printOverview,      printLatestMessages, printSenders,          printDomains,      printTopics,
        printConversations, printCommonPeople,   printSubjectsByPrefix, printRandomSample, printNotes,
    };
    for (Section* const section : sections)
        section(digest, page);
}

}  // namespace digest
