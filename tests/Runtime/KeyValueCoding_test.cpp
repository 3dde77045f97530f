#include <gtest/gtest.h>

#include <ToviFoundationKit/ToviFoundationKit.h>

#include <support/Expect.h>
#include <support/Threads.h>

#include <atomic>

using namespace tovi;

namespace {

class Person : public NSObject {
    TOVI_CLASS(Person, NSObject)

public:
    static Ref<Person> make(RefPtr<Person> boss) {
        const Ref<Person> person = adopt(*new Person);
        person->boss_ = std::move(boss);
        return person;
    }
    Ref<NSString> getName() const { return u"by get"_ns; }
    Ref<NSString> name() const { return u"by key"_ns; }
    int age() const { return 41; }
    bool isRetired() const { return true; }
    RefPtr<Person> boss() const { return boss_; }
    NSPoint seat() const { return {1, 2}; }
    id echo(NSObject* argument) const { return argument; }
    void dismiss() {}

private:
    RefPtr<Person> boss_;
};

class Heir final : public Person {
    TOVI_CLASS(Heir, Person)
};

const Additions<Person> additions{
    instance<&Person::getName>("getName"),     instance<&Person::name>("name"),       instance<&Person::age>("age"),
    instance<&Person::isRetired>("isRetired"), instance<&Person::boss>("boss"),       instance<&Person::seat>("seat"),
    instance<&Person::echo>("echo:"),          instance<&Person::dismiss>("dismiss"),
};

}  // namespace

TEST(KeyValueCoding, ReadsThroughTheFirstAccessorThatThereIs) {
    const auto person = Person::make(nullptr);
    EXPECT_EQ(*person->valueForKey(u"name"_ns), *u"by get"_ns);
    EXPECT_EQ(*person->valueForKey(u"retired"_ns), *box(true));
    EXPECT_EQ(*person->valueForKey(u"isRetired"_ns), *box(true));
    EXPECT_EQ(*person->valueForKey(u"age"_ns), *box(41));
    EXPECT_EQ(*person->valueForKey(u"seat"_ns), *box(NSPoint{1, 2}));
    EXPECT_FALSE(person->valueForKey(u"boss"_ns));
}

TEST(KeyValueCoding, KeysOfEqualTextAreTheSame) {
    const auto person = Person::make(nullptr);
    const auto key = NSMutableString::stringWithString(*u"age"_ns);
    EXPECT_EQ(*person->valueForKey(key), *box(41));
    key->setString(u"retired"_ns);
    EXPECT_EQ(*person->valueForKey(key), *box(true));
}

TEST(KeyValueCoding, PathsEndAtNil) {
    const auto person = Person::make(Person::make(Person::make(nullptr)));
    EXPECT_EQ(*person->valueForKeyPath(u"boss.boss.age"_ns), *box(41));
    EXPECT_FALSE(person->valueForKeyPath(u"boss.boss.boss.boss.age"_ns));
    EXPECT_EQ(*NSDictionary::of({{u"who", person}})->valueForKeyPath(u"who.boss.name.length"_ns), *box(6));
}

TEST(KeyValueCoding, UnknownKeysRaise) {
    const auto person = Person::make(nullptr);
    for (const auto key : {u"salary", u"", u"echo:", u"dismiss", u"AGE"})
        EXPECT_RAISES(person->valueForKey(NSString::stringWithCharacters(key)), NSUndefinedKeyException,
                      "valueForUndefinedKey:]: this class is not key value coding-compliant for the key ");
    EXPECT_RAISES(person->valueForKeyPath(u"age."_ns), NSUndefinedKeyException, "[<NSNumber 0x");
    EXPECT_RAISES(person->valueForKey(u"salary"_ns), NSUndefinedKeyException, "compliant for the key salary.");
}

TEST(KeyValueCoding, SeesAccessorsThatAreAddedLater) {
    const auto heir = adopt(static_cast<Heir&>(*new Heir));
    EXPECT_EQ(*heir->valueForKey(u"age"_ns), *box(41));
    Heir::classObject().addMethod("getAge"_sel, [](Heir&) { return 7; });
    EXPECT_EQ(*heir->valueForKey(u"age"_ns), *box(7));
    EXPECT_EQ(*Person::make(nullptr)->valueForKey(u"age"_ns), *box(41));
}

TEST(KeyValueCoding, MayBeUsedOnManyThreadsAtOnce) {
    const auto person = Person::make(nullptr);
    std::atomic<int> wrong{0};
    onThreads(4, [&](int) {
        for (int i = 0; i < 2000; ++i)
            wrong += *person->valueForKey(i % 2 ? u"age"_ns : u"retired"_ns) != *(i % 2 ? box(41) : box(true));
    });
    EXPECT_EQ(wrong, 0);
}
