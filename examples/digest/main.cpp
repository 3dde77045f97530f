// Prints a digest of mailboxes: a program that uses the library as any host would.

#include <unistd.h>

#include <cstdio>
#include <exception>
#include <iostream>
#include <optional>

#include <Report.h>
#include <terminal/ProgressBar.h>
#include <terminal/Terminal.h>
#include <Wording.h>

using namespace digest;

namespace {

enum ExitStatus { allWell = 0, someTrouble = 1, wrongUsage = 2 };

void complain(const std::string& about, const std::string& text) {
    std::cerr << "digest: " << about << ": " << text << '\n';
}

/// Reads the mailboxes one after the other; what cannot be read is reported and left out.
class MailboxLoader {
public:
    explicit MailboxLoader(const Options& options) : options_(options) {}

    tovi::Ref<tovi::NSArray> load() {
        for (const std::string& path : options_.paths) {
            try {
                mailboxes_->addObject(read(path));
            } catch (const MailboxError& error) {
                complain(path, error.what());
                hasTrouble_ = true;
            }
        }
        return mailboxes_;
    }

    bool hasTrouble() const { return hasTrouble_; }

private:
    tovi::Ref<Mailbox> read(const std::string& path) {
        FileSource file(path);
        const auto name =
            tovi::NSString::fromUTF8(path == "-" ? "standard input" : path.substr(path.find_last_of('/') + 1));
        ProgressBar bar(printable(*name));
        auto mailbox = Mailbox::read(name, file, options_.quoting,
                                     [&](std::uint64_t position) { bar.show(position, file.size()); });
        for (const MailNote& problem : mailbox->problems())
            complain(path, "line " + std::to_string(problem.line) + ", offset " + std::to_string(problem.offset) +
                               ": " + problem.text);
        hasTrouble_ = hasTrouble_ || !mailbox->problems().empty();
        return mailbox;
    }

    const Options& options_;
    const tovi::Ref<tovi::NSMutableArray> mailboxes_ = tovi::NSMutableArray::array();
    bool hasTrouble_ = false;
};

/// The present, where the options name one.
std::optional<tovi::FixedClock> clockOf(const Options& options) {
    if (options.now.empty())
        return std::nullopt;
    const auto date = dateOfText(tovi::NSString::fromUTF8(options.now));
    if (!date)
        throw std::invalid_argument("--now needs a time like \"2024-03-15 18:30\", not \"" + options.now + '"');
    return std::optional<tovi::FixedClock>(std::in_place, date->timeIntervalSinceReferenceDate());
}

ExitStatus run(const Options& options) {
    MailboxLoader loader(options);
    const auto mailboxes = loader.load();
    if (mailboxes->count() > 0) {
        const Terminal terminal = Terminal::of(STDOUT_FILENO);
        Page page(std::cout, options.width > 0 ? options.width : terminal.columns, terminal.hasStyles);
        printReport(Digest(options, mailboxes), page);
    }
    if (!std::cout.flush()) {
        complain("standard output", "cannot be written to");
        return someTrouble;
    }
    return loader.hasTrouble() ? someTrouble : allWell;
}

}  // namespace

int main(int argc, char** argv) {
    try {
        const Options options = Options::parse(argc, argv);
        if (options.wantsHelp) {
            std::cout << Options::help();
            return allWell;
        }
        const auto clock = clockOf(options);
        const tovi::ScopedClock scope(clock ? *clock : tovi::Clock::current());
        return run(options);
    } catch (const std::invalid_argument& error) {
        std::cerr << "digest: " << error.what() << "\nTry digest --help.\n";
        return wrongUsage;
    } catch (const std::exception& error) {
        std::cerr << "digest: " << error.what() << '\n';
        return someTrouble;
    }
}
