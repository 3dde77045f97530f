#pragma once

#include <string>
#include <string_view>
#include <vector>

namespace digest {

// Text in the columns of a terminal: East Asian wide characters take two, combining marks none.

/// How many columns the text takes.
int columnsOf(std::u16string_view text);

/// The text as one line that is safe to print: a run of white space becomes one space, and none is left at the ends;
/// control characters and lone surrogates become U+FFFD, and what turns the direction of writing goes away.
std::u16string printable(std::u16string_view text);

/// The text so that no direction of writing in it, as that of Arabic, moves what stands beside it: between U+2068 and
/// U+2069 where there is such writing. Both take no column.
std::u16string isolated(std::u16string_view text);

/// The text itself when it fits, else its beginning with "…" behind it.
std::u16string elided(std::u16string_view text, int columns);

/// The text, words one space apart, in lines of at most so many columns; a word that is longer is elided.
std::vector<std::u16string> wrapped(std::u16string_view text, int columns);

enum class Align { left, right };

/// The text elided or filled with spaces to just so many columns.
std::u16string fitted(std::u16string_view text, int columns, Align align = Align::left);

}  // namespace digest
