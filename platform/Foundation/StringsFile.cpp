#include <ToviFoundationKit/Foundation/StringsFile.h>

#include <algorithm>
#include <string_view>

#include <ToviFoundationKit/Foundation/NSError.h>
#include <ToviFoundationKit/Foundation/NSMutableDictionary.h>
#include <ToviFoundationKit/Runtime/StringBuilder.h>

namespace tovi {

namespace {

/// What is wrong, and at which unit of the text.
struct Fault {
    std::size_t position;
    std::u16string_view message;
};

class Parser {
public:
    explicit Parser(std::u16string_view text) : text_(text) {}

    Ref<NSDictionary> parse() {
        const Ref<NSMutableDictionary> strings = NSMutableDictionary::dictionary();
        for (skipSpace(); !atEnd(); skipSpace()) {
            const Ref<NSString> key = text();
            expect(u'=', u"'=' expected");
            skipSpace();
            const Ref<NSString> value = text();
            expect(u';', u"';' expected");
            strings->setObject_forKey(value, key);
        }
        return strings;
    }

private:
    bool atEnd() const noexcept { return position_ == text_.size(); }
    bool isAt(std::u16string_view mark) const noexcept { return text_.substr(position_).starts_with(mark); }

    [[noreturn]] void fail(std::u16string_view message) const { throw Fault{position_, message}; }

    void expect(char16_t mark, std::u16string_view message) {
        skipSpace();
        if (atEnd() || text_[position_] != mark)
            fail(message);
        ++position_;
    }

    void skipSpace() {
        while (!atEnd()) {
            if (isAt(u"/*"))
                skipComment(u"*/");
            else if (isAt(u"//"))
                position_ = std::min(text_.find_first_of(u"\n\r\u2028\u2029", position_), text_.size());
            else if (space.find(text_[position_]) != space.npos)
                ++position_;
            else
                return;
        }
    }

    void skipComment(std::u16string_view mark) {
        const std::size_t end = text_.find(mark, position_ + 2);
        if (end == text_.npos)
            fail(u"the comment has no end");
        position_ = end + mark.size();
    }

    Ref<NSString> text() { return !atEnd() && text_[position_] == u'"' ? quoted() : word(); }

    Ref<NSString> word() {
        const std::size_t start = position_;
        while (!atEnd() && isWordUnit(text_[position_]))
            ++position_;
        if (position_ == start)
            fail(u"a text expected");
        return NSString::stringWithCharacters(text_.substr(start, position_ - start));
    }

    Ref<NSString> quoted() {
        const std::size_t start = position_++;
        StringBuilder content;
        while (true) {
            const std::size_t stop = std::min(text_.find_first_of(u"\"\\", position_), text_.size());
            content.append(text_.substr(position_, stop - position_));
            position_ = stop;
            if (atEnd())
                throw Fault{start, u"the text has no closing quote"};
            if (text_[position_++] == u'"')
                return content.string();
            content.append(escaped());
        }
    }

    /// What the characters after a backslash stand for.
    char16_t escaped() {
        constexpr std::u16string_view letters = u"nrt\"'\\";
        if (!atEnd() && (text_[position_] == u'U' || text_[position_] == u'u'))
            return escapedUnit();
        const std::size_t which = atEnd() ? letters.npos : letters.find(text_[position_]);
        if (which == letters.npos) {
            --position_;
            fail(u"unknown escape sequence");
        }
        ++position_;
        return u"\n\r\t\"'\\"[which];
    }

    char16_t escapedUnit() {
        unsigned unit = 0;
        for (std::size_t i = 1; i <= 4; ++i) {
            const std::u16string_view digits = u"0123456789abcdef0123456789ABCDEF";
            const std::size_t digit = position_ + i < text_.size() ? digits.find(text_[position_ + i]) : digits.npos;
            if (digit == digits.npos) {
                --position_;
                fail(u"four hexadecimal digits expected after \\U");
            }
            unit = unit << 4 | static_cast<unsigned>(digit & 15);
        }
        position_ += 5;
        return static_cast<char16_t>(unit);
    }

    static bool isWordUnit(char16_t unit) noexcept {
        return (unit >= u'a' && unit <= u'z') || (unit >= u'A' && unit <= u'Z') || (unit >= u'0' && unit <= u'9') ||
               std::u16string_view(u"_.-/:$").find(unit) != std::u16string_view::npos;
    }

    static constexpr std::u16string_view space = u" \t\n\r\v\f\u00A0\u2028\u2029\uFEFF";

    std::u16string_view text_;
    std::size_t position_ = 0;
};

std::string_view characters(NSData::Bytes bytes) { return {reinterpret_cast<const char*>(bytes.data()), bytes.size()}; }

/// The text of a file as far as it can be told, and what is wrong with the rest.
struct Decoded {
    Ref<NSString> text;
    std::optional<Fault> fault;
};

Decoded decodedUTF16(std::string_view bytes, bool bigEndian) {
    StringBuilder text;
    char16_t* units = text.extend(bytes.size() / 2);
    for (std::size_t i = 0; i + 1 < bytes.size(); i += 2) {
        const auto first = static_cast<unsigned char>(bytes[i]);
        const auto second = static_cast<unsigned char>(bytes[i + 1]);
        *units++ = static_cast<char16_t>(bigEndian ? first << 8 | second : second << 8 | first);
    }
    if (bytes.size() % 2)
        return {text.string(), Fault{bytes.size() / 2, u"half a UTF-16 unit at the end"}};
    return {text.string(), std::nullopt};
}

/// Where the text has a replacement character that the bytes have not.
std::size_t firstReplaced(std::u16string_view text, std::string_view bytes) {
    std::size_t byte = 0;
    for (std::size_t unit = 0; unit < text.size(); ++unit) {
        if (text[unit] == u'\uFFFD' && !bytes.substr(byte).starts_with("\xEF\xBF\xBD"))
            return unit;
        const bool surrogate = (text[unit] & 0xF800) == 0xD800;
        byte += text[unit] < 0x80 ? 1 : text[unit] < 0x800 || surrogate ? 2 : 3;
    }
    return text.size();
}

Decoded decoded(std::string_view bytes) {
    using namespace std::string_view_literals;
    if (bytes.starts_with("\xFE\xFF"sv) || bytes.starts_with("\xFF\xFE"sv))
        return decodedUTF16(bytes.substr(2), bytes[0] == '\xFE');
    if (bytes.starts_with("\xEF\xBB\xBF"sv))
        bytes.remove_prefix(3);
    if (const RefPtr<NSString> text = NSString::stringWithUTF8String(bytes))
        return {text.ref(), std::nullopt};
    const Ref<NSString> text = NSString::fromUTF8(bytes);
    return {text, Fault{firstReplaced(text->view(), bytes), u"not UTF-8, and not marked as UTF-16"}};
}

Ref<NSError> described(const Fault& fault, std::u16string_view text) {
    NSUInteger line = 1;
    std::size_t lineStart = 0;
    for (std::size_t i = 0; i < fault.position && i < text.size(); ++i) {
        const bool lineEnds = text[i] == u'\n' || (text[i] == u'\r' && !text.substr(i + 1).starts_with(u'\n'));
        if (lineEnds) {
            ++line;
            lineStart = i + 1;
        }
    }
    return NSError::errorWithDomain_code_description(
        *NSString::stringWithCharacters(StringsFileErrorDomain), 1,
        *NSString::stringWithFormat(u"line %lu, column %lu: %@", line, fault.position - lineStart + 1,
                                    NSString::stringWithCharacters(fault.message)));
}

}  // namespace

RefPtr<NSDictionary> stringsFromBytes(NSData::Bytes bytes, RefPtr<NSError>* error) {
    const Decoded file = decoded(characters(bytes));
    try {
        if (file.fault)
            throw *file.fault;
        return Parser(file.text->view()).parse();
    } catch (const Fault& fault) {
        if (error)
            *error = described(fault, file.text->view());
        return nullptr;
    }
}

RefPtr<NSDictionary> stringsFromFile(const NSString& path, RefPtr<NSError>* error) {
    const RefPtr<NSData> data = NSData::dataWithContentsOfFile(path, error);
    if (!data)
        return nullptr;
    RefPtr<NSError> fault;
    RefPtr<NSDictionary> strings = stringsFromBytes(data->bytes(), &fault);
    if (fault && error)
        *error = NSError::errorWithDomain_code_description(
            fault->domain(), fault->code(),
            *NSString::stringWithFormat(u"%@: %@", path, fault->localizedDescription()));
    return strings;
}

}  // namespace tovi
