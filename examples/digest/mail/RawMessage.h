#pragma once

#include <cstdint>
#include <optional>
#include <string>
#include <string_view>
#include <vector>

namespace digest {

/// Something unusual in a mailbox, and where.
struct MailNote {
    std::uint64_t line = 0;
    std::uint64_t offset = 0;  ///< of that line, in bytes
    std::string text;
};

/// One message as it stands in the file: nothing decoded, header fields unfolded, the quoting of "From " undone.
class RawMessage {
public:
    std::string envelope;          ///< the separating line after "From "
    std::uint64_t line = 0;        ///< of the separating line
    std::uint64_t offset = 0;      ///< of the separating line, in bytes
    std::string body;              ///< the beginning, as far as the reader's limit goes
    bool bodyIsCut = false;        ///< there is more of it
    std::uint64_t bodyOffset = 0;  ///< where the body begins in the file
    std::uint64_t bodyLines = 0;   ///< the empty line before the next message not counted
    std::uint64_t bytes = 0;       ///< of all its lines in the file
    std::vector<MailNote> notes;

    std::size_t fieldCount() const noexcept { return fields_.size(); }
    std::string_view fieldName(std::size_t index) const noexcept { return slice(fields_[index].name); }
    std::string_view fieldValue(std::size_t index) const noexcept { return slice(fields_[index].value); }
    /// The value of the first field of that name, in any case.
    std::optional<std::string_view> field(std::string_view name) const noexcept;

    /// Empties the message and keeps its memory for the next one.
    void reset(std::uint64_t atLine, std::uint64_t atOffset);
    void addField(std::string_view name, std::string_view value);
    /// Appends a folded line to the last field.
    void extendField(std::string_view text);

private:
    struct Span {
        std::size_t start;
        std::size_t length;
    };
    struct Field {
        Span name;
        Span value;
    };
    std::string_view slice(Span span) const noexcept {
        return std::string_view(header_).substr(span.start, span.length);
    }
    Span keep(std::string_view text);

    std::string header_;  // names and values, one after the other
    std::vector<Field> fields_;
};

}  // namespace digest
