#include <ToviFoundationKit/Runtime/UTF8_p.h>

#include <cstdint>
#include <cstring>

#include <ToviFoundationKit/Runtime/Unicode_p.h>
#include <ToviFoundationKit/Runtime/Widening_p.h>

namespace tovi::detail {

namespace {

using Byte = unsigned char;

/// Copies the ASCII characters in front, sixteen at a time.
void widenASCII(const Byte*& from, const Byte* end, char16_t*& to) noexcept {
    for (; end - from >= 16; from += 16, to += 16) {
        if ((wordAt(from) | wordAt(from + 8)) & 0x8080808080808080)
            break;
        widenBlock(from, to);
    }
    while (from < end && *from < 0x80)
        *to++ = *from++;
}

void narrowASCII(const char16_t*& from, const char16_t* end, char*& to) noexcept {
    for (; end - from >= 16; from += 16, to += 16) {
        const std::uint64_t bits = wordAt(from) | wordAt(from + 4) | wordAt(from + 8) | wordAt(from + 12);
        if (bits & 0xFF80FF80FF80FF80)
            break;
        narrowBlock(from, to);
    }
    while (from < end && *from < 0x80)
        *to++ = static_cast<char>(*from++);
}

/// What a lead byte calls for: how many bytes follow, and what the first of them may be.
struct Sequence {
    int following;
    Byte lowest, highest;
};

constexpr Sequence sequenceOf(Byte lead) noexcept {
    if (lead < 0xC2 || lead > 0xF4)
        return {0, 0, 0};
    if (lead < 0xE0)
        return {1, 0x80, 0xBF};
    if (lead < 0xF0)
        return {2, lead == 0xE0 ? Byte(0xA0) : Byte(0x80), lead == 0xED ? Byte(0x9F) : Byte(0xBF)};
    return {3, lead == 0xF0 ? Byte(0x90) : Byte(0x80), lead == 0xF4 ? Byte(0x8F) : Byte(0xBF)};
}

/// Reads one sequence that begins with a byte beyond ASCII, or a maximal ill-formed subsequence (as U+FFFD).
char32_t readSequence(const Byte*& from, const Byte* end, std::size_t& illFormed) noexcept {
    const Byte lead = *from++;
    auto [following, lowest, highest] = sequenceOf(lead);
    char32_t codePoint = lead & (0x3FU >> following);
    for (int left = following; left; --left, lowest = 0x80, highest = 0xBF) {
        if (from == end || *from < lowest || *from > highest) {
            following = 0;
            break;
        }
        codePoint = codePoint << 6 | (*from++ & 0x3FU);
    }
    if (following)
        return codePoint;
    ++illFormed;
    return replacementCharacter;
}

}  // namespace

char16_t* convertUTF8(std::string_view bytes, char16_t* to, std::size_t* illFormed) noexcept {
    const Byte* from = reinterpret_cast<const Byte*>(bytes.data());
    const Byte* const end = from + bytes.size();
    std::size_t bad = 0;
    while (from < end) {
        if (*from < 0x80) {
            widenASCII(from, end, to);
            continue;
        }
        const char32_t codePoint = readSequence(from, end, bad);
        if (codePoint < 0x10000) {
            *to++ = static_cast<char16_t>(codePoint);
        } else {
            *to++ = leadOf(codePoint);
            *to++ = trailOf(codePoint);
        }
    }
    if (illFormed)
        *illFormed = bad;
    return to;
}

std::size_t unfinishedUTF8(std::string_view bytes) noexcept {
    for (std::size_t count = 1; count <= 3 && count <= bytes.size(); ++count) {
        const Byte* from = reinterpret_cast<const Byte*>(bytes.data()) + bytes.size() - count;
        if (*from < 0x80)
            return 0;
        const auto [following, lowest, highest] = sequenceOf(*from);
        if (*from >= 0xC0) {
            const bool fits = count == 1 || (from[1] >= lowest && from[1] <= highest);
            return fits && static_cast<int>(count) <= following ? count : 0;
        }
    }
    return 0;
}

std::size_t lengthInUTF8(std::u16string_view units) noexcept {
    constexpr std::size_t mostBlocks = 0x4000;  // three a block fit into sixteen bits
    const auto more = [](EightUnits block) {
        return -((block >= 0x80) + (block >= 0x800) - ((block & 0xF800) == 0xD800));
    };
    std::size_t length = units.size(), i = 0;
    while (units.size() - i >= 8) {
        auto counts = more(loaded<EightUnits>(units.data() + i));
        i += 8;
        for (std::size_t left = mostBlocks; left && units.size() - i >= 8; --left, i += 8)
            counts += more(loaded<EightUnits>(units.data() + i));
        for (int lane = 0; lane < 8; ++lane)
            length += static_cast<std::uint16_t>(counts[lane]);
    }
    for (; i < units.size(); ++i)
        length += std::size_t(units[i] >= 0x80) + (units[i] >= 0x800) - isSurrogate(units[i]);
    return length;
}

char* convertToUTF8(std::u16string_view units, char* to) noexcept {
    const char16_t* from = units.data();
    const char16_t* const end = from + units.size();
    const auto put = [&to](char32_t byte) { *to++ = static_cast<char>(byte); };
    while (from < end) {
        if (*from < 0x80) {
            narrowASCII(from, end, to);
            continue;
        }
        char32_t codePoint = *from++;
        if (codePoint < 0x800) {
            put(0xC0 | codePoint >> 6);
            put(0x80 | (codePoint & 0x3F));
            continue;
        }
        if (isSurrogate(codePoint)) {
            const bool paired = isLead(codePoint) && from < end && isTrail(*from);
            codePoint = paired ? combined(static_cast<char16_t>(codePoint), *from++) : replacementCharacter;
        }
        if (codePoint < 0x10000) {
            put(0xE0 | codePoint >> 12);
        } else {
            put(0xF0 | codePoint >> 18);
            put(0x80 | (codePoint >> 12 & 0x3F));
        }
        put(0x80 | (codePoint >> 6 & 0x3F));
        put(0x80 | (codePoint & 0x3F));
    }
    return to;
}

}  // namespace tovi::detail
