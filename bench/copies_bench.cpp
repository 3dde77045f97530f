// Deep copies of a dictionary of 40 lists of 40 dictionaries of 52 leaves: 83,200, numbers and texts of 15 characters
// by turns. The copy and its release are timed.

#define QT_NO_KEYWORDS

#include <string>

#include <ToviFoundationKit/Extensions/NSDictionary-QVLAdditions.h>
#include <ToviFoundationKit/Foundation/NSMutableDictionary.h>

#include "Bench.h"

#ifdef TOVI_BENCH_HAVE_QT
#include <QString>
#include <QVariant>
#endif
#ifdef TOVI_BENCH_HAVE_NLOHMANN_JSON
#include <nlohmann/json.hpp>
#endif

using namespace tovi;
using namespace bench;

namespace {

constexpr long lists = 40, dictionaries = 40, leaves = 52;

Ref<NSString> shortKey(long i) { return NSString::stringWithFormat(u"key %ld", i); }

Ref<NSDictionary> kitTree() {
    const Ref<NSMutableDictionary> tree = NSMutableDictionary::dictionary();
    for (long i = 0; i < lists; ++i) {
        const Ref<NSMutableArray> list = NSMutableArray::array();
        for (long j = 0; j < dictionaries; ++j) {
            const Ref<NSMutableDictionary> dictionary = NSMutableDictionary::dictionary();
            for (long k = 0; k < leaves; ++k)
                dictionary->setObject_forKey(k % 2
                                                 ? Ref<NSObject>(NSNumber::numberWithLong(k))
                                                 : Ref<NSObject>(NSString::stringWithFormat(u"a text, number %ld", k)),
                                             shortKey(k));
            list->addObject(*dictionary);
        }
        tree->setObject_forKey(list, shortKey(i));
    }
    return tree;
}

void kitDeepCopy(State& state) {
    const Ref<NSDictionary> tree = kitTree();
    const Ref<NSMutableDictionary> copy = deepMutableCopy(tree);
    const auto leafOf = [](const NSDictionary& of) {
        const auto list = to<NSMutableArray>(of.objectForKey(shortKey(39)));
        return to<NSMutableDictionary>(list->objectAtIndex(39))->objectForKey(shortKey(50));
    };
    check(copy->isEqual(tree.get()) && !identical(leafOf(copy), leafOf(tree)), "deepMutableCopy");
    repeat(state, lists * dictionaries * leaves, [&] { return deepMutableCopy(tree); });
}

BENCHMARK(kitDeepCopy)->Name("deep copy of 83k leaves/kit")->Unit(benchmark::kMillisecond);

#ifdef TOVI_BENCH_HAVE_NLOHMANN_JSON
void jsonDeepCopy(State& state) {
    nlohmann::json tree;
    for (long i = 0; i < lists; ++i)
        for (long j = 0; j < dictionaries; ++j)
            for (long k = 0; k < leaves; ++k) {
                nlohmann::json& leaf =
                    tree["key " + std::to_string(i)][static_cast<std::size_t>(j)]["key " + std::to_string(k)];
                if (k % 2)
                    leaf = k;
                else
                    leaf = "a text, number " + std::to_string(k);
            }
    repeat(state, lists * dictionaries * leaves, [&] { return nlohmann::json(tree); });
}

BENCHMARK(jsonDeepCopy)->Name("deep copy of 83k leaves/nlohmann::json")->Unit(benchmark::kMillisecond);
#endif

#ifdef TOVI_BENCH_HAVE_QT
QVariant qtDeepCopy(const QVariant& value) {
    if (value.type() == QVariant::Map) {
        QVariantMap copy;
        const auto& source = *static_cast<const QVariantMap*>(value.constData());
        for (auto entry = source.begin(); entry != source.end(); ++entry)
            copy.insert(copy.end(), entry.key(), qtDeepCopy(entry.value()));
        return copy;
    }
    if (value.type() == QVariant::List) {
        QVariantList copy;
        for (const QVariant& each : *static_cast<const QVariantList*>(value.constData()))
            copy.append(qtDeepCopy(each));
        return copy;
    }
    if (value.type() != QVariant::String)
        return value;
    const auto& text = *static_cast<const QString*>(value.constData());
    return QString(text.constData(), text.size());
}

void qtDeepCopies(State& state) {
    QVariantMap tree;
    for (long i = 0; i < lists; ++i) {
        QVariantList list;
        for (long j = 0; j < dictionaries; ++j) {
            QVariantMap map;
            for (int k = 0; k < leaves; ++k)
                map[QString::asprintf("key %d", k)] =
                    k % 2 ? QVariant(qlonglong(k)) : QVariant(QString::asprintf("a text, number %d", k));
            list.append(map);
        }
        tree[QString::asprintf("key %ld", i)] = list;
    }
    const QVariant root = tree;
    repeat(state, lists * dictionaries * leaves, [&] { return qtDeepCopy(root); });
}

BENCHMARK(qtDeepCopies)->Name("deep copy of 83k leaves/QVariant")->Unit(benchmark::kMillisecond);
#endif

}  // namespace
