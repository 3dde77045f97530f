#include <ToviFoundationKit/Extensions/NSString-Unique.h>

#include <ToviFoundationKit/CoreFoundation/CFUUID.h>
#include <ToviFoundationKit/Runtime/Additions.h>

namespace tovi {
inline namespace QVLAdditions {

Ref<NSString> newUniqueString() { return CFUUIDCreateString(CFUUIDCreate()); }
Ref<NSString> uniqueString() { return newUniqueString(); }

// Strings are UTF-16, and the mark that a conversion adds it takes away again: there is nothing to convert.
RefPtr<NSString> unicodeStringWithString(const NSString* text) {
    return text ? RefPtr<NSString>(NSString::stringWithString(*text)) : nullptr;
}

namespace {

const Additions<NSString> additions{
    classLevel<&newUniqueString>("newUniqueString"),
    classLevel<&uniqueString>("uniqueString"),
    classLevel<&unicodeStringWithString>("unicodeStringWithString:"),
};

}  // namespace

}  // namespace QVLAdditions
}  // namespace tovi
