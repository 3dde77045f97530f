#include <ToviFoundationKit/Foundation/TimeZoneRules_p.h>

#include <algorithm>
#include <map>
#include <memory>

#include <unicode/ucal.h>

#include <ToviFoundationKit/Foundation/CivilTime_p.h>

namespace tovi::detail {

namespace {

constexpr NSInteger firstSecond = daysFromCivil(1800, 1, 1) * secondsADay;
/// By then every zone has come to rules that last. (Morocco's, which follow the moon, are foretold up to 2087.)
constexpr NSInteger cycleStart = daysFromCivil(2100, 1, 1) * secondsADay;
constexpr NSInteger cycleLength = 146097 * secondsADay;

/// What ICU knows of a zone.
class Source {
public:
    explicit Source(std::u16string_view name)
        : calendar_(ucal_open(name.data(), static_cast<int>(name.size()), "en_US", UCAL_GREGORIAN, &error_)) {}
    ~Source() { ucal_close(calendar_); }
    Source(const Source&) = delete;
    Source& operator=(const Source&) = delete;

    Stretch at(NSInteger second) {
        ucal_setMillis(calendar_, static_cast<double>(second) * 1000, &error_);
        const int summer = ucal_get(calendar_, UCAL_DST_OFFSET, &error_);
        return {second, 0, (ucal_get(calendar_, UCAL_ZONE_OFFSET, &error_) + summer) / 1000, summer != 0};
    }
    std::optional<NSInteger> nextAfter(NSInteger second) {
        double next = 0;
        ucal_setMillis(calendar_, static_cast<double>(second) * 1000, &error_);
        if (!ucal_getTimeZoneTransitionDate(calendar_, UCAL_TZ_TRANSITION_NEXT, &next, &error_) || U_FAILURE(error_))
            return std::nullopt;
        return static_cast<NSInteger>(next / 1000);
    }

private:
    UErrorCode error_ = U_ZERO_ERROR;
    UCalendar* calendar_;
};

}  // namespace

TimeZoneRules::TimeZoneRules(int offset) : near_{{never, offset, false}, {always, offset, false}} {}

TimeZoneRules::TimeZoneRules(std::u16string_view name) : name_(name) {
    Source source(name);
    const auto add = [this](NSInteger begin, const Stretch& stretch) {
        if (near_.empty() || near_.back().offset != stretch.offset || near_.back().summer != stretch.summer)
            near_.push_back({begin, stretch.offset, stretch.summer});
    };
    add(never, source.at(firstSecond));
    std::optional<NSInteger> next = source.nextAfter(firstSecond);
    for (; next && *next < cycleStart; next = source.nextAfter(*next))
        add(*next, source.at(*next));
    near_.push_back({next ? cycleStart : always, 0, false});
    near_.shrink_to_fit();
    fillBuckets();
}

void TimeZoneRules::fillBuckets() {
    std::size_t index = 0;
    for (NSInteger begin = 0; begin < near_[near_.size() - 2].begin; begin += NSInteger(1) << bucketBits) {
        while (near_[index + 1].begin <= begin)
            ++index;
        buckets_.push_back(static_cast<std::uint16_t>(index));
    }
}

const TimeZoneRules::Table& TimeZoneRules::cycle() const {
    std::call_once(cycleMade_, [this] {
        Source source(name_);
        const auto add = [this](const Stretch& stretch) {
            cycle_.push_back({stretch.begin, stretch.offset, stretch.summer});
        };
        add(source.at(cycleStart));
        for (auto next = source.nextAfter(cycleStart); next && *next < cycleStart + cycleLength;
             next = source.nextAfter(*next))
            add(source.at(*next));
        cycle_.push_back({cycleStart + cycleLength, 0, false});
    });
    return cycle_;
}

Stretch TimeZoneRules::searchStretch(NSInteger second) const {
    const auto in = [](const Table& table, NSInteger wanted) {
        const auto after = std::ranges::upper_bound(table, wanted, {}, &Entry::begin);
        return stretch(table, static_cast<std::size_t>(after - table.begin()) - 1);
    };
    if (second < near_.back().begin) {
        const std::size_t last = near_.size() - 2;
        return near_[last].begin <= second ? stretch(near_, last) : in(near_, second);
    }
    const NSInteger shift = (second - cycleStart) / cycleLength * cycleLength;
    Stretch found = in(cycle(), second - shift);
    found.begin += shift;
    found.end += shift;
    return found;
}

NSInteger TimeZoneRules::searchFromClock(NSInteger clock) const {
    Stretch stretch = stretchAt(clock - secondsADay);
    for (int before = stretch.offset;;) {
        const NSInteger second = clock - stretch.offset;
        if (second < stretch.end)
            return second >= stretch.begin ? second : clock - before;
        before = stretch.offset;
        stretch = stretchAt(stretch.end);
    }
}

std::optional<NSInteger> TimeZoneRules::nextChange(NSInteger second) const {
    for (Stretch stretch = stretchAt(second); stretch.end < always;) {
        const Stretch next = stretchAt(stretch.end);
        if (!next.sameClock(stretch))
            return stretch.end;
        stretch = next;
    }
    return std::nullopt;
}

namespace {

enum class Kind { Unknown, OfDatabase, Distance };

Kind kindOf(std::u16string_view name) {
    constexpr std::size_t longest = 64;
    if (name.empty() || name.size() > longest || name == u"Etc/Unknown")
        return Kind::Unknown;
    UChar canonical[2 * longest];
    UBool ofDatabase = false;
    UErrorCode error = U_ZERO_ERROR;
    ucal_getCanonicalTimeZoneID(name.data(), static_cast<int>(name.size()), canonical, 2 * longest, &ofDatabase,
                                &error);
    return U_FAILURE(error) ? Kind::Unknown : ofDatabase ? Kind::OfDatabase : Kind::Distance;
}

constinit std::mutex lock;

}  // namespace

const TimeZoneRules* TimeZoneRules::named(std::u16string_view name) {
    static auto& known = *new std::map<std::u16string, std::unique_ptr<const TimeZoneRules>, std::less<>>;
    const std::lock_guard guard(lock);
    if (const auto found = known.find(name); found != known.end())
        return found->second.get();
    if (kindOf(name) != Kind::OfDatabase)
        return nullptr;
    return known.emplace(name, new TimeZoneRules(name)).first->second.get();
}

const TimeZoneRules& TimeZoneRules::fixed(int offset) {
    static auto& known = *new std::map<int, std::unique_ptr<const TimeZoneRules>>;
    const std::lock_guard guard(lock);
    auto& rules = known[offset];
    if (!rules)
        rules.reset(new TimeZoneRules(offset));
    return *rules;
}

std::optional<int> TimeZoneRules::offsetNamed(std::u16string_view name) {
    if (kindOf(name) != Kind::Distance)
        return std::nullopt;
    return Source(name).at(0).offset;
}

}  // namespace tovi::detail
