#include <ToviFoundationKit/Foundation/NSNull.h>

#include <ToviFoundationKit/Runtime/Additions.h>
#include <ToviFoundationKit/Runtime/NSString.h>

namespace tovi {

TOVI_DEFINE_CLASS(NSNull, NSObject)

Ref<NSNull> NSNull::null() {
    static NSNull& only = *adopt(*new NSNull).leak();
    return only;
}

Ref<NSString> NSNull::description() const { return u"<null>"_ns; }
Ref<NSObject> NSNull::copy() const { return share(*this); }

namespace {

const Additions<NSNull> additions{
    classLevel<&NSNull::null>("null"),
};

}  // namespace

}  // namespace tovi
