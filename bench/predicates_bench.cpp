// Predicates: reading a format, and asking a million objects. The limit is the same test written in C++ for these
// objects, with the kit's own search for the text.

#include <ToviFoundationKit/Foundation/NSDate.h>
#include <ToviFoundationKit/Foundation/NSPredicate.h>
#include <ToviFoundationKit/Runtime/Additions.h>

#include <ToviFoundationKit/Foundation/NSMutableArray.h>

#include "Bench.h"

using namespace tovi;
using namespace bench;

namespace {

class Letter final : public NSObject {
    TOVI_CLASS(Letter, NSObject)

public:
    static Ref<Letter> make(Ref<NSString> sender, double date, NSInteger size) {
        return adopt(*new Letter(std::move(sender), date, size));
    }
    Ref<NSString> sender() const { return sender_; }
    Ref<NSDate> date() const { return date_; }
    NSInteger size() const { return size_; }

private:
    Letter(Ref<NSString> sender, double date, NSInteger size)
        : sender_(std::move(sender)), date_(NSDate::dateWithTimeIntervalSinceReferenceDate(date)), size_(size) {}

    Ref<NSString> sender_;
    Ref<NSDate> date_;
    NSInteger size_;
};

const Additions<Letter> additions{
    instance<&Letter::sender>("sender"),
    instance<&Letter::date>("date"),
    instance<&Letter::size>("size"),
};

constexpr long count = 1'000'000;

/// Every third sender has the text looked for, and every second date is late enough.
const NSArray& letters() {
    static const Ref<NSMutableArray> list = [] {
        const std::u16string_view names[] = {u"Ada Byron <ada@example.org>", u"Max Born <born@example.org>",
                                             u"Grace Brewster Murray <grace@navy.mil>"};
        Ref<NSMutableArray> made = NSMutableArray::arrayWithCapacity(count);
        for (const long i : shuffledNumbers(count))
            made->addObject(Letter::make(NSString::stringWithCharacters(names[i % 3]), double(i % 1000), i));
        return made;
    }();
    return list;
}

constexpr std::u16string_view format = u"sender CONTAINS[c] 'MAX' AND date >= CAST(500.000000,\"NSDate\")";
constexpr std::u16string_view numbers = u"#size > 500000 AND #size * 2 < 1500000";

template <class Test> NSUInteger countOf(Test test) {
    NSUInteger found = 0;
    for (NSObject& each : letters())
        found += test(static_cast<Letter&>(each));
    return found;
}

void filtered(State& state, std::u16string_view written) {
    const auto predicate = NSPredicate::predicateWithFormat(written);
    repeat(state, count, [&] { return letters().filteredArrayUsingPredicate(predicate)->count(); });
}

void oneByOne(State& state, std::u16string_view written) {
    const auto predicate = NSPredicate::predicateWithFormat(written);
    repeat(state, count, [&] { return countOf([&](Letter& each) { return predicate->evaluateWithObject(each); }); });
}

void byHand(State& state) {
    const Ref<NSDate> from = NSDate::dateWithTimeIntervalSinceReferenceDate(500);
    const auto test = [&](Letter& each) {
        return each.sender()->rangeOfString_options(u"MAX"_ns, NSCaseInsensitiveSearch).wasFound() &&
               each.date()->compare(from) >= 0;
    };
    check(countOf(test) == letters().filteredArrayUsingPredicate(NSPredicate::predicateWithFormat(format))->count(),
          "filtered");
    repeat(state, count, [&] { return countOf(test); });
}

void numbersByHand(State& state) {
    const auto test = [](const Letter& each) { return each.size() > 500'000 && each.size() * 2 < 1'500'000; };
    check(countOf(test) == letters().filteredArrayUsingPredicate(NSPredicate::predicateWithFormat(numbers))->count(),
          "numbers");
    repeat(state, count, [&] { return countOf(test); });
}

void parsed(State& state, std::u16string_view written) {
    for (auto _ : state)
        DoNotOptimize(NSPredicate::predicateWithFormat(written));
}

void described(State& state) {
    const auto predicate = NSPredicate::predicateWithFormat(format);
    for (auto _ : state)
        DoNotOptimize(predicate->predicateFormat());
}

BENCHMARK_CAPTURE(filtered, kit, format)->Name("objects by text and date/kit")->Unit(benchmark::kMillisecond);
BENCHMARK_CAPTURE(oneByOne, kit, format)
    ->Name("objects by text and date/kit, one by one")
    ->Unit(benchmark::kMillisecond);
BENCHMARK(byHand)->Name("objects by text and date/written in C++")->Unit(benchmark::kMillisecond);
BENCHMARK_CAPTURE(filtered, kit, numbers)->Name("objects by number/kit")->Unit(benchmark::kMillisecond);
BENCHMARK(numbersByHand)->Name("objects by number/written in C++")->Unit(benchmark::kMillisecond);
BENCHMARK_CAPTURE(parsed, kit, format)->Name("predicate read/kit");
BENCHMARK(described)->Name("predicate written/kit");

}  // namespace
