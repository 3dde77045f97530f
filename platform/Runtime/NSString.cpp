#include <ToviFoundationKit/Runtime/NSString.h>

#include <algorithm>
#include <iterator>

#include <ToviFoundationKit/Runtime/Additions.h>
#include <ToviFoundationKit/Runtime/Cast.h>
#include <ToviFoundationKit/Runtime/NSException.h>
#include <ToviFoundationKit/Runtime/NSFormat.h>
#include <ToviFoundationKit/Runtime/StringBuilder.h>
#include <ToviFoundationKit/Runtime/StringMemory_p.h>
#include <ToviFoundationKit/Runtime/Unicode_p.h>
#include <ToviFoundationKit/Runtime/UTF8_p.h>

namespace tovi {

TOVI_DEFINE_CLASS(NSString, NSObject)

// The immutable form lies in one block with its units, whose size only its allocator knows: hence malloc and free.
void* NSString::operator new(std::size_t size) { return detail::allocated(size, 0); }
void NSString::operator delete(void* memory) { std::free(memory); }

Ref<NSString> NSString::string() {
    static NSString& empty = *adopt(*new NSString).leak();
    return empty;
}

Ref<NSString> NSString::stringWithString(const NSString& other) {
    return other.isMemberOfClass(classObject()) ? share(other) : stringWithCharacters(other);
}

Ref<NSString> NSString::stringWithCharacters(std::u16string_view units) {
    void* const block = detail::allocated(sizeof(NSString), units.size());
    auto* const copied = reinterpret_cast<char16_t*>(static_cast<char*>(block) + sizeof(NSString));
    std::copy_n(units.data(), units.size(), copied);
    return adopt(*::new (block) NSString(copied, units.size()));
}

Ref<NSString> NSString::fromUTF8(std::string_view bytes) { return StringBuilder().appendUTF8(bytes).string(); }

RefPtr<NSString> NSString::stringWithUTF8String(std::string_view bytes) {
    StringBuilder text;
    std::size_t illFormed = 0;
    char16_t* const target = text.extend(bytes.size());
    text.truncate(static_cast<NSUInteger>(detail::convertUTF8(bytes, target, &illFormed) - target));
    return illFormed ? RefPtr<NSString>() : RefPtr<NSString>(text.string());
}

Ref<NSString> NSString::stringWithFormat_arguments(std::u16string_view format, FormatArguments arguments) {
    StringBuilder text;
    appendFormat_arguments(text, format, arguments);
    return text.string();
}

void NSString::checkIndex(NSUInteger index, const char* operation) const {
    if (index > length_) [[unlikely]]
        NSException::raise(NSRangeException, u"*** -[%@ %s]: Index %llu out of bounds; string length %llu", isa(),
                           operation, index, length_);
}

void NSString::checkRange(NSRange range, const char* operation) const {
    if (!range.fitsIn(length_)) [[unlikely]]
        NSException::raise(NSRangeException, u"*** -[%@ %s]: Range {%llu, %llu} out of bounds; string length %llu",
                           isa(), operation, range.location, range.length, length_);
}

unichar NSString::characterAtIndex(NSUInteger index) const {
    if (index >= length_) [[unlikely]]
        NSException::raise(NSRangeException,
                           u"*** -[%@ characterAtIndex:]: Index %llu out of bounds; string length %llu", isa(), index,
                           length_);
    return units_[index];
}

Ref<NSString> NSString::substringFromIndex(NSUInteger index) const {
    checkIndex(index, "substringFromIndex:");
    return index ? stringWithCharacters(view().substr(index)) : stringWithString(*this);
}

Ref<NSString> NSString::substringToIndex(NSUInteger index) const {
    checkIndex(index, "substringToIndex:");
    return index < length_ ? stringWithCharacters(view().substr(0, index)) : stringWithString(*this);
}

Ref<NSString> NSString::substringWithRange(NSRange range) const {
    checkRange(range, "substringWithRange:");
    return range.length < length_ ? stringWithCharacters(view().substr(range.location, range.length))
                                  : stringWithString(*this);
}

Ref<NSString> NSString::stringByAppendingString(const NSString& suffix) const {
    StringBuilder text;
    text.reserve(length_ + suffix.length_);
    return text.append(*this).append(suffix).string();
}

Ref<NSString> NSString::stringByTrimmingWhitespace() const {
    std::u16string_view text = view();
    const auto first = std::find_if_not(text.begin(), text.end(), detail::isWhiteSpace);
    const auto last = std::find_if_not(text.rbegin(), std::make_reverse_iterator(first), detail::isWhiteSpace).base();
    return substringWithRange({NSUInteger(first - text.begin()), NSUInteger(last - first)});
}

bool NSString::isEqual(const NSObject* other) const {
    if (this == other)
        return true;
    const auto* const string = as<NSString>(other);
    return string && isEqualToString(*string);
}

NSUInteger NSString::hash() const {
    std::uint32_t hash = hash_.load(std::memory_order_relaxed);
    if (!hash) {
        hash = hashOf(view());
        hash_.store(hash, std::memory_order_relaxed);
    }
    return hash;
}

Ref<NSString> NSString::description() const { return stringWithString(*this); }
Ref<NSObject> NSString::copy() const { return share(*this); }
Ref<NSObject> NSString::mutableCopy() const { return NSMutableString::stringWithString(*this); }

std::string NSString::UTF8String() const {
    constexpr std::size_t piece = 512;
    char bytes[3 * piece];
    std::string result;
    result.reserve(length_);
    for (std::u16string_view rest = view(); !rest.empty();) {
        // A surrogate pair stays together.
        std::size_t count = std::min(rest.size(), piece);
        if (count < rest.size() && detail::isLead(rest[count - 1]))
            --count;
        result.append(bytes, detail::convertToUTF8(rest.substr(0, count), bytes));
        rest.remove_prefix(count);
    }
    return result;
}

namespace {

const Additions<NSString> additions{
    classLevel<&NSString::string>("string"),
    classLevel<&NSString::stringWithString>("stringWithString:"),
    instance<&NSString::length>("length"),
    instance<&NSString::characterAtIndex>("characterAtIndex:"),
    instance<&NSString::substringFromIndex>("substringFromIndex:"),
    instance<&NSString::substringToIndex>("substringToIndex:"),
    instance<&NSString::substringWithRange>("substringWithRange:"),
    instance<&NSString::stringByAppendingString>("stringByAppendingString:"),
    instance<&NSString::stringByTrimmingWhitespace>("stringByTrimmingWhitespace"),
    instance<&NSString::isEqualToString>("isEqualToString:"),
    instance<&NSString::intValue>("intValue"),
    instance<&NSString::integerValue>("integerValue"),
    instance<&NSString::doubleValue>("doubleValue"),
    instance<&NSString::boolValue>("boolValue"),
};

}  // namespace

}  // namespace tovi
