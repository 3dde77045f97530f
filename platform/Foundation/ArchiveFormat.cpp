#include <ToviFoundationKit/Foundation/ArchiveFormat_p.h>

#include <bit>
#include <utility>

#include <ToviFoundationKit/Foundation/NSDate.h>
#include <ToviFoundationKit/Foundation/NSMutableArray.h>
#include <ToviFoundationKit/Foundation/NSMutableDictionary.h>
#include <ToviFoundationKit/Foundation/NSMutableIndexSet.h>
#include <ToviFoundationKit/Foundation/NSMutableSet.h>
#include <ToviFoundationKit/Foundation/NSNull.h>
#include <ToviFoundationKit/Runtime/StringBuilder.h>

namespace tovi::detail {

char archiveTag(const Class& exact) noexcept {
    static const std::pair<const Class*, char> tags[] = {
        {&NSString::classObject(), 't'},        {&NSNumber::classObject(), 'd'},
        {&NSArray::classObject(), 'a'},         {&NSMutableArray::classObject(), 'A'},
        {&NSDictionary::classObject(), 'h'},    {&NSMutableDictionary::classObject(), 'H'},
        {&NSSet::classObject(), 'u'},           {&NSMutableSet::classObject(), 'U'},
        {&NSMutableString::classObject(), 'T'}, {&NSDate::classObject(), 'm'},
        {&NSData::classObject(), 'b'},          {&NSMutableData::classObject(), 'B'},
        {&NSNull::classObject(), '0'},          {&NSValue::classObject(), 'R'},
        {&NSIndexSet::classObject(), 'x'},      {&NSMutableIndexSet::classObject(), 'X'},
        {&Class::classObject(), 'k'},
    };
    for (const auto& [known, tag] : tags)
        if (known == &exact)
            return tag;
    return 'o';
}

NSUInteger ArchiveBytes::longNumber(NSUInteger first) {
    NSUInteger result = first & 0x7F;
    for (unsigned shift = 7; shift < 64; shift += 7) {
        const NSUInteger next = byte();
        if (shift == 63 && next > 1)
            break;
        result |= (next & 0x7F) << shift;
        if (next < 0x80)
            return result;
    }
    fail(u"a number of more than 64 bits");
}

NSUInteger ArchiveBytes::count(std::size_t least) {
    const NSUInteger result = number();
    if (result > left() / least)
        fail(u"more is announced than the archive has");
    return result;
}

NSData::Bytes ArchiveBytes::take(NSUInteger count) {
    if (count > left())
        fail(u"the archive is cut off");
    const NSData::Bytes taken = bytes_.subspan(position_, count);
    position_ += count;
    return taken;
}

template <class T> T ArchiveBytes::littleEndian() {
    T result = 0;
    unsigned shift = 0;
    for (const std::byte each : take(sizeof(T))) {
        result |= static_cast<T>(std::to_integer<T>(each) << shift);
        shift += 8;
    }
    return result;
}

float ArchiveBytes::shortReal() { return std::bit_cast<float>(littleEndian<std::uint32_t>()); }
double ArchiveBytes::real() { return std::bit_cast<double>(littleEndian<std::uint64_t>()); }

Ref<NSString> ArchiveBytes::text() {
    const NSUInteger header = number();
    const NSUInteger length = header / 2;
    const bool wide = header % 2;
    if (length > left() / (wide ? 2 : 1))
        fail(u"more is announced than the archive has");
    const NSData::Bytes units = take(wide ? 2 * length : length);
    StringBuilder text;
    char16_t* const target = text.extend(length);
    for (std::size_t i = 0; i < length; ++i)
        target[i] = static_cast<char16_t>(wide ? std::to_integer<unsigned>(units[2 * i]) |
                                                     std::to_integer<unsigned>(units[2 * i + 1]) << 8
                                               : std::to_integer<unsigned>(units[i]));
    return text.string();
}

void ArchiveBytes::fail(std::u16string_view message) const {
    throw ArchiveFault{ArchiveErrorDamaged, NSString::stringWithFormat(u"byte %lu: %@", position_ ? position_ - 1 : 0,
                                                                       NSString::stringWithCharacters(message))};
}

}  // namespace tovi::detail
