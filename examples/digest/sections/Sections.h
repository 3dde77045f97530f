#pragma once

#include <Digest.h>
#include <Page.h>

namespace digest {

/// One part of the report. It prints nothing when it has nothing to say. A new one is a file here, a line below, and
/// its place in Report.cpp.
using Section = void(const Digest& digest, Page& page);

Section printOverview;          ///< the mailboxes, how large, from when to when
Section printLatestMessages;    ///< the end of the list by date, under its days
Section printCalendar;          ///< how many messages a day, in months of weeks
Section printSenders;           ///< who wrote how many messages
Section printTopics;            ///< who wrote about what
Section printConversations;     ///< who answered whom
Section printDomains;           ///< how many messages came from where, as an outline
Section printCommonPeople;      ///< who is in all mailboxes, who in one
Section printSubjectsByPrefix;  ///< subjects that begin with a text
Section printRandomSample;      ///< some messages, with their first words
Section printNotes;             ///< what is unusual about messages

}  // namespace digest
