// Messages and key-value coding, beside the meta-object systems of Qt and GLib. The limits are a virtual call, and a
// look-up of the same name in a hash table. Every form of the same operation has the same body.

#define QT_NO_KEYWORDS

#include <array>
#include <string>
#include <unordered_map>

#include <ToviFoundationKit/Runtime/Additions.h>
#include <ToviFoundationKit/Runtime/Message.h>
#include <ToviFoundationKit/Runtime/NSNumber.h>
#include <ToviFoundationKit/Runtime/NSString.h>

#include "Bench.h"

#ifdef TOVI_BENCH_HAVE_QT
#include <QMetaMethod>
#include <QObject>
#include <QVariant>
#endif
#ifdef TOVI_BENCH_HAVE_GLIB
#include <glib-object.h>
#endif
#ifdef TOVI_BENCH_HAVE_ABSEIL
#include <absl/container/flat_hash_map.h>
#endif

using namespace tovi;
using namespace bench;

namespace {

NSInteger order(NSInteger a, NSInteger b) { return a < b ? -1 : a > b; }

class Account : public NSObject {
    TOVI_CLASS(Account, NSObject)

public:
    template <class Kind> static Ref<Account> make(NSInteger balance) {
        Ref<Account> made = adopt<Account>(*new Kind);
        made->balance_ = balance;
        return made;
    }

    NSInteger compare(const Account& other) const noexcept { return order(balance_, other.balance_); }
    Ref<Account> richer(Account& other) { return balance_ < other.balance_ ? other : *this; }
    NSInteger balance() const noexcept { return balance_; }
    Ref<NSString> owner() const { return owner_; }

    virtual NSInteger virtualCompare(const Account& other) const noexcept { return compare(other); }
    virtual Ref<Account> virtualRicher(Account& other) { return richer(other); }

protected:
    Account() = default;
    NSInteger balance_ = 0;
    Ref<NSString> owner_ = u"Ada Wong"_ns;
};

// The compiler shall see more than one implementation of each virtual function.
class SavingsAccount final : public Account {
    TOVI_CLASS(SavingsAccount, Account)

public:
    NSInteger virtualCompare(const Account& other) const noexcept override { return -order(other.balance(), balance_); }
    Ref<Account> virtualRicher(Account& other) override { return other.balance() > balance_ ? other : *this; }

private:
    friend class Account;
    SavingsAccount() = default;
};

const Additions<Account> additions{
    instance<&Account::compare>("compare:"),
    instance<&Account::richer>("richer:"),
    instance<&Account::balance>("balance"),
    instance<&Account::owner>("owner"),
};

// A power of two of receivers, so that neither the branch predictor nor the cache is asked too much.
constexpr std::size_t many = 64;

/// Accounts of rising balances; with `mixed` their classes follow no pattern.
std::vector<Ref<Account>> accounts(bool mixed) {
    std::vector<Ref<Account>> result;
    const std::vector<long> random = shuffledNumbers(many);
    for (std::size_t i = 0; i < many; ++i)
        result.push_back(mixed && random[i] % 2 ? Account::make<SavingsAccount>(NSInteger(i))
                                                : Account::make<Account>(NSInteger(i)));
    return result;
}

/// Asks neighbours for their order in turn: two accounts and what they must answer, -1 for all but the last.
template <class Ask> void compareNeighbours(State& state, bool mixed, Ask ask) {
    const std::vector<Ref<Account>> all = accounts(mixed);
    for (std::size_t i = 0; i < many; ++i)
        check(ask(*all[i], *all[(i + 1) % many]) == (i + 1 < many ? -1 : 1), "compare:");
    std::size_t i = 0;
    for (auto _ : state) {
        DoNotOptimize(ask(*all[i % many], *all[(i + 1) % many]));
        ++i;
    }
}

template <bool mixed> void compareBySend(State& state) {
    compareNeighbours(state, mixed,
                      [](Account& a, Account& b) BENCH_INLINE { return send<NSInteger>(a, "compare:"_sel, b); });
}

template <bool mixed> void compareAtSite(State& state) {
    MessageSite site("compare:"_sel);
    compareNeighbours(state, mixed,
                      [&site](Account& a, Account& b) BENCH_INLINE { return site.send<NSInteger>(a, b); });
}

template <bool mixed> void compareByVirtualCall(State& state) {
    compareNeighbours(state, mixed, [](Account& a, Account& b) BENCH_INLINE { return a.virtualCompare(b); });
}

BENCHMARK(compareBySend<false>)->Name("message with one object/kit");
BENCHMARK(compareAtSite<false>)->Name("message with one object/kit, MessageSite");
BENCHMARK(compareByVirtualCall<false>)->Name("message with one object/virtual call");
BENCHMARK(compareBySend<true>)->Name("message to mixed classes/kit");
BENCHMARK(compareAtSite<true>)->Name("message to mixed classes/kit, MessageSite");
BENCHMARK(compareByVirtualCall<true>)->Name("message to mixed classes/virtual call");

template <class Ask> void findRicher(State& state, Ask ask) {
    const std::vector<Ref<Account>> all = accounts(false);
    for (std::size_t i = 0; i + 1 < many; ++i)
        check(identical(ask(*all[i], *all[i + 1]).get(), all[i + 1].get()), "richer:");
    std::size_t i = 0;
    for (auto _ : state) {
        DoNotOptimize(ask(*all[i % many], *all[(i + 1) % many]).get());
        ++i;
    }
}

void performSelector(State& state) {
    findRicher(state,
               [](Account& a, Account& b) BENCH_INLINE { return a.performSelector_withObject("richer:"_sel, &b); });
}
void richerByVirtualCall(State& state) {
    findRicher(state, [](Account& a, Account& b) BENCH_INLINE { return a.virtualRicher(b); });
}

BENCHMARK(performSelector)->Name("performSelector:withObject:/kit");
BENCHMARK(richerByVirtualCall)->Name("performSelector:withObject:/virtual call");

// The keys asked for are other objects than those by which the class came to know them.
void valueForKey(State& state) {
    const Ref<Account> account = Account::make<Account>(7);
    const Ref<NSString> key = NSString::fromUTF8("owner");
    check(account->valueForKey(u"owner"_ns)->isEqual(u"Ada Wong"_ns.get()), "owner");
    for (auto _ : state)
        DoNotOptimize(account->valueForKey(key).get());
}

void numberForKey(State& state) {
    const Ref<Account> account = Account::make<Account>(7);
    const Ref<NSString> key = NSString::fromUTF8("balance");
    check(account->valueForKey(u"balance"_ns)->isEqual(NSNumber::numberWithInteger(7).get()), "balance");
    for (auto _ : state)
        DoNotOptimize(account->valueForKey(key).get());
}

/// The bare limit: a look-up of the same name among as many names as the class has operations.
template <class Map> void hashLookUp(State& state) {
    Map map;
    const char16_t* const names[] = {u"owner",
                                     u"balance",
                                     u"compare:",
                                     u"richer:",
                                     u"class",
                                     u"superclass",
                                     u"className",
                                     u"isEqual:",
                                     u"hash",
                                     u"description",
                                     u"copy",
                                     u"mutableCopy",
                                     u"isKindOfClass:",
                                     u"respondsToSelector:",
                                     u"performSelector:",
                                     u"valueForKey:",
                                     u"valueForKeyPath:"};
    for (long i = 0; const char16_t* name : names)
        map.emplace(name, i++);
    std::u16string key = u"owner";
    check(map.find(key)->second == 0 && map.find(u"richer:")->second == 3, "hash look-up");
    for (auto _ : state) {
        DoNotOptimize(key);
        DoNotOptimize(map.find(key)->second);
    }
}

BENCHMARK(valueForKey)->Name("value for a key/kit");
BENCHMARK(hashLookUp<std::unordered_map<std::u16string, long>>)->Name("value for a key/std::unordered_map");
BENCHMARK(numberForKey)->Name("number for a key/kit");

#ifdef TOVI_BENCH_HAVE_ABSEIL
BENCHMARK(hashLookUp<absl::flat_hash_map<std::u16string, long>>)->Name("value for a key/absl::flat_hash_map");
#endif

}  // namespace

#ifdef TOVI_BENCH_HAVE_QT

class QtAccount : public QObject {
    Q_OBJECT
    Q_PROPERTY(QString owner READ owner)
    Q_PROPERTY(qlonglong balance READ balance)

public:
    explicit QtAccount(qlonglong balance) : balance_(balance) {}
    QString owner() const { return owner_; }
    qlonglong balance() const { return balance_; }
    Q_INVOKABLE qlonglong compare(QtAccount* other) { return order(balance_, other->balance_); }

private:
    QString owner_ = QStringLiteral("Ada Wong");
    qlonglong balance_;
};

#include "messages_bench.moc"

namespace {

void qtMethodResolved(State& state) {
    QtAccount a(1), b(2);
    const QMetaMethod method = a.metaObject()->method(a.metaObject()->indexOfMethod("compare(QtAccount*)"));
    const auto ask = [&] {
        qlonglong answer = 0;
        method.invoke(&a, Qt::DirectConnection, Q_RETURN_ARG(qlonglong, answer), Q_ARG(QtAccount*, &b));
        return answer;
    };
    check(ask() == -1, "QMetaMethod");
    for (auto _ : state)
        DoNotOptimize(ask());
}

void qtMethodByName(State& state) {
    QtAccount a(1), b(2);
    const auto ask = [&] {
        qlonglong answer = 0;
        QMetaObject::invokeMethod(&a, "compare", Qt::DirectConnection, Q_RETURN_ARG(qlonglong, answer),
                                  Q_ARG(QtAccount*, &b));
        return answer;
    };
    check(ask() == -1, "QMetaObject::invokeMethod");
    for (auto _ : state)
        DoNotOptimize(ask());
}

void qtProperty(State& state, const char* name, const QVariant& expected) {
    QtAccount account(7);
    check(account.property(name) == expected, "QObject::property");
    for (auto _ : state)
        DoNotOptimize(account.property(name));
}

BENCHMARK(qtMethodResolved)->Name("message with one object/QMetaMethod");
BENCHMARK(qtMethodByName)->Name("message with one object/QMetaObject::invokeMethod");
BENCHMARK_CAPTURE(qtProperty, owner, "owner", QStringLiteral("Ada Wong"))->Name("value for a key/QObject::property");
BENCHMARK_CAPTURE(qtProperty, balance, "balance", 7LL)->Name("number for a key/QObject::property");

}  // namespace

#endif

#ifdef TOVI_BENCH_HAVE_GLIB

namespace {

struct GAccount {
    GObject parent;
    const char* owner;
    gint64 balance;
};
struct GAccountClass {
    GObjectClass parent;
    gint64 (*compare)(GAccount* receiver, GAccount* other);
};
guint compareSignal;

G_DEFINE_TYPE(GAccount, g_account, G_TYPE_OBJECT)

gint64 g_account_compare(GAccount* receiver, GAccount* other) { return order(receiver->balance, other->balance); }

void g_account_get_property(GObject* object, guint property, GValue* value, GParamSpec*) {
    const auto* account = reinterpret_cast<GAccount*>(object);
    if (property == 1)
        g_value_set_string(value, account->owner);
    else
        g_value_set_int64(value, account->balance);
}

void g_account_init(GAccount* account) { account->owner = "Ada Wong"; }

void g_account_class_init(GAccountClass* type) {
    type->compare = g_account_compare;
    type->parent.get_property = g_account_get_property;
    const auto readable = static_cast<GParamFlags>(G_PARAM_READABLE | G_PARAM_STATIC_STRINGS);
    g_object_class_install_property(&type->parent, 1, g_param_spec_string("owner", "", "", "", readable));
    g_object_class_install_property(&type->parent, 2, g_param_spec_int64("balance", "", "", 0, 1000, 0, readable));
    compareSignal = g_signal_new("compare", g_account_get_type(), G_SIGNAL_RUN_LAST, offsetof(GAccountClass, compare),
                                 nullptr, nullptr, nullptr, G_TYPE_INT64, 1, g_account_get_type());
}

GAccount* gAccount(gint64 balance) {
    auto* account = static_cast<GAccount*>(g_object_new(g_account_get_type(), nullptr));
    account->balance = balance;
    return account;
}

void gSignal(State& state) {
    GAccount* const a = gAccount(1);
    GAccount* const b = gAccount(2);
    const auto ask = [&] {
        gint64 answer = 0;
        g_signal_emit(a, compareSignal, 0, b, &answer);
        return answer;
    };
    check(ask() == -1, "g_signal_emit");
    for (auto _ : state)
        DoNotOptimize(ask());
    g_object_unref(a);
    g_object_unref(b);
}

void gProperty(State& state, const char* name, GType type) {
    GAccount* const account = gAccount(7);
    GValue value = G_VALUE_INIT;
    g_value_init(&value, type);
    g_object_get_property(&account->parent, name, &value);
    check(type == G_TYPE_INT64 ? g_value_get_int64(&value) == 7
                               : std::string_view(g_value_get_string(&value)) == "Ada Wong",
          "g_object_get_property");
    for (auto _ : state) {
        g_value_reset(&value);
        g_object_get_property(&account->parent, name, &value);
    }
    g_value_unset(&value);
    g_object_unref(account);
}

BENCHMARK(gSignal)->Name("message with one object/g_signal_emit");
BENCHMARK_CAPTURE(gProperty, owner, "owner", G_TYPE_STRING)->Name("value for a key/g_object_get_property");
BENCHMARK_CAPTURE(gProperty, balance, "balance", G_TYPE_INT64)->Name("number for a key/g_object_get_property");

}  // namespace

#endif
