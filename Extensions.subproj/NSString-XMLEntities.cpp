#include <ToviFoundationKit/Extensions/NSString-XMLEntities.h>

#include <algorithm>
#include <array>
#include <cstdint>
#include <cstring>
#include <limits>

#include <ToviFoundationKit/Runtime/Additions.h>
#include <ToviFoundationKit/Runtime/NumberText_p.h>
#include <ToviFoundationKit/Runtime/StringBuilder.h>
#include <ToviFoundationKit/Runtime/UnitSearch_p.h>
#include <ToviFoundationKit/Runtime/UnitVector_p.h>

namespace tovi {
inline namespace XMLEntities {

namespace {

constexpr auto npos = std::u16string_view::npos;

struct Reference {
    std::string_view name;
    char16_t unit;
};

constexpr Reference references[] = {
    {"amp", 38},       {"apos", 39},     {"quot", 34},    {"lt", 60},       {"gt", 62},        {"nbsp", 160},
    {"laquo", 171},    {"raquo", 187},   {"ndash", 8211}, {"mdash", 8212},  {"lsquo", 8216},   {"rsquo", 8217},
    {"ldquo", 8220},   {"rdquo", 8221},  {"bull", 8226},  {"hellip", 8230}, {"iexcl", 161},    {"cent", 162},
    {"pound", 163},    {"curren", 164},  {"yen", 165},    {"brvbar", 166},  {"sect", 167},     {"uml", 168},
    {"copy", 169},     {"ordf", 170},    {"not", 172},    {"shy", 173},     {"reg", 174},      {"macr", 175},
    {"deg", 176},      {"plusmn", 177},  {"sup2", 178},   {"sup3", 179},    {"acute", 180},    {"micro", 181},
    {"para", 182},     {"middot", 183},  {"cedil", 184},  {"sup1", 185},    {"ordm", 186},     {"frac14", 188},
    {"frac12", 189},   {"frac34", 190},  {"iquest", 191}, {"Agrave", 192},  {"Aacute", 193},   {"Acirc", 194},
    {"Atilde", 195},   {"Auml", 196},    {"Aring", 197},  {"AElig", 198},   {"Ccedil", 199},   {"Egrave", 200},
    {"Eacute", 201},   {"Ecirc", 202},   {"Euml", 203},   {"Igrave", 204},  {"Iacute", 205},   {"Icirc", 206},
    {"Iuml", 207},     {"ETH", 208},     {"Ntilde", 209}, {"Ograve", 210},  {"Oacute", 211},   {"Ocirc", 212},
    {"Otilde", 213},   {"Ouml", 214},    {"times", 215},  {"Oslash", 216},  {"Ugrave", 217},   {"Uacute", 218},
    {"Ucirc", 219},    {"Uuml", 220},    {"Yacute", 221}, {"THORN", 222},   {"szlig", 223},    {"agrave", 224},
    {"aacute", 225},   {"acirc", 226},   {"atilde", 227}, {"auml", 228},    {"aring", 229},    {"aelig", 230},
    {"ccedil", 231},   {"egrave", 232},  {"eacute", 233}, {"ecirc", 234},   {"euml", 235},     {"igrave", 236},
    {"iacute", 237},   {"icirc", 238},   {"iuml", 239},   {"eth", 240},     {"ntilde", 241},   {"ograve", 242},
    {"oacute", 243},   {"ocirc", 244},   {"otilde", 245}, {"ouml", 246},    {"divide", 247},   {"oslash", 248},
    {"ugrave", 249},   {"uacute", 250},  {"ucirc", 251},  {"uuml", 252},    {"yacute", 253},   {"thorn", 254},
    {"yuml", 255},     {"OElig", 338},   {"oelig", 339},  {"Scaron", 352},  {"scaron", 353},   {"Yuml", 376},
    {"fnof", 402},     {"circ", 710},    {"tilde", 732},  {"Alpha", 913},   {"Beta", 914},     {"Gamma", 915},
    {"Delta", 916},    {"Epsilon", 917}, {"Zeta", 918},   {"Eta", 919},     {"Theta", 920},    {"Iota", 921},
    {"Kappa", 922},    {"Lambda", 923},  {"Mu", 924},     {"Nu", 925},      {"Xi", 926},       {"Omicron", 927},
    {"Pi", 928},       {"Rho", 929},     {"Sigma", 931},  {"Tau", 932},     {"Upsilon", 933},  {"Phi", 934},
    {"Chi", 935},      {"Psi", 936},     {"Omega", 937},  {"alpha", 945},   {"beta", 946},     {"gamma", 947},
    {"delta", 948},    {"epsilon", 949}, {"zeta", 950},   {"eta", 951},     {"theta", 952},    {"iota", 953},
    {"kappa", 954},    {"lambda", 955},  {"mu", 956},     {"nu", 957},      {"xi", 958},       {"omicron", 959},
    {"pi", 960},       {"rho", 961},     {"sigmaf", 962}, {"sigma", 963},   {"tau", 964},      {"upsilon", 965},
    {"phi", 966},      {"chi", 967},     {"psi", 968},    {"omega", 969},   {"thetasym", 977}, {"upsih", 978},
    {"piv", 982},      {"ensp", 8194},   {"emsp", 8195},  {"thinsp", 8201}, {"zwnj", 8204},    {"zwj", 8205},
    {"lrm", 8206},     {"rlm", 8207},    {"sbquo", 8218}, {"bdquo", 8222},  {"dagger", 8224},  {"Dagger", 8225},
    {"permil", 8240},  {"prime", 8242},  {"Prime", 8243}, {"lsaquo", 8249}, {"rsaquo", 8250},  {"oline", 8254},
    {"frasl", 8260},   {"euro", 8364},   {"image", 8465}, {"weierp", 8472}, {"real", 8476},    {"trade", 8482},
    {"alefsym", 8501}, {"larr", 8592},   {"uarr", 8593},  {"rarr", 8594},   {"darr", 8595},    {"harr", 8596},
    {"crarr", 8629},   {"lArr", 8656},   {"uArr", 8657},  {"rArr", 8658},   {"dArr", 8659},    {"hArr", 8660},
    {"forall", 8704},  {"part", 8706},   {"exist", 8707}, {"empty", 8709},  {"nabla", 8711},   {"isin", 8712},
    {"notin", 8713},   {"ni", 8715},     {"prod", 8719},  {"sum", 8721},    {"minus", 8722},   {"lowast", 8727},
    {"radic", 8730},   {"prop", 8733},   {"infin", 8734}, {"ang", 8736},    {"and", 8743},     {"or", 8744},
    {"cap", 8745},     {"cup", 8746},    {"int", 8747},   {"there4", 8756}, {"sim", 8764},     {"cong", 8773},
    {"asymp", 8776},   {"ne", 8800},     {"equiv", 8801}, {"le", 8804},     {"ge", 8805},      {"sub", 8834},
    {"sup", 8835},     {"nsub", 8836},   {"sube", 8838},  {"supe", 8839},   {"oplus", 8853},   {"otimes", 8855},
    {"perp", 8869},    {"sdot", 8901},   {"lceil", 8968}, {"rceil", 8969},  {"lfloor", 8970},  {"rfloor", 8971},
    {"lang", 9001},    {"rang", 9002},   {"loz", 9674},   {"spades", 9824}, {"clubs", 9827},   {"hearts", 9829},
    {"diams", 9830},
};

constexpr std::size_t longestName = 8;

/// A name packed into a number, which is never 0; its units are ASCII.
template <class Name> constexpr std::uint64_t packed(Name name) {
    std::uint64_t key = 0;
    for (const auto unit : name)
        key = key << 8 | static_cast<unsigned char>(unit);
    return key;
}

/// The names by open addressing.
class NameTable {
public:
    constexpr NameTable() {
        for (const Reference& each : references) {
            const std::uint64_t key = packed(each.name);
            const std::size_t slot = slotOf(key);
            keys_[slot] = key;
            units_[slot] = each.unit;
        }
    }
    /// 0 for an unknown name.
    constexpr char16_t find(std::uint64_t key) const { return units_[slotOf(key)]; }

private:
    static constexpr std::size_t size = 1024;

    constexpr std::size_t slotOf(std::uint64_t key) const {
        std::size_t slot = key * 0x9E3779B97F4A7C15 >> 54;
        while (keys_[slot] && keys_[slot] != key)
            slot = (slot + 1) % size;
        return slot;
    }

    std::array<std::uint64_t, size> keys_{};
    std::array<char16_t, size> units_{};
};

constexpr NameTable names;

struct Decoded {
    std::size_t length;  ///< how many units the reference takes
    char16_t unit;
};

/// The named reference at the start of the text; without one, the "&" alone.
Decoded decodeName(std::u16string_view text) {
    std::uint64_t key = 0;
    const std::size_t limit = std::min(text.size(), longestName + 2);
    for (std::size_t i = 1; i < limit && text[i] - 1U < 0x7F; ++i) {
        if (text[i] != u';') {
            key = key << 8 | text[i];
            continue;
        }
        const char16_t unit = i > 1 ? names.find(key) : u'\0';
        return unit ? Decoded{i + 1, unit} : Decoded{1, u'&'};
    }
    return {1, u'&'};
}

/// The low 16 bits of the number after "&#" or "&#x"; `length` becomes 0 when there is none.
char16_t scanNumber(std::u16string_view text, bool hexadecimal, std::size_t& length) {
    if (hexadecimal) {
        NSUInteger value = 0;
        length = detail::scanHexadecimal(text, value);
        return static_cast<char16_t>(std::min<NSUInteger>(value, std::numeric_limits<std::uint32_t>::max()));
    }
    NSInteger value = 0;
    length = detail::scanInteger(text, value);
    using Limits = std::numeric_limits<std::int32_t>;
    return static_cast<char16_t>(std::clamp<NSInteger>(value, Limits::min(), Limits::max()));
}

/// Decodes the "&#" at the start of the text; answers how many units that took.
std::size_t appendNumeric(std::u16string_view text, StringBuilder& out) {
    const bool hexadecimal = text.size() > 2 && text[2] == u'x';
    const std::size_t start = hexadecimal ? 3 : 2;
    std::size_t length = 0;
    const char16_t unit = scanNumber(text.substr(start), hexadecimal, length);
    if (length) {
        out.append(unit);
        const std::size_t end = start + length;
        return end < text.size() && text[end] == u';' ? end + 1 : end;
    }
    const std::size_t stop = std::min(text.find_first_of(u" \t\n\r;", start), text.size());
    out.append(text.substr(0, stop));
    return stop;
}

}  // namespace

Ref<NSString> stringByDecodingXMLEntities(const NSString& receiver) {
    const std::u16string_view text = receiver;
    constexpr detail::UnitSet ampersand(u'&');
    std::size_t next = detail::findUnits(text, 0, ampersand);
    if (next == npos)
        return NSString::stringWithString(receiver);
    StringBuilder out;
    out.reserve(text.size());  // no reference is shorter than what it stands for
    for (std::size_t from = 0;; next = detail::findUnits(text, from, ampersand)) {
        next = std::min(next, text.size());
        out.append(text.substr(from, next - from));
        for (from = next; from < text.size() && text[from] == u'&';) {
            const std::u16string_view rest = text.substr(from);
            if (rest.size() > 1 && rest[1] == u'#') {
                from += appendNumeric(rest, out);
            } else {
                const auto [length, unit] = decodeName(rest);
                out.append(unit);
                from += length;
            }
        }
        if (from == text.size())
            return out.string();
    }
}

namespace {

/// What a special unit is written as.
struct Escape {
    char16_t units[8];
    std::size_t length;
};

constexpr Escape escapeOf(char16_t unit) {
    switch (unit) {
        case u'&':
            return {u"&amp;", 5};
        case u'\'':
            return {u"&apos;", 6};
        case u'"':
            return {u"&quot;", 6};
        case u'<':
            return {u"&lt;", 4};
        case u'>':
            return {u"&gt;", 4};
        default:
            return {{}, 0};
    }
}

/// All that are special are below 64.
constexpr auto escapes = [] {
    std::array<Escape, 64> table{};
    for (char16_t unit = 0; unit < table.size(); ++unit)
        table[unit] = escapeOf(unit);
    return table;
}();

constexpr bool isSpecial(char16_t unit) { return unit < escapes.size() && escapes[unit].length; }

using detail::any;
using detail::EightUnits;
using detail::loaded;
using detail::repeated;
using detail::unitsWhere;

/// All bits of each unit that is special.
EightUnits specialIn(EightUnits units) {
    const auto ampersandOrApostrophe = (units & repeated(0xFFFE)) == repeated(u'&');
    const auto lessOrGreater = (units & repeated(0xFFFD)) == repeated(u'<');
    return unitsWhere(ampersandOrApostrophe | lessOrGreater | (units == repeated(u'"')));
}

/// The first special unit from there on, or the text's length.
std::size_t findSpecial(std::u16string_view text, std::size_t from) {
    const char16_t* const units = text.data();
    for (; text.size() - from >= 32; from += 32) {
        const auto inEight = [&](std::size_t i) { return specialIn(loaded<EightUnits>(units + from + 8 * i)); };
        if (any((inEight(0) | inEight(1)) | (inEight(2) | inEight(3))))
            break;
    }
    while (text.size() - from >= 8 && !any(specialIn(loaded<EightUnits>(units + from))))
        from += 8;
    while (from < text.size() && !isSpecial(text[from]))
        ++from;
    return from;
}

/// By how much the escapes are longer than the units, each unit of the text looked at.
std::size_t growth(std::u16string_view text) {
    std::size_t total = 0, i = 0;
    while (text.size() - i >= 8) {
        EightUnits sums{};
        // A sum grows by 5 at most.
        for (const std::size_t end = i + std::min<std::size_t>((text.size() - i) / 8, 10'000) * 8; i < end; i += 8) {
            const auto units = loaded<EightUnits>(text.data() + i);
            const auto where = [units](char16_t unit) { return unitsWhere(units == repeated(unit)); };
            sums += (specialIn(units) & repeated(3)) + (where(u'&') & repeated(1)) +
                    ((where(u'\'') | where(u'"')) & repeated(2));
        }
        for (std::size_t lane = 0; lane < 8; ++lane)
            total += sums[lane];
    }
    for (; i < text.size(); ++i)
        if (isSpecial(text[i]))
            total += escapes[text[i]].length - 1;
    return total;
}

}  // namespace

Ref<NSString> stringByEncodingXMLEntities(const NSString& receiver) {
    const std::u16string_view text = receiver;
    std::size_t next = findSpecial(text, 0);
    if (next == text.size())
        return NSString::stringWithString(receiver);
    const NSUInteger length = text.size() + growth(text.substr(next));
    constexpr std::size_t slack = std::size(Escape().units);  // escapes are copied whole
    StringBuilder out;
    char16_t* to = out.extend(length + slack);
    for (std::size_t from = 0;; next = findSpecial(text, from)) {
        to = std::copy_n(text.data() + from, next - from, to);
        for (from = next; from < text.size() && isSpecial(text[from]); ++from) {
            const Escape& escape = escapes[text[from]];
            std::memcpy(to, escape.units, sizeof escape.units);
            to += escape.length;
        }
        if (from == text.size())
            break;
    }
    out.truncate(length);
    return out.string();
}

namespace {

const Additions<NSString> additions{
    instance<&stringByDecodingXMLEntities>("stringByDecodingXMLEntities"),
    instance<&stringByEncodingXMLEntities>("stringByEncodingXMLEntities"),
};

}  // namespace

}  // namespace XMLEntities
}  // namespace tovi
