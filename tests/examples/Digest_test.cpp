#include <gtest/gtest.h>

#include <algorithm>
#include <random>
#include <sstream>

#include <Report.h>
#include <SortedList.h>

using namespace tovi;
using namespace digest;

namespace {

Ref<Mailbox> mailbox(std::string_view text) {
    MemorySource source(text);
    return Mailbox::read(u"box"_ns, source, MboxQuoting::mboxrd, [](std::uint64_t) {});
}

/// A message with these header lines.
std::string message(std::string_view header) {
    return "From list@example.org Tue Mar  3 10:00:00 2020\n" + std::string(header) + "\n\nbody\n\n";
}

std::string subjects(const Mailbox& box) {
    return arrayByPerformingSelector(box.messages(), "subject"_sel)->componentsJoinedByString(u"|"_ns)->UTF8String();
}

std::string notes(const Mailbox& box, NSUInteger index) {
    return static_cast<Message&>((*box.messages())[index]).notes()->componentsJoinedByString(u"|"_ns)->UTF8String();
}

NSInteger compareNumbers(NSObject& a, NSObject& b, void*) {
    return static_cast<NSNumber&>(a).compare(static_cast<NSNumber&>(b));
}

}  // namespace

TEST(SortedList, keepsAnyNumberOfObjectsInOrder) {
    std::vector<int> numbers(5000);
    for (std::size_t i = 0; i < numbers.size(); ++i)
        numbers[i] = static_cast<int>(i) / 2;
    const auto all = NSArray::from(numbers);
    std::shuffle(numbers.begin(), numbers.end(), std::mt19937(1));
    SortedList kept("compare:"_sel);
    SortedList single(&compareNumbers, SortedList::Duplicates::dropped);
    for (const int number : numbers) {
        kept.add(NSNumber::numberWithInt(number));
        single.add(NSNumber::numberWithInt(number));
    }
    EXPECT_EQ(*kept.objects(), *all);
    kept.addSorted(NSArray::of(0, 2499));
    kept.add(NSNumber::numberWithInt(-1));
    EXPECT_EQ(kept.objects()->count(), 5003u);
    EXPECT_EQ(kept.objects()->firstObject()->description(), u"-1");
    EXPECT_EQ(single.objects()->count(), 2500u);
    EXPECT_EQ(SortedList("compare:"_sel).objects()->count(), 0u);
}

TEST(Mailbox, ordersMessagesByDateAndThenByPlace) {
    EXPECT_EQ(subjects(mailbox(message("Date: Wed, 4 Mar 2020 10:00 +0000\nSubject: late") +
                               message("Date: Tue, 3 Mar 2020 10:00 -0100\nSubject: b") +
                               message("Date: Tue, 3 Mar 2020 11:00 +0000\nSubject: c") + message("Subject: envelope") +
                               "From nobody@example.org\nSubject: never\n\n")),
              "never|envelope|b|c|late");
}

TEST(Mailbox, notesWhatIsUnusual) {
    const auto box =
        mailbox(message("Date: never\nMessage-ID: <1@x>") + message("Message-Id:  <1@x>\nDate: 5 Mar 2020 1:00 Z"));
    EXPECT_EQ(notes(box, 0), "line 1: \"never\" is no date; took the separating line's");
    EXPECT_EQ(notes(box, 1), "line 7: the message id of message 1 again");
}

TEST(Mailbox, knowsAPersonByTheAddress) {
    const auto box = mailbox(message("From: ada@EXAMPLE.org") + message("From: Ada <ada@example.org>") +
                             message("From: Ada") + message("X: no sender"));
    EXPECT_EQ(box->people()->allObjects()->componentsJoinedByString(u", "_ns), u"Ada <ada@EXAMPLE.org>, Ada, (nobody)");
    const auto person = Person::withName_address(u""_ns, u"ADA@example.org"_ns);
    EXPECT_TRUE(box->people()->containsObject(person));
}

TEST(Message, findsTheTopicBehindReplyMarks) {
    for (const auto& [subject, topic] : std::vector<std::pair<std::string, std::u16string_view>>{
             {"Re: RE[2]: aw : fwd:Topic: one", u"Topic: one"},
             {"Reading: a book", u"Reading: a book"},
             {"[list] Re: [PATCH 2/3] Topic [x]", u"Topic [x]"},
             {"[not closed", u"[not closed"},
             {"re", u"re"},
             {"Re:", u""},
             {"  Re: \t", u""},
         }) {
        const auto box = mailbox(message("Subject: " + subject));
        EXPECT_EQ(static_cast<Message&>((*box->messages())[0]).topic(), topic) << subject;
    }
}

TEST(Message, answersKeyValueCoding) {
    const auto box =
        mailbox(message("Subject: s\nFrom: Ada <ada@example.org>\nReferences: <1@x> <2@x>\nIn-Reply-To: <3@x>"));
    const auto first = box->messages()->firstObject();
    EXPECT_EQ(first->valueForKeyPath(u"sender.name"_ns)->description(), u"Ada");
    EXPECT_EQ(first->valueForKey(u"number"_ns)->description(), u"1");
    EXPECT_EQ(to<NSArray>(first->valueForKey(u"references"_ns))->componentsJoinedByString(u" "_ns), u"1@x 2@x");
}

TEST(Report, keepsWithinThePageWhateverIsInTheTexts) {
    const auto box = mailbox(
        message("Subject: 山田花子山田花子山田花子山田花子山田花子\nFrom: \x1B[2J\xFF <a@example.org>\nDate: x") +
        message("Subject: Re: " + std::string(100'000, 'x')));
    for (const int columns : {40, 80, 300}) {
        std::ostringstream out;
        Page page(out, columns, false);
        printReport(Digest(Options(), NSArray::of(*box, *box)), page);
        const auto text = NSString::fromUTF8(out.str());
        EXPECT_EQ(out.str().find('\x1B'), std::string::npos);
        std::u16string_view rest = *text;
        for (std::size_t end; !rest.empty(); rest.remove_prefix(end + 1)) {
            end = rest.find(u'\n');
            ASSERT_NE(end, rest.npos);
            EXPECT_LE(columnsOf(rest.substr(0, end)), columns);
        }
    }
}
