#pragma once

#include <optional>
#include <string>
#include <vector>

#include <mail/MboxReader.h>

namespace digest {

/// What the command line asks for.
struct Options {
    std::vector<std::string> paths;
    std::size_t top = 10;           ///< how many rows a section prints at most
    std::string prefix = "Re:";     ///< of the subjects to be found
    unsigned seed = 1;              ///< of the random sample
    std::optional<unsigned> since;  ///< days back from today
    std::string where;              ///< the predicate for the messages; empty: none
    std::string now;                ///< the time that the report takes for the present; empty: the clock's
    int width = 0;                  ///< columns; 0: those of the terminal
    MboxQuoting quoting = MboxQuoting::mboxrd;
    bool wantsHelp = false;

    /// Throws std::invalid_argument, with a text for the user.
    static Options parse(int count, char* const* arguments);
    static std::string_view help();
};

}  // namespace digest
