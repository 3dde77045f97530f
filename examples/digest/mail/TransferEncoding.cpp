#include <mail/TransferEncoding.h>

#include <algorithm>
#include <array>
#include <functional>

#include <mail/HeaderText.h>

namespace digest {

namespace {

constexpr auto sextets = [] {
    std::array<signed char, 256> values{};
    values.fill(-1);
    constexpr std::string_view alphabet = "ABCDEFGHIJKLMNOPQRSTUVWXYZabcdefghijklmnopqrstuvwxyz0123456789+/";
    for (std::size_t i = 0; i < alphabet.size(); ++i)
        values[static_cast<unsigned char>(alphabet[i])] = static_cast<signed char>(i);
    return values;
}();

int sextet(char c) { return sextets[static_cast<unsigned char>(c)]; }

bool belongsToBase64(char c) { return sextet(c) >= 0 || c == '=' || isSpace(c); }

std::string_view withoutSpaceAtEnd(std::string_view line) { return line.substr(0, line.find_last_not_of(" \t\r") + 1); }

std::string_view takeLine(std::string_view& text) {
    const std::size_t end = std::min(text.find('\n'), text.size());
    const std::string_view line = text.substr(0, end);
    text.remove_prefix(std::min(end + 1, text.size()));
    return line;
}

// A line of words has blanks in it, and others are full of strange characters.
bool isBase64Line(std::string_view line) {
    line = withoutSpaceAtEnd(line);
    const auto strangers = std::ranges::count_if(line, std::not_fn(belongsToBase64));
    return line.find(' ') == line.npos && static_cast<std::size_t>(strangers) * 5 <= line.size();
}

class Base64Reader {
public:
    explicit Base64Reader(TransferDecoded& result) : result_(result) {}
    ~Base64Reader() { result_.isDamaged = result_.isDamaged || count_ == 1; }
    Base64Reader(const Base64Reader&) = delete;
    Base64Reader& operator=(const Base64Reader&) = delete;

    /// A "=" or two have filled the last group. More may follow, as if it was encoded by itself.
    bool isAtEnd() const { return isAtEnd_; }

    void take(std::string_view line) {
        for (const char c : line) {
            if (const int value = sextet(c); value >= 0)
                addSextet(static_cast<unsigned>(value));
            else if (c == '=' && (count_ > 1 || isAtEnd_))
                addPadding();
            else
                result_.isDamaged = result_.isDamaged || !isSpace(c);
        }
    }

private:
    void addSextet(unsigned value) {
        isAtEnd_ = false;
        result_.isDamaged = result_.isDamaged || padding_ > 0;
        bits_ = (bits_ << 6 | value) & 0xFFFFFF;
        if (++count_ > 1)
            result_.bytes += static_cast<char>(bits_ >> (8 - 2 * count_) & 0xFF);
        count_ %= 4;
    }

    void addPadding() {
        isAtEnd_ = isAtEnd_ || count_ + ++padding_ == 4;
        if (isAtEnd_)
            count_ = padding_ = 0;
    }

    TransferDecoded& result_;
    unsigned bits_ = 0, count_ = 0, padding_ = 0;
    bool isAtEnd_ = false;
};

}  // namespace

TransferDecoded decodedBase64(std::string_view text) {
    TransferDecoded result;
    result.bytes.reserve(text.size() / 4 * 3);
    const auto cleanLength =
        static_cast<std::size_t>(std::find_if_not(text.rbegin(), text.rend(), belongsToBase64) - text.rbegin());
    Base64Reader reader(result);
    while (!text.empty()) {
        std::string_view rest = text;
        const std::string_view line = takeLine(rest);
        if (!isBase64Line(line) || (reader.isAtEnd() && text.size() > cleanLength)) {
            result.isDamaged = true;
            result.bytes.append(result.bytes.empty() ? "" : "\n").append(text);
            break;
        }
        reader.take(line);
        text = rest;
    }
    return result;
}

namespace {

void decodeLine(std::string_view line, TransferDecoded& result) {
    for (std::size_t i = 0; i < line.size(); ++i) {
        const int high = line[i] == '=' && i + 2 < line.size() ? hexDigit(line[i + 1]) : -1;
        const int low = high >= 0 ? hexDigit(line[i + 2]) : -1;
        if (low >= 0) {
            result.bytes += static_cast<char>(high * 16 + low);
            i += 2;
        } else {
            result.bytes += line[i];
            result.isDamaged = result.isDamaged || line[i] == '=';
        }
    }
}

}  // namespace

TransferDecoded decodedQuotedPrintable(std::string_view text) {
    TransferDecoded result;
    result.bytes.reserve(text.size());
    while (!text.empty()) {
        const std::size_t end = text.find('\n');
        std::string_view line = withoutSpaceAtEnd(text.substr(0, end));
        text.remove_prefix(end == text.npos ? text.size() : end + 1);
        const bool isJoined = line.ends_with('=');
        line.remove_suffix(isJoined);
        decodeLine(line, result);
        if (!isJoined && end != text.npos)
            result.bytes += '\n';
    }
    return result;
}

TransferDecoded transferDecoded(std::string_view text, std::string_view encoding) {
    if (equalIgnoringCase(encoding, "base64"))
        return decodedBase64(text);
    if (equalIgnoringCase(encoding, "quoted-printable"))
        return decodedQuotedPrintable(text);
    return {std::string(text), false};
}

}  // namespace digest
