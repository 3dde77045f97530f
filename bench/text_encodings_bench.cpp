// Text encodings. Hexadecimal and quoted-printable texts have 2^20 characters, in UTF-16 for the kit and in bytes for
// the others; conversions are of 2^20 bytes. memcpy copies the bytes of the UTF-16 text, or the bytes that are
// converted.

#define QT_NO_KEYWORDS

#include <cstring>
#include <string>

#include <ToviFoundationKit/Extensions/NSData-QVLAdditions.h>
#include <ToviFoundationKit/Extensions/NSString-MIMEEncoding.h>
#include <ToviFoundationKit/Extensions/NSString-QuotedPrintable.h>

#include "Bench.h"

#ifdef TOVI_BENCH_HAVE_QT
#include <QByteArray>
#include <QString>
#endif
#ifdef TOVI_BENCH_HAVE_ABSEIL_STRINGS
#include <absl/strings/escaping.h>
#endif
#ifdef TOVI_BENCH_HAVE_GMIME
#include <gmime/gmime.h>
#endif
#ifdef TOVI_BENCH_HAVE_POCO
#include <Poco/MemoryStream.h>
#include <Poco/Net/QuotedPrintableDecoder.h>
#endif

using namespace tovi;
using namespace bench;

namespace {

constexpr std::size_t mebi = 1 << 20;

std::string anyBytes() {
    std::string bytes;
    for (const long number : shuffledNumbers(mebi / 2))
        bytes += static_cast<char>(number);
    return bytes;
}

std::string cut(std::string text) {
    text.resize(mebi);
    return text;
}

std::string repeated(std::string_view words) {
    std::string text;
    while (text.size() < mebi)
        text += words;
    return cut(text);
}

/// Words in an order without pattern, which nobody can foretell.
std::string mixed(std::initializer_list<std::string_view> words) {
    std::string text;
    for (const long number : shuffledNumbers(mebi)) {
        text += words.begin()[static_cast<std::size_t>(number) % words.size()];
        if (text.size() >= mebi)
            break;
    }
    return cut(text);
}

Ref<NSString> kitText(const std::string& text) { return NSString::fromUTF8(text); }
Ref<NSData> kitData(const std::string& bytes) { return NSData::dataWithBytes(std::as_bytes(std::span(bytes))); }

/// A row "what/who" of an operation on bytes that are prepared once.
template <class Prepare> void row(const std::string& what, const char* who, const std::string& bytes, Prepare prepare) {
    benchmark::RegisterBenchmark((what + '/' + who).c_str(), [bytes, prepare](State& state) {
        const auto operation = prepare(bytes);
        repeat(state, long(mebi), operation);
    })->Unit(benchmark::kMillisecond);
}

/// A copy of so many bytes for each of the text.
void copyRow(const std::string& what, std::size_t width) {
    row(what, "memcpy", std::string(mebi * width, 'x'), [](const std::string& source) {
        return [source, target = source]() mutable {
            std::memcpy(target.data(), source.data(), source.size());
            DoNotOptimize(target.data());
            return target.size();
        };
    });
}

void hexRows() {
    const std::string bytes = anyBytes(), digits = hexStringRepresentation(kitData(bytes))->UTF8String();
    const std::string to = "hexadecimal, to text", from = "hexadecimal, from text";
    copyRow(to, 2);
    row(to, "kit", bytes,
        [](const std::string& source) { return [data = kitData(source)] { return hexStringRepresentation(data); }; });
    copyRow(from, 2);
    row(from, "kit", digits, [](const std::string& source) {
        const Ref<NSString> text = kitText(source);
        check(*hexStringRepresentation(dataWithHexString(text)) == *text, "dataWithHexString");
        return [text] { return dataWithHexString(text); };
    });
#ifdef TOVI_BENCH_HAVE_ABSEIL_STRINGS
    row(to, "absl::BytesToHexString", bytes,
        [](const std::string& source) { return [source] { return absl::BytesToHexString(source); }; });
    row(from, "absl::HexStringToBytes", digits,
        [](const std::string& source) { return [source] { return absl::HexStringToBytes(source); }; });
#endif
#ifdef TOVI_BENCH_HAVE_QT
    row(to, "QByteArray::toHex", bytes, [](const std::string& source) {
        return [source = QByteArray::fromStdString(source)] { return source.toHex(); };
    });
    row(from, "QByteArray::fromHex", digits, [](const std::string& source) {
        return [source = QByteArray::fromStdString(source)] { return QByteArray::fromHex(source); };
    });
#endif
}

void quotedPrintableRows(const char* kind, const std::string& text) {
    const std::string what = std::string("quoted-printable, ") + kind;
    copyRow(what, 2);
    row(what, "kit", text, [](const std::string& source) {
        return [string = kitText(source)] {
            return decodeQuotedPrintableString_encoding(string, NSISOLatin1StringEncoding);
        };
    });
#ifdef TOVI_BENCH_HAVE_GMIME
    row(what, "GMimeEncoding", text, [](const std::string& source) {
        return [source, target = std::string(source.size() + 64, ' ')]() mutable {
            GMimeEncoding decoder;
            g_mime_encoding_init_decode(&decoder, GMIME_CONTENT_ENCODING_QUOTEDPRINTABLE);
            return g_mime_encoding_step(&decoder, source.data(), source.size(), target.data());
        };
    });
#endif
#ifdef TOVI_BENCH_HAVE_POCO
    row(what, "Poco::Net::QuotedPrintableDecoder", text, [](const std::string& source) {
        return [source, target = std::string(source.size(), ' ')]() mutable {
            Poco::MemoryInputStream stream(source.data(), std::streamsize(source.size()));
            Poco::Net::QuotedPrintableDecoder decoder(stream);
            decoder.read(target.data(), std::streamsize(target.size()));
            return decoder.gcount();
        };
    });
#endif
}

void conversionRows(const char* kind, NSStringEncoding encoding, std::u16string_view words) {
    const std::string what = std::string("decoded, ") + kind, back = std::string("encoded, ") + kind;
    const auto data = NSString::stringWithCharacters(words)->dataUsingEncoding(encoding);
    std::string text;
    while (text.size() < mebi)
        text.append(reinterpret_cast<const char*>(data->bytes().data()), data->length());
    copyRow(what, 1);
    row(what, "kit", text, [encoding](const std::string& source) {
        const Ref<NSData> encoded = kitData(source);
        check(*NSString::initWithData_encoding(encoded, encoding)->dataUsingEncoding(encoding) == *encoded,
              "a conversion");
        return [encoded, encoding] { return NSString::initWithData_encoding(encoded, encoding); };
    });
    row(back, "kit", text, [encoding](const std::string& source) {
        const Ref<NSString> string = *NSString::initWithData_encoding(kitData(source), encoding);
        return [string, encoding] { return string->dataUsingEncoding(encoding); };
    });
#ifdef TOVI_BENCH_HAVE_QT
    if (encoding == NSUTF8StringEncoding) {
        row(what, "QString", text, [](const std::string& source) {
            return [source] { return QString::fromUtf8(source.data(), int(source.size())); };
        });
        row(back, "QString", text, [](const std::string& source) {
            return [string = QString::fromStdString(source)] { return string.toUtf8(); };
        });
    }
#endif
}

const bool registered = [] {
    hexRows();
    quotedPrintableRows("clean", repeated("the quick brown fox jumps over a lazy dog, and then it goes home. "));
    quotedPrintableRows("an escape in 40", mixed({"le_", "caf=E9_", "est_", "chaud,_", "il_", "fait_", "beau_", "et_",
                                                  "l'ann=E9e_", "est_", "bonne,_", "les_", "oiseaux_", "chantent_"}));
    quotedPrintableRows("nothing but escapes", mixed({"=E9", "=C3", "=20", "=0A", "=fF"}));
    conversionRows("ASCII", NSASCIIStringEncoding, u"the quick brown fox jumps over a lazy dog, then goes home. ");
    conversionRows("UTF-8, ASCII", NSUTF8StringEncoding, u"the quick brown fox jumps over a lazy dog. ");
    conversionRows("UTF-8, Russian", NSUTF8StringEncoding, u"\u0441\u044A\u0435\u0448\u044C \u0436\u0435 ");
    conversionRows("ISO-8859-1", NSISOLatin1StringEncoding, u"le caf\u00E9 est chaud ");
    conversionRows("ISO-8859-2", NSISOLatin2StringEncoding, u"za\u017C\u00F3\u0142\u0107 g\u0119\u015Bl\u0105 ");
    conversionRows("Shift_JIS", NSShiftJISStringEncoding, u"\u65E5\u672C\u8A9E\u306E abc ");
    conversionRows("GB18030", static_cast<NSStringEncoding>(0x80000632), u"\u4E2D\u6587\u8BDD abc ");
    row("recommendedMIMEEncoding", "kit",
        repeated("za\xC5\xBC\xC3\xB3\xC5\x82\xC4\x87 g\xC4\x99\xC5\x9Bl\xC4\x85 abc "), [](const std::string& source) {
            return [string = kitText(source)] { return recommendedMIMEEncoding(string); };
        });
    return true;
}();

}  // namespace
