#include <algorithm>
#include <functional>

#include <ToviFoundationKit/Runtime/Additions.h>
#include <ToviFoundationKit/Runtime/NSString.h>
#include <ToviFoundationKit/Runtime/StringMemory_p.h>

namespace tovi {

TOVI_DEFINE_CLASS(NSMutableString, NSString)

Ref<NSMutableString> NSMutableString::string() { return adopt(*new NSMutableString); }

Ref<NSMutableString> NSMutableString::stringWithString(const NSString& other) {
    Ref<NSMutableString> result = string();
    result->appendString(other);
    return result;
}

Ref<NSMutableString> NSMutableString::stringWithCapacity(NSUInteger capacity) {
    Ref<NSMutableString> result = string();
    result->reserve(capacity);
    return result;
}

NSMutableString::~NSMutableString() {
    if (capacity_)
        std::free(const_cast<char16_t*>(units_));
}

void NSMutableString::reserve(NSUInteger capacity) {
    if (capacity <= capacity_)
        return;
    void* const old = capacity_ ? const_cast<char16_t*>(units_) : nullptr;
    units_ = static_cast<const char16_t*>(detail::resized(old, 0, capacity));
    capacity_ = capacity;
}

/// What every change comes down to. The replacement may be a part of the receiver.
void NSMutableString::splice(NSRange range, std::u16string_view replacement) {
    if (!std::less<>()(replacement.data(), units_) && std::less<>()(replacement.data(), units_ + length_)) {
        const Ref<NSString> kept = stringWithCharacters(replacement);
        return splice(range, *kept);
    }
    const NSUInteger length = length_ - range.length + replacement.size();
    if (length > capacity_)
        reserve(std::max(length, capacity_ * 2));
    auto* const target = const_cast<char16_t*>(units_) + range.location;
    std::memmove(target + replacement.size(), target + range.length, (length_ - range.end()) * sizeof(char16_t));
    std::copy_n(replacement.data(), replacement.size(), target);
    length_ = length;
}

void NSMutableString::appendCharacters(std::u16string_view units) { splice({length_, 0}, units); }
void NSMutableString::appendString(const NSString& suffix) { splice({length_, 0}, suffix); }

void NSMutableString::insertString_atIndex(const NSString& inserted, NSUInteger index) {
    checkIndex(index, "insertString:atIndex:");
    splice({index, 0}, inserted);
}

void NSMutableString::deleteCharactersInRange(NSRange range) {
    checkRange(range, "deleteCharactersInRange:");
    splice(range, {});
}

void NSMutableString::replaceCharactersInRange_withString(NSRange range, const NSString& replacement) {
    replaceCharactersInRange_withCharacters(range, replacement);
}

void NSMutableString::replaceCharactersInRange_withCharacters(NSRange range, std::u16string_view replacement) {
    checkRange(range, "replaceCharactersInRange:withString:");
    splice(range, replacement);
}

void NSMutableString::setString(const NSString& other) { splice({0, length_}, other); }

NSUInteger NSMutableString::hash() const { return hashOf(*this); }
Ref<NSObject> NSMutableString::copy() const { return stringWithCharacters(*this); }

namespace {

const Additions<NSMutableString> additions{
    classLevel<&NSMutableString::string>("string"),
    classLevel<&NSMutableString::stringWithString>("stringWithString:"),
    classLevel<&NSMutableString::stringWithCapacity>("stringWithCapacity:"),
    instance<&NSMutableString::appendString>("appendString:"),
    instance<&NSMutableString::insertString_atIndex>("insertString:atIndex:"),
    instance<&NSMutableString::deleteCharactersInRange>("deleteCharactersInRange:"),
    instance<&NSMutableString::replaceCharactersInRange_withString>("replaceCharactersInRange:withString:"),
    instance<&NSMutableString::setString>("setString:"),
};

}  // namespace

}  // namespace tovi
