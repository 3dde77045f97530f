#include <Report.h>

#include <sections/Sections.h>

namespace digest {

void printReport(const Digest& digest, Page& page) {
    static constexpr Section* sections[] = {
        printOverview,      printLatestMessages, printCalendar,         printSenders,      printDomains, printTopics,
        printConversations, printCommonPeople,   printSubjectsByPrefix, printRandomSample, printNotes,
    };
    for (Section* const section : sections) {
        section(digest, page);
        if (digest.messages().count() == 0)
            break;
    }
}

}  // namespace digest
