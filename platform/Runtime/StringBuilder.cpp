#include <ToviFoundationKit/Runtime/StringBuilder.h>

#include <algorithm>
#include <functional>
#include <new>
#include <utility>

#include <ToviFoundationKit/Runtime/NSException.h>
#include <ToviFoundationKit/Runtime/StringMemory_p.h>
#include <ToviFoundationKit/Runtime/Unicode_p.h>
#include <ToviFoundationKit/Runtime/UTF8_p.h>

namespace tovi {

// A long text grows in memory that has room in front for the string that it will be.
namespace {

constexpr std::size_t headerSize = sizeof(NSString);

void* blockOf(char16_t* units) noexcept { return reinterpret_cast<char*>(units) - headerSize; }

char16_t* resizedUnits(char16_t* units, NSUInteger capacity) {
    void* const block =
        units ? detail::resized(blockOf(units), headerSize, capacity) : detail::allocated(headerSize, capacity);
    return reinterpret_cast<char16_t*>(static_cast<char*>(block) + headerSize);
}

}  // namespace

void detail::raiseTooLong(NSUInteger length) {
    NSException::raise(NSMallocException, u"*** NSString: cannot allocate a string of %llu units", length);
}

StringBuilder::~StringBuilder() {
    if (!isInline())
        std::free(blockOf(units_));
}

void StringBuilder::grow(NSUInteger count) {
    if (count > detail::longestString)
        detail::raiseTooLong(count);
    const NSUInteger capacity = std::max(length_ + count, capacity_ * 2);
    char16_t* const grown = resizedUnits(isInline() ? nullptr : units_, capacity);
    if (isInline())
        std::copy_n(inline_, length_, grown);
    units_ = grown;
    capacity_ = capacity;
}

StringBuilder& StringBuilder::append(std::u16string_view units) {
    const bool own = !std::less<>()(units.data(), units_) && !std::less<>()(units_ + length_, units.data());
    const std::ptrdiff_t offset = own ? units.data() - units_ : 0;
    char16_t* const target = extend(units.size());
    std::copy_n(own ? units_ + offset : units.data(), units.size(), target);
    return *this;
}

StringBuilder& StringBuilder::append(NSUInteger count, char16_t unit) {
    std::fill_n(extend(count), count, unit);
    return *this;
}

StringBuilder& StringBuilder::insert(NSUInteger index, NSUInteger count, char16_t unit) {
    char16_t* const end = extend(count);
    std::copy_backward(units_ + index, end, end + count);
    std::fill_n(units_ + index, count, unit);
    return *this;
}

StringBuilder& StringBuilder::appendCodePoint(char32_t codePoint) {
    if (codePoint < 0x10000)
        return append(static_cast<char16_t>(codePoint));
    if (codePoint > 0x10FFFF)
        return appendCodePoint(detail::replacementCharacter);
    return append(detail::leadOf(codePoint)).append(detail::trailOf(codePoint));
}

StringBuilder& StringBuilder::appendASCII(std::string_view characters) {
    std::copy(characters.begin(), characters.end(), extend(characters.size()));
    return *this;
}

StringBuilder& StringBuilder::appendUTF8(std::string_view bytes) {
    // No sequence of bytes makes more units than it has bytes.
    char16_t* const target = extend(bytes.size());
    truncate(static_cast<NSUInteger>(detail::convertUTF8(bytes, target) - units_));
    return *this;
}

void StringBuilder::reset() noexcept {
    units_ = inline_;
    length_ = 0;
    capacity_ = inlineCapacity;
}

Ref<NSString> StringBuilder::string() {
    char16_t* units = isInline() ? resizedUnits(nullptr, length_) : units_;
    if (isInline())
        std::copy_n(inline_, length_, units);
    else if (capacity_ - length_ > length_ / 8)
        units = resizedUnits(units_, length_);
    const NSUInteger length = length_;
    reset();
    return adopt(*::new (blockOf(units)) NSString(units, length));
}

}  // namespace tovi
