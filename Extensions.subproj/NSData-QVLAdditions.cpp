#include <ToviFoundationKit/Extensions/NSData-QVLAdditions.h>

#include <ToviFoundationKit/Extensions/HexDigits_p.h>
#include <ToviFoundationKit/Runtime/Additions.h>
#include <ToviFoundationKit/Runtime/NSAssertionHandler.h>
#include <ToviFoundationKit/Runtime/StringBuilder.h>

namespace tovi {
inline namespace HexStringRepresentations {

Ref<NSMutableData> dataWithHexString(const NSString& text) {
    Ref<NSMutableData> data = NSMutableData::dataWithCapacity((text.length() + 1) / 2);
    if (detail::readHexText(text, [&data](NSData::Bytes bytes) { data->appendBytes(bytes); }))
        return data;
    NSAssertionHandler::currentHandler()->failInMethod(
        "dataWithHexString:"_sel, &NSData::classObject(), "Extensions.subproj/NSData-QVLAdditions", 22,
        u"Assertion failure: String cannot be converted to plain ASCII encoding.");
    return NSMutableData::data();
}

Ref<NSMutableString> hexStringRepresentation(const NSData& receiver) {
    StringBuilder text;
    detail::writeHexDigits(receiver.bytes(), text.extend(2 * receiver.length()));
    return NSMutableString::stringWithString(text.string());
}

namespace {

const Additions<NSData> additions{
    classLevel<&dataWithHexString>("dataWithHexString:"),
    instance<static_cast<Ref<NSMutableString> (*)(const NSData&)>(&hexStringRepresentation)>("hexStringRepresentation"),
};

}  // namespace

}  // namespace HexStringRepresentations
}  // namespace tovi
