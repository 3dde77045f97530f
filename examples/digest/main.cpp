// Prints a digest of mailboxes: a program that uses the library as any host would.

#include <unistd.h>

#include <cstdio>
#include <exception>
#include <iostream>
#include <optional>

#include <Loader.h>
#include <Report.h>
#include <terminal/Terminal.h>
#include <Wording.h>

using namespace digest;

namespace {

enum ExitStatus { allWell = 0, someTrouble = 1, wrongUsage = 2 };

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
    const auto fixedClock = clockOf(options);
    const tovi::Clock& clock = fixedClock ? *fixedClock : tovi::Clock::current();
    const auto selection = (tovi::ScopedClock(clock), selectionOf(options));
    Loader loader(options);
    const auto mailboxes = loader.load();
    if (mailboxes->count() > 0) {
        const Terminal terminal = Terminal::of(STDOUT_FILENO);
        const tovi::ScopedClock scope(clock);
        Page page(std::cout, options.width > 0 ? options.width : terminal.columns, terminal.hasStyles);
        printReport(Digest(options, selection, mailboxes), page);
    }
    if (!std::cout.flush()) {
        std::cerr << "digest: standard output: cannot be written to\n";
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
        return run(options);
    } catch (const std::invalid_argument& error) {
        std::cerr << "digest: " << error.what() << "\nTry digest --help.\n";
        return wrongUsage;
    } catch (const std::exception& error) {
        std::cerr << "digest: " << error.what() << '\n';
        return someTrouble;
    }
}
