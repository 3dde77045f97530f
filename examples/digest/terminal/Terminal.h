#pragma once

namespace digest {

/// What there is to know of the place that output goes to.
struct Terminal {
    bool isTerminal = false;
    int columns = 80;  ///< 80 also where it is no terminal
    bool hasStyles = false;

    /// Asks about an open file. Styles (bold, dim) are for terminals that know them, unless NO_COLOR is set.
    static Terminal of(int descriptor);
};

}  // namespace digest
