#include <mail/RawMessage.h>

#include <mail/HeaderText.h>

namespace digest {

std::optional<std::string_view> RawMessage::field(std::string_view name) const noexcept {
    for (const Field& field : fields_) {
        if (equalIgnoringCase(slice(field.name), name))
            return slice(field.value);
    }
    return std::nullopt;
}

void RawMessage::reset(std::uint64_t atLine, std::uint64_t atOffset) {
    envelope.clear();
    body.clear();
    notes.clear();
    header_.clear();
    fields_.clear();
    line = atLine;
    offset = atOffset;
    bodyIsCut = false;
    bodyOffset = bodyLines = bytes = 0;
}

void RawMessage::addField(std::string_view name, std::string_view value) {
    fields_.push_back({keep(name), keep(value)});
}

void RawMessage::extendField(std::string_view text) { fields_.back().value.length += keep(text).length; }

RawMessage::Span RawMessage::keep(std::string_view text) {
    header_ += text;
    return {header_.size() - text.size(), text.size()};
}

}  // namespace digest
