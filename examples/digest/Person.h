#pragma once

#include <ToviFoundationKit/ToviFoundationKit.h>

namespace digest {

/// Somebody who writes messages, known by the address, in any case, or by the name where there is none. People are
/// equal when what they are known by is, so they can be looked up in sets and dictionaries.
class Person final : public tovi::NSObject {
    TOVI_CLASS(Person, NSObject)

public:
    /// The address may be a whole mailbox, "Ada <ada@example.org>".
    static tovi::Ref<Person> withName_address(const tovi::NSString& name, const tovi::NSString& address);

    /// The name, else the address, else "(nobody)".
    tovi::Ref<tovi::NSString> name() const;
    tovi::Ref<tovi::NSString> address() const { return address_; }  ///< may be empty

    /// Gives a name to somebody who has only an address so far.
    void learnName(const tovi::NSString& name);

    /// By name, capital or small; people of one name by address.
    tovi::NSComparisonResult compare(const Person& other) const;

    bool isEqual(const tovi::NSObject* other) const override;
    tovi::NSUInteger hash() const override { return key_->hash(); }
    tovi::Ref<tovi::NSString> description() const override;                   ///< "Ada Byron <ada@example.org>"
    tovi::Ref<tovi::NSObject> copy() const override { return share(*this); }  ///< the very person

private:
    Person(const tovi::NSString& name, const tovi::NSString& address);

    tovi::Ref<tovi::NSString> name_;
    tovi::Ref<tovi::NSString> address_;
    tovi::Ref<tovi::NSString> key_;
};

}  // namespace digest
