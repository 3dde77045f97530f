#include <cmath>
#include <limits>

#include <gtest/gtest.h>

#include <support/ArchivedPerson.h>
#include <support/Expect.h>

using namespace tovi;

namespace {

class InBothForms : public testing::TestWithParam<ArchiveForm> {
protected:
    ~InBothForms() override { ArchivedPerson::onInit = nullptr; }

    static Ref<NSObject> archivedAndBack(const NSObject& root) {
        RefPtr<NSError> error;
        id result = GetParam().unarchive(GetParam().archive(root), &error);
        EXPECT_FALSE(error) << error;
        return result.ref();
    }
    template <class T> static Ref<T> back(const NSObject& root) { return to<T>(archivedAndBack(root)); }
};

INSTANTIATE_TEST_SUITE_P(NSCoder, InBothForms, testing::ValuesIn(archiveForms),
                         [](const auto& each) { return each.param.name; });

/// A list of its own kind, which writes itself.
class ArchivedList : public NSArray {
    TOVI_CLASS(ArchivedList, NSArray)

public:
    static Ref<ArchivedList> list() { return adopt(*new ArchivedList); }
    void encodeWithCoder(NSCoder& coder) const { coder.encodeObject_forKey(title, u"title"_ns); }
    void initWithCoder(NSCoder& coder) { title = coder.decodeForKey<NSString>(u"title"_ns); }
    RefPtr<NSString> title;
};

const Additions<ArchivedList> listAdditions{
    instance<&ArchivedList::encodeWithCoder>("encodeWithCoder:"),
    instance<&ArchivedList::initWithCoder>("initWithCoder:"),
};

class WithoutInit : public NSObject {
    TOVI_CLASS(WithoutInit, NSObject)

public:
    static Ref<WithoutInit> object() { return adopt(*new WithoutInit); }
    void encodeWithCoder(NSCoder&) const {}
};
const Additions<WithoutInit> withoutInitAdditions{instance<&WithoutInit::encodeWithCoder>("encodeWithCoder:")};

class NotMadeFromNothing : public ArchivedPerson {
    TOVI_CLASS(NotMadeFromNothing, ArchivedPerson)

public:
    explicit NotMadeFromNothing(int) {}
};

class CoderUser : public NSObject {
    TOVI_CLASS(CoderUser, NSObject)

public:
    static Ref<CoderUser> object(std::function<void(NSCoder&)> encode, std::function<void(NSCoder&)> decode = {}) {
        encoding = std::move(encode);
        decoding = std::move(decode);
        return adopt(*new CoderUser);
    }
    void encodeWithCoder(NSCoder& coder) const { encoding(coder); }
    void initWithCoder(NSCoder& coder) { decoding(coder); }

private:
    inline static std::function<void(NSCoder&)> encoding;
    inline static std::function<void(NSCoder&)> decoding;
};
const Additions<CoderUser> coderUserAdditions{instance<&CoderUser::encodeWithCoder>("encodeWithCoder:"),
                                              instance<&CoderUser::initWithCoder>("initWithCoder:")};

}  // namespace

TEST_P(InBothForms, ValuesComeBackWithTheirClassAndType) {
    constexpr auto int64 = std::numeric_limits<std::int64_t>();
    const auto bytes = NSData::dataWithBytes_length("\0\1\xFF", 3);
    const auto indexes = NSMutableIndexSet::indexSetWithIndexesInRange({3, 4});
    indexes->addIndexesInRange({100, NSNotFound - 100});
    const auto values = NSArray::of(
        u"", u"plain", u"\u00E4\u00FF", u"wide \u0100 \U0001F600", std::u16string_view(u"\xD800 \0 end", 8),
        NSMutableString::stringWithString(u"mutable"_ns), NSNull::null(), true, false, static_cast<signed char>(-128),
        static_cast<unsigned char>(255), short{-32768}, static_cast<unsigned short>(65535), int64.min(), int64.max(),
        -1, 4294967295U, std::numeric_limits<std::uint64_t>::max(), NSNumber::numberWithLong(-64),
        NSNumber::numberWithUnsignedLong(128), 0.1F, -0.1, -0.0, std::numeric_limits<double>::denorm_min(),
        std::numeric_limits<double>::infinity(), std::nan(""), NSPoint{1, -2.5}, NSSize{3, 1e300},
        NSRect{{1, 2}, {3, 4}}, NSRangeNotFound, NSData::data(), bytes, bytes->mutableCopy(),
        NSDate::dateWithTimeIntervalSinceReferenceDate(-12345.678), NSIndexSet::indexSet(), indexes->copy(), indexes,
        NSArray::of(1, NSArray::array()), NSMutableArray::of(u"a", NSMutableArray::array()),
        NSMutableArray::immutableArrayWithArray(NSArray::of(1)), NSSet::of(1, u"b", NSSet::of(2)),
        NSMutableSet::of(NSMutableSet::set()), NSDictionary::of({{u"k", 1}, {NSArray::of(1, u"x"), NSNull::null()}}),
        NSMutableDictionary::of({{NSDictionary::of({{1, 2}}), NSSet::set()}}), NSString::classObject(),
        ArchivedPerson::classObject());
    const auto same = back<NSArray>(values);
    ASSERT_EQ(same->count(), values->count());
    for (NSUInteger i = 0; i < values->count(); ++i) {
        EXPECT_EQ((*same)[i], (*values)[i]);
        EXPECT_EQ(&(*same)[i].isa(), &(*values)[i].isa()) << (*values)[i];
        if (const auto* value = as<NSValue>(&(*values)[i])) {
            EXPECT_STREQ(static_cast<const NSValue&>((*same)[i]).objCType(), value->objCType());
            EXPECT_EQ((*same)[i].description(), value->description());  // tells -0 from 0
        }
    }
}

TEST_P(InBothForms, EntriesKeepTheirOrder) {
    const auto keyed = NSMutableDictionary::of({{u"z", 1}, {u"gone", 2}, {u"a", 3}});
    keyed->removeObjectForKey(u"gone"_ns);
    EXPECT_EQ(back<NSDictionary>(keyed)->allKeys(), NSArray::of(u"z", u"a"));
    EXPECT_EQ(back<NSSet>(NSSet::of(3, 1, 2))->allObjects(), NSArray::of(3, 1, 2));
}

TEST_P(InBothForms, AnObjectIsOneHoweverOftenReferredTo) {
    const auto shared = NSMutableString::stringWithString(u"shared"_ns);
    const auto person = ArchivedPerson::named(u"Ada");
    person->friendly = shared;
    const auto list = back<NSArray>(NSArray::of(shared, person, shared, NSDictionary::of({{u"k", shared}}), person));
    EXPECT_EQ(&(*list)[0], &(*list)[2]);
    EXPECT_EQ(&(*list)[1], &(*list)[4]);
    EXPECT_EQ(static_cast<ArchivedPerson&>((*list)[1]).friendly.get(), &(*list)[0]);
    EXPECT_EQ(static_cast<NSDictionary&>((*list)[3]).find(u"k"_ns), &(*list)[0]);
}

TEST_P(InBothForms, ObjectsOfAHostsClassKeepTheirFieldsAndCircles) {
    {
        const auto ada = ArchivedPerson::named(u"Ada");
        const auto grace = ArchivedPerson::named(u"Grace");
        ada->age = -36;
        ada->height = 1.625;
        ada->isMember = true;
        ada->friendly = grace;
        grace->friendly = NSMutableArray::of(ada);
        const auto same = back<ArchivedPerson>(ada);
        EXPECT_EQ(same->name, u"Ada"_ns);
        EXPECT_EQ(same->age, -36);
        EXPECT_EQ(same->height, 1.625);
        EXPECT_TRUE(same->isMember);
        const auto sameGrace = to<ArchivedPerson>(same->friendly);
        EXPECT_EQ(sameGrace->age, 0);
        EXPECT_FALSE(sameGrace->isMember);
        EXPECT_EQ(&(*to<NSArray>(sameGrace->friendly))[0], same.get());
        ada->breakReferenceCycles();
        same->breakReferenceCycles();
    }
    EXPECT_EQ(ArchivedPerson::alive, 0);
}

TEST_P(InBothForms, AListMayContainItselfAndADictionaryItselfAsAValue) {
    const auto list = NSMutableArray::array();
    const auto keyed = NSMutableDictionary::dictionary();
    keyed->setObject_forKey(list, u"list"_ns);
    keyed->setObject_forKey(keyed, u"self"_ns);
    list->addObject(list);
    list->addObject(keyed);
    const auto same = back<NSMutableArray>(list);
    EXPECT_EQ(&(*same)[0], same.get());
    auto& sameKeyed = static_cast<NSMutableDictionary&>((*same)[1]);
    EXPECT_EQ(sameKeyed.find(u"self"_ns), &sameKeyed);
    EXPECT_EQ(sameKeyed.find(u"list"_ns), same.get());
    for (NSMutableDictionary* each : {keyed.get(), &sameKeyed})
        each->removeAllObjects();
    for (NSMutableArray* each : {list.get(), same.get()})
        each->removeAllObjects();
}

TEST_P(InBothForms, AnObjectIsInitializedAfterThoseThatItRefersTo) {
    const auto ada = ArchivedPerson::named(u"Ada");
    ada->friendly = NSDictionary::of(
        {{u"names", NSArray::of(ArchivedPerson::named(u"Grace"))}, {u"keyed", NSDictionary::of({{u"k", u"v"}})}});
    std::string order;
    ArchivedPerson::onInit = [&](ArchivedPerson& person, NSCoder&) {
        order += person.name->UTF8String() + " ";
        if (person.friendly) {
            EXPECT_EQ(to<NSDictionary>(person.friendly)->valueForKeyPath(u"keyed.k"_ns), u"v"_ns);
        }
    };
    archivedAndBack(ada);
    EXPECT_EQ(order, "Grace Ada ");
}

TEST_P(InBothForms, KeysMayBeAHostsObjectsAndContainThem) {
    const auto ada = ArchivedPerson::named(u"Ada");
    const auto keyed = NSDictionary::of({{ada, 1}, {NSArray::of(ada, NSSet::of(ada)), 2}, {u"plain", 3}});
    const auto nested = NSDictionary::of({{keyed, NSSet::of(keyed, 1)}, {NSArray::of(keyed), 4}});
    EXPECT_EQ(archivedAndBack(nested), nested);
    ada->friendly = keyed;
    const auto same = back<ArchivedPerson>(ada);
    EXPECT_EQ(to<NSDictionary>(same->friendly)->objectForKey(same), box(1));
    ada->breakReferenceCycles();
    same->breakReferenceCycles();
}

TEST_P(InBothForms, MillionsOfObjectsNeedNoStack) {
    constexpr int depth = 1'000'000;
    Ref<NSObject> lists = NSArray::array(), persons = ArchivedPerson::named(u"first");
    Ref<NSObject> keys = NSSet::of(1);
    for (int i = 0; i < depth; ++i) {
        lists = i % 2 ? Ref<NSObject>(NSArray::of(lists)) : Ref<NSObject>(NSMutableArray::of(lists));
        const auto next = ArchivedPerson::named(u"next");
        next->friendly = persons;
        persons = next;
    }
    EXPECT_EQ(archivedAndBack(lists), lists);
    id at = archivedAndBack(persons);
    int length = -1;
    for (; at; ++length)
        at = to<ArchivedPerson>(at)->friendly;
    EXPECT_EQ(length, depth);
    for (int i = 0; i < 100'000; ++i)
        keys = i % 2 ? Ref<NSObject>(NSDictionary::of({{keys, 1}})) : Ref<NSObject>(NSSet::of(keys));
    EXPECT_EQ(archivedAndBack(keys), keys);
}

TEST(NSCoder, RefusesObjectsThatCouldNotBeReadAgain) {
    const auto error = NSError::errorWithDomain_code_userInfo(u"D"_ns, 1, nullptr);
    const std::pair<Ref<NSObject>, const char*> cases[] = {
        {error, "NSError cannot be archived: it does not respond to encodeWithCoder:"},
        {WithoutInit::object(), "WithoutInit cannot be archived: it does not respond to initWithCoder:"},
        {adopt(*new NotMadeFromNothing(1)), "NotMadeFromNothing cannot be archived: the class has no constructor"},
    };
    for (const auto& [object, text] : cases)
        EXPECT_RAISES(NSKeyedArchiver::archivedDataWithRootObject(NSArray::of(1, object)), NSInvalidArgumentException,
                      text);
}

TEST(NSCoder, ASubclassOfACollectionWritesItself) {
    const auto list = ArchivedList::list();
    list->title = u"things"_ns;
    const id same = NSKeyedUnarchiver::unarchiveObjectWithData(NSKeyedArchiver::archivedDataWithRootObject(list));
    EXPECT_EQ(to<ArchivedList>(same)->title, u"things"_ns);
}

TEST(NSCoder, CallsOfTheWrongFormRaise) {
    const auto tried = [](auto archive, auto unarchive, auto use) {
        const auto user = CoderUser::object([](NSCoder&) {}, use);
        RefPtr<NSError> error;
        EXPECT_FALSE(unarchive(archive(user), &error));
        return error ? error->localizedDescription()->UTF8String() : "";
    };
    const auto [keyed, unkeyed] = archiveForms;
    EXPECT_EQ(tried(keyed.archive, keyed.unarchive, [](NSCoder& coder) { coder.decodeObject(); }),
              "object 1 (CoderUser): *** -[NSKeyedUnarchiver decodeObject]: the coder is keyed");
    EXPECT_EQ(tried(keyed.archive, keyed.unarchive, [](NSCoder& coder) { coder.encodeBool_forKey(true, u"k"_ns); }),
              "object 1 (CoderUser): *** -[NSKeyedUnarchiver encodeBool:forKey:]: the coder does not encode");
    EXPECT_EQ(tried(unkeyed.archive, unkeyed.unarchive, [](NSCoder& coder) { coder.containsValueForKey(u"k"_ns); }),
              "object 1 (CoderUser): *** -[NSUnarchiver containsValueForKey:]: the coder is not keyed");
    const auto encoder = CoderUser::object([](NSCoder& coder) { coder.encodeObject_forKey(nullptr, u"k"_ns); });
    EXPECT_RAISES(NSArchiver::archivedDataWithRootObject(encoder), NSInvalidArgumentException, "is not keyed");
}

TEST(NSCoder, FieldsAreFoundByKeyAndKind) {
    const auto key = NSMutableString::stringWithString(u"object"_ns);
    const auto user = CoderUser::object(
        [&](NSCoder& coder) {
            coder.encodeObject_forKey(NSArray::of(1).get(), key);
            key->setString(u"changed"_ns);
            coder.encodeObject_forKey(nullptr, u"nil"_ns);
            coder.encodeInteger_forKey(-7, u"integer"_ns);
        },
        [](NSCoder& coder) {
            EXPECT_EQ(coder.decodeIntegerForKey(u"integer"_ns), -7);
            EXPECT_EQ(coder.decodeForKey<NSArray>(u"object"_ns), NSArray::of(1));
            EXPECT_TRUE(coder.containsValueForKey(u"nil"_ns));
            EXPECT_FALSE(coder.decodeForKey<NSArray>(u"nil"_ns));
            EXPECT_FALSE(coder.containsValueForKey(u"missing"_ns));
            EXPECT_FALSE(coder.decodeObjectForKey(u"missing"_ns));
            EXPECT_EQ(coder.decodeDoubleForKey(u"missing"_ns), 0);
            EXPECT_RAISES(coder.decodeForKey<NSString>(u"object"_ns), NSInvalidUnarchiveOperationException,
                          "a NSArray was archived where a NSString is expected");
            EXPECT_RAISES(coder.decodeDoubleForKey(u"integer"_ns), NSInvalidUnarchiveOperationException,
                          "an integer is stored under the key 'integer', not a double");
        });
    EXPECT_TRUE(NSKeyedUnarchiver::unarchiveObjectWithData(NSKeyedArchiver::archivedDataWithRootObject(user)));
    const auto twice = CoderUser::object([](NSCoder& coder) {
        coder.encodeBool_forKey(true, u"k"_ns);
        coder.encodeInteger_forKey(1, u"k"_ns);
    });
    EXPECT_RAISES(NSKeyedArchiver::archivedDataWithRootObject(twice), NSInvalidArgumentException, "'k' is used twice");
}

TEST(NSCoder, AnUnkeyedRowEnds) {
    const auto user = CoderUser::object([](NSCoder& coder) { coder.encodeObject(nullptr); },
                                        [](NSCoder& coder) {
                                            EXPECT_FALSE(coder.decodeObject());
                                            EXPECT_RAISES(coder.decodeObject(), NSInvalidUnarchiveOperationException,
                                                          "no more than 1 objects");
                                        });
    EXPECT_TRUE(NSUnarchiver::unarchiveObjectWithData(NSArchiver::archivedDataWithRootObject(user)));
}

TEST(NSCoder, AnUnarchiverHoldsWhatItHasRead) {
    RefPtr<NSCoder> coder;
    ArchivedPerson* weak = nullptr;
    ArchivedPerson::onInit = [&](ArchivedPerson& person, NSCoder& used) {
        coder = used;
        if (person.name == u"Grace"_ns)
            weak = &person;
        else
            person.friendly = nullptr;
    };
    const auto ada = ArchivedPerson::named(u"Ada");
    ada->friendly = ArchivedPerson::named(u"Grace");
    const auto data = NSKeyedArchiver::archivedDataWithRootObject(ada);
    auto unarchiver = NSKeyedUnarchiver::unarchiverForReadingWithData(data);
    ArchivedPerson::onInit = nullptr;
    EXPECT_EQ(unarchiver->rootObject(), ada);
    EXPECT_EQ(weak->retainCount(), 1U);
    EXPECT_RAISES(coder->decodeObjectForKey(u"name"_ns), NSInvalidArgumentException, "while initWithCoder: is sent");
    const int alive = ArchivedPerson::alive;
    coder = nullptr;
    unarchiver = nullptr;
    EXPECT_EQ(ArchivedPerson::alive, alive - 2);
}

TEST(NSCoder, IsReachedByMessages) {
    const id data = send(NSArchiver::classObject(), "archivedDataWithRootObject:"_sel, NSArray::of(1, 2));
    EXPECT_EQ(send(NSUnarchiver::classObject(), "unarchiveObjectWithData:"_sel, data), NSArray::of(1, 2));
    EXPECT_FALSE(send(NSKeyedUnarchiver::classObject(), "unarchiveObjectWithData:"_sel, data));
    EXPECT_RAISES(send(NSArchiver::classObject(), "archivedDataWithRootObject:"_sel, nullptr),
                  NSInvalidArgumentException, "");
}
