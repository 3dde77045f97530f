#include <ToviFoundationKit/CoreFoundation/CFStringEncoding.h>

#include <algorithm>
#include <memory>
#include <string>
#include <vector>

#include <unicode/ucnv.h>
#include <unicode/uenum.h>

#include <ToviFoundationKit/Foundation/EncodingTable_p.h>
#include <ToviFoundationKit/Runtime/UnitSearch_p.h>

namespace tovi {

namespace {

struct Alias {
    std::string_view name;
    CFStringEncoding charset;
};

/// What mail and web pages say, beside the registered names.
constexpr Alias everydayNames[] = {
    {"latin10", 0x0210},
    {"l10", 0x0210},
    {"iso-ir-226", 0x0210},
    {"csiso885916", 0x0210},
    {"ms932", 0x0420},
    {"cp932", 0x0420},
    {"cswindows31j", 0x0420},
    {"cp949", 0x0422},
    {"ks_c_5601", 0x0422},
    {"ks_c_5601-1989", 0x0422},
    {"ksc5601", 0x0422},
    {"korean", 0x0422},
    {"uhc", 0x0422},
    {"windows-949", 0x0422},
    {"windows-950", 0x0423},
    {"windows-936", 0x0421},
    {"tis-620", 0x041D},
    {"cp874", 0x041D},
    {"dos-874", 0x041D},
    {"dos-862", 0x0417},
    {"cp1250", 0x0501},
    {"cp1251", 0x0502},
    {"win-1251", 0x0502},
    {"cp1252", 0x0500},
    {"cp1253", 0x0503},
    {"cp1254", 0x0504},
    {"cp1255", 0x0505},
    {"cp1256", 0x0506},
    {"cp1257", 0x0507},
    {"cp1258", 0x0508},
    {"koi8", 0x0A02},
    {"koi", 0x0A02},
    {"koi8-ru", 0x0A08},
    {"x-sjis", 0x0A01},
    {"sjis", 0x0A01},
    {"ujis", 0x0920},
    {"x-euc-jp", 0x0920},
    {"euc-cn", 0x0930},
    {"x-euc-cn", 0x0930},
    {"x-gbk", 0x0631},
    {"x-euc-tw", 0x0931},
    {"x-big5", 0x0A03},
    {"cn-big5", 0x0A03},
    {"cn-gb", 0x0930},
    {"hz", 0x0A05},
    {"unicode-1-1-utf-7", 0x04000100},
    {"unicode", 0x0100},
    {"ucs-2", 0x0100},
    {"iso-10646-ucs-2", 0x0100},
    {"ucs-4", 0x0C000100},
    {"iso-10646-ucs-4", 0x0C000100},
};

/// The letters and digits of a name, in lower case; empty for what is longer than any name. Zeros that lead a number
/// count for nothing.
class FoldedName {
public:
    template <class Units> explicit FoldedName(Units name) noexcept {
        for (const auto unit : name) {
            const bool digit = unit >= '0' && unit <= '9', upper = unit >= 'A' && unit <= 'Z';
            if (!digit && !upper && !(unit >= 'a' && unit <= 'z'))
                continue;
            if (unit == '0' && !(length_ && text_[length_ - 1] >= '0' && text_[length_ - 1] <= '9'))
                continue;
            if (length_ == sizeof text_) {
                length_ = 0;
                return;
            }
            text_[length_++] = static_cast<char>(upper ? unit + 32 : unit);
        }
    }
    std::string_view view() const noexcept { return {text_, length_}; }

private:
    char text_[48];
    std::size_t length_ = 0;
};

/// All names, folded and sorted.
class NameTable {
public:
    static const NameTable& shared() {
        static const NameTable& table = *new NameTable;
        return table;
    }

    CFStringEncoding find(std::string_view name) const noexcept {
        const auto found = std::ranges::lower_bound(entries_, name, {}, &Entry::name);
        return found != entries_.end() && found->name == name ? found->charset : kCFStringEncodingInvalidId;
    }

private:
    struct Entry {
        std::string name;
        CFStringEncoding charset;
    };

    // The earlier of two equal names counts. Of two character sets with one converter, the later one is the standard.
    NameTable() {
        const auto rows = detail::encodingRows();
        for (const detail::EncodingRow& row : rows)
            if (row.name)
                add(row.name, row.charset);
        for (const Alias& alias : everydayNames)
            add(alias.name, alias.charset);
        std::for_each(rows.rbegin(), rows.rend(), [this](const detail::EncodingRow& row) {
            for (const char* const standard : {"MIME", "IANA"})
                if (row.converter)
                    addRegistered(row, standard);
        });
        std::ranges::stable_sort(entries_, {}, &Entry::name);
        const auto sameName = [](const Entry& a, const Entry& b) { return a.name == b.name; };
        entries_.erase(std::unique(entries_.begin(), entries_.end(), sameName), entries_.end());
    }

    void add(std::string_view name, CFStringEncoding charset) {
        entries_.push_back({std::string(FoldedName(name).view()), charset});
    }

    void addRegistered(const detail::EncodingRow& row, const char* standard) {
        UErrorCode error = U_ZERO_ERROR;
        const std::unique_ptr<UEnumeration, decltype(&uenum_close)> names(
            ucnv_openStandardNames(row.converter, standard, &error), uenum_close);
        while (const char* const name = names ? uenum_next(names.get(), nullptr, &error) : nullptr)
            add(name, row.charset);
    }

    std::vector<Entry> entries_;
};

}  // namespace

CFStringEncoding CFStringConvertIANACharSetNameToEncoding(const NSString& name) {
    const FoldedName folded(name.view());
    if (folded.view().empty() || !detail::allBelow(name, 0x80))
        return kCFStringEncodingInvalidId;
    return NameTable::shared().find(folded.view());
}

RefPtr<NSString> CFStringConvertEncodingToIANACharSetName(CFStringEncoding encoding) {
    const detail::EncodingRow* const row = detail::rowOfCharset(encoding);
    return row && row->name ? RefPtr<NSString>(NSString::fromUTF8(row->name)) : nullptr;
}

NSStringEncoding CFStringConvertEncodingToNSStringEncoding(CFStringEncoding encoding) {
    const detail::EncodingRow* const row = detail::rowOfCharset(encoding);
    return row ? row->encoding : NSStringEncoding{};
}

CFStringEncoding CFStringConvertNSStringEncodingToEncoding(NSStringEncoding encoding) {
    const detail::EncodingRow* const row = detail::rowOfEncoding(encoding);
    return row ? row->charset : kCFStringEncodingInvalidId;
}

}  // namespace tovi
