// Text: references, replacements, delimiters. The texts have 2^20 characters where nothing else is said: UTF-16 for the
// kit and Qt, UTF-8 for the others. memcpy copies the bytes of the UTF-16 text.

#define QT_NO_KEYWORDS

#include <cstring>
#include <string>

#include <ToviFoundationKit/Extensions/NSMutableString-QVLAdditions.h>
#include <ToviFoundationKit/Extensions/NSString-QVLAdditions.h>
#include <ToviFoundationKit/Extensions/NSString-XMLEntities.h>

#include "Bench.h"

#ifdef TOVI_BENCH_HAVE_QT
#include <QString>
#endif
#ifdef TOVI_BENCH_HAVE_GLIB
#include <glib.h>
#endif
#ifdef TOVI_BENCH_HAVE_ABSEIL_STRINGS
#include <absl/strings/str_replace.h>
#endif
#ifdef TOVI_BENCH_HAVE_LIBXML2
#include <libxml/entities.h>
#include <libxml/HTMLparser.h>
#endif

using namespace tovi;
using namespace bench;

namespace {

constexpr std::size_t mebi = 1 << 20;

/// Words, with a piece put in every so many characters; only pieces when that is no more than the piece's length.
std::string textWith(std::string_view piece, std::size_t distance, std::size_t length = mebi) {
    constexpr std::string_view words = "the quick brown fox jumps over a lazy dog, and then it goes home. ";
    std::string text;
    while (text.size() < length) {
        for (std::size_t i = piece.size(); i < distance; ++i)
            text += words[text.size() % words.size()];
        text += piece;
    }
    text.resize(length);
    return text;
}

Ref<NSString> kitText(const std::string& text) { return NSString::fromUTF8(text); }

void copied(State& state, const std::string& text) {
    const std::u16string source(text.begin(), text.end());
    std::u16string target(source.size(), u' ');
    repeat(state, long(text.size()), [&] {
        std::memcpy(target.data(), source.data(), source.size() * sizeof(char16_t));
        DoNotOptimize(target.data());
        return target.size();
    });
}

/// A row "what/who" of an operation on a text that is made once.
template <class Prepare> void row(const std::string& what, const char* who, const std::string& text, Prepare prepare) {
    benchmark::RegisterBenchmark((what + '/' + who).c_str(), [text, prepare](State& state) {
        const auto operation = prepare(text);
        repeat(state, long(text.size()), operation);
    })->Unit(benchmark::kMillisecond);
}

void copyRow(const std::string& what, const std::string& text) {
    benchmark::RegisterBenchmark((what + "/memcpy").c_str(), [text](State& state) {
        copied(state, text);
    })->Unit(benchmark::kMillisecond);
}

// References.

void decodedRows(const char* kind, const std::string& text) {
    const std::string what = std::string("entities decoded, ") + kind;
    copyRow(what, text);
    row(what, "kit", text, [](const std::string& source) {
        return [string = kitText(source)] { return stringByDecodingXMLEntities(string); };
    });
#ifdef TOVI_BENCH_HAVE_LIBXML2
    row(what, "libxml2", text, [](const std::string& source) {
        return [source] {
            const htmlDocPtr document = htmlReadMemory(source.data(), int(source.size()), nullptr, "utf-8",
                                                       HTML_PARSE_NOERROR | HTML_PARSE_NOWARNING);
            xmlChar* const content = xmlNodeGetContent(xmlDocGetRootElement(document));
            const auto length = xmlStrlen(content);
            xmlFree(content);
            xmlFreeDoc(document);
            return length;
        };
    });
#endif
}

void encodedRows(const char* kind, const std::string& text) {
    const std::string what = std::string("entities encoded, ") + kind;
    copyRow(what, text);
    row(what, "kit", text, [](const std::string& source) {
        return [string = kitText(source)] { return stringByEncodingXMLEntities(string); };
    });
#ifdef TOVI_BENCH_HAVE_ABSEIL_STRINGS
    row(what, "absl::StrReplaceAll", text, [](const std::string& source) {
        return [source] {
            return absl::StrReplaceAll(
                source, {{"&", "&amp;"}, {"'", "&apos;"}, {"\"", "&quot;"}, {"<", "&lt;"}, {">", "&gt;"}});
        };
    });
#endif
#ifdef TOVI_BENCH_HAVE_LIBXML2
    row(what, "libxml2", text, [](const std::string& source) {
        return [source] {
            xmlChar* const encoded = xmlEncodeSpecialChars(nullptr, reinterpret_cast<const xmlChar*>(source.c_str()));
            DoNotOptimize(encoded);
            xmlFree(encoded);
            return 0;
        };
    });
#endif
#ifdef TOVI_BENCH_HAVE_GLIB
    row(what, "g_markup_escape_text", text, [](const std::string& source) {
        return [source] {
            gchar* const encoded = g_markup_escape_text(source.data(), gssize(source.size()));
            DoNotOptimize(encoded);
            g_free(encoded);
            return 0;
        };
    });
#endif
#ifdef TOVI_BENCH_HAVE_QT
    row(what, "QString::toHtmlEscaped", text, [](const std::string& source) {
        return [string = QString::fromStdString(source)] { return string.toHtmlEscaped(); };
    });
#endif
}

// Replacing and searching.

void replacedRows(const char* kind, const std::string& text) {
    const std::string what = std::string("replacement, ") + kind;
    copyRow(what, text);
    row(what, "kit", text, [](const std::string& source) {
        return [string = kitText(source)] {
            const Ref<NSMutableString> result = NSMutableString::stringWithString(string);
            replaceString_withString(result, u"needle"_ns, u"pin and thread"_ns);
            return result;
        };
    });
    row(what, "std::u16string", text, [](const std::string& source) {
        return [string = std::u16string(source.begin(), source.end())] {
            constexpr std::u16string_view target = u"needle", replacement = u"pin and thread";
            std::u16string result;
            std::size_t from = 0;
            for (std::size_t found; (found = string.find(target, from)) != string.npos; from = found + target.size())
                result.append(string, from, found - from).append(replacement);
            return result.append(string, from);
        };
    });
#ifdef TOVI_BENCH_HAVE_QT
    row(what, "QString", text, [](const std::string& source) {
        return [string = QString::fromStdString(source)] {
            QString result = string;
            return result.replace(QStringLiteral("needle"), QStringLiteral("pin and thread"));
        };
    });
#endif
}

/// Accented words; what is searched for is at the end.
void searchRows() {
    std::string text;
    for (int i = 0; text.size() < mebi; ++i)
        text += i % 3 ? "élève à Nîmes, où l'été dure; " : "über Straßen in Köln, ";
    text += "GRÖSSTER Käse";
    const std::string what = "search without regard to case";
    row(what, "kit", text, [](const std::string& source) {
        const Ref<NSString> string = kitText(source);
        check(rangeOfNoCaseString(string, u"größter KÄSE"_ns).location == string->length() - 13,
              "rangeOfNoCaseString:");
        return [string] { return rangeOfNoCaseString(string, u"größter KÄSE"_ns).location; };
    });
#ifdef TOVI_BENCH_HAVE_QT
    row(what, "QString", text, [](const std::string& source) {
        return [string = QString::fromStdString(source)] {
            return string.indexOf(QString::fromUtf8("größter KÄSE"), 0, Qt::CaseInsensitive);
        };
    });
#endif
}

// Delimiters: their growth.

void delimiterRows(const char* size, std::size_t length) {
    const std::string text = textWith("<b>bold</b>", 60, length - length % 60);
    const auto name = [size](const char* operation) { return std::string(operation) + ", " + size; };
    copyRow(name("delimiters"), text);
    row(name("delimiters"), "kit findRegexString:", text, [](const std::string& source) {
        return [string = kitText(source)] { return findRegexString(string, u"<b>*</b>"_ns); };
    });
    row(name("delimiters"), "kit replaceRegexString:withRegexString:", text, [](const std::string& source) {
        return [string = kitText(source)] {
            const Ref<NSMutableString> result = NSMutableString::stringWithString(string);
            replaceRegexString_withRegexString(result, u"<b>*</b>"_ns, u"**"_ns);
            return result;
        };
    });
    row(name("delimiters"), "kit flattenHTML:trimWhiteSpace:", text, [](const std::string& source) {
        return [string = kitText(source)] { return flattenHTML_trimWhiteSpace(string, true); };
    });
    row(name("delimiters"), "kit removeMultipleSpaceInString", textWith("     ", 60, length),
        [](const std::string& source) {
            return [string = kitText(source)] {
                const Ref<NSMutableString> result = NSMutableString::stringWithString(string);
                removeMultipleSpaceInString(result);
                return result;
            };
        });
}

// Texts made to be slow.

void hostileRows() {
    const auto hostile = [](const char* kind, const std::string& text, auto operation) {
        const std::string what = std::string("hostile text, ") + kind;
        copyRow(what, text);
        row(what, "kit", text, [operation](const std::string& source) {
            return [string = kitText(source), operation] { return operation(string); };
        });
    };
    constexpr std::size_t million = 1'000'000;
    const auto decode = [](const NSString& text) { return stringByDecodingXMLEntities(text); };
    const auto flatten = [](const NSString& text) { return flattenHTML_trimWhiteSpace(text, false); };
    const auto rewrite = [](const NSString& text) {
        const Ref<NSMutableString> result = NSMutableString::stringWithString(text);
        replaceRegexString_withRegexString(result, u"[*]"_ns, u"(*)"_ns);
        return result;
    };
    const auto collapse = [](const NSString& text) {
        const Ref<NSMutableString> result = NSMutableString::stringWithString(text);
        removeMultipleSpaceInString(result);
        return result;
    };
    hostile("a million \"&\" decoded", std::string(million, '&'), decode);
    hostile("a million digits decoded", "&#" + std::string(million, '9'), decode);
    hostile("a million \"&\" encoded", std::string(million, '&'),
            [](const NSString& text) { return stringByEncodingXMLEntities(text); });
    hostile("a million \"<\" flattened", std::string(million, '<'), flatten);
    hostile("a million \"<\" and a \">\" flattened", std::string(million, '<') + '>', flatten);
    hostile("a million \"[\" and a \"]\" rewritten", std::string(million, '[') + ']', rewrite);
    hostile("ten million blanks collapsed", std::string(10 * million, ' '), collapse);
}

const bool registered = [] {
    decodedRows("clean", textWith("", 60));
    decodedRows("one in 60", textWith("&eacute;", 60));
    decodedRows("nothing else", textWith("&eacute;&amp;&#233;", 0));
    encodedRows("clean", textWith("", 60));
    encodedRows("one in 60", textWith("&", 60));
    encodedRows("nothing else", textWith("&<>\"'", 0));
    replacedRows("one in 1000", textWith("needle", 1000));
    replacedRows("one in 12", textWith("needle", 12));
    searchRows();
    delimiterRows("1 MiB", mebi);
    delimiterRows("10 MiB", 10 * mebi);
    delimiterRows("100 MiB", 100 * mebi);
    hostileRows();
    return true;
}();

}  // namespace
