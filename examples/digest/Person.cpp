#include <Person.h>

using namespace tovi;

namespace digest {

Person::Person(const NSString& name, const NSString& address)
    : name_(share(name)),
      address_(stringByDeletingPersonalInEmailAddress(address)),
      key_((address_->length() > 0 ? *address_ : name).lowercaseString()) {}

Ref<Person> Person::withName_address(const NSString& name, const NSString& address) {
    return adopt(*new Person(name, address));
}

Ref<NSString> Person::name() const {
    if (name_->length() > 0)
        return name_;
    return address_->length() > 0 ? address_ : u"(nobody)"_ns;
}

void Person::learnName(const NSString& name) {
    if (name_->length() == 0)
        name_ = share(name);
}

NSComparisonResult Person::compare(const Person& other) const {
    const NSComparisonResult order = name()->caseInsensitiveCompare(other.name());
    return order != NSOrderedSame ? order : key_->compare(other.key_);
}

bool Person::isEqual(const NSObject* other) const {
    const auto* person = as<Person>(other);
    return person && key_->isEqualToString(person->key_);
}

Ref<NSString> Person::description() const {
    if (name_->length() == 0 || address_->length() == 0)
        return name();
    return NSString::stringWithFormat(u"%@ <%@>", name_, address_);
}

namespace {

const Additions<Person> additions{
    instance<&Person::name>("name"),
    instance<&Person::address>("address"),
    instance<&Person::compare>("compare:"),
};

}  // namespace
}  // namespace digest
