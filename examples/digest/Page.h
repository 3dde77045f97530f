#pragma once

#include <initializer_list>
#include <iosfwd>
#include <string>

#include <terminal/TextWidth.h>
#include <ToviFoundationKit/ToviFoundationKit.h>

namespace digest {

/// One column of a row.
struct Cell {
    std::u16string_view text;
    int columns = 0;  ///< 0, for one cell of a row: all that the others leave
    Align align = Align::left;
    std::u16string_view lead = {};  ///< printed before the text as it is, white space too
};

/// Where the report goes: lines no wider than the page, whatever is in the texts.
class Page {
public:
    Page(std::ostream& out, int columns, bool hasStyles) : out_(out), columns_(columns), hasStyles_(hasStyles) {}

    int columns() const { return columns_; }

    /// An empty line and a title, with a remark behind it in plain.
    void heading(std::u16string_view title, std::u16string_view remark = {});
    /// Cells two columns apart.
    void row(std::initializer_list<Cell> cells);
    /// A line of its own, dim where the terminal can do that.
    void aside(std::u16string_view text, int indentation);
    /// The same with as many lines as the text needs.
    void paragraph(std::u16string_view text, int indentation);
    /// "and 3 more" where there are more than were shown.
    void more(tovi::NSUInteger count, tovi::NSUInteger shown, int indentation = 2);

private:
    enum class Style { plain, bold, dim };
    void print(std::u16string_view text, Style style);

    std::ostream& out_;
    const int columns_;
    const bool hasStyles_;
};

}  // namespace digest
