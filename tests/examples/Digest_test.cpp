#include <gtest/gtest.h>

#include <unistd.h>

#include <algorithm>
#include <filesystem>
#include <fstream>
#include <random>
#include <sstream>

#include <Archived.h>
#include <Loader.h>
#include <Post.h>
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

/// A message with that subject, and id, and header lines.
std::string named(const std::string& name, const std::string& header = "X: x") {
    return message("Subject: " + name + "\nMessage-ID: <" + name + "@x>\n" + header);
}

/// So many messages, each the reply to the one before.
std::string chain(int length) {
    std::string text;
    for (int i = 1; i <= length; ++i)
        text += named(std::to_string(i), "In-Reply-To: <" + std::to_string(i - 1) + "@x>");
    return text;
}

std::string replies(const Post& post) {
    std::string text;
    for (const Post& each : post.children()->each<Post>())
        text += each.topic()->UTF8String() + replies(each);
    return text.empty() ? text : "(" + text + ")";
}

std::string conversations(std::string_view text) {
    const auto list = Post::conversationsOf(mailbox(text)->messages());
    list->sortConversations();
    return replies(list);
}

/// Comes back from an archive as a stranger.
class Forgetful final : public NSObject {
    TOVI_CLASS(Forgetful, NSObject)

public:
    void encodeWithCoder(NSCoder&) const {}
    void initWithCoder(NSCoder&) {}
};
const Additions<Forgetful> forgetfulAdditions{
    instance<&Forgetful::encodeWithCoder>("encodeWithCoder:"),
    instance<&Forgetful::initWithCoder>("initWithCoder:"),
};

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
    EXPECT_EQ(to<NSArray>(first->valueForKey(u"references"_ns))->componentsJoinedByString(u" "_ns), u"1@x 2@x 3@x");
}

TEST(Post, putsRepliesBelowWhatTheyAnswer) {
    const std::string late = "Date: Thu, 5 Mar 2020 10:00:00 +0000\n", early = "Date: Mon, 2 Mar 2020 10:00:00 +0000\n";
    const std::string question = named("a") + named("b", "References: <lost@x> <a@x> <lost@x>");
    for (const auto& [text, expected] : std::vector<std::pair<std::string, std::string>>{
             {question, "(a(b))"},
             {question + named("c", "In-Reply-To: <b@x>\nReferences: <a@x>"), "(a(b(c)))"},
             {question + named("c", "In-Reply-To: <lost@x>\nReferences: <b@x> <a@x>"), "(a(bc))"},
             {question + named("c", "In-Reply-To: <lost@x>"), "(a(b))"},
             {question + named("c", late + "References: <a@x>") + named("d", early + "References: <a@x>"), "(a(dbc))"},
             {question + named("d", early) + named("c", late + "References: <d@x>"), "(d(c)a(b))"},
             {question + named("c") + named("d", "References: <c@x>") + named("e", "References: <d@x>"),
              "(c(d(e))a(b))"},
             {question + named("b") + named("c", "References: <b@x>"), "(a(b(c)))"},
             {named("a", "References: <b@x>") + named("b", early), "(b(a))"},
             {named("a", "References: <a@x>"), "(a)"},
             {question + named("c", "References: <b@x> <c@x>"), "(a(b(c)))"},
             {named("a", "References: <b@x>") + named("b", "References: <a@x>"), "(a(b))"},
             {named("t", early + "References: <a@x>") + named("a", "References: <b@x>") +
                  named("b", "References: <c@x>") + named("c", "References: <a@x>"),
              "(a(tc(b)))"},
             {message("Subject: a") + message("Subject: b\nIn-Reply-To: <>"), "(ab)"},
         })
        EXPECT_EQ(conversations(text), expected) << text;
}

TEST(Archived, reportsWhatDoesNotComeBackAsItWas) {
    EXPECT_EQ(archivedAndReadBack(NSArray::of(1, u"x"), "list").object, NSArray::of(1, u"x"));
    EXPECT_THROW(archivedAndReadBack(Forgetful::classObject().makeInstance().ref(), "test"), std::runtime_error);
}

TEST(Loader, readsManyFilesAtOnceAndKeepsTheirOrder) {
    const auto folder = std::filesystem::temp_directory_path() / ("digest_loader_" + std::to_string(::getpid()));
    std::filesystem::create_directory(folder);
    Options options;
    for (int i = 1; i <= 12; ++i) {
        options.paths.push_back(folder / std::to_string(i));
        if (i != 5)
            std::ofstream(options.paths.back()) << chain(20 * i);
    }
    Loader loader(options);
    testing::internal::CaptureStderr();
    const auto mailboxes = loader.load();
    EXPECT_EQ(testing::internal::GetCapturedStderr(), "digest: " + options.paths[4] + ": No such file or directory\n");
    EXPECT_TRUE(loader.hasTrouble());
    std::string names;
    for (const Mailbox& each : mailboxes->each<Mailbox>()) {
        names += each.name()->UTF8String() + ' ';
        EXPECT_EQ(each.messages()->count(), 20u * static_cast<NSUInteger>(each.name()->intValue()));
    }
    EXPECT_EQ(names, "1 2 3 4 6 7 8 9 10 11 12 ");
    std::filesystem::remove_all(folder);
}

TEST(Report, keepsWithinThePageWhateverIsInTheTexts) {
    std::string deepDomain = "山田山田.";
    while (deepDomain.size() < 20'000)
        deepDomain += "x.";
    const auto box = mailbox(
        message("Subject: 山田花子山田花子山田花子山田花子山田花子\nFrom: \x1B[2J\xFF <a@example.org>\nDate: x") +
        message("Subject: Re: " + std::string(100'000, 'x')) + chain(1000) + message("From: a@" + deepDomain + "b") +
        message("From: c@" + deepDomain + "d") + message("From: 山 <@[c.b]>"));
    for (const int columns : {40, 80, 300}) {
        std::ostringstream out;
        Page page(out, columns, false);
        printReport(Digest(Options(), nullptr, NSArray::of(*box, *box)), page);
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
