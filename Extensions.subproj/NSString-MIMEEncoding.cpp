#include <ToviFoundationKit/Extensions/NSString-MIMEEncoding.h>

#include <array>
#include <bit>
#include <cstdint>

#include <ToviFoundationKit/CoreFoundation/CFStringEncoding.h>
#include <ToviFoundationKit/Runtime/Additions.h>

namespace tovi {
inline namespace MIMEEncoding {

NSStringEncoding stringEncodingForMIMEEncoding(const NSString* name) {
    if (!name)
        return {};
    const CFStringEncoding encoding = CFStringConvertIANACharSetNameToEncoding(name->lowercaseString());
    return encoding == kCFStringEncodingInvalidId ? NSStringEncoding{}
                                                  : CFStringConvertEncodingToNSStringEncoding(encoding);
}

RefPtr<NSString> MIMEEncodingForStringEncoding(NSStringEncoding encoding) {
    return CFStringConvertEncodingToIANACharSetName(CFStringConvertNSStringEncodingToEncoding(encoding));
}

namespace {

constexpr NSStringEncoding additional(NSUInteger charset) {
    return static_cast<NSStringEncoding>(0x80000000 | charset);
}

/// In the order of preference.
constexpr NSStringEncoding preferred[] = {
    NSASCIIStringEncoding, NSISOLatin1StringEncoding, NSISOLatin2StringEncoding, additional(0x0203), additional(0x0204),
    additional(0x0205),    additional(0x0206),        additional(0x0207),        additional(0x0208), additional(0x0209),
    additional(0x020A),    additional(0x020B),        additional(0x020D),        additional(0x020E), additional(0x020F),
};

/// For each character, the preferred encodings that have it: one bit each, the first one lowest.
class PreferredSets {
public:
    using Set = std::uint16_t;

    static const PreferredSets& shared() {
        static const PreferredSets sets;
        return sets;
    }
    /// Those that have all of the text.
    Set taking(std::u16string_view text) const noexcept {
        Set result = all;
        for (std::size_t i = 0; i < text.size() && result; ++i)
            result = text[i] < limit ? result & sets_[text[i]] : 0;
        return result;
    }

private:
    static constexpr Set all = (1 << std::size(preferred)) - 1;
    static constexpr std::size_t limit = 0x2200;  // none of them goes beyond

    PreferredSets() {
        std::array<std::byte, 256> bytes;
        for (unsigned i = 0; i < 256; ++i)
            bytes[i] = std::byte(i);
        for (std::size_t i = 0; i < std::size(preferred); ++i) {
            const Ref<NSString> units = NSString::fromBytes(bytes, preferred[i]);
            for (const char16_t unit : units->view())
                if (unit < limit)
                    sets_[unit] = static_cast<Set>(sets_[unit] | 1 << i);
        }
    }

    std::array<Set, limit> sets_{};
};

}  // namespace

Ref<NSString> recommendedMIMEEncoding(const NSString& receiver) {
    const auto sets = PreferredSets::shared().taking(receiver);
    const NSStringEncoding encoding = sets ? preferred[std::countr_zero(sets)] : receiver.smallestEncoding();
    return *MIMEEncodingForStringEncoding(encoding);
}

namespace {

const Additions<NSString> additions{
    classLevel<&stringEncodingForMIMEEncoding>("stringEncodingForMIMEEncoding:"),
    classLevel<&MIMEEncodingForStringEncoding>("MIMEEncodingForStringEncoding:"),
    instance<&recommendedMIMEEncoding>("recommendedMIMEEncoding"),
};

}  // namespace

}  // namespace MIMEEncoding
}  // namespace tovi
