#include <ToviFoundationKit/CoreFoundation/CFUUID.h>

#include <cstring>

#include <uuid/uuid.h>

#include <ToviFoundationKit/Runtime/Cast.h>

namespace tovi {

TOVI_DEFINE_CLASS(CFUUID, NSObject)

bool CFUUID::isEqual(const NSObject* other) const {
    const auto* const uuid = as<CFUUID>(other);
    return uuid && uuid->bytes_ == bytes_;
}

NSUInteger CFUUID::hash() const {
    NSUInteger result = 0;
    std::memcpy(&result, bytes_.data(), sizeof result);
    return result;
}

Ref<NSString> CFUUID::description() const { return CFUUIDCreateString(*this); }
Ref<NSObject> CFUUID::copy() const { return share(*this); }

Ref<CFUUID> CFUUIDCreate() {
    CFUUID::Bytes bytes;
    uuid_generate_random(bytes.data());
    return adopt(*new CFUUID(bytes));
}

Ref<NSString> CFUUIDCreateString(const CFUUID& uuid) {
    char text[UUID_STR_LEN];
    uuid_unparse_upper(uuid.bytes().data(), text);
    return NSString::fromUTF8(text);
}

}  // namespace tovi
