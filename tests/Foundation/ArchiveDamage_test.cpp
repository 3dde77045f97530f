#include <gtest/gtest.h>

#include <support/Dissolve.h>

using namespace tovi;

namespace {

/// An archive written by hand: texts of one-byte units, numbers below 128 as they are.
class Bytes {
public:
    explicit Bytes(std::initializer_list<std::string_view> names = {}, char version = 1, char form = 'k') {
        bytes_ = std::string("ToviArch") + version + form;
        number(names.size());
        for (const std::string_view each : names)
            text(each);
    }
    Bytes& number(NSUInteger value) {
        for (; value >= 0x80; value >>= 7)
            bytes_ += static_cast<char>(value | 0x80);
        bytes_ += static_cast<char>(value);
        return *this;
    }
    Bytes& text(std::string_view text) {
        number(2 * text.size());
        bytes_ += text;
        return *this;
    }
    Bytes& record(char tag, std::initializer_list<NSUInteger> numbers = {}) {
        bytes_ += tag;
        for (const NSUInteger each : numbers)
            number(each);
        return *this;
    }
    Bytes& textRecord(std::string_view content) { return record('t').text(content); }
    operator Ref<NSData>() const { return NSData::dataWithBytes_length(bytes_.data(), bytes_.size()); }

private:
    std::string bytes_;
};

std::string errorOf(const Ref<NSData>& data, NSInteger code = ArchiveErrorDamaged) {
    RefPtr<NSError> error;
    const id object = NSKeyedUnarchiver::unarchiveObjectWithData(data, &error);
    if (object || !error)
        return "no error";
    EXPECT_EQ(error->domain(), ArchiveErrorDomain);
    EXPECT_EQ(error->code(), code);
    return error->localizedDescription()->UTF8String();
}

/// Something of everything, with circles.
Ref<NSObject> sample() {
    const auto ada = ArchivedPerson::named(u"Ada");
    const auto list = NSMutableArray::of(
        ada, 1, -2.5, u"\u0100", true, NSPoint{1, 2}, NSRange{3, 4}, NSNull::null(), NSDate::distantPast(),
        NSData::dataWithBytes_length("abc", 3), NSIndexSet::of({1, 2, 5}), NSSet::of(1, ada, NSArray::of(1)),
        NSDictionary::of({{u"k", NSArray::of(ada)}, {NSSet::of(2), ada}, {ada, NSDictionary::of({{u"k", 1}})}}),
        NSString::classObject());
    ada->friendly = list;
    return list;
}

}  // namespace

TEST(ArchiveDamage, TellsWhatIsWrongAndWhere) {
    const std::pair<Ref<NSData>, const char*> cases[] = {
        {NSData::data(), "byte 0: the archive is cut off"},
        {NSData::dataWithBytes_length("bplist00", 8), "byte 0: this is no archive"},
        {Bytes({}, 1, 'u').number(1).record('0'), "byte 9: an unkeyed archive, which NSUnarchiver reads"},
        {Bytes({}, 1, 'x').number(1).record('0'), "byte 9: an unknown form of archive"},
        {Bytes({"k", "k"}).number(1).record('0'), "byte 14: a name is there twice"},
        {Bytes().number(0), "byte 11: there is no object in the archive"},
        {Bytes().number(1).record('?'), "byte 12: an unknown kind of object"},
        {Bytes().number(1).record('0').record('0'), "byte 13: the archive goes on behind its last object"},
        {Bytes().number(1).record('a', {1, 2}), "byte 14: a reference beyond the last object"},
        {Bytes().number(1).record('a', {1, 0}), "byte 14: nil in a collection"},
        {Bytes().number(1).record('a', {NSUInteger(1) << 60}), "more is announced than the archive has"},
        {Bytes().number(NSUInteger(1) << 40), "more is announced than the archive has"},
        {Bytes().number(1).record('t', {2 * 100}), "more is announced than the archive has"},
        {Bytes().number(1).record('t', {~NSUInteger(0)}), "more is announced than the archive has"},
        {Bytes().number(1).record('b', {~NSUInteger(0)}), "the archive is cut off"},
        {Bytes().number(1).record('c', {256}), "a number that its type cannot hold"},
        {Bytes().number(1).record('C', {256}), "a number that its type cannot hold"},
        {Bytes().number(1).record('Q').record('\xFF', {~NSUInteger(0)}), "a number of more than 64 bits"},
        {Bytes().number(1).record('x', {1, 5, 0}), "a run of indexes that cannot be"},
        {Bytes().number(1).record('x', {2, 5, 1, 0, 1}), "a run of indexes that cannot be"},
        {Bytes().number(1).record('x', {1, 1, NSNotFound}), "a run of indexes that cannot be"},
        {Bytes({"ArchivedPerson"}).number(1).record('o', {1}), "a name beyond the last one"},
        {Bytes({"ArchivedPerson"}).number(1).record('o', {0, 4 * 2, 1, 0}), "a key beyond the last name"},
        {Bytes({"ArchivedPerson"}).number(1).record('o', {0, 4, 2, 0}), "a reference beyond the last object"},
        {Bytes({"ArchivedPerson"}).number(1).record('o', {0, 4, 1, 4, 1, 0}), "an object uses a key twice"},
        {Bytes({"ArchivedPerson"}).number(1).record('o', {0, 4 + 3, 2, 0}), "neither true nor false"},
        {Bytes().number(2).record('0').record('0'), "object 2 (NSNull): nothing refers to it"},
        {Bytes().number(2).record('h', {2, 2, 2, 2, 2}).textRecord("k"), "object 1 (NSDictionary): two keys are equal"},
    };
    for (const auto& [data, text] : cases)
        EXPECT_NE(errorOf(data).find(text), std::string::npos) << errorOf(data) << ", not " << text;
    EXPECT_EQ(errorOf(Bytes({}, 2), ArchiveErrorNewer), "the archive has format 2, this library reads formats up to 1");
}

TEST(ArchiveDamage, OnlyMakesObjectsThatTakePartInArchives) {
    EXPECT_EQ(errorOf(Bytes({"Gone"}).number(1).record('o', {0, 0}), ArchiveErrorUnknownClass),
              "byte 18: there is no class Gone");
    EXPECT_EQ(errorOf(Bytes({"Gone"}).number(1).record('k', {0}), ArchiveErrorUnknownClass),
              "byte 18: there is no class Gone");
    EXPECT_EQ(errorOf(Bytes({"NSThread"}).number(1).record('o', {0, 0}), ArchiveErrorUnknownClass),
              "byte 22: objects of class NSThread cannot be unarchived: they do not respond to initWithCoder:");
}

TEST(ArchiveDamage, EveryPrefixAndEveryFlippedBitGivesAnObjectOrAnError) {
    for (const ArchiveForm& form : archiveForms) {
        const auto root = sample();
        const Ref<NSData> data = form.archive(root);
        dissolve(root);
        const std::string archive(reinterpret_cast<const char*>(data->bytes().data()), data->length());
        const auto tried = [&form](const std::string& bytes) {
            RefPtr<NSError> error;
            const id object = form.unarchive(NSData::dataWithBytes_length(bytes.data(), bytes.size()), &error);
            EXPECT_NE(static_cast<bool>(object), static_cast<bool>(error));
            dissolve(object);
            return static_cast<bool>(object);
        };
        EXPECT_TRUE(tried(archive));
        for (std::size_t length = 0; length < archive.size(); ++length)
            EXPECT_FALSE(tried(archive.substr(0, length))) << length;
        for (std::size_t bit = 0; bit < 8 * archive.size(); ++bit) {
            std::string damaged = archive;
            damaged[bit / 8] = static_cast<char>(damaged[bit / 8] ^ 1 << bit % 8);
            tried(damaged);
        }
    }
}

TEST(ArchiveDamage, NothingIsKeptOfAnArchiveThatIsRefused) {
    const int before = ArchivedPerson::alive;
    const auto root = sample();
    static_cast<ArchivedPerson&>(*to<NSArray>(root)->firstObject()).age = 1;
    const auto data = NSKeyedArchiver::archivedDataWithRootObject(root);
    dissolve(root);
    ArchivedPerson::onInit = [](ArchivedPerson&, NSCoder&) {
        NSException::raise(NSGenericException, u"%@ is not welcome", u"Ada"_ns);
    };
    EXPECT_EQ(errorOf(data, ArchiveErrorRefused), "object 2 (ArchivedPerson): Ada is not welcome");
    ArchivedPerson::onInit = [](ArchivedPerson&, NSCoder&) { throw std::bad_alloc(); };
    EXPECT_THROW(NSKeyedUnarchiver::unarchiveObjectWithData(data), std::bad_alloc);
    ArchivedPerson::onInit = nullptr;
    EXPECT_EQ(ArchivedPerson::alive, before);
}

TEST(ArchiveDamage, KeysThatContainThemselvesAreRefused) {
    EXPECT_EQ(errorOf(Bytes().number(1).record('u', {1, 1})), "object 1 (NSSet): a key contains itself");
    EXPECT_EQ(errorOf(Bytes().number(2).record('h', {1, 2, 2}).record('A', {1, 1})),
              "object 1 (NSDictionary): a key contains itself");
    EXPECT_EQ(errorOf(Bytes().number(2).record('u', {1, 2}).record('a', {1, 2})),
              "object 1 (NSSet): a key contains itself");
}

// 100 lists, each of which holds the next one twice: the first one stands for 2^100 objects.
TEST(ArchiveDamage, KeysThatWouldTakeForeverToHashAreRefused) {
    Bytes bytes;
    bytes.number(102).record('u', {1, 2});
    for (NSUInteger i = 3; i <= 102; ++i)
        bytes.record('a', {2, i, i});
    bytes.record('0');
    EXPECT_EQ(errorOf(bytes), "object 1 (NSSet): the keys take too long to hash or to compare");
}

// Two towers of sets, equal to the top. Hashing a set is quick, comparing two takes both ways at each storey.
TEST(ArchiveDamage, KeysThatWouldTakeForeverToCompareAreRefused) {
    Bytes bytes;
    constexpr NSUInteger storeys = 100;
    bytes.number(4 * storeys + 2).record('u', {2, 2, 2 + 2 * storeys});
    for (NSUInteger i = 2; i < 4 * storeys + 2; i += 2) {
        const NSUInteger next = i == 2 * storeys ? 4 * storeys + 2 : i + 2;
        bytes.record('u', {2, i + 1, next}).record('a', {1, next});
    }
    bytes.record('0');
    EXPECT_EQ(errorOf(bytes), "object 1 (NSSet): the keys take too long to hash or to compare");
}

TEST(ArchiveDamage, NodesAsKeysAreMeasuredToo) {
    const auto tree = QVLNode2::initWithData(u"root"_ns);
    tree->appendChild(QVLNode2::initWithData(u"leaf"_ns));
    const auto keyed = NSDictionary::of({{NSArray::of(tree), 1}});
    for (const ArchiveForm& form : archiveForms)
        EXPECT_EQ(form.unarchive(form.archive(keyed), nullptr), keyed);
    // A node that is its own child.
    EXPECT_EQ(errorOf(Bytes({"QVLNode", "nodeChildren"})
                          .number(3)
                          .record('u', {1, 2})
                          .record('o', {0, 8, 3, 0})
                          .record('A', {1, 2})),
              "object 1 (NSSet): a key contains itself");
}
