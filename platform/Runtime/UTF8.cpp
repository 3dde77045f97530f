#include <ToviFoundationKit/Runtime/UTF8_p.h>

#include <cstdint>
#include <cstring>

#include <ToviFoundationKit/Runtime/Unicode_p.h>

namespace tovi::detail {

namespace {

using Byte = unsigned char;
using Bytes __attribute__((vector_size(8))) = Byte;
using Units __attribute__((vector_size(16))) = std::uint16_t;

template <class Result, class From> Result load(const From* from) noexcept {
    Result result;
    std::memcpy(&result, from, sizeof result);
    return result;
}

void widen8(const Byte* from, char16_t* to) noexcept {
    const Units units = __builtin_convertvector(load<Bytes>(from), Units);
    std::memcpy(to, &units, sizeof units);
}
void narrow8(const char16_t* from, char* to) noexcept {
    const Bytes bytes = __builtin_convertvector(load<Units>(from), Bytes);
    std::memcpy(to, &bytes, sizeof bytes);
}

/// Copies the ASCII characters in front, sixteen at a time.
void widenASCII(const Byte*& from, const Byte* end, char16_t*& to) noexcept {
    for (; end - from >= 16; from += 16, to += 16) {
        if ((load<std::uint64_t>(from) | load<std::uint64_t>(from + 8)) & 0x8080808080808080)
            break;
        widen8(from, to);
        widen8(from + 8, to + 8);
    }
    while (from < end && *from < 0x80)
        *to++ = *from++;
}

void narrowASCII(const char16_t*& from, const char16_t* end, char*& to) noexcept {
    for (; end - from >= 16; from += 16, to += 16) {
        const std::uint64_t bits = load<std::uint64_t>(from) | load<std::uint64_t>(from + 4) |
                                   load<std::uint64_t>(from + 8) | load<std::uint64_t>(from + 12);
        if (bits & 0xFF80FF80FF80FF80)
            break;
        narrow8(from, to);
        narrow8(from + 8, to + 8);
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
char32_t readSequence(const Byte*& from, const Byte* end, bool& illFormed) noexcept {
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
    illFormed = true;
    return replacementCharacter;
}

}  // namespace

char16_t* convertUTF8(std::string_view bytes, char16_t* to, bool* illFormed) noexcept {
    const Byte* from = reinterpret_cast<const Byte*>(bytes.data());
    const Byte* const end = from + bytes.size();
    bool bad = false;
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
