#include <mail/EncodedWord.h>

#include <algorithm>
#include <optional>
#include <utility>

#include <mail/Charset.h>
#include <mail/HeaderText.h>
#include <mail/TransferEncoding.h>

using namespace tovi;

namespace digest {

namespace {

constexpr std::size_t longestCharset = 80;
constexpr std::size_t longestText =
    2000;  // far more than is allowed, so that a header of nothing but "=?" is no trouble

struct EncodedWord {
    std::string charset;  // in small letters
    bool isBase64;
    std::string_view text;
    std::string_view written;  // all of it
};

std::optional<EncodedWord> encodedWordAt(std::string_view field) {
    if (!field.starts_with("=?"))
        return std::nullopt;
    const std::size_t encoding = field.substr(0, longestCharset).find('?', 2) + 1;  // npos + 1 is 0
    if (encoding <= 3 || encoding + 2 > field.size() || field[encoding + 1] != '?')
        return std::nullopt;
    const char kind = lowered(field[encoding]);
    const std::string_view charset = field.substr(2, encoding - 3), rest = field.substr(encoding + 2, longestText);
    const std::size_t end = rest.find("?=");
    if ((kind != 'b' && kind != 'q') || std::ranges::any_of(charset, isSpace) || end == rest.npos)
        return std::nullopt;
    return EncodedWord{loweredText(charset), kind == 'b', rest.substr(0, end), field.substr(0, encoding + 2 + end + 2)};
}

std::string_view withoutSpaceInFront(std::string_view text) {
    return text.substr(std::min(text.find_first_not_of(" \t\r\n"), text.size()));
}

bool isWellFormedQ(std::string_view text) {
    for (std::size_t i = 0; i < text.size(); ++i) {
        const bool isEscape = text[i] == '=';
        if (isEscape && (i + 2 >= text.size() || hexDigit(text[i + 1]) < 0 || hexDigit(text[i + 2]) < 0))
            return false;
        if ((text[i] & 0x80) != 0)
            return false;
    }
    return true;
}

// As bytes, "_" a blank; escapes that are none stay.
TransferDecoded decodedQ(std::string_view text) {
    std::string escaped;
    for (const char c : text)
        c == '_' ? escaped += "=20" : escaped += c;
    return decodedQuotedPrintable(escaped);
}

class HeaderDecoder {
public:
    HeaderText decode(std::string_view field) {
        while (!field.empty()) {
            if (const auto word = encodedWordAt(field)) {
                add(*word);
                field.remove_prefix(word->written.size());
                if (const std::string_view rest = withoutSpaceInFront(field); encodedWordLength(rest) > 0)
                    field = rest;
            } else {
                endWords();
                const std::size_t end = std::min(field.find("=?", 1), field.size());
                plain_ += field.substr(0, end);
                field.remove_prefix(end);
            }
        }
        endWords();
        endPlain();
        return {text_.string(), std::move(problem_)};
    }

private:
    void add(const EncodedWord& word) {
        endPlain();
        if (!words_.empty() && !goesOn(words_[0], word))
            endWords();
        words_.push_back(word);
    }

    // Each word of a charset with escape sequences begins anew.
    static bool goesOn(const EncodedWord& first, const EncodedWord& word) {
        return first.charset == word.charset && first.isBase64 == word.isBase64 &&
               !word.charset.starts_with("iso-2022");
    }

    void endPlain() {
        if (!plain_.empty())
            text_.append(guessedText(plain_));
        hasKept_ = hasKept_ && plain_.empty();
        plain_.clear();
    }

    void endWords() {
        if (!words_.empty())
            words_[0].isBase64 ? decodeB() : decodeQ();
        words_.clear();
    }

    void decodeB() {
        std::string bytes;
        for (const EncodedWord& word : words_) {
            const TransferDecoded decoded = decodedBase64(word.text);
            if (decoded.isDamaged)
                noteDamage(word);
            if (decoded.isDamaged && decoded.bytes == word.text)
                return keepAsWritten();
            bytes += decoded.bytes;
        }
        addDecoded(charsetDecoded(bytes, words_[0].charset));
    }

    void decodeQ() {
        std::string text;
        for (const EncodedWord& word : words_)
            text += word.text;
        const std::string_view charset = std::string_view(words_[0].charset).substr(0, words_[0].charset.find('*'));
        const NSStringEncoding encoding = stringEncodingForMIMEEncoding(NSString::fromUTF8(charset).get());
        if (encoding != 0 && isWellFormedQ(text)) {
            if (const auto decoded = decodeQuotedPrintableString_encoding(NSString::fromUTF8(text), encoding)) {
                addText(*decoded);
                return;
            }
        }
        const TransferDecoded decoded = decodedQ(text);
        if (decoded.isDamaged)
            noteDamage(words_[0]);
        addDecoded(charsetDecoded(decoded.bytes, charset));
    }

    // What is no word has white space around it that counts.
    void keepAsWritten() {
        for (const EncodedWord& word : words_) {
            if (text_.length() > 0 && !text_.view().ends_with(u' '))
                text_.append(u' ');
            text_.append(guessedText(word.written));
        }
        hasKept_ = true;
    }

    void addDecoded(const CharsetDecoded& decoded) {
        note(decoded.problem);
        addText(decoded.text);
    }

    void addText(const NSString& text) {
        if (std::exchange(hasKept_, false))
            text_.append(u' ');
        text_.append(text);
    }

    void noteDamage(const EncodedWord& word) { note("damaged: " + std::string(word.written.substr(0, 60))); }
    void note(const std::string& problem) {
        if (problem_.empty())
            problem_ = problem;
    }

    std::string plain_;               // what is no encoded word, up to the next one
    std::vector<EncodedWord> words_;  // of one charset and encoding
    StringBuilder text_;
    bool hasKept_ = false;  // a word as it was written, just now
    std::string problem_;
};

}  // namespace

std::size_t encodedWordLength(std::string_view text) {
    const auto word = encodedWordAt(text);
    return word ? word->written.size() : 0;
}

HeaderText decodedHeader(std::string_view field) { return HeaderDecoder().decode(field); }

}  // namespace digest
