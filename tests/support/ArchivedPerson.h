#pragma once

#include <functional>

#include <ToviFoundationKit/ToviFoundationKit.h>

/// A host's class that takes part in archives: fields of every kind, and a friend, who may be a friend in turn.
class ArchivedPerson : public tovi::NSObject {
    TOVI_CLASS(ArchivedPerson, tovi::NSObject)

public:
    static tovi::Ref<ArchivedPerson> named(std::u16string_view name) {
        const tovi::Ref<ArchivedPerson> person = tovi::adopt(*new ArchivedPerson);
        person->name = tovi::box(name);
        return person;
    }
    ~ArchivedPerson() override { --alive; }

    tovi::Ref<tovi::NSObject> copy() const override { return share(*this); }
    bool isEqual(const tovi::NSObject* other) const override {
        const auto* person = tovi::as<ArchivedPerson>(other);
        return person && name == person->name;
    }
    tovi::NSUInteger hash() const override { return name ? name->hash() : 0; }

    void encodeWithCoder(tovi::NSCoder& coder) const {
        using namespace tovi;
        if (coder.allowsKeyedCoding()) {
            coder.encodeObject_forKey(name, u"name"_ns);
            coder.encodeInteger_forKey(age, u"age"_ns);
            coder.encodeDouble_forKey(height, u"height"_ns);
            coder.encodeBool_forKey(isMember, u"isMember"_ns);
            coder.encodeObject_forKey(friendly, u"friend"_ns);
        } else {
            for (const id& each : {id(name), id(box(age)), id(box(height)), id(box(isMember)), friendly})
                coder.encodeObject(each);
        }
    }
    void initWithCoder(tovi::NSCoder& coder) {
        using namespace tovi;
        if (coder.allowsKeyedCoding()) {
            friendly = coder.decodeObjectForKey(u"friend"_ns);
            isMember = coder.decodeBoolForKey(u"isMember"_ns);
            age = coder.decodeIntegerForKey(u"age"_ns);
            height = coder.decodeDoubleForKey(u"height"_ns);
            name = coder.decodeForKey<NSString>(u"name"_ns);
        } else {
            name = coder.decode<NSString>();
            age = coder.decode<NSNumber>()->integerValue();
            height = coder.decode<NSNumber>()->doubleValue();
            isMember = coder.decode<NSNumber>()->boolValue();
            friendly = coder.decodeObject();
        }
        if (onInit)
            onInit(*this, coder);
    }
    void breakReferenceCycles() { friendly = nullptr; }

    tovi::RefPtr<tovi::NSString> name;
    tovi::NSInteger age = 0;
    double height = 0;
    bool isMember = false;
    tovi::id friendly;

    inline static int alive = 0;
    inline static std::function<void(ArchivedPerson&, tovi::NSCoder&)> onInit;

protected:
    ArchivedPerson() { ++alive; }
};

inline const tovi::Additions<ArchivedPerson> archivedPersonAdditions{
    tovi::instance<&ArchivedPerson::encodeWithCoder>("encodeWithCoder:"),
    tovi::instance<&ArchivedPerson::initWithCoder>("initWithCoder:"),
    tovi::instance<&ArchivedPerson::breakReferenceCycles>("breakReferenceCycles"),
};

struct ArchiveForm {
    const char* name;
    tovi::Ref<tovi::NSData> (*archive)(const tovi::NSObject& root);
    tovi::id (*unarchive)(const tovi::NSData& data, tovi::RefPtr<tovi::NSError>* error);
};

inline constexpr ArchiveForm archiveForms[] = {
    {"Keyed", &tovi::NSKeyedArchiver::archivedDataWithRootObject, &tovi::NSKeyedUnarchiver::unarchiveObjectWithData},
    {"Unkeyed", &tovi::NSArchiver::archivedDataWithRootObject, &tovi::NSUnarchiver::unarchiveObjectWithData}};
