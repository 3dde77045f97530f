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
    const Class& exact = other.isa();
    const NSString* const source = &exact == &class_.value ? static_cast<const NSMutableString&>(other).source()
                                   : &exact == &NSString::classObject() ? &other
                                                                        : nullptr;
    if (!source || !other.length()) {
        result->appendString(other);
        return result;
    }
    result->shareUnits(*source);
    return result;
}

Ref<NSMutableString> NSMutableString::stringWithCapacity(NSUInteger capacity) {
    Ref<NSMutableString> result = string();
    result->reserve(capacity);
    return result;
}

NSMutableString::~NSMutableString() { own(nullptr, 0); }

void NSMutableString::own(const char16_t* units, std::uintptr_t store) noexcept {
    if (const NSString* const shared = source())
        shared->release();
    else if (capacity())
        std::free(const_cast<char16_t*>(units_));
    units_ = units;
    store_ = store;
}

/// The units are those of an immutable string from now on, until the first change.
void NSMutableString::shareUnits(const NSString& source) {
    source.retain();
    own(source.view().data(), reinterpret_cast<std::uintptr_t>(&source));
    length_ = source.length();
}

void NSMutableString::reserve(NSUInteger capacity) {
    if (capacity <= this->capacity())
        return;
    char16_t* fresh;
    if (this->capacity()) {
        fresh = static_cast<char16_t*>(detail::resized(const_cast<char16_t*>(units_), 0, capacity));
        store_ = 0;
    } else {
        fresh = static_cast<char16_t*>(detail::allocated(0, capacity));
        std::copy_n(units_, length_, fresh);
    }
    own(fresh, capacity << 1 | 1);
}

/// What every change comes down to. The replacement may be a part of the receiver.
void NSMutableString::splice(NSRange range, std::u16string_view replacement) {
    if (!std::less<>()(replacement.data(), units_) && std::less<>()(replacement.data(), units_ + length_)) {
        const Ref<NSString> kept = stringWithCharacters(replacement);
        return splice(range, *kept);
    }
    const NSUInteger length = length_ - range.length + replacement.size();
    if (!length && source()) {
        own(u"", 0);
        length_ = 0;
        return;
    }
    if (length > capacity() || source())
        reserve(std::max({length, length_, capacity() * 2}));
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

void NSMutableString::setString(const NSString& other) {
    if (other.length() && &other.isa() == &NSString::classObject())
        shareUnits(other);
    else
        splice({0, length_}, other);
}

NSUInteger NSMutableString::hash() const { return source() ? source()->hash() : hashOf(*this); }

Ref<NSObject> NSMutableString::copy() const {
    return source() ? share<NSObject>(*source()) : stringWithCharacters(*this);
}

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
