#pragma once

#include <array>
#include <cstdint>
#include <memory>
#include <vector>

#include <unicode/ucnv.h>
#include <unicode/uset.h>

#include <ToviFoundationKit/Foundation/EncodingTable_p.h>

namespace tovi::detail {

using Converter = std::unique_ptr<UConverter, decltype(&ucnv_close)>;

/// A character set whose bytes are characters, as two tables. Its lower half is ASCII.
class SingleByteCharset {
public:
    static constexpr char16_t noUnit = 0xFFFD;

    /// Made when first asked for, and kept.
    static const SingleByteCharset& of(const EncodingRow& row);

    char16_t unitOf(unsigned char byte) const noexcept { return units_[byte]; }  ///< noUnit where nothing is
    /// 0 for a unit that is not in the set, and for NUL.
    unsigned char byteOf(char16_t unit) const noexcept { return pages_[pageOf_[unit >> 8]][unit & 0xFF]; }
    bool has(char16_t unit) const noexcept { return byteOf(unit) || unit == 0; }

private:
    friend class CharsetCache;
    explicit SingleByteCharset(const EncodingRow& row);
    void map(unsigned char byte, char16_t unit);

    std::array<char16_t, 256> units_;
    std::array<std::uint8_t, 256> pageOf_{};
    std::vector<std::array<unsigned char, 256>> pages_;
};

/// A character set of bytes in sequence: a converter to take copies of, and what it can write and read back.
class MultiByteCharset {
public:
    static const MultiByteCharset& of(const EncodingRow& row);

    /// A converter that stops at what is not valid. One of its own for each use: it keeps a state.
    Converter converter() const;
    const USet& repertoire() const noexcept { return *repertoire_; }

private:
    friend class CharsetCache;
    explicit MultiByteCharset(const EncodingRow& row);

    Converter original_;
    std::unique_ptr<USet, decltype(&uset_close)> repertoire_;
};

}  // namespace tovi::detail
