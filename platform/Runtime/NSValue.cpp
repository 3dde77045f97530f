#include <ToviFoundationKit/Runtime/NSValue.h>

#include <bit>

#include <ToviFoundationKit/Runtime/Additions.h>
#include <ToviFoundationKit/Runtime/Box.h>

namespace tovi {

TOVI_DEFINE_CLASS(NSValue, NSObject)

namespace {

NSUInteger mixed(NSUInteger hash, NSUInteger bits) noexcept { return (hash ^ bits) * 0x9E3779B97F4A7C15U >> 1; }
NSUInteger mixed(NSUInteger hash, double field) noexcept {
    return mixed(hash, field == 0 ? NSUInteger() : std::bit_cast<NSUInteger>(field));
}

NSUInteger hashOf(const NSRange& range) noexcept { return mixed(mixed(0, range.location), range.length); }
NSUInteger hashOf(const NSPoint& point) noexcept { return mixed(mixed(0, point.x), point.y); }
NSUInteger hashOf(const NSSize& size) noexcept { return mixed(mixed(0, size.width), size.height); }
NSUInteger hashOf(const NSRect& rect) noexcept { return mixed(hashOf(rect.origin), hashOf(rect.size)); }

Ref<NSString> describe(const NSRange& range) {
    return NSString::stringWithFormat(u"NSRange: {%lu, %lu}", range.location, range.length);
}
Ref<NSString> pair(double first, double second) {
    return NSString::stringWithFormat(u"{%@, %@}", box(first), box(second));
}
Ref<NSString> describe(const NSPoint& point) {
    return NSString::stringWithFormat(u"NSPoint: %@", pair(point.x, point.y));
}
Ref<NSString> describe(const NSSize& size) {
    return NSString::stringWithFormat(u"NSSize: %@", pair(size.width, size.height));
}
Ref<NSString> describe(const NSRect& rect) {
    return NSString::stringWithFormat(u"NSRect: {%@, %@}", pair(rect.origin.x, rect.origin.y),
                                      pair(rect.size.width, rect.size.height));
}

template <class T> class StructureValue final : public NSValue {
public:
    explicit StructureValue(const T& content) noexcept : content_(content) {}

    const char* objCType() const noexcept override { return detail::encodingOf<T>(); }
    MessageValue messageValue() const override { return MessageValue::of(content_); }
    bool isEqual(const NSObject* other) const override {
        const auto* value = dynamic_cast<const StructureValue*>(other);
        return value && value->content_ == content_;
    }
    NSUInteger hash() const override { return hashOf(content_); }
    Ref<NSString> description() const override { return describe(content_); }

private:
    const T content_;
};

template <class T> Ref<NSValue> make(const T& content) { return adopt(*new StructureValue<T>(content)); }

template <class T> T content(const NSValue& value) {
    return value.messageValue().converted(detail::kindOf<T>(), detail::encodingOf<T>()).template raw<T>();
}

}  // namespace

Ref<NSValue> NSValue::valueWithPoint(NSPoint point) { return make(point); }
Ref<NSValue> NSValue::valueWithSize(NSSize size) { return make(size); }
Ref<NSValue> NSValue::valueWithRect(NSRect rect) { return make(rect); }
Ref<NSValue> NSValue::valueWithRange(NSRange range) { return make(range); }

NSPoint NSValue::pointValue() const { return content<NSPoint>(*this); }
NSSize NSValue::sizeValue() const { return content<NSSize>(*this); }
NSRect NSValue::rectValue() const { return content<NSRect>(*this); }
NSRange NSValue::rangeValue() const { return content<NSRange>(*this); }

Ref<NSString> NSValue::description() const { return NSObject::description(); }
Ref<NSObject> NSValue::copy() const { return share(*this); }

namespace {

const Additions<NSValue> additions{
    classLevel<&NSValue::valueWithPoint>("valueWithPoint:"),
    classLevel<&NSValue::valueWithSize>("valueWithSize:"),
    classLevel<&NSValue::valueWithRect>("valueWithRect:"),
    classLevel<&NSValue::valueWithRange>("valueWithRange:"),
    instance<&NSValue::pointValue>("pointValue"),
    instance<&NSValue::sizeValue>("sizeValue"),
    instance<&NSValue::rectValue>("rectValue"),
    instance<&NSValue::rangeValue>("rangeValue"),
    instance<&NSValue::isEqualToValue>("isEqualToValue:"),
};

}  // namespace

}  // namespace tovi
