#include <gtest/gtest.h>

#include <mail/MboxReader.h>

using namespace digest;

namespace {

/// A mailbox read to its end, in words: for each message its fields and the beginning of its body.
struct Reading {
    std::vector<RawMessage> messages;
    std::vector<MailNote> problems;

    explicit Reading(std::string_view text, MboxQuoting quoting = MboxQuoting::mboxrd, MboxLimits limits = {},
                     std::size_t blockSize = SIZE_MAX) {
        MemorySource source(text, blockSize);
        MboxReader reader(source, quoting, limits);
        for (RawMessage message; reader.next(message);)
            messages.push_back(message);
        problems = reader.problems();
    }

    std::string subject(std::size_t index) const {
        return std::string(messages.at(index).field("SUBJECT").value_or("-"));
    }
    std::string note(std::size_t index) const {
        const auto& notes = messages.at(index).notes;
        return notes.size() == 1 ? std::to_string(notes[0].line) + ": " + notes[0].text
                                 : std::to_string(notes.size()) + " notes";
    }
};

constexpr std::string_view separator = "From ada@example.org Tue Mar  3 10:00:00 2020\n";

std::string withSeparator(std::string_view rest) { return std::string(separator) + std::string(rest); }

std::string errorOf(std::string_view text) {
    try {
        const Reading reading(text);
        return "read";
    } catch (const MailboxError& error) {
        return error.what();
    }
}

}  // namespace

TEST(MboxReader, takesAMailboxApart) {
    const std::string first = "Subject: one,\n folded\t\nTo : b@example.org\n\nbody\n\n>From here\n>>From there\n\n";
    for (const std::size_t blockSize : {SIZE_MAX, std::size_t{1}, std::size_t{7}}) {
        const Reading reading(withSeparator(first) + withSeparator("Subject:two\n\nlast\n"), MboxQuoting::mboxrd, {},
                              blockSize);
        ASSERT_EQ(reading.messages.size(), 2u);
        EXPECT_TRUE(reading.problems.empty());
        const RawMessage& message = reading.messages[0];
        EXPECT_EQ(message.envelope, "ada@example.org Tue Mar 3 10:00:00 2020");
        EXPECT_EQ(message.field("subject"), " one, folded\t");
        EXPECT_EQ(message.field("to"), " b@example.org");
        EXPECT_EQ(message.body, "body\n\nFrom here\n>From there\n");
        EXPECT_EQ(message.bodyLines, 4u);
        EXPECT_EQ(message.bodyOffset, separator.size() + first.find("body"));
        EXPECT_EQ(reading.subject(1), "two");
        EXPECT_EQ(reading.messages[1].line, 11u);
        EXPECT_EQ(reading.messages[1].offset, message.bytes);
    }
}

TEST(MboxReader, leavesDoublyQuotedLinesOfMboxoAlone) {
    const Reading reading(withSeparator("A: b\n\n>From x\n>>From y\n>Fromage\n"), MboxQuoting::mboxo);
    EXPECT_EQ(reading.messages.at(0).body, "From x\n>>From y\n>Fromage\n");
}

TEST(MboxReader, readsCarriageReturnsAndAByteOrderMark) {
    const Reading reading("\xEF\xBB\xBF"
                          "From a@b Tue Mar  3 10:00:00 2020\r\nSubject: s\r\n\tt\r\n\r\nbody\r\n\r\n");
    EXPECT_EQ(reading.subject(0), " s\tt");
    EXPECT_EQ(reading.messages.at(0).body, "body\n");
}

TEST(MboxReader, tellsSeparatorsFromText) {
    for (const char* separating :
         {"From - Tue Mar 03 10:00:00 2020", "From ada at example.org  Tue Mar  3 10:00:00 2020",
          "From MAILER-DAEMON Tue Mar  3 10:00 MET 2020", "From ada@example.org",
          "From 8f2e Mon Sep 17 00:00:00 2001"}) {
        EXPECT_EQ(Reading(withSeparator("A: b\n\nbody\n\n") + separating + "\nA: b\n\n").messages.size(), 2u)
            << separating;
    }
    for (const char* text : {"From here on it gets better", "From May 3 to 10:30 we are closed", "From: ada",
                             "from a@b.example", "From ada@example.org I heard that"}) {
        EXPECT_EQ(Reading(withSeparator("A: b\n\nbody\n\n") + text + "\nA: b\n\n").messages.size(), 1u) << text;
    }
}

TEST(MboxReader, keepsMessagesWithBrokenHeaders) {
    const Reading stray(withSeparator("Subject: s\n%%garbage%%\n and more\nTo: b\n\nbody\n"));
    EXPECT_EQ(stray.note(0), "3: not a header field: \"%%garbage%%\"");
    EXPECT_EQ(stray.messages.at(0).field("to"), " b");
    EXPECT_EQ(stray.subject(0), " s");

    const Reading unended(withSeparator("Subject: s\nDear all,\nwhat a day.\n\nBye\n"));
    EXPECT_EQ(unended.note(0), "3: the header ends without an empty line");
    EXPECT_EQ(unended.messages.at(0).body, "Dear all,\nwhat a day.\n\nBye\n");
    EXPECT_EQ(unended.messages.at(0).bodyOffset, separator.size() + 11);

    const Reading noHeader(withSeparator("Dear all,\n  hello\n\nBye\n"));
    EXPECT_EQ(noHeader.messages.at(0).body, "Dear all,\n  hello\n\nBye\n");
    EXPECT_EQ(Reading(withSeparator("Subject: s\nall in one")).messages.at(0).body, "all in one\n");

    const Reading indented(withSeparator("  indented\n>From old@example.org\n: no name\nbad name: x\n\nbody\n"));
    EXPECT_EQ(indented.messages.at(0).fieldCount(), 0u);

    const Reading overrun(withSeparator("Subject: s\n") + withSeparator("Subject: t\n\n"));
    EXPECT_EQ(overrun.note(0), "3: the header ends with the next message");
    EXPECT_EQ(overrun.subject(1), " t");
}

TEST(MboxReader, saysWhereAFileWasCutOff) {
    const Reading inBody(withSeparator("Subject: s\n\nhalf a li"));
    EXPECT_EQ(inBody.messages.at(0).body, "half a li\n");
    ASSERT_EQ(inBody.problems.size(), 1u);
    EXPECT_EQ(inBody.problems[0].line, 4u);
    EXPECT_EQ(inBody.problems[0].offset, separator.size() + 12);

    EXPECT_EQ(Reading(withSeparator("Subject: s\n")).problems.at(0).text, "the file ends in the middle of a header");
    EXPECT_EQ(Reading(withSeparator("Subject: s")).problems.size(), 1u);
    EXPECT_EQ(Reading(separator).note(0), "2: the file ends in the middle of a header");
}

TEST(MboxReader, refusesWhatIsNoMailbox) {
    EXPECT_EQ(errorOf(""), "the file is empty");
    EXPECT_EQ(errorOf("Hello,\nworld\n"), "line 1: not a mailbox: no line that begins with \"From \"");
    EXPECT_EQ(errorOf(std::string_view("\x7F"
                                       "ELF\0\0\0\n\0\0",
                                       10)),
              "line 1: not a mailbox: binary data, and no line that begins with \"From \"");
    const std::string far = std::string(70'000, '\n') + std::string(separator);
    EXPECT_EQ(errorOf(far).substr(0, 23), "line 1: not a mailbox: ");
}

TEST(MboxReader, skipsAndReportsWhatIsBeforeTheFirstMessage) {
    const Reading reading("hello\n\n" + withSeparator("Subject: s\n\n"));
    EXPECT_EQ(reading.subject(0), " s");
    EXPECT_EQ(reading.problems.at(0).text, "skipped what is before the first \"From \" line, line 3");
    EXPECT_TRUE(Reading("\n\nFrom anything\nA: b\n\n").problems.empty());
}

TEST(MboxReader, boundsWhatItKeeps) {
    constexpr MboxLimits small{.line = 100, .header = 300, .body = 50};
    const std::string long_(1000, 'x');
    const Reading line(withSeparator("Subject: " + long_ + "\n\n" + long_ + "\n\nend\n"), MboxQuoting::mboxrd, small,
                       64);
    EXPECT_EQ(line.messages.at(0).field("subject")->size(), 92u);
    EXPECT_EQ(line.note(0), "2: the header field is too long and was cut");
    EXPECT_EQ(line.messages.at(0).body, std::string(50, 'x') + "\n");
    EXPECT_EQ(line.messages.at(0).bodyLines, 3u);
    EXPECT_EQ(line.messages.at(0).bytes, separator.size() + 1009 + 2 + 1001 + 1 + 4);

    std::string header;
    for (int i = 0; i < 100; ++i)
        header += "X: y\n z\n";
    const Reading many(withSeparator(header + "\nbody\n"), MboxQuoting::mboxrd, small);
    EXPECT_EQ(many.messages.at(0).fieldCount(), 50u);
    EXPECT_EQ(many.note(0), "102: the header is too long; the rest is left out");
    EXPECT_EQ(many.messages.at(0).body, "body\n");
}
