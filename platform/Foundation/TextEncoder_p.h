#pragma once

#include <string_view>

#include <ToviFoundationKit/Foundation/Charset_p.h>
#include <ToviFoundationKit/Foundation/DataBuilder_p.h>

namespace tovi::detail {

/// Makes bytes of text. What can be written is asked first, so that writing never fails.
class TextEncoder {
public:
    explicit TextEncoder(const EncodingRow& row) : row_(row) {}

    /// How many units in front can be written without loss.
    std::size_t writableLength(std::u16string_view text) const;

    void writeByteOrderMark(DataBuilder& to);  ///< where the encoding has one
    /// Writes text that is writable.
    void write(DataBuilder& to, std::u16string_view text);
    /// Writes any text, with other characters for those that the encoding lacks.
    void writeLossily(DataBuilder& to, std::u16string_view text);
    /// Says that there is no more text.
    void finish(DataBuilder& to);

private:
    bool isUnicode() const noexcept;
    std::size_t writableBySet(std::u16string_view text) const;
    void writeUTF32(DataBuilder& to, std::u16string_view text);
    void writeNonLossyASCII(DataBuilder& to, std::u16string_view text);
    void writeHZ(DataBuilder& to, std::u16string_view text);
    void writeMultiByte(DataBuilder& to, std::u16string_view text, bool last);

    const EncodingRow& row_;
    bool isShifted_ = false;  ///< what was written ends in HZ's two-byte characters
    Converter converter_{nullptr, ucnv_close};
};

}  // namespace tovi::detail
