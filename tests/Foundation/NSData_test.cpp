#include <gtest/gtest.h>

#include <ToviFoundationKit/ToviFoundationKit.h>

#include <sys/resource.h>
#include <sys/stat.h>
#include <sys/wait.h>
#include <unistd.h>

#include <csignal>

#include <support/Expect.h>
#include <support/TemporaryDirectory.h>
#include <support/Text.h>

using namespace tovi;
using namespace std::string_literals;
using namespace std::string_view_literals;

namespace {

std::size_t entries(const std::filesystem::path& path) {
    return static_cast<std::size_t>(std::distance(std::filesystem::directory_iterator(path), {}));
}

}  // namespace

TEST(NSData, IsDescribedInGroupsOfFourBytes) {
    EXPECT_EQ(*made("")->description(), u"<>");
    EXPECT_EQ(*made("hell")->description(), u"<68656c6c>");
    EXPECT_EQ(*made("\x00\xFF\x80\x7F\x0A\xB0"sv)->description(), u"<00ff807f 0ab0>");
}

TEST(NSData, ComparesBytesWhateverTheirForm) {
    const auto mutableData = NSMutableData::dataWithData(made("a\0b"sv));
    EXPECT_EQ(*made("a\0b"sv), *mutableData);
    EXPECT_TRUE(made("a\0b"sv)->isEqual(mutableData.get()));
    EXPECT_EQ(made("a\0b"sv)->hash(), mutableData->hash());
    EXPECT_FALSE(made("a\0b"sv)->isEqual(made("a\0c"sv).get()));
    EXPECT_FALSE(made("a")->isEqual(made("a\0"sv).get()));
    EXPECT_FALSE(made("")->isEqual(NSString::string().get()));
    EXPECT_TRUE(made("")->isEqual(NSMutableData::data().get()));
}

TEST(NSData, SubdataRaisesOutsideTheBytes) {
    const auto receiver = made("hello");
    EXPECT_EQ(*receiver->subdataWithRange({1, 3}), *made("ell"));
    EXPECT_EQ(*receiver->subdataWithRange({5, 0}), *made(""));
    for (const NSRange range : {NSRange{5, 1}, NSRange{6, 0}, NSRange{2, ~0ULL}})
        EXPECT_RAISES(receiver->subdataWithRange(range), NSRangeException, "exceeds data length 5");
}

TEST(NSData, CopiesAreIndependent) {
    const auto original = NSMutableData::dataWithData(made("abc"));
    const auto copy = original->copy();
    const auto mutableCopy = to<NSMutableData>(copy->mutableCopy());
    original->appendData(original);
    mutableCopy->mutableBytes()[0] = std::byte{'x'};
    EXPECT_EQ(*original, *made("abcabc"));
    EXPECT_TRUE(copy->isEqual(made("abc").get()));
    EXPECT_EQ(*mutableCopy, *made("xbc"));
    EXPECT_FALSE(as<NSMutableData>(copy.get()));
    EXPECT_TRUE(identical(copy->copy().get(), copy.get()));
}

TEST(NSData, GrowsAndShrinks) {
    const auto receiver = NSMutableData::dataWithCapacity(2);
    std::string expected;
    for (int i = 0; i < 1000; ++i) {
        receiver->appendBytes(std::as_bytes(std::span("0123456789", 7)));
        expected += "0123456";
    }
    receiver->appendBytes(receiver->bytes().subspan(1, 6000));
    expected += expected.substr(1, 6000);
    EXPECT_EQ(*receiver, *made(expected));
    receiver->setLength(2);
    receiver->setLength(4);
    EXPECT_EQ(*receiver, *made("01\0\0"sv));
    receiver->setData(made("new"));
    EXPECT_EQ(*receiver, *made("new"));
}

TEST(NSData, GoesThroughAFile) {
    const TemporaryDirectory directory;
    const std::string content(100'000, '\xE4');
    for (const bool atomically : {true, false}) {
        EXPECT_TRUE(made(content)->writeToFile_atomically(directory.text("f"), atomically));
        EXPECT_EQ(*NSData::dataWithContentsOfFile(directory.text("f")), *made(content));
        EXPECT_TRUE(made("short")->writeToFile_atomically(directory.text("f"), atomically));
        EXPECT_EQ(directory.read("f"), "short");
    }
    EXPECT_EQ(entries(directory.path()), 1U);
    // The system tells no length of this one beforehand.
    EXPECT_GT(NSData::dataWithContentsOfFile(u"/proc/self/status"_ns)->length(), 100U);
}

TEST(NSData, ReplacingAFileKeepsItsPermissionsAndLinks) {
    const TemporaryDirectory directory;
    directory.write("real/file", "old");
    chmod((directory.path() / "real/file").c_str(), 0640);
    std::filesystem::create_symlink("real/file", directory.path() / "link");
    EXPECT_TRUE(made("new")->writeToFile_atomically(directory.text("link"), true));
    EXPECT_EQ(directory.read("real/file"), "new");
    EXPECT_TRUE(std::filesystem::is_symlink(directory.path() / "link"));
    struct stat status {};
    stat((directory.path() / "real/file").c_str(), &status);
    EXPECT_EQ(status.st_mode & 07777U, 0640U);
    EXPECT_EQ(entries(directory.path() / "real"), 1U);
    // What is no file is not replaced by one.
    EXPECT_TRUE(made("gone")->writeToFile_atomically(u"/dev/null"_ns, true));
    EXPECT_TRUE(std::filesystem::is_character_file("/dev/null"));
}

TEST(NSData, TellsWhyAFileCannotBeReadOrWritten) {
    const TemporaryDirectory directory;
    directory.write("file", "kept");
    const auto expect = [&](const RefPtr<NSError>& error, int code, const std::string& text) {
        ASSERT_TRUE(error);
        EXPECT_EQ(*error->domain(), NSPOSIXErrorDomain);
        EXPECT_EQ(error->code(), code);
        EXPECT_EQ(error->localizedDescription()->UTF8String(), text);
    };
    RefPtr<NSError> error;
    EXPECT_FALSE(NSData::dataWithContentsOfFile(directory.text("none"), &error));
    expect(error, ENOENT, (directory.path() / "none").native() + ": No such file or directory");
    EXPECT_FALSE(NSData::dataWithContentsOfFile(directory.text(), &error));
    expect(error, EISDIR, directory.path().native() + ": Is a directory");
    EXPECT_FALSE(made("x")->writeToFile_atomically(directory.text("file/below"), true, &error));
    expect(error, ENOTDIR, (directory.path() / "file/below").native() + ": Not a directory");
    EXPECT_FALSE(made("x")->writeToFile_atomically(directory.text(), true, &error));
    EXPECT_EQ(error->code(), EISDIR);
    for (const auto& path : {NSString::string(), NSString::fromUTF8((directory.path() / "file").native() + "\0x"s)}) {
        EXPECT_FALSE(NSData::dataWithContentsOfFile(path));
        EXPECT_FALSE(made("x")->writeToFile_atomically(path, true));
    }
    EXPECT_EQ(directory.read("file"), "kept");
}

// A child process, so that its limit, or its end, is its own.
template <class F> pid_t inChild(F work) {
    const pid_t child = fork();
    if (child == 0) {
        work();
        _exit(0);
    }
    return child;
}

TEST(NSData, AFullDiskLeavesTheOldFile) {
    const TemporaryDirectory directory;
    directory.write("file", "old");
    int status = -1;
    waitpid(inChild([&] {
                std::signal(SIGXFSZ, SIG_IGN);
                const rlimit limit{4096, 4096};
                setrlimit(RLIMIT_FSIZE, &limit);
                RefPtr<NSError> error;
                const auto big = made(std::string(10'000, 'x'));
                if (big->writeToFile_atomically(directory.text("file"), true, &error) || error->code() != EFBIG)
                    _exit(1);
            }),
            &status, 0);
    EXPECT_EQ(status, 0);
    EXPECT_EQ(directory.read("file"), "old");
    EXPECT_EQ(entries(directory.path()), 1U);
}

TEST(NSData, AProcessKilledWhileWritingLeavesOneContentOrTheOther) {
    const TemporaryDirectory directory;
    const std::string contents[] = {std::string(300'000, 'a'), std::string(200'000, 'b')};
    directory.write("file", contents[0]);
    for (std::size_t round = 0; round < 10; ++round) {
        int written[2];
        ASSERT_EQ(pipe(written), 0);
        const pid_t child = inChild([&] {
            for (std::size_t i = round;; ++i)
                if (!made(contents[i % 2])->writeToFile_atomically(directory.text("file"), true) ||
                    write(written[1], "", 1) != 1)
                    _exit(1);
        });
        char announced[3];
        ASSERT_GT(read(written[0], announced, sizeof announced), 0);
        kill(child, SIGKILL);
        waitpid(child, nullptr, 0);
        close(written[0]);
        close(written[1]);
        const std::string found = directory.read("file");
        ASSERT_TRUE(found == contents[0] || found == contents[1]) << found.size();
    }
}
