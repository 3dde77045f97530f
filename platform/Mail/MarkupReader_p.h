#pragma once

#include <cstdint>
#include <optional>
#include <vector>

#include <ToviFoundationKit/Mail/MarkupFilter_p.h>

namespace tovi {

/// Reads mail text of any shape, and writes it to the filter as mail text that is well-formed.
class MarkupReader {
public:
    MarkupReader(std::u16string_view text, MailMarkup markup, MarkupFilter& filter)
        : text_(text), markup_(markup), filter_(filter) {}

    void read();

private:
    /// A command that was opened, by its place in the table of commands.
    struct Open {
        std::uint8_t command;
        bool isSilent;  ///< it stands for nothing, for want of a parameter
    };

    bool isRichText() const { return markup_ == MailMarkup::richText; }
    char16_t unit(std::size_t place) const { return place < text_.size() ? text_[place] : u'\0'; }

    void readBracket();
    void readCommand(std::size_t command, bool closes);
    void readLineEnds();
    std::size_t lengthOfLineEnd(std::size_t place) const;

    void open(std::size_t command);
    void close(std::size_t command);
    void closeLast();
    std::optional<std::string> takeParameter();
    void skipComment();
    std::size_t endOfComment() const;

    const std::u16string_view text_;
    const MailMarkup markup_;
    MarkupFilter& filter_;
    std::size_t place_ = 0;
    std::vector<Open> open_;
    std::vector<std::size_t> openCounts_;
    bool hasOpenComment_ = false;  // no comment that begins from here on ends
};

}  // namespace tovi
