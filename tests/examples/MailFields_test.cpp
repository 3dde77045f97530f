#include <gtest/gtest.h>

#include <mail/MailAddress.h>
#include <mail/MailDate.h>
#include <mail/MimeField.h>

using namespace digest;

TEST(MailDate, readsWhatMailProgramsWriteAndWrote) {
    struct Row {
        const char* text;
        std::int64_t seconds;
        int minutesEast;
        bool zoneIsKnown;
    };
    constexpr std::int64_t noon = 1583236800;  // Tue, 3 Mar 2020 12:00:00 GMT
    for (const Row& row : {
             Row{"Tue, 3 Mar 2020 12:00:00 +0000", noon, 0, true},
             Row{"Tue, 3 Mar 2020 14:00:00 +0200 (EET)", noon, 120, true},
             Row{"3 Mar 2020 12:00 GMT", noon, 0, true},
             Row{"Tue,3 Mar 2020 07:00:00 EST", noon, -300, true},
             Row{"tue , 03 mar 20 05:00:00 pdt", noon + 0, -420, true},
             Row{" (a (nested\\) ) comment) Tue (x), 3 (y) Mar 2020 12 (z):00:00 Z", noon, 0, true},
             Row{"Tue, 3 Mar 2020 12:00:00", noon, 0, false},
             Row{"Tue, 3 Mar 2020 12:00:00 -0000", noon, 0, false},
             Row{"Tue, 3 Mar 2020 12:00:00 A", noon, 0, false},
             Row{"Tue, 3 Mar 2020 12:00:00 CEST", noon, 0, false},
             Row{"Tue, 3 Mar 2020 17:30:00 +05:30", noon, 330, true},
             Row{"Tue, 3 Mar 2020 13:00:00 GMT+1", noon, 60, true},
             Row{"Tue Mar  3 12:00:00 2020", noon, 0, false},
             Row{"Tue Mar  3 04:00:00 PST 2020", noon, -480, true},
             Row{"3-Mar-2020 12:00:00.25 UT", noon, 0, true},
             Row{"Tuesday, 3 March 120 12:00:00 GMT", noon, 0, true},
             Row{"31 Dec 49 23:59:60 GMT", 2524608000, 0, true},
             Row{"1 Jan 50 00:00 GMT", -631152000, 0, true},
             Row{"29 Feb 2000 00:00 +0000", 951782400, 0, true},
         }) {
        const auto date = parseMailDate(row.text);
        ASSERT_TRUE(date) << row.text;
        EXPECT_EQ(*date, (MailDate{row.seconds, row.minutesEast, row.zoneIsKnown})) << row.text;
    }
}

TEST(MailDate, refusesWhatIsNoDate) {
    for (const char* text :
         {"", "(", "yesterday", "Tue, 3 Mar 2020", "12:00:00 +0000", "3 Mar 2020 24:00:00 GMT", "3 Mar 2020 12:60 GMT",
          "30 Feb 2020 12:00 GMT", "29 Feb 1900 12:00 GMT", "3 Foo 2020 12:00 GMT", "3 Mar 2020 12:00 +0060",
          "3 Mar 2020 12:00 13:00", "3 Mar 10000 12:00 GMT", "3 Mar 99999999999 12:00", "3 4 Mar 2020 12:00",
          "2020-03-03T12:00:00Z", "3 Mar 1899 12:00 GMT", "3 Mar 2020 12: GMT", "0 Mar 2020 12:00 GMT"}) {
        EXPECT_FALSE(parseMailDate(text)) << text;
    }
}

TEST(MailAddress, findsTheFirstPerson) {
    struct Row {
        const char* field;
        MailAddress expected;
    };
    for (const Row& row : {
             Row{" Ada Byron <ada@example.org>", {"Ada Byron", "ada@example.org"}},
             Row{"\"Byron, Ada \\\"A\\\"\" <ada@example.org>, b@example.org", {"Byron, Ada \"A\"", "ada@example.org"}},
             Row{"ada@example.org (Ada (the first) Byron)", {"Ada (the first) Byron", "ada@example.org"}},
             Row{"<ada@example.org> (Ada)", {"", "ada@example.org"}},
             Row{"(Ada) <ada@example.org>", {"Ada", "ada@example.org"}},
             Row{"ada at example.org (Ada Byron)", {"Ada Byron", "ada@example.org"}},
             Row{"Ada <@relay.example:ada@example.org>", {"Ada", "ada@example.org"}},
             Row{"Ada  <ada@example.org", {"Ada", "ada@example.org"}},
             Row{"\"Ada", {"Ada", ""}},
             Row{"undisclosed-recipients:;", {"undisclosed-recipients:", ""}},
             Row{"", {"", ""}},
             Row{"=?utf-8?q?J=C3=B3zef,_(?= <j@example.org>", {"=?utf-8?q?J=C3=B3zef,_(?=", "j@example.org"}},
         }) {
        EXPECT_EQ(parseMailAddress(row.field), row.expected) << row.field;
    }
}

TEST(MailAddress, findsMessageIDs) {
    using IDs = std::vector<std::string>;
    EXPECT_EQ(parseMessageIDs(" <a@x>\t<b\n @x> (<c@x>) <d@x>"), (IDs{"a@x", "b@x", "d@x"}));
    EXPECT_EQ(parseMessageIDs("Your message of \"Tue\" <a@x>"), IDs{"a@x"});
    EXPECT_EQ(parseMessageIDs("<> none <a@x"), IDs{"a@x"});
}

TEST(MimeField, readsValueAndParameters) {
    const MimeField field(
        " (c) Text/Plain (d) ; Charset = \"utf\\-8\" ; name=a b.txt;; x ;=y; format=flowed (e); Charset=no");
    EXPECT_EQ(field.value(), "text/plain");
    EXPECT_EQ(field.parameter("charset"), "utf-8");
    EXPECT_EQ(field.parameter("name"), "a b.txt");
    EXPECT_EQ(field.parameter("format"), "flowed");
    EXPECT_EQ(field.parameter("x"), "");
    EXPECT_EQ(MimeField("").value(), "");
    EXPECT_EQ(MimeField("multipart/mixed; boundary=\"a;b").parameter("boundary"), "a;b");
}

TEST(MimeField, putsValuesInPiecesTogether) {
    const MimeField field("attachment; filename*1*=%E4b; filename*0*=iso-8859-1'de'B%41;\n filename*2=\"%20 c\"; "
                          "name*=utf-8''%C3%A9%; other*0=a; other*1=b");
    EXPECT_EQ(field.parameter("filename"), "BA\xE4"
                                           "b%20 c");
    EXPECT_EQ(field.parameter("name"), "\xC3\xA9%");
    EXPECT_EQ(field.parameter("other"), "ab");
}
