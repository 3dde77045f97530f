#include <mail/MimeField.h>

#include <algorithm>

#include <mail/HeaderText.h>
#include <mail/TransferEncoding.h>

namespace digest {

namespace {

std::string takeToken(std::string_view& text, std::string_view ends) {
    std::string token(text.substr(0, text.find_first_of(ends)));
    text.remove_prefix(token.size());
    return token;
}

std::string takeValue(std::string_view& text) {
    if (text.starts_with('"'))
        return takeQuoted(text);
    const std::string value = takeToken(text, ";(");
    return value.substr(0, value.find_last_not_of(" \t\r\n") + 1);
}

std::string percentDecoded(std::string_view text) {
    std::string result;
    for (std::size_t i = 0; i < text.size(); ++i) {
        const int high = text[i] == '%' && i + 2 < text.size() ? hexDigit(text[i + 1]) : -1;
        const int low = high >= 0 ? hexDigit(text[i + 2]) : -1;
        result += low >= 0 ? static_cast<char>(high * 16 + low) : text[i];
        i += low >= 0 ? 2 : 0;
    }
    return result;
}

std::string_view withoutCharset(std::string_view text) {
    const std::size_t language = text.find('\'');
    const std::size_t end = language == text.npos ? language : text.find('\'', language + 1);
    return end == text.npos ? text : text.substr(end + 1);
}

}  // namespace

MimeField::MimeField(std::string_view field) {
    skipCommentsAndSpace(field);
    value_ = loweredText(takeToken(field, "; \t\r\n("));
    while (skipCommentsAndSpace(field)) {
        if (field.front() == ';')
            field.remove_prefix(1);
        else
            readParameter(field);
    }
    std::ranges::stable_sort(pieces_, {}, &Piece::place);
}

// "name=value", "name*=utf-8''value", "name*2=value", "name*2*=value".
void MimeField::readParameter(std::string_view& rest) {
    std::string name = loweredText(takeToken(rest, "=; \t\r\n("));
    skipCommentsAndSpace(rest);
    if (!rest.starts_with('='))
        return;
    rest.remove_prefix(1);
    skipCommentsAndSpace(rest);
    Piece piece{std::move(name), 0, false, takeValue(rest)};
    if (piece.name.ends_with('*')) {
        piece.isEncoded = true;
        piece.name.pop_back();
    }
    if (const std::size_t star = piece.name.find('*'); star != piece.name.npos) {
        for (const char c : piece.name.substr(star + 1, 6))
            piece.place = piece.place * 10 + (isDigit(c) ? static_cast<unsigned>(c - '0') : 0);
        piece.name.resize(star);
    }
    pieces_.push_back(std::move(piece));
}

std::string MimeField::parameter(std::string_view name) const {
    std::string result;
    const Piece* last = nullptr;
    for (const Piece& piece : pieces_) {
        if (piece.name != name || (last && last->place == piece.place))
            continue;
        const std::string_view value = piece.isEncoded && !last ? withoutCharset(piece.value) : piece.value;
        result += piece.isEncoded ? percentDecoded(value) : value;
        last = &piece;
    }
    return result;
}

}  // namespace digest
