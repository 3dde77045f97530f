#include <ToviFoundationKit/Foundation/NSCoder.h>

#include <ToviFoundationKit/Runtime/Additions.h>
#include <ToviFoundationKit/Runtime/NSException.h>

namespace tovi {

TOVI_DEFINE_CLASS(NSCoder, NSObject)

void NSCoder::encodeObject_forKey(const NSObject*, const NSString&) { raiseWrongForm("encodeObject:forKey:"); }
void NSCoder::encodeInteger_forKey(NSInteger, const NSString&) { raiseWrongForm("encodeInteger:forKey:"); }
void NSCoder::encodeDouble_forKey(double, const NSString&) { raiseWrongForm("encodeDouble:forKey:"); }
void NSCoder::encodeBool_forKey(bool, const NSString&) { raiseWrongForm("encodeBool:forKey:"); }
bool NSCoder::containsValueForKey(const NSString&) const { raiseWrongForm("containsValueForKey:"); }
id NSCoder::decodeObjectForKey(const NSString&) { raiseWrongForm("decodeObjectForKey:"); }
NSInteger NSCoder::decodeIntegerForKey(const NSString&) { raiseWrongForm("decodeIntegerForKey:"); }
double NSCoder::decodeDoubleForKey(const NSString&) { raiseWrongForm("decodeDoubleForKey:"); }
bool NSCoder::decodeBoolForKey(const NSString&) { raiseWrongForm("decodeBoolForKey:"); }
void NSCoder::encodeObject(const NSObject*) { raiseWrongForm("encodeObject:"); }
id NSCoder::decodeObject() { raiseWrongForm("decodeObject"); }

void NSCoder::raiseWrongForm(std::string_view operation) const {
    const char* why = operation.starts_with("encode") ? "the coder does not encode" : "the coder does not decode";
    if (operation.ends_with("Key:") != allowsKeyedCoding())
        why = allowsKeyedCoding() ? "the coder is keyed" : "the coder is not keyed";
    NSException::raise(NSInvalidArgumentException, u"*** -[%@ %s]: %s", isa(), operation, why);
}

void NSCoder::raiseUnexpectedClass(const NSObject& object, const Class& expected) {
    NSException::raise(NSInvalidUnarchiveOperationException, u"a %@ was archived where a %@ is expected", object.isa(),
                       expected);
}

namespace {

const Additions<NSCoder> additions{
    instance<&NSCoder::allowsKeyedCoding>("allowsKeyedCoding"),
    instance<&NSCoder::encodeObject_forKey>("encodeObject:forKey:"),
    instance<&NSCoder::encodeInteger_forKey>("encodeInteger:forKey:"),
    instance<&NSCoder::encodeDouble_forKey>("encodeDouble:forKey:"),
    instance<&NSCoder::encodeBool_forKey>("encodeBool:forKey:"),
    instance<&NSCoder::containsValueForKey>("containsValueForKey:"),
    instance<&NSCoder::decodeObjectForKey>("decodeObjectForKey:"),
    instance<&NSCoder::decodeIntegerForKey>("decodeIntegerForKey:"),
    instance<&NSCoder::decodeDoubleForKey>("decodeDoubleForKey:"),
    instance<&NSCoder::decodeBoolForKey>("decodeBoolForKey:"),
    instance<&NSCoder::encodeObject>("encodeObject:"),
    instance<&NSCoder::decodeObject>("decodeObject"),
};

}  // namespace

}  // namespace tovi
