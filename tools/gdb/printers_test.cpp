#include <ToviFoundationKit/ToviFoundationKit.h>

// What printers_test.py has gdb show, at the end of the program.

using namespace tovi;

namespace host {

class Account : public NSObject {
    TOVI_CLASS(Account, NSObject)

public:
    static Ref<Account> account() { return adopt(*new Account); }
};

class Log : public NSEnumerator {
    TOVI_CLASS(Log, NSEnumerator)

public:
    static Ref<Log> log() { return adopt(*new Log); }
    id nextObject() override { return nullptr; }
};

}  // namespace host

namespace {

void atTheEnd() {}

/// Keys k0 to k<count>, of which only those that divide by seven are left.
Ref<NSMutableDictionary> withHoles(int count) {
    const auto dictionary = NSMutableDictionary::dictionary();
    for (int i = 0; i < count; ++i)
        dictionary->setObject_forKey(box(i), NSString::stringWithFormat(u"k%d", i));
    for (int i = 0; i < count; ++i)
        if (i % 7)
            dictionary->removeObjectForKey(NSString::stringWithFormat(u"k%d", i));
    return dictionary;
}

}  // namespace

int main() {
    const id nothing;
    const id anything = u"Größe 𝄞"_ns;
    const Ref<NSString> empty = u""_ns;
    const auto buffer = NSMutableString::stringWithString(u"changed"_ns);
    NSString& reference = buffer;

    const auto numbers = NSArray::of(-7, true, 2.5, 1e300, 0.1F, std::uint64_t{18446744073709551615U}, 'a');
    const auto queue = NSMutableArray::of(0, 1, 2, 3);
    queue->removeObjectAtIndex(0);
    queue->addObject(NSNull::null());
    const auto nested = NSArray::of(NSArray::of(), NSDictionary::of({{u"width", NSArray::of(3, u"four")}}));
    const Ref<NSMutableArray> frozen = NSMutableArray::immutableArrayWithArray(NSArray::of(1));

    const auto holes = withHoles(15);
    const auto members = NSMutableSet::of(u"a", u"b", u"c");
    members->removeObject(u"b"_ns);

    const auto indexes = NSMutableIndexSet::indexSetWithIndexesInRange({10, 5});
    indexes->addIndex(3);
    const auto manyIndexes = NSMutableIndexSet::indexSet();
    for (NSUInteger i = 0; i < 2000; i += 2)
        manyIndexes->addIndex(i);
    const auto thinned = NSMutableIndexSet::indexSetWithIndexSet(manyIndexes);
    thinned->removeIndexesInRange({4, 1990});
    thinned->addIndexesInRange({32760, 100});

    const auto moment = NSDate::dateWithTimeIntervalSinceReferenceDate(86399.5);
    const auto never = NSDate::dateWithTimeIntervalSinceReferenceDate(1e20);
    const auto bytes = NSData::dataWithBytes_length("\x01\xFE\x7F", 3);
    const auto error = NSError::errorWithDomain_code_description(u"HostDomain"_ns, 4, u"text"_ns);
    const NSException exception(u"HostException"_ns, u"out of paper"_ns);
    const NSException reasonless(u"HostException"_ns, nullptr);
    const Selector selector = "insertObject:atIndex:"_sel;
    const Selector null;
    const Ref<Class> type = NSArray::classObject();

    const auto account = host::Account::account();
    const id log = host::Log::log();
    const auto mixed = NSArray::of(account, u"text");
    alignas(id) char memory[sizeof(id)];
    std::fill_n(memory, sizeof memory, '\x11');
    const id& wild = reinterpret_cast<const id&>(memory);
    atTheEnd();
}
