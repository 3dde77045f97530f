#include <Page.h>

#include <algorithm>
#include <ostream>

using namespace tovi;

namespace digest {

namespace {

constexpr int margin = 2;  // before a row, and between its cells

std::u16string spaces(int count) { return std::u16string(static_cast<std::size_t>(count), u' '); }

}  // namespace

void Page::heading(std::u16string_view title, std::u16string_view remark) {
    out_ << '\n';
    const std::u16string text = elided(printable(title), columns_);
    print(text, Style::bold);
    if (const int left = columns_ - columnsOf(text) - margin; !remark.empty() && left > 0)
        print(spaces(margin) + elided(printable(remark), left), Style::dim);
    out_ << '\n';
}

void Page::row(std::initializer_list<Cell> cells) {
    int spare = columns_;  // for the cell that takes what the others leave
    for (const Cell& cell : cells)
        spare -= margin + cell.columns;
    std::u16string line;
    int left = columns_;
    for (const Cell& cell : cells) {
        left = std::max(left - margin, 0);
        const int columns = std::min(cell.columns > 0 ? cell.columns : std::max(spare, 0), left);
        const std::u16string text = elided(std::u16string(cell.lead) + printable(cell.text), columns);
        const std::size_t lead = std::min(cell.lead.size(), text.size());
        line += spaces(columns > 0 ? margin : 0) +
                fitted(text.substr(0, lead) + isolated(text.substr(lead)), columns, cell.align);
        left -= columns;
    }
    line.erase(line.find_last_not_of(u' ') + 1);
    print(line, Style::plain);
    out_ << '\n';
}

void Page::aside(std::u16string_view text, int indentation) {
    print(spaces(indentation) + isolated(elided(printable(text), columns_ - indentation)), Style::dim);
    out_ << '\n';
}

void Page::paragraph(std::u16string_view text, int indentation) {
    for (const std::u16string& line : wrapped(printable(text), columns_ - indentation))
        aside(line, indentation);
}

void Page::more(NSUInteger count, NSUInteger shown, int indentation) {
    if (count > shown)
        aside(NSString::stringWithFormat(u"and %lu more", count - shown)->view(), indentation);
}

void Page::print(std::u16string_view text, Style style) {
    if (!hasStyles_)
        style = Style::plain;
    out_ << (style == Style::bold  ? "\033[1m"
             : style == Style::dim ? "\033[2m"
                                   : "")
         << NSString::stringWithCharacters(text)->UTF8String() << (style == Style::plain ? "" : "\033[0m");
}

}  // namespace digest
