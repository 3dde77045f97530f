#include <ToviFoundationKit/Runtime/NSString.h>

#include <ToviFoundationKit/Runtime/UnitVector_p.h>

namespace tovi {

// Multiplies 64 bits by 64 and folds the product, sixteen bytes a step and two chains at once for long texts: every
// unit counts, at about the speed of reading them.
namespace {

__extension__ typedef unsigned __int128 Product;

constexpr std::uint64_t keys[] = {0x9E3779B97F4A7C15, 0xD1B54A32D192ED03, 0x8CB92BA72F3D8DD7, 0xABC98388FB8FAC03};

std::uint64_t mixed(std::uint64_t a, std::uint64_t b) noexcept {
    const Product product = static_cast<Product>(a) * b;
    return static_cast<std::uint64_t>(product) ^ static_cast<std::uint64_t>(product >> 64);
}

using detail::loaded;
using detail::wordAt;

/// Up to eight units in two overlapping words.
std::uint64_t mixedEnd(const char* bytes, std::size_t size, std::uint64_t chain) noexcept {
    if (size >= 8)
        return mixed(wordAt(bytes) ^ keys[1], wordAt(bytes + size - 8) ^ chain);
    if (size >= 4)
        return mixed(loaded<std::uint32_t>(bytes) ^ keys[1], loaded<std::uint32_t>(bytes + size - 4) ^ chain);
    return mixed((size ? loaded<std::uint16_t>(bytes) : 0U) ^ keys[1], chain);
}

}  // namespace

std::uint32_t NSString::hashOf(std::u16string_view units) noexcept {
    const char* bytes = reinterpret_cast<const char*>(units.data());
    std::size_t size = units.size() * sizeof(char16_t);
    std::uint64_t chain = keys[0] ^ size;
    if (size > 32) {
        std::uint64_t second = chain;
        for (; size > 32; bytes += 32, size -= 32) {
            chain = mixed(wordAt(bytes) ^ keys[1], wordAt(bytes + 8) ^ chain);
            second = mixed(wordAt(bytes + 16) ^ keys[2], wordAt(bytes + 24) ^ second);
        }
        chain ^= second;
    }
    if (size > 16) {
        chain = mixed(wordAt(bytes) ^ keys[1], wordAt(bytes + 8) ^ chain);
        bytes += 16;
        size -= 16;
    }
    chain = mixed(mixedEnd(bytes, size, chain), keys[3]);
    const auto hash = static_cast<std::uint32_t>(chain ^ chain >> 32);
    return hash ? hash : 1;
}

}  // namespace tovi
