// Numbers, texts, lists of numbers and formatted text: their making and releasing, and the bytes that they take. The
// limit of an object is an allocation with two atomic operations, one to take a reference and one to give it back.

#define QT_NO_KEYWORDS

#include <atomic>
#include <memory>
#include <string>

#include <ToviFoundationKit/Foundation/NSMutableArray.h>
#include <ToviFoundationKit/Foundation/NSMutableDictionary.h>
#include <ToviFoundationKit/Runtime/NSNumber.h>
#include <ToviFoundationKit/Runtime/NSString.h>

#include "Bench.h"

#ifdef TOVI_BENCH_HAVE_QT
#include <QHash>
#include <QString>
#include <QVariant>
#endif

using namespace tovi;
using namespace bench;

namespace {

/// Makes and drops one value after the other.
template <class Make> void makeAndRelease(State& state, Make make) {
    long i = 1'000'000;
    for (auto _ : state)
        DoNotOptimize(make(++i));
}

Ref<NSNumber> number(long i) { return NSNumber::numberWithInteger(i); }
std::shared_ptr<long> sharedNumber(long i) { return std::make_shared<long>(i); }

void kitNumber(State& state) {
    check(number(1'000'001)->integerValue() == 1'000'001, "number");
    makeAndRelease(state, number);
}

void allocationWithCount(State& state) {
    struct Counted {
        std::atomic<int> count;
        long value;
    };
    long i = 1'000'000;
    for (auto _ : state) {
        auto* const counted = static_cast<Counted*>(std::malloc(sizeof(Counted)));
        counted->value = ++i;
        counted->count.fetch_add(1, std::memory_order_relaxed);
        DoNotOptimize(counted);
        counted->count.fetch_sub(1, std::memory_order_acq_rel);
        std::free(counted);
    }
}

void sharedPointer(State& state) { makeAndRelease(state, sharedNumber); }

BENCHMARK(kitNumber)->Name("number made and released/kit");
BENCHMARK(allocationWithCount)->Name("number made and released/malloc, free, 2 atomics");
BENCHMARK(sharedPointer)->Name("number made and released/std::make_shared");

char16_t tenUnits[] = u"0123456789";

void kitString(State& state) {
    const auto make = [](long i) {
        tenUnits[9] = static_cast<char16_t>(u'0' + i % 10);
        return NSString::stringWithCharacters({tenUnits, 10});
    };
    check(*make(4) == u"0123456784", "string");
    makeAndRelease(state, make);
}

void standardString(State& state) {
    makeAndRelease(state, [](long i) {
        tenUnits[9] = static_cast<char16_t>(u'0' + i % 10);
        return std::u16string(tenUnits, 10);
    });
}

BENCHMARK(kitString)->Name("string of 10 made and released/kit");
BENCHMARK(standardString)->Name("string of 10 made and released/std::u16string");

/// Builds a list of n different numbers and drops it.
template <class Build> void buildList(State& state, Build build) {
    repeat(state, state.range(0), [&] { return build(state.range(0)); });
}

Ref<NSMutableArray> numberList(long n) {
    Ref<NSMutableArray> list = NSMutableArray::array();
    for (long i = 0; i < n; ++i)
        list->addObject(number(i));
    return list;
}

void kitList(State& state) {
    const Ref<NSMutableArray> list = numberList(1000);
    check(list->count() == 1000 && list->lastObject()->isEqual(number(999).get()), "list of numbers");
    buildList(state, numberList);
}

void sharedList(State& state) {
    buildList(state, [](long n) {
        std::vector<std::shared_ptr<long>> list;
        for (long i = 0; i < n; ++i)
            list.push_back(sharedNumber(i));
        return list;
    });
}

BENCHMARK(kitList)->Name("list of numbers built and destroyed/kit")->Apply(sizes);
BENCHMARK(sharedList)->Name("list of numbers built and destroyed/std::vector of std::shared_ptr")->Apply(sizes);

void kitFormat(State& state) {
    const Ref<NSString> name = u"Ada Wong"_ns;
    const auto make = [&](long i) { return NSString::stringWithFormat(u"%ld of %d: %@ (%.2f)", i, 12, name, 2.5); };
    check(*make(3) == u"3 of 12: Ada Wong (2.50)", "format");
    makeAndRelease(state, make);
}

void cFormat(State& state) {
    makeAndRelease(state, [](long i) {
        char buffer[64];
        return std::string(buffer, static_cast<std::size_t>(std::snprintf(buffer, sizeof buffer, "%ld of %d: %s (%.2f)",
                                                                          i, 12, "Ada Wong", 2.5)));
    });
}

BENCHMARK(kitFormat)->Name("formatted text/kit");
BENCHMARK(cFormat)->Name("formatted text/snprintf, std::string");

// ---- Bytes. A value counts with the handle that its owner keeps, a list or dictionary without what it holds.

constexpr long sample = 100'000;

template <class Make> void bytesOfValue(State& state, Make make) {
    using Handle = decltype(make(0L));
    for (auto _ : state) {
        std::vector<Handle> kept;
        kept.reserve(sample);
        const std::size_t before = bytesInUse();
        for (long i = 0; i < sample; ++i)
            kept.push_back(make(i));
        state.counters["bytes"] = sizeof(Handle) + static_cast<double>(bytesInUse() - before) / sample;
    }
}

template <class Fill> void bytesOfEntry(State& state, Fill fill) {
    for (auto _ : state) {
        const std::size_t before = bytesInUse();
        const auto collection = fill();
        state.counters["bytes"] = static_cast<double>(bytesInUse() - before) / sample;
    }
}

template <class Make> auto all(Make make) {
    std::vector<decltype(make(0L))> values;
    for (long i = 0; i < sample; ++i)
        values.push_back(make(i));
    return values;
}

Ref<NSString> key(long i) { return NSString::stringWithFormat(u"key %06ld", i); }
std::u16string text(long) { return tenUnits; }

void kitListBytes(State& state) {
    const auto values = all(number);
    bytesOfEntry(state, [&] {
        Ref<NSMutableArray> list = NSMutableArray::array();
        for (const Ref<NSNumber>& value : values)
            list->addObject(*value);
        return list;
    });
}

void kitDictionaryBytes(State& state) {
    const auto values = all(number);
    const auto keys = all(key);
    bytesOfEntry(state, [&] {
        Ref<NSMutableDictionary> dictionary = NSMutableDictionary::dictionary();
        for (std::size_t i = 0; i < sample; ++i)
            dictionary->setObject_forKey(*values[i], *keys[i]);
        check(dictionary->count() == sample, "dictionary of 100000");
        return dictionary;
    });
}

const auto number10 = [](long) { return NSString::stringWithCharacters({tenUnits, 10}); };

BENCHMARK_CAPTURE(bytesOfValue, kit, number)->Name("bytes of a number/kit")->Iterations(1);
BENCHMARK_CAPTURE(bytesOfValue, shared, sharedNumber)->Name("bytes of a number/std::shared_ptr")->Iterations(1);
BENCHMARK_CAPTURE(bytesOfValue, kit, number10)->Name("bytes of a string of 10/kit")->Iterations(1);
BENCHMARK_CAPTURE(bytesOfValue, standard, text)->Name("bytes of a string of 10/std::u16string")->Iterations(1);
BENCHMARK(kitListBytes)->Name("bytes of a list's element/kit")->Iterations(1);
BENCHMARK(kitDictionaryBytes)->Name("bytes of a dictionary's entry/kit")->Iterations(1);

#ifdef TOVI_BENCH_HAVE_QT

QString qtText(long) { return QString(reinterpret_cast<const QChar*>(tenUnits), 10); }
QVariant qtNumber(long i) { return QVariant(static_cast<qlonglong>(i)); }
QString qtKey(long i) { return QString::asprintf("key %06ld", i); }

QVariantList qtList(long n) {
    QVariantList list;
    for (long i = 0; i < n; ++i)
        list.append(qtNumber(i));
    return list;
}

QHash<QString, QVariant> qtHash(const std::vector<QString>& keys) {
    QHash<QString, QVariant> hash;
    for (long i = 0; const QString& each : keys)
        hash.insert(each, qtNumber(i++));
    return hash;
}

void qtHashBytes(State& state) {
    const auto keys = all(qtKey);
    bytesOfEntry(state, [&] { return qtHash(keys); });
}

BENCHMARK_CAPTURE(makeAndRelease, qt, qtText)->Name("string of 10 made and released/QString");
BENCHMARK_CAPTURE(buildList, qt, qtList)->Name("list of numbers built and destroyed/QVariantList")->Apply(sizes);
BENCHMARK_CAPTURE(makeAndRelease, qt, [](long i) {
    return QString::asprintf("%ld of %d: %s (%.2f)", i, 12, "Ada Wong", 2.5);
})->Name("formatted text/QString::asprintf");
BENCHMARK_CAPTURE(bytesOfValue, qt, qtNumber)->Name("bytes of a number/QVariant")->Iterations(1);
BENCHMARK_CAPTURE(bytesOfValue, qt, qtText)->Name("bytes of a string of 10/QString")->Iterations(1);
BENCHMARK_CAPTURE(bytesOfEntry, qt, [] { return qtList(sample); })
    ->Name("bytes of a list's element/QVariantList")
    ->Iterations(1);
BENCHMARK(qtHashBytes)->Name("bytes of a dictionary's entry/QHash")->Iterations(1);

#endif

}  // namespace
